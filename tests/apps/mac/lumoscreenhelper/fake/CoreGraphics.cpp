#include <algorithm>
#include <cstdio>

#include <Block.h>

#include "apps/mac/lumoscreenhelper/fake/Services.h"

using fake::nameOf;
using fake::Services;

namespace {

const __CFString showCursor("ShowCursor", "ShowCursor");
const __CFString queueDepth("QueueDepth", "QueueDepth");
const __CFString minimumFrameTime("MinimumFrameTime", "MinimumFrameTime");

template <typename... Args>
std::string format(const char* form, Args... args) {
    char text[256];
    std::snprintf(text, sizeof(text), form, args...);
    return text;
}

std::string size(std::size_t width, std::size_t height, std::int32_t pixelFormat) {
    return format("%zux%zu, 0x%08x", width, height, unsigned(pixelFormat));
}

CGDisplayStream* makeStream(CGDisplayStreamFrameAvailableHandler handler) {
    Services& services = Services::get();
    if (!services.givesStreams)
        return nullptr;
    auto* const stream = services.make<CGDisplayStream>("stream");
    stream->handler = Block_copy(handler);
    services.streams.push_back(stream);
    return stream;
}

const char* kindOf(CGDisplayStreamUpdateRectType type) {
    if (type == kCGDisplayStreamUpdateDirtyRects)
        return "dirty";
    return type == kCGDisplayStreamUpdateMovedRects ? "moved" : "other";
}

CGDisplayStreamUpdateRef mergeAll(CGDisplayStreamUpdateRef first, CGDisplayStreamUpdateRef second) {
    auto* const merged = Services::get().makeUpdate({});
    merged->dirty = first->dirty;
    merged->dirty.insert(merged->dirty.end(), second->dirty.begin(), second->dirty.end());
    merged->moved = first->moved;
    merged->moved.insert(merged->moved.end(), second->moved.begin(), second->moved.end());
    merged->dx = second->dx;
    merged->dy = second->dy;
    return merged;
}

} // namespace

const CFStringRef kCGDisplayStreamShowCursor = &showCursor;
const CFStringRef kCGDisplayStreamQueueDepth = &queueDepth;
const CFStringRef kCGDisplayStreamMinimumFrameTime = &minimumFrameTime;

CGRect CGDisplayBounds(CGDirectDisplayID display) {
    Services::get().record([&] { return format("CGDisplayBounds(%u)", display); });
    return Services::get().bounds;
}

CGImageRef CGDisplayCreateImageForRect(CGDirectDisplayID display, CGRect area) {
    Services& services = Services::get();
    CGImage* image = nullptr;
    if (services.givesImages) {
        image = services.make<CGImage>("image");
        image->width = services.imageWidth;
    }
    services.record([&] {
        return format("CGDisplayCreateImageForRect(%u, %g %g %gx%g) = ", display,
                      double(area.origin.x), double(area.origin.y), double(area.size.width),
                      double(area.size.height)) +
               nameOf(image);
    });
    return image;
}

std::size_t CGImageGetWidth(CGImageRef image) {
    Services::get().record([&] { return "CGImageGetWidth(" + nameOf(image) + ")"; });
    return image->width;
}

CGDataProviderRef CGImageGetDataProvider(CGImageRef image) {
    Services::get().record([&] { return "CGImageGetDataProvider(" + nameOf(image) + ")"; });
    return image == nullptr ? nullptr : image->provider;
}

CFDataRef CGDataProviderCopyData(CGDataProviderRef provider) {
    __CFData* data = nullptr;
    if (provider != nullptr) {
        data = Services::get().make<__CFData>("data");
        data->bytes = provider->bytes;
    }
    Services::get().record(
        [&] { return "CGDataProviderCopyData(" + nameOf(provider) + ") = " + nameOf(data); });
    return data;
}

void CGImageRelease(CGImageRef image) {
    Services::get().record([&] { return "CGImageRelease(" + nameOf(image) + ")"; });
    if (image == nullptr)
        return;
    if (image->refs < 1)
        Services::get().addError("CGImageRelease(" + image->name + "): gone");
    --image->refs;
}

