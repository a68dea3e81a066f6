#include "platform/linux/graphics/PixelFormat.h"

#include <array>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace platform {
namespace {

PixelFormat format(int bits, std::uint32_t red, std::uint32_t green, std::uint32_t blue,
                   bool isBigEndian = false) {
    PixelFormat result;
    result.bitsPerPixel = bits;
    result.isBigEndian = isBigEndian;
    result.redMask = red;
    result.greenMask = green;
    result.blueMask = blue;
    return result;
}

const PixelFormat depth24 = format(32, 0xff0000, 0xff00, 0xff);

struct Conversion {
    const char* name;
    PixelFormat format;
    std::vector<std::uint8_t> from;
    std::array<std::uint8_t, 4> bgra;
};

class PixelConverted : public testing::TestWithParam<Conversion> {};

TEST_P(PixelConverted, BecomesOpaqueBgra) {
    const Conversion& row = GetParam();
    ASSERT_TRUE(row.format.isSupported());
    std::array<std::uint8_t, 4> to{};
    row.format.toBgra(row.from.data(), row.from.size(), to.data(), 4, 1, 1);
    EXPECT_EQ(to, row.bgra);
}

INSTANTIATE_TEST_SUITE_P(
    Formats, PixelConverted,
    testing::Values(
        Conversion{"Depth24", depth24, {1, 2, 3, 0}, {1, 2, 3, 255}},
        Conversion{"Depth24PadIsIgnored", depth24, {1, 2, 3, 0x80}, {1, 2, 3, 255}},
        Conversion{"Depth24BigEndian",
                   format(32, 0xff0000, 0xff00, 0xff, true),
                   {9, 3, 2, 1},
                   {1, 2, 3, 255}},
        Conversion{
            "RedAndBlueSwapped", format(32, 0xff, 0xff00, 0xff0000), {3, 2, 1, 0}, {1, 2, 3, 255}},
        Conversion{"Packed24", format(24, 0xff0000, 0xff00, 0xff), {1, 2, 3}, {1, 2, 3, 255}},
        Conversion{"Packed24BigEndian",
                   format(24, 0xff0000, 0xff00, 0xff, true),
                   {3, 2, 1},
                   {1, 2, 3, 255}},
        Conversion{
            "Depth16White", format(16, 0xf800, 0x7e0, 0x1f), {0xff, 0xff}, {255, 255, 255, 255}},
        // Red 10000, green 000001, blue 00001: upper bits repeat.
        Conversion{"Depth16Widened",
                   format(16, 0xf800, 0x7e0, 0x1f),
                   {0x21, 0x80},
                   {0x08, 0x04, 0x84, 255}},
        Conversion{"Depth16BigEndian",
                   format(16, 0xf800, 0x7e0, 0x1f, true),
                   {0x80, 0x21},
                   {0x08, 0x04, 0x84, 255}},
        Conversion{"Depth15Widened",
                   format(16, 0x7c00, 0x3e0, 0x1f),
                   {0x21, 0x40},
                   {0x08, 0x08, 0x84, 255}},
        Conversion{"Depth15IgnoresTheTopBit",
                   format(16, 0x7c00, 0x3e0, 0x1f),
                   {0x00, 0x80},
                   {0, 0, 0, 255}},
        Conversion{"Depth30White",
                   format(32, 0x3ff00000, 0xffc00, 0x3ff),
                   {0xff, 0xff, 0xff, 0x3f},
                   {255, 255, 255, 255}},
        // Blue 3, green 4, red 512 of 1023: the lowest two bits go.
        Conversion{"Depth30Narrowed",
                   format(32, 0x3ff00000, 0xffc00, 0x3ff),
                   {0x03, 0x10, 0x00, 0x20},
                   {0, 1, 128, 255}},
        Conversion{"Depth8", format(8, 0xe0, 0x1c, 0x3), {0b10001001}, {0x55, 0x49, 0x92, 255}},
        Conversion{"OneBitChannels", format(8, 0x4, 0x2, 0x1), {0b101}, {255, 0, 255, 255}}),
    [](const auto& row) { return row.param.name; });

struct Unsupported {
    const char* name;
    PixelFormat format;
};

class PixelFormatRefused : public testing::TestWithParam<Unsupported> {};

TEST_P(PixelFormatRefused, ConvertsNothing) {
    const PixelFormat& refused = GetParam().format;
    EXPECT_FALSE(refused.isSupported());
    std::array<std::uint8_t, 4> from{1, 2, 3, 4};
    std::array<std::uint8_t, 4> to{9, 9, 9, 9};
    refused.toBgra(from.data(), 4, to.data(), 4, 1, 1);
    EXPECT_EQ(to, (std::array<std::uint8_t, 4>{9, 9, 9, 9}));
}

INSTANTIATE_TEST_SUITE_P(
    Formats, PixelFormatRefused,
    testing::Values(Unsupported{"None", PixelFormat()}, Unsupported{"NoMasks", format(8, 0, 0, 0)},
                    Unsupported{"FourBits", format(4, 0x4, 0x2, 0x1)},
                    Unsupported{"MaskBeyondThePixel", format(16, 0xff0000, 0xff00, 0xff)},
                    Unsupported{"MaskWithAGap", format(32, 0xf0f000, 0xf00, 0xff)}),
    [](const auto& row) { return row.param.name; });

TEST(PixelFormat, KnowsWhenBytesAreInOrderAlready) {
    EXPECT_TRUE(depth24.isBgrx());
    EXPECT_FALSE(format(32, 0xff0000, 0xff00, 0xff, true).isBgrx());
    EXPECT_FALSE(format(32, 0xff, 0xff00, 0xff0000).isBgrx());
    EXPECT_FALSE(format(24, 0xff0000, 0xff00, 0xff).isBgrx());
    EXPECT_FALSE(PixelFormat().isBgrx());
}

struct Stride {
    int bits;
    int pad;
    int width;
    std::size_t bytes;
};

class PixelRow : public testing::TestWithParam<Stride> {};

TEST_P(PixelRow, IsPadded) {
    PixelFormat padded = format(GetParam().bits, 0xff0000, 0xff00, 0xff);
    padded.rowPadBits = GetParam().pad;
    EXPECT_EQ(padded.strideBytes(GetParam().width), GetParam().bytes);
}

INSTANTIATE_TEST_SUITE_P(Widths, PixelRow,
                         testing::Values(Stride{32, 32, 1, 4}, Stride{32, 32, 641, 2564},
                                         Stride{16, 32, 1, 4}, Stride{16, 32, 3, 8},
                                         Stride{16, 32, 4, 8}, Stride{8, 32, 1366, 1368},
                                         Stride{8, 8, 3, 3}, Stride{24, 32, 3, 12},
                                         Stride{32, 32, 32767, 131068}));

TEST(PixelFormat, ConvertsRowsAndLeavesThePaddingAlone) {
    const PixelFormat depth16 = format(16, 0xf800, 0x7e0, 0x1f);
    // Three pixels a row, padded to four; the rows of the target are a pixel longer.
    const std::vector<std::uint8_t> from{0x1f, 0, 0xe0, 0x07, 0, 0xf8, 0xee, 0xee,
                                         0,    0, 0xff, 0xff, 0, 0,    0xee, 0xee};
    std::vector<std::uint8_t> to(32, 7);
    depth16.toBgra(from.data(), 8, to.data(), 16, 3, 2);
    const std::vector<std::uint8_t> expected{255, 0,   0, 255, 0, 255, 0, 255, 0,   0,   255,
                                             255, 7,   7, 7,   7, 0,   0, 0,   255, 255, 255,
                                             255, 255, 0, 0,   0, 255, 7, 7,   7,   7};
    EXPECT_EQ(to, expected);
}

TEST(PixelFormat, MakesBgrxOpaqueInPlace) {
    constexpr std::size_t stride = 2564;
    std::vector<std::uint8_t> pixels(std::size_t{641} * 3 * 4, 5);
    depth24.toBgra(pixels.data(), stride, pixels.data(), stride, 641, 3);
    for (std::size_t i = 0; i < pixels.size(); ++i)
        ASSERT_EQ(pixels[i], i % 4 == 3 ? 255 : 5);
}

} // namespace
} // namespace platform
