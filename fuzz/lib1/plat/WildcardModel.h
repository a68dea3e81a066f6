#pragma once

#include <cctype>
#include <cstddef>
#include <string>
#include <vector>

inline bool areEqual(char a, char b, bool caseSensitive) {
    return caseSensitive ? a == b
                         : std::tolower(static_cast<unsigned char>(a)) ==
                               std::tolower(static_cast<unsigned char>(b));
}

// Whether the first p bytes of the pattern match the first t of the text, for all p and t.
inline bool matches(const std::string& pattern, const std::string& text, bool caseSensitive,
                    bool star) {
    std::vector<std::vector<bool>> table(pattern.size() + 1,
                                         std::vector<bool>(text.size() + 1, false));
    table[0][0] = true;
    for (std::size_t p = 1; p <= pattern.size(); ++p) {
        for (std::size_t t = 0; t <= text.size(); ++t) {
            if (star && pattern[p - 1] == '*')
                table[p][t] = table[p - 1][t] || (t > 0 && table[p][t - 1]);
            else
                table[p][t] = t > 0 && table[p - 1][t - 1] &&
                              areEqual(pattern[p - 1], text[t - 1], caseSensitive);
        }
    }
    return table[pattern.size()][text.size()];
}
