#include "os/mac/NSUtil.h"

#import <Foundation/Foundation.h>
#include <cstdlib>
#include <objc/runtime.h>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "plat/BadUtf8.h"

// Classes of this test's own. Each test swizzles another one: the runtime keeps what it has found
// once.
@interface Swizzled : NSObject
- (int)number;
@end
@implementation Swizzled
- (int)number {
    return 1;
}
@end
@interface Unused : Swizzled
- (int)number;
@end
@implementation Unused
- (int)number {
    return 5;
}
@end
@interface Inheriting : Swizzled
@end
@implementation Inheriting
@end

// The runtime's tables of classes and selectors are never freed.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libobjc.so\n";
}

// Locks of the two libraries are taken in either order, when they start.
extern "C" const char* __tsan_default_suppressions() {
    return "deadlock:libgnustep-base.so\ndeadlock:libobjc.so\n";
}

static int deallocations = 0;
@interface Counted : NSObject
@end
@implementation Counted
- (void)dealloc {
    ++deallocations;
    [super dealloc];
}
@end

namespace {

using NumberFn = int (*)(id, SEL);

int two(id, SEL) {
    return 2;
}

IMP impOf(NumberFn function) {
    return reinterpret_cast<IMP>(function);
}

int call(IMP imp) {
    return reinterpret_cast<NumberFn>(imp)(nil, nullptr);
}

IMP storedIn(Class cls, SEL sel) {
    return method_getImplementation(class_getInstanceMethod(cls, sel));
}

struct NSUtil : testing::Test {
    NSUtil() : pool([[NSAutoreleasePool alloc] init]) {}
    ~NSUtil() override { [pool release]; }
    NSUtil(const NSUtil&) = delete;
    NSUtil& operator=(const NSUtil&) = delete;

