#include "platform/linux/core/String.h"

#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CGDisplayStream.h>

#include <gtest/gtest.h>

namespace {

struct Key {
    const char* name;
    CFStringRef key;
    friend void PrintTo(const Key& row, std::ostream* out) { *out << row.name; }
};

class StreamKey : public testing::TestWithParam<Key> {};

TEST_P(StreamKey, IsAStringOfItsOwnName) {
    ASSERT_NE(GetParam().key, nullptr);
    EXPECT_EQ(CFGetTypeID(GetParam().key), CFStringGetTypeID());
    EXPECT_STREQ(GetParam().key->utf8(), GetParam().name);
}

TEST_P(StreamKey, OutlivesEveryRelease) {
    CFRelease(GetParam().key);
    CFRelease(GetParam().key);
    EXPECT_STREQ(GetParam().key->utf8(), GetParam().name);
}

INSTANTIATE_TEST_SUITE_P(
    All, StreamKey,
    testing::Values(Key{"kCGDisplayStreamShowCursor", kCGDisplayStreamShowCursor},
                    Key{"kCGDisplayStreamMinimumFrameTime", kCGDisplayStreamMinimumFrameTime},
                    Key{"kCGDisplayStreamQueueDepth", kCGDisplayStreamQueueDepth}),
    [](const auto& row) { return row.param.name; });

} // namespace
