#include "os/mac/CFUtil.h"

#include <limits>
#include <memory>
#include <new>
#include <string>

#include <gtest/gtest.h>

#include "apps/mac/lumoscreenhelper/fake/Services.h"
#include "lib1/AllocationHook.h"

namespace {

using fake::Services;
using os::CFDictionaryPtr;
using os::CFNumberPtr;

struct CFUtilTest : testing::Test {
    CFUtilTest() { services.reset(); }
    ~CFUtilTest() override { EXPECT_TRUE(services.errors.empty()); }

    __CFNumber* number(int value) { return services.makeNumber(kCFNumberIntType, value); }

    CFDictionaryRef dictionaryOf(const void* value) {
        const void* keys[] = {kCFBooleanTrue};
        return CFDictionaryCreate(nullptr, &keys[0], &value, 1, nullptr, nullptr);
    }

    // What getStr() gives for an object of a text, "null" for null.
    std::string textOf(const void* value) {
        const CFDictionaryPtr dictionary(dictionaryOf(value));
        services.takeCalls();
        const std::unique_ptr<char[]> text(dictionary.getStr(kCFBooleanTrue));
        return text ? text.get() : "null";
    }

    Services& services = Services::get();
};

TEST_F(CFUtilTest, NewHandleIsEmpty) {
    const CFNumberPtr handle;
    EXPECT_EQ(handle.get(), nullptr);
    EXPECT_FALSE(handle);
}

TEST_F(CFUtilTest, HandleReleasesAtItsEnd) {
    const __CFNumber* const one = number(1);
    {
        const CFNumberPtr handle(one);
        EXPECT_EQ(handle.get(), one);
        EXPECT_TRUE(handle);
        EXPECT_EQ(one->refs, 1);
    }
    EXPECT_EQ(one->refs, 0);
}

TEST_F(CFUtilTest, AssignmentReleasesTheOldObject) {
    const __CFNumber* const one = number(1);
    const __CFNumber* const two = number(2);
    CFNumberPtr handle(one);
    handle.assign(two);
    EXPECT_EQ(handle.get(), two);
    EXPECT_EQ(one->refs, 0);
    EXPECT_EQ(two->refs, 1);
}

TEST_F(CFUtilTest, AssignmentOfTheSameObjectReleasesNothing) {
    const __CFNumber* const one = number(1);
    CFNumberPtr handle(one);
    handle.assign(one);
    EXPECT_EQ(one->refs, 1);
}

TEST_F(CFUtilTest, AssignmentOfNullChangesNothing) {
    const __CFNumber* const one = number(1);
    CFNumberPtr handle(one);
    handle.assign(nullptr);
    EXPECT_EQ(handle.get(), one);
    EXPECT_EQ(one->refs, 1);
    CFNumberPtr empty;
    empty.assign(nullptr);
    EXPECT_FALSE(empty);
}

TEST_F(CFUtilTest, ResetReleasesOnce) {
    const __CFNumber* const one = number(1);
    CFNumberPtr handle(one);
    handle.reset();
    handle.reset();
    EXPECT_FALSE(handle);
    EXPECT_EQ(one->refs, 0);
}

TEST_F(CFUtilTest, TextIsReadFromADictionary) {
    EXPECT_EQ(textOf(services.makeString("abc")), "abc");
    EXPECT_EQ(services.takeCalls(),
              std::vector<std::string>(
                  {"CFStringGetCString(string1, 13, 0x08000100)", "CFRelease(dictionary1)"}));
    EXPECT_EQ(textOf(services.makeString("")), "");
}

TEST_F(CFUtilTest, SizeSufficesForTheLongestText) {
    __CFString* const string = services.makeString("\xe2\x82\xac\xe2\x82\xac");
    string->units = 2; // UTF-16 units, not bytes
    EXPECT_EQ(textOf(string), "\xe2\x82\xac\xe2\x82\xac");
    EXPECT_EQ(services.takeCalls()[0], "CFStringGetCString(string1, 9, 0x08000100)");
}

TEST_F(CFUtilTest, AbsentKeyGivesNull) {
    const CFDictionaryPtr dictionary(dictionaryOf(services.makeString("abc")));
    EXPECT_EQ(dictionary.getStr(kCFBooleanFalse), nullptr);
}

TEST_F(CFUtilTest, NumberGivesNull) {
    EXPECT_EQ(textOf(number(1)), "null");
    EXPECT_EQ(services.takeCalls(), std::vector<std::string>({"CFRelease(dictionary1)"}));
}

TEST_F(CFUtilTest, FailedConversionIsNotExamined) {
    __CFString* const string = services.makeString("longer");
    string->units = 1; // so that the text does not fit
    EXPECT_EQ(textOf(string), "");
}

TEST_F(CFUtilTest, LengthThatOverflowsAsksForTheLargestSize) {
    __CFString* const string = services.makeString("abc");
    string->units = std::numeric_limits<CFIndex>::max();
    const CFDictionaryPtr dictionary(dictionaryOf(string));
    const LargestAllocation limit(std::size_t{1} << 20);
    EXPECT_THROW(dictionary.getStr(kCFBooleanTrue), std::bad_alloc);
    EXPECT_EQ(AllocationHook::lastSize, std::numeric_limits<std::size_t>::max());
}

} // namespace
