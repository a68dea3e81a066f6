#include "plat/CopyBytes.h"

#include <string>

#include <gtest/gtest.h>

namespace {

std::string counted(std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = char('!' + i % 90);
    return bytes;
}

using Copy = void (*)(void*, const void*, std::size_t);

class Copying : public testing::TestWithParam<Copy> {};
TEST_P(Copying, CopiesExactlyTheBytesGiven) {
    for (std::size_t size = 0; size < 80; ++size) {
        const std::string from = counted(size);
        std::string to(size + 2, '#');
        GetParam()(to.data() + 1, from.data(), size);
        EXPECT_EQ(to, "#" + from + "#");
    }
}
TEST_P(Copying, CopiesLargeArrays) {
    for (const std::size_t size : {2047, 2048, 2049, 4096, 4097, 10000}) {
        const std::string from = counted(size);
        std::string to(size + 1, '#');
        GetParam()(to.data(), from.data(), size);
        EXPECT_EQ(to, from + "#");
    }
}
TEST_P(Copying, TakesNullForNoBytes) {
    GetParam()(nullptr, nullptr, 0);
}
INSTANTIATE_TEST_SUITE_P(Functions, Copying, testing::Values(plat::copyBytes, plat::copyGrown),
                         [](const auto& row) { return row.index == 0 ? "Bytes" : "Grown"; });

} // namespace
