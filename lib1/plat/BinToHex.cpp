#include "plat/BinToHex.h"

#include <cstddef>
#include <memory>

#include "plat/Assertion.h"
#include "plat/HexBlocks.h"

namespace plat {

namespace {

char digit(int half) noexcept {
    constexpr int fromNineToA = 'a' - '9' - 1;
    return char('0' + half + (half > 9 ? fromNineToA : 0));
}

} // namespace

char intToHex(int i) {
    LUMO_ASSERT_THROW(i >= 0 && i <= 15);
    return digit(i);
}

String binToHexStr(CBuf<unsigned char> bytes) {
    const auto count = std::size_t(bytes.length);
    std::unique_ptr<char[]> text(new char[2 * count + 1]);
    const std::size_t done = writeHexBlocks(text.get(), bytes.data, count);
    char* out = text.get() + 2 * done;
    for (std::size_t i = done; i < count; ++i) {
        *out++ = digit(bytes.data[i] >> 4);
        *out++ = digit(bytes.data[i] & 15);
    }
    *out = '\0';
    return String::owning(text.release());
}

} // namespace plat
