#include "platform/linux/core/String.h"

#include "platform/linux/core/Ref.h"

#include <CoreFoundation/CoreFoundation.h>

#include <array>
#include <gtest/gtest.h>
#include <string>

namespace {

struct Text {
    const char* name;
    const char* utf8;
    CFIndex utf16Units;
};

class StringOf : public testing::TestWithParam<Text> {};

TEST_P(StringOf, HoldsACopyAndCountsUtf16Units) {
    std::string text = GetParam().utf8;
    const auto owned = platform::Ref<const __CFString>::adopt(
        CFStringCreateWithCString(kCFAllocatorDefault, text.c_str(), kCFStringEncodingUTF8));
    ASSERT_TRUE(owned);
    CFStringRef string = owned.get();
    text.assign(text.size(), '#');
    EXPECT_EQ(CFGetTypeID(string), CFStringGetTypeID());
    EXPECT_EQ(CFStringGetLength(string), GetParam().utf16Units);
    std::array<char, 64> buffer{};
    EXPECT_TRUE(CFStringGetCString(string, buffer.data(), buffer.size(), kCFStringEncodingUTF8));
    EXPECT_STREQ(buffer.data(), GetParam().utf8);
}

INSTANTIATE_TEST_SUITE_P(Texts, StringOf,
                         testing::Values(Text{"Empty", "", 0}, Text{"Ascii", "screen", 6},
                                         Text{"TwoBytes", "\xc3\xa9t\xc3\xa9", 3},
                                         Text{"ThreeBytes", "\xe2\x82\xac", 1},
                                         Text{"FourBytesAreAPair", "a\xf0\x9f\x98\x80z", 4},
                                         Text{"LastBelowPairs", "\xef\xbf\xbd", 1}),
                         [](const auto& row) { return row.param.name; });

class StringNotMadeOf : public testing::TestWithParam<const char*> {};

TEST_P(StringNotMadeOf, GivesNull) {
    EXPECT_EQ(CFStringCreateWithCString(nullptr, GetParam(), kCFStringEncodingUTF8), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Texts, StringNotMadeOf,
                         testing::Values(static_cast<const char*>(nullptr), "\xff", "cut \xe2\x82",
                                         "over\xc0\xaflong", "\xed\xa0\x80"));

TEST(String, IsNotMadeInAnotherEncoding) {
    EXPECT_EQ(CFStringCreateWithCString(nullptr, "x", 0x0600), nullptr);
}

class StringIntoBuffer : public testing::Test {
protected:
    void TearDown() override { CFRelease(string); }
    CFStringRef string = CFStringCreateWithCString(nullptr, "abc", kCFStringEncodingUTF8);
    std::array<char, 8> buffer{'?', '?', '?', '?', '?', '?', '?', '?'};
};

TEST_F(StringIntoBuffer, FitsWithItsNulExactly) {
    EXPECT_TRUE(CFStringGetCString(string, buffer.data(), 4, kCFStringEncodingUTF8));
    EXPECT_STREQ(buffer.data(), "abc");
    EXPECT_EQ(buffer[4], '?');
}

TEST_F(StringIntoBuffer, LeavesAnEmptyTextWhenTheNulHasNoRoom) {
    EXPECT_FALSE(CFStringGetCString(string, buffer.data(), 3, kCFStringEncodingUTF8));
    EXPECT_STREQ(buffer.data(), "");
    EXPECT_EQ(buffer[1], '?');
}

TEST_F(StringIntoBuffer, TouchesNothingWithoutRoom) {
    EXPECT_FALSE(CFStringGetCString(string, buffer.data(), 0, kCFStringEncodingUTF8));
    EXPECT_FALSE(CFStringGetCString(string, buffer.data(), -1, kCFStringEncodingUTF8));
    EXPECT_EQ(buffer[0], '?');
}

TEST_F(StringIntoBuffer, RefusesAnotherEncoding) {
    EXPECT_FALSE(CFStringGetCString(string, buffer.data(), 8, 0x0600));
    EXPECT_STREQ(buffer.data(), "");
}

TEST(StringConstant, NamesItself) {
    std::array<char, 64> buffer{};
    ASSERT_TRUE(CFStringGetCString(kCFRunLoopCommonModes, buffer.data(), buffer.size(),
                                   kCFStringEncodingUTF8));
    EXPECT_STREQ(buffer.data(), "kCFRunLoopCommonModes");
    EXPECT_EQ(CFStringGetLength(kCFRunLoopDefaultMode), 21);
    CFRelease(kCFRunLoopCommonModes);
    CFRelease(kCFRunLoopCommonModes);
    EXPECT_EQ(CFStringGetLength(kCFRunLoopCommonModes), 21);
}

} // namespace