    NSAutoreleasePool* pool;
};

struct TextRow {
    const char* name;
    const char* text;
    int length;
    const char* result;
    friend void PrintTo(const TextRow& row, std::ostream* out) { *out << row.name; }
};

class FoundationString : public NSUtil, public testing::WithParamInterface<TextRow> {};

TEST_P(FoundationString, HasTheText) {
    EXPECT_STREQ(os::utf8String(os::nsString(GetParam().text, GetParam().length)),
                 GetParam().result);
}
INSTANTIATE_TEST_SUITE_P(
    Texts, FoundationString,
    testing::Values(TextRow{"Whole", "abcdef", -1, "abcdef"}, TextRow{"Empty", "", -1, ""},
                    TextRow{"AnyNegativeLength", "abc", -7, "abc"},
                    TextRow{"FirstThree", "abcdef", 3, "abc"}, TextRow{"None", "abcdef", 0, ""},
                    TextRow{"Characters", "\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80", -1,
                            "\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80"},
                    TextRow{"BadByte",
                            "a\xff"
                            "b",
                            -1,
                            "a\xef\xbf\xbd"
                            "b"},
                    TextRow{"BadByteWithLength",
                            "a\xff"
                            "bcd",
                            3,
                            "a\xef\xbf\xbd"
                            "b"},
                    // One replacement for each byte of a character that the length cuts.
                    TextRow{"CutCharacter", "a\xe2\x82\xac", 3, "a\xef\xbf\xbd\xef\xbf\xbd"},
                    TextRow{"Surrogate", "\xed\xa0\x80", -1, "\xef\xbf\xbd"},
                    // A repaired text ends at its first NUL.
                    TextRow{"BadByteBehindANul", "a\0\xff", 3, "a"}),
    [](const auto& row) { return row.param.name; });

TEST_F(NSUtil, NullIsNil) {
    EXPECT_EQ(os::nsString(nullptr, -1), nil);
    EXPECT_EQ(os::nsString(nullptr, 3), nil);
    EXPECT_EQ(os::utf8String(nil), nullptr);
}

TEST_F(NSUtil, LengthKeepsNulBytes) {
    EXPECT_EQ([os::nsString("a\0b", 3) length], 3U);
    EXPECT_EQ([os::nsString("a\0b", -1) length], 1U);
}

TEST_F(NSUtil, StringsAreAutoreleased) {
    NSString* const string = [os::nsString("long enough to be an object of its own", 20) retain];
    [pool release];
    pool = [[NSAutoreleasePool alloc] init];
    EXPECT_EQ([string retainCount], 1U);
    [string release];
}

TEST_F(NSUtil, NormalisationFormCJoinsAccents) {
    EXPECT_STREQ(os::nfcString("e\xcc\x81"), "\xc3\xa9");
    EXPECT_STREQ(os::nfcString("\xc3\xa9"), "\xc3\xa9");
    EXPECT_STREQ(os::nfcString("plain"), "plain");
    EXPECT_STREQ(os::nfcString("e\xcc\x81\xff"), "\xc3\xa9\xef\xbf\xbd");
    EXPECT_EQ(os::nfcString(nullptr), nullptr);
}

TEST_F(NSUtil, TextBeyondRepairIsAnException) {
    // No text is, here: so the system's conversion is made to fail.
    Method const method = class_getClassMethod([NSString class], @selector(stringWithUTF8String:));
    id (*const refuse)(id, SEL, const char*) = [](id, SEL, const char*) -> id { return nil; };
    IMP const original = method_setImplementation(method, reinterpret_cast<IMP>(refuse));
    std::string message = "nothing";
    try {
        os::nsString("text", -1);
    } catch (const plat::BadUtf8& failure) {
        message = failure.message.get();
    }
    method_setImplementation(method, original);
    EXPECT_EQ(message, "Bad UTF-8 string");
    EXPECT_STREQ(os::utf8String(os::nsString("text", -1)), "text");
}

TEST_F(NSUtil, SwizzleReturnsTheImplementationThatWasThere) {
    Class const cls = [Swizzled class];
    IMP const original = storedIn(cls, @selector(number));
    EXPECT_EQ(call(original), 1);
    EXPECT_EQ(os::swizzle(cls, @selector(number), impOf(two)), original);
    EXPECT_EQ(storedIn(cls, @selector(number)), impOf(two));
    EXPECT_EQ(os::swizzle(cls, @selector(number), original), impOf(two));
    EXPECT_EQ(storedIn(cls, @selector(number)), original);
}

// The store goes past what the runtime has cached; a class that was never used has nothing cached.
TEST_F(NSUtil, SwizzledMethodOfAFreshClassRuns) {
    os::swizzle(static_cast<Class>(objc_getClass("Unused")), @selector(number), impOf(two));
    Unused* const object = [[[Unused alloc] init] autorelease];
    EXPECT_EQ([object number], 2);
}

TEST_F(NSUtil, SwizzleOfAnInheritedMethodReachesTheSuperclass) {
    IMP const original = os::swizzle([Inheriting class], @selector(number), impOf(two));
    EXPECT_EQ(storedIn([Swizzled class], @selector(number)), impOf(two));
    os::swizzle([Inheriting class], @selector(number), original);
}

TEST_F(NSUtil, SwizzleOfAMissingMethodChangesNothing) {
    unsigned before = 0;
    std::free(class_copyMethodList([Swizzled class], &before));
    EXPECT_EQ(os::swizzle([Swizzled class], @selector(noSuchMethod), impOf(two)), nullptr);
    unsigned after = 0;
    std::free(class_copyMethodList([Swizzled class], &after));
    EXPECT_EQ(after, before);
    EXPECT_EQ(class_getInstanceMethod([Swizzled class], @selector(noSuchMethod)), nullptr);
}

TEST_F(NSUtil, ObjcReleaseGivesOneReferenceBack) {
    deallocations = 0;
    Counted* const object = [[Counted alloc] init];
    [object retain];
    os::objcRelease(object);
    EXPECT_EQ(deallocations, 0);
    os::objcRelease(object);
    EXPECT_EQ(deallocations, 1);
    os::objcRelease(nullptr);
}

} // namespace