CGRect CGRectUnion(CGRect a, CGRect b) {
    Services::get().record([] { return "CGRectUnion()"; });
    const CGFloat left = std::min(a.origin.x, b.origin.x);
    const CGFloat top = std::min(a.origin.y, b.origin.y);
    const CGFloat right = std::max(a.origin.x + a.size.width, b.origin.x + b.size.width);
    const CGFloat bottom = std::max(a.origin.y + a.size.height, b.origin.y + b.size.height);
    return CGRectMake(left, top, right - left, bottom - top);
}

CGDisplayStreamRef CGDisplayStreamCreate(CGDirectDisplayID display, std::size_t outputWidth,
                                         std::size_t outputHeight, std::int32_t pixelFormat,
                                         CFDictionaryRef properties,
                                         CGDisplayStreamFrameAvailableHandler handler) {
    CGDisplayStream* const stream = makeStream(handler);
    if (stream != nullptr && Services::get().givesRunLoopSources)
        stream->source = Services::get().make<__CFRunLoopSource>("source");
    Services::get().record([&] {
        return format("CGDisplayStreamCreate(%u, ", display) +
               size(outputWidth, outputHeight, pixelFormat) + ", " + nameOf(properties) +
               ") = " + nameOf(stream);
    });
    return stream;
}

CGDisplayStreamRef
CGDisplayStreamCreateWithDispatchQueue(CGDirectDisplayID display, std::size_t outputWidth,
                                       std::size_t outputHeight, std::int32_t pixelFormat,
                                       CFDictionaryRef properties, dispatch_queue_t queue,
                                       CGDisplayStreamFrameAvailableHandler handler) {
    CGDisplayStream* const stream = makeStream(handler);
    Services::get().record([&] {
        return format("CGDisplayStreamCreateWithDispatchQueue(%u, ", display) +
               size(outputWidth, outputHeight, pixelFormat) + ", " + nameOf(properties) + ", " +
               static_cast<fake::Queue*>(queue)->name + ") = " + nameOf(stream);
    });
    return stream;
}

CFRunLoopSourceRef CGDisplayStreamGetRunLoopSource(CGDisplayStreamRef stream) {
    Services::get().record(
        [&] { return "CGDisplayStreamGetRunLoopSource(" + nameOf(stream) + ")"; });
    return stream == nullptr ? nullptr : stream->source;
}

CGError CGDisplayStreamStart(CGDisplayStreamRef stream) {
    Services::get().record([&] { return "CGDisplayStreamStart(" + nameOf(stream) + ")"; });
    return Services::get().startError;
}

CGError CGDisplayStreamStop(CGDisplayStreamRef stream) {
    Services::get().record([&] { return "CGDisplayStreamStop(" + nameOf(stream) + ")"; });
    return Services::get().stopError;
}

const CGRect* CGDisplayStreamUpdateGetRects(CGDisplayStreamUpdateRef update,
                                            CGDisplayStreamUpdateRectType type,
                                            std::size_t* rectCount) {
    Services::get().record([&] {
        return "CGDisplayStreamUpdateGetRects(" + nameOf(update) + ", " + kindOf(type) + ")";
    });
    if (update == nullptr)
        return nullptr;
    if (update->refs < 1)
        Services::get().addError("CGDisplayStreamUpdateGetRects(" + update->name + "): gone");
    const auto& rects = type == kCGDisplayStreamUpdateDirtyRects ? update->dirty : update->moved;
    *rectCount = rects.size();
    return rects.data();
}

CGDisplayStreamUpdateRef CGDisplayStreamUpdateCreateMergedUpdate(CGDisplayStreamUpdateRef first,
                                                                 CGDisplayStreamUpdateRef second) {
    Services& services = Services::get();
    const CGDisplayStreamUpdateRef merged =
        services.merge ? services.merge(first, second) : mergeAll(first, second);
    services.record([&] {
        return "CGDisplayStreamUpdateCreateMergedUpdate(" + nameOf(first) + ", " + nameOf(second) +
               ") = " + nameOf(merged);
    });
    return merged;
}

void CGDisplayStreamUpdateGetMovedRectsDelta(CGDisplayStreamUpdateRef update, CGFloat* dx,
                                             CGFloat* dy) {
    Services::get().record(
        [&] { return "CGDisplayStreamUpdateGetMovedRectsDelta(" + nameOf(update) + ")"; });
    *dx = update->dx;
    *dy = update->dy;
}
