#include <cstring>

#include "apps/mac/lumoscreenhelper/fake/Services.h"

using fake::nameOf;
using fake::Object;
using fake::Services;

namespace {

const __CFBoolean trueObject(true, "true");
const __CFBoolean falseObject(false, "false");
const __CFString commonModes("common modes", "common modes");
const __CFString defaultMode("default mode", "default mode");

const Object* objectOf(CFTypeRef ref) {
    return static_cast<const Object*>(ref);
}

void checkAlive(const char* call, const Object* object) {
    if (object->refs < 1)
        Services::get().addError(std::string(call) + "(" + object->name + "): gone");
}

} // namespace

const CFAllocatorRef kCFAllocatorDefault = nullptr;
const CFBooleanRef kCFBooleanTrue = &trueObject;
const CFBooleanRef kCFBooleanFalse = &falseObject;
const CFRunLoopMode kCFRunLoopCommonModes = &commonModes;
const CFRunLoopMode kCFRunLoopDefaultMode = &defaultMode;

CFTypeRef CFRetain(CFTypeRef ref) {
    const Object* const object = objectOf(ref);
    Services::get().record([&] { return "CFRetain(" + object->name + ")"; });
    checkAlive("CFRetain", object);
    ++object->refs;
    return ref;
}

void CFRelease(CFTypeRef ref) {
    const Object* const object = objectOf(ref);
    Services::get().record([&] { return "CFRelease(" + object->name + ")"; });
    checkAlive("CFRelease", object);
    --object->refs;
}

CFTypeID CFGetTypeID(CFTypeRef ref) {
    return objectOf(ref)->type;
}

CFTypeID CFStringGetTypeID() {
    return fake::StringType;
}

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef allocator, const void** keys, const void** values,
                                   CFIndex count, const CFDictionaryKeyCallBacks* keyCallBacks,
                                   const CFDictionaryValueCallBacks* valueCallBacks) {
    Services& services = Services::get();
    __CFDictionary* const dictionary =
        services.givesDictionaries ? services.make<__CFDictionary>("dictionary") : nullptr;
    std::string entries;
    for (CFIndex i = 0; i < count; ++i) {
        entries += ", " + objectOf(keys[i])->name + " = " + objectOf(values[i])->name;
        if (dictionary != nullptr)
            dictionary->entries.emplace(keys[i], values[i]);
    }
    services.lastKeys = keys;
    services.lastValues = values;
    services.record([&] {
        return std::string("CFDictionaryCreate(") +
               (allocator == kCFAllocatorDefault ? "default" : "other") + entries + ", " +
               (keyCallBacks == nullptr && valueCallBacks == nullptr ? "no callbacks"
                                                                     : "callbacks") +
               ") = " + nameOf(dictionary);
    });
    return dictionary;
}

const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key) {
    const auto found = dictionary->entries.find(key);
    return found == dictionary->entries.end() ? nullptr : found->second;
}

CFNumberRef CFNumberCreate(CFAllocatorRef allocator, CFNumberType type, const void* value) {
    double number = 0;
    if (type == kCFNumberIntType) {
        int stored = 0;
        std::memcpy(&stored, value, sizeof(stored));
        number = stored;
    } else if (type == kCFNumberFloatType) {
        float stored = 0;
        std::memcpy(&stored, value, sizeof(stored));
        number = double{stored};
    } else {
        Services::get().addError("CFNumberCreate: unexpected type");
    }
    __CFNumber* const made = Services::get().makeNumber(type, number);
    Services::get().record([&] {
        char text[64];
        std::snprintf(text, sizeof(text), "%.9g", number);
        return std::string("CFNumberCreate(") +
               (allocator == kCFAllocatorDefault ? "default" : "other") +
               (type == kCFNumberIntType ? ", int " : ", float ") + text + ") = " + made->name;
    });
    return made;
}

CFIndex CFStringGetLength(CFStringRef string) {
    return string->units;
}

Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex bufferSize,
                           CFStringEncoding encoding) {
    Services::get().record([&] {
        char text[64];
        std::snprintf(text, sizeof(text), ", %ld, 0x%08x)", long(bufferSize), unsigned(encoding));
        return "CFStringGetCString(" + string->name + text;
    });
    if (CFIndex(string->text.size()) >= bufferSize)
        return 0;
    std::memcpy(buffer, string->text.c_str(), string->text.size() + 1);
    return 1;
}

CFRunLoopRef CFRunLoopGetCurrent() {
    Services::get().record([] { return "CFRunLoopGetCurrent()"; });
    return Services::currentRunLoop();
}

CFRunLoopRef CFRunLoopGetMain() {
    Services::get().record([] { return "CFRunLoopGetMain()"; });
    return &Services::get().mainLoop;
}

void CFRunLoopAddSource(CFRunLoopRef loop, CFRunLoopSourceRef source, CFRunLoopMode mode) {
    Services::get().record([&] {
        return "CFRunLoopAddSource(" + loop->name + ", " + nameOf(source) + ", " + mode->name + ")";
    });
    loop->sources.insert(source);
}

void CFRunLoopRemoveSource(CFRunLoopRef loop, CFRunLoopSourceRef source, CFRunLoopMode mode) {
    Services::get().record([&] {
        return "CFRunLoopRemoveSource(" + loop->name + ", " + nameOf(source) + ", " + mode->name +
               ")";
    });
    loop->sources.erase(source);
}
