#pragma once

#include <objc/objc.h>

#ifdef __OBJC__ // the two languages declare a class of objects in two ways
@class NSString;
#else
class NSString;
#endif

namespace os {

/// The text of a string in UTF-8, null for nil. Ownership: the string's.
const char* utf8String(NSString* string);

/// A string with the text of `length` bytes, or up to the NUL if `length` is negative; nil for
/// null. Text that is not valid UTF-8 is repaired first, and then ends at its first NUL in any
/// case. Ownership: autoreleased. Errors: throws plat::BadUtf8 for text beyond repair.
NSString* nsString(const char* text, int length);

/// The text in Unicode normalisation form C: letters with accents as one character where there is
/// one. Null for null. Ownership: that of an autoreleased string. Errors: as for nsString().
const char* nfcString(const char* text);

/// Puts another function in the place of an instance method and returns the one that was there;
/// null, and nothing changes, if the class has no such method. The method is written to directly:
/// what the runtime has cached of it stays as it is.
IMP swizzle(Class cls, SEL sel, IMP imp);

/// Gives one reference to an object back, for code that cannot send messages.
void objcRelease(void* object);

} // namespace os
