#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CoreGraphics.h>
#include <IOSurface/IOSurfaceRef.h>
#include <dispatch/dispatch.h>

// What stands behind the pointers that the fake services hand out. Tests may look into all of it.

namespace fake {

enum Type : std::uint8_t {
    BooleanType = 1,
    DataType,
    DictionaryType,
    ImageType,
    NumberType,
    ProviderType,
    RunLoopType,
    SourceType,
    StreamType,
    StringType,
    SurfaceType,
    UpdateType
};

/// What all objects have. One whose references are all given back stays findable, so that its
/// further use is an error that a test sees.
struct Object {
    Object(Type objectType, std::string objectName)
        : type(objectType), name(std::move(objectName)) {}
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    virtual ~Object() = default;

    const Type type;
    const std::string name; ///< as calls are recorded: "surface1"
    mutable std::atomic<int> refs{1};
};

} // namespace fake

struct __CFBoolean : fake::Object {
    __CFBoolean(bool truth, std::string name)
        : Object(fake::BooleanType, std::move(name)), value(truth) {}
    const bool value;
};

struct __CFString : fake::Object {
    __CFString(std::string utf8, std::string name)
        : Object(fake::StringType, std::move(name)), text(std::move(utf8)),
          units(CFIndex(text.size())) {}
    const std::string text;
    CFIndex units; ///< what the length is said to be
};

struct __CFNumber : fake::Object {
    __CFNumber(CFNumberType as, double number, std::string name)
        : Object(fake::NumberType, std::move(name)), numberType(as), value(number) {}
    const CFNumberType numberType;
    const double value;
};

struct __CFData : fake::Object {
    explicit __CFData(std::string name) : Object(fake::DataType, std::move(name)) {}
    std::vector<std::uint8_t> bytes;
};

struct __CFDictionary : fake::Object {
    explicit __CFDictionary(std::string name) : Object(fake::DictionaryType, std::move(name)) {}
    std::map<const void*, const void*> entries;
};

struct __CFRunLoop : fake::Object {
    explicit __CFRunLoop(std::string name) : Object(fake::RunLoopType, std::move(name)) {}
    std::multiset<CFRunLoopSourceRef> sources;
};

struct __CFRunLoopSource : fake::Object {
    explicit __CFRunLoopSource(std::string name) : Object(fake::SourceType, std::move(name)) {}
};

struct __IOSurface : fake::Object {
    explicit __IOSurface(std::string name) : Object(fake::SurfaceType, std::move(name)) {}
    void* base = nullptr;
    std::size_t stride = 0;
    int useCount = 0;
    int readLocks = 0;
};

struct CGDisplayStreamUpdate : fake::Object {
    explicit CGDisplayStreamUpdate(std::string name) : Object(fake::UpdateType, std::move(name)) {}
    std::vector<CGRect> dirty;
    std::vector<CGRect> moved;
    CGFloat dx = 0;
    CGFloat dy = 0;
};

struct CGDisplayStream : fake::Object {
    explicit CGDisplayStream(std::string name) : Object(fake::StreamType, std::move(name)) {}
    CGDisplayStream(const CGDisplayStream&) = delete;
    CGDisplayStream& operator=(const CGDisplayStream&) = delete;
    ~CGDisplayStream() override;

    CGDisplayStreamFrameAvailableHandler handler = nullptr; ///< a copy
    CFRunLoopSourceRef source = nullptr;
};

struct CGDataProvider : fake::Object {
    explicit CGDataProvider(std::string name) : Object(fake::ProviderType, std::move(name)) {}
    std::vector<std::uint8_t> bytes;
};

struct CGImage : fake::Object {
    explicit CGImage(std::string name) : Object(fake::ImageType, std::move(name)) {}
    std::size_t width = 0;
    CGDataProviderRef provider = nullptr;
};

namespace fake {

/// A queue; nothing dispatched to it runs by itself.
struct Queue : dispatch_queue_s {
    std::string name;
    std::string label;
    int refs = 1;
};

} // namespace fake
