#include "os/mac/NSUtil.h"

#include <memory>
#include <utility>

#import <Foundation/Foundation.h>
#include <objc/runtime.h>

#include "plat/BadUtf8.h"
#include "plat/Utf8.h"

namespace os {

namespace {

// What a method is to the runtimes; their headers hide it.
struct MethodRecord {
    SEL name;
    const char* types;
    IMP imp;
};

NSString* stringOfBytes(const char* text, int length) {
    if (length < 0)
        return [NSString stringWithUTF8String:text];
    return [[[NSString alloc] initWithBytes:text
                                     length:static_cast<NSUInteger>(length)
                                   encoding:NSUTF8StringEncoding] autorelease];
}

} // namespace

const char* utf8String(NSString* string) {
    return [string UTF8String];
}

NSString* nsString(const char* text, int length) {
    if (text == nullptr)
        return nil;
    if (NSString* string = stringOfBytes(text, length))
        return string;
    const char* const end = length < 0 ? nullptr : text + length;
    const std::unique_ptr<char[]> repaired(plat::sanitizeUtf8(text, end, -1));
    if (NSString* string = [NSString stringWithUTF8String:repaired.get()])
        return string;
    throw plat::BadUtf8("Bad UTF-8 string");
}

const char* nfcString(const char* text) {
    return utf8String([nsString(text, -1) precomposedStringWithCanonicalMapping]);
}

IMP swizzle(Class cls, SEL sel, IMP imp) {
    Method const method = class_getInstanceMethod(cls, sel);
    if (method == nullptr)
        return nullptr;
    return std::exchange(reinterpret_cast<MethodRecord*>(method)->imp, imp);
}

void objcRelease(void* object) {
    [static_cast<id>(object) release];
}

} // namespace os
