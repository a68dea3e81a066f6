#include <CoreFoundation/CoreFoundation.h>

#include <array>
#include <gtest/gtest.h>

namespace {

TEST(Dictionary, FindsValuesByTheKeysAddress) {
    CFStringRef twin =
        CFStringCreateWithCString(nullptr, "kCFRunLoopDefaultMode", kCFStringEncodingUTF8);
    std::array<const void*, 2> keys{kCFRunLoopDefaultMode, kCFRunLoopCommonModes};
    std::array<const void*, 2> values{kCFBooleanFalse, kCFBooleanTrue};
    CFDictionaryRef dictionary =
        CFDictionaryCreate(kCFAllocatorDefault, keys.data(), values.data(), 2, nullptr, nullptr);
    EXPECT_EQ(CFGetTypeID(dictionary), CFDictionaryGetTypeID());
    EXPECT_EQ(CFDictionaryGetCount(dictionary), 2);
    EXPECT_EQ(CFDictionaryGetValue(dictionary, kCFRunLoopDefaultMode), kCFBooleanFalse);
    EXPECT_EQ(CFDictionaryGetValue(dictionary, kCFRunLoopCommonModes), kCFBooleanTrue);
    EXPECT_EQ(CFDictionaryGetValue(dictionary, twin), nullptr);
    CFRelease(dictionary);
    CFRelease(twin);
}

TEST(Dictionary, TakesAsManyEntriesAsTold) {
    std::array<const void*, 2> keys{kCFRunLoopDefaultMode, nullptr};
    std::array<const void*, 2> values{kCFBooleanFalse, nullptr};
    CFDictionaryRef dictionary =
        CFDictionaryCreate(nullptr, keys.data(), values.data(), 1, nullptr, nullptr);
    EXPECT_EQ(CFDictionaryGetCount(dictionary), 1);
    CFRelease(dictionary);
}

TEST(Dictionary, KeepsTheFirstOfEqualKeys) {
    std::array<const void*, 2> keys{kCFRunLoopDefaultMode, kCFRunLoopDefaultMode};
    std::array<const void*, 2> values{kCFBooleanTrue, kCFBooleanFalse};
    CFDictionaryRef dictionary =
        CFDictionaryCreate(nullptr, keys.data(), values.data(), 2, nullptr, nullptr);
    EXPECT_EQ(CFDictionaryGetCount(dictionary), 1);
    EXPECT_EQ(CFDictionaryGetValue(dictionary, kCFRunLoopDefaultMode), kCFBooleanTrue);
    CFRelease(dictionary);
}

TEST(Dictionary, RetainsNothing) {
    const int one = 1;
    CFNumberRef number = CFNumberCreate(nullptr, kCFNumberIntType, &one);
    const void* key = number;
    const void* value = number;
    CFDictionaryRef dictionary = CFDictionaryCreate(nullptr, &key, &value, 1, nullptr, nullptr);
    EXPECT_EQ(CFGetRetainCount(number), 1);
    CFRelease(dictionary);
    EXPECT_EQ(CFGetRetainCount(number), 1);
    CFRelease(number);
}

TEST(Dictionary, MayBeEmpty) {
    CFDictionaryRef dictionary = CFDictionaryCreate(nullptr, nullptr, nullptr, 0, nullptr, nullptr);
    EXPECT_EQ(CFDictionaryGetCount(dictionary), 0);
    EXPECT_EQ(CFDictionaryGetValue(dictionary, kCFRunLoopDefaultMode), nullptr);
    CFRelease(dictionary);
}

TEST(Dictionary, IsNotMadeWithCallbacksOrANegativeCount) {
    const int something = 0;
    const auto* keyCallBacks = reinterpret_cast<const CFDictionaryKeyCallBacks*>(&something);
    const auto* valueCallBacks = reinterpret_cast<const CFDictionaryValueCallBacks*>(&something);
    EXPECT_EQ(CFDictionaryCreate(nullptr, nullptr, nullptr, 0, keyCallBacks, nullptr), nullptr);
    EXPECT_EQ(CFDictionaryCreate(nullptr, nullptr, nullptr, 0, nullptr, valueCallBacks), nullptr);
    EXPECT_EQ(CFDictionaryCreate(nullptr, nullptr, nullptr, -1, nullptr, nullptr), nullptr);
}

} // namespace
