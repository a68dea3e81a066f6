#pragma once

#include <climits>
#include <cstddef>
#include <optional>
#include <string>

/// What a whole text is as an int; base 10, or 0 for a base that the text itself says.
inline std::optional<int> numberOf(const std::string& text, int base) {
    const std::size_t start = text.find_first_not_of(" \t\n\v\f\r");
    if (start == std::string::npos)
        return std::nullopt;
    std::string digits = text.substr(start);
    const bool isNegative = digits[0] == '-';
    if (isNegative || digits[0] == '+')
        digits.erase(0, 1);

    int radix = 10;
    if (base == 0 && digits.size() > 1 && digits[0] == '0') {
        radix = digits[1] == 'x' || digits[1] == 'X' ? 16 : 8;
        digits.erase(0, radix == 16 ? 2 : 1);
    }
    const std::string allowed =
        std::string("0123456789abcdefABCDEF", radix == 16 ? 22U : unsigned(radix));
    if (digits.empty() || digits.find_first_not_of(allowed) != std::string::npos)
        return std::nullopt;

    long long value = 0;
    for (const char c : digits) {
        value = value * radix + std::stoi(std::string(1, c), nullptr, 16);
        if (value > 1LL + INT_MAX)
            return std::nullopt;
    }
    if (isNegative)
        value = -value;
    return value > INT_MAX ? std::nullopt : std::optional(int(value));
}
