#include "plat/Wildcard.h"

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Require.h"

namespace {

bool areEqual(char a, char b, bool caseSensitive) {
    return caseSensitive ? a == b
                         : std::tolower(static_cast<unsigned char>(a)) ==
                               std::tolower(static_cast<unsigned char>(b));
}

// Whether the first p bytes of the pattern match the first t of the text, for all p and t.
bool matches(const std::string& pattern, const std::string& text, bool caseSensitive, bool star) {
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

} // namespace

// The first line is a pattern, the rest a text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string input(data, data + size);
    const std::size_t split = input.find('\n');
    const std::string pattern = input.substr(0, split).c_str();
    const std::string text = split == std::string::npos ? "" : input.substr(split + 1).c_str();
    for (const bool caseSensitive : {false, true}) {
        for (const unsigned flags : {0U, plat::Wildcard::star}) {
            REQUIRE(plat::Wildcard::match(pattern.c_str(), text.c_str(), caseSensitive, flags) ==
                    matches(pattern, text, caseSensitive, flags != 0));
        }
    }
    return 0;
}
