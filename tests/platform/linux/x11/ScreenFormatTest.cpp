#include "platform/linux/x11/ScreenFormat.h"

#include "support/XServer.h"

#include <gtest/gtest.h>

#include <bit>

namespace platform::x11 {
namespace {

using support::XServer;

struct Depth {
    const char* name;
    int depth;
    int bitsPerPixel;
    std::uint32_t redMask;
    std::uint32_t greenMask;
    std::uint32_t blueMask;
    bool isBgrx;
    friend void PrintTo(const Depth& row, std::ostream* out) { *out << row.name; }
};

class ScreenOfDepth : public testing::TestWithParam<Depth> {};

TEST_P(ScreenOfDepth, IsDescribedByItsMasks) {
    const Depth& row = GetParam();
    const XServer server({.width = 64, .height = 48, .depth = row.depth});
    const auto connection = Connection::open(server.display().c_str());
    ASSERT_NE(connection, nullptr);
    const PixelFormat format = screenFormat(*connection);
    EXPECT_TRUE(format.isSupported());
    EXPECT_EQ(format.bitsPerPixel, row.bitsPerPixel);
    EXPECT_EQ(format.rowPadBits, 32);
    EXPECT_EQ(format.redMask, row.redMask);
    EXPECT_EQ(format.greenMask, row.greenMask);
    EXPECT_EQ(format.blueMask, row.blueMask);
    EXPECT_EQ(format.isBgrx(), row.isBgrx);
    EXPECT_EQ(format.isBigEndian, isBigEndian(*connection));
}

INSTANTIATE_TEST_SUITE_P(Depths, ScreenOfDepth,
                         testing::Values(Depth{"Depth15", 15, 16, 0x7c00, 0x03e0, 0x001f, false},
                                         Depth{"Depth16", 16, 16, 0xf800, 0x07e0, 0x001f, false},
                                         Depth{"Depth24", 24, 32, 0xff0000, 0xff00, 0xff, true}),
                         [](const auto& row) { return row.param.name; });

TEST(ScreenFormat, PaletteIsNotSupported) {
    const XServer server({.width = 64, .height = 48, .depth = 8});
    const auto connection = Connection::open(server.display().c_str());
    ASSERT_NE(connection, nullptr);
    EXPECT_FALSE(screenFormat(*connection).isSupported());
}

TEST(ScreenFormat, ServerHereHasTheByteOrderOfThisMachine) {
    const XServer server({.width = 64, .height = 48});
    const auto connection = Connection::open(server.display().c_str());
    ASSERT_NE(connection, nullptr);
    EXPECT_EQ(isBigEndian(*connection), std::endian::native == std::endian::big);
}

} // namespace
} // namespace platform::x11
