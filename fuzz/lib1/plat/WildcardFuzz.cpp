#include "plat/Wildcard.h"

#include <cstddef>
#include <cstdint>
#include <string>

#include "Require.h"
#include "lib1/plat/WildcardModel.h"

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
