#include "platform/linux/graphics/Image.h"

#include <gtest/gtest.h>

namespace {

TEST(Image, GivesItsSizeAndPixels) {
    std::vector<std::uint8_t> pixels(24);
    for (std::size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = static_cast<std::uint8_t>(i);
    auto owned = platform::Ref<CGImage>::adopt(new CGImage(3, 2, pixels));
    CGImageRef image = owned.get();
    EXPECT_EQ(CGImageGetWidth(image), 3U);
    EXPECT_EQ(CGImageGetHeight(image), 2U);
    EXPECT_EQ(CGImageGetBytesPerRow(image), 12U);
    CGDataProviderRef provider = CGImageGetDataProvider(image);
    EXPECT_EQ(CFGetRetainCount(provider), 1);
    const auto copy = platform::Ref<const __CFData>::adopt(CGDataProviderCopyData(provider));
    CFDataRef data = copy.get();
    CGImageRelease(owned.detach());
    ASSERT_EQ(CFDataGetLength(data), 24);
    EXPECT_EQ(CFGetTypeID(data), CFDataGetTypeID());
    EXPECT_TRUE(std::equal(pixels.begin(), pixels.end(), CFDataGetBytePtr(data)));
    EXPECT_EQ(CFGetRetainCount(data), 1);
}

TEST(Image, MayBeNull) {
    EXPECT_EQ(CGImageGetWidth(nullptr), 0U);
    EXPECT_EQ(CGImageGetHeight(nullptr), 0U);
    EXPECT_EQ(CGImageGetBytesPerRow(nullptr), 0U);
    EXPECT_EQ(CGImageGetDataProvider(nullptr), nullptr);
    EXPECT_EQ(CGDataProviderCopyData(nullptr), nullptr);
    CGImageRelease(nullptr);
}

} // namespace
