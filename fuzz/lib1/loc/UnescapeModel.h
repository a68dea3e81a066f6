#pragma once

#include <cstdlib>
#include <cstring>
#include <string>

/// What a quoted string stands for, character by character.
struct UnescapeModel {
    std::string content; ///< up to the fault if there is one
    std::string fault;

    explicit UnescapeModel(const std::string& text) { fault = run(text); }

private:
    std::string run(const std::string& text) {
        std::size_t i = text.find_first_not_of(' ');
        if (i == std::string::npos)
            return "Junk following string data";
        if (text[i] != '"')
            return "Junk preceding string data";
        for (++i; i < text.size() && text[i] != '"'; ++i) {
            if (text[i] != '\\') {
                content += text[i];
                continue;
            }
            if (++i == text.size())
                return "Invalid escape at end";
            static const std::string letters = "\"'?\\abfnrtv";
            static const std::string meanings = "\"'?\\\a\b\f\n\r\t\v";
            if (letters.find(text[i]) != std::string::npos) {
                content += meanings[letters.find(text[i])];
                continue;
            }
            const bool isHex = text[i] == 'x';
            i += isHex ? 1 : 0;
            const std::size_t count = isHex ? 2 : 3;
            if (i + count > text.size())
                return isHex ? "Invalid hex escape at end" : "Invalid escape at end";
            const std::string digits = text.substr(i, count);
            char* end = nullptr;
            const long value = std::strtol(digits.c_str(), &end, isHex ? 16 : 8);
            if (end != digits.c_str() + count)
                return isHex ? "Invalid hex escape" : "Invalid escape code";
            if (value > 255)
                return "Octal escape code out of range";
            content += char(value);
            i += count - 1;
        }
        if (i == text.size())
            return "Missing terminator";
        return i + 1 == text.size() ? "" : "Junk following string data";
    }
};
