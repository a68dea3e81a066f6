#include "apps/mac/lumoscreenhelper/fake/Services.h"

#include <cstdio>
#include <utility>

#include <Block.h>

CGDisplayStream::~CGDisplayStream() {
    if (handler != nullptr)
        Block_release(handler);
}

namespace fake {

namespace {

thread_local CFRunLoopRef threadLoop = nullptr;

} // namespace

Services& Services::get() {
    static Services services;
    return services;
}

void Services::reset() {
    while (pendingBlocks() > 0) {
        Block_release(blocks.back());
        blocks.pop_back();
    }
    streams.clear();
    objects.clear();
    semaphores.clear();
    queues.clear();
    mainQueue.name = "main queue";
    mainLoop.sources.clear();
    otherLoop.sources.clear();
    numbers.clear();
    calls.clear();
    errors.clear();
    bounds = CGRectMake(0, 0, 1920, 1080);
    imageWidth = 1;
    givesImages = givesStreams = givesRunLoopSources = givesDictionaries = true;
    startError = stopError = 0;
    merge = nullptr;
    recording = true;
    tracing = false;
    lastKeys = lastValues = nullptr;
    threadLoop = nullptr;
}

void Services::setCurrentRunLoop(CFRunLoopRef loop) noexcept {
    threadLoop = loop;
}

CFRunLoopRef Services::currentRunLoop() noexcept {
    return threadLoop == nullptr ? &get().mainLoop : threadLoop;
}

void Services::addCall(std::string line) {
    const std::lock_guard guard(mutex);
    calls.push_back(std::move(line));
    if (tracing)
        std::fprintf(stderr, "%s\n", calls.back().c_str());
}

std::vector<std::string> Services::takeCalls() {
    const std::lock_guard guard(mutex);
    return std::exchange(calls, {});
}

void Services::addError(const std::string& error) {
    const std::lock_guard guard(mutex);
    errors.push_back(error);
}

std::string Services::nextName(const char* kind) {
    const std::lock_guard guard(mutex);
    return kind + std::to_string(++numbers[kind]);
}

std::string Services::nameOfRects(const CGRect* rects) {
    const std::lock_guard guard(mutex);
    for (const auto& object : objects) {
        const auto* const update = dynamic_cast<const CGDisplayStreamUpdate*>(object.get());
        if (update != nullptr && rects == update->dirty.data())
            return update->name + ".dirty";
        if (update != nullptr && rects == update->moved.data())
            return update->name + ".moved";
    }
    return "other rects";
}

__CFString* Services::makeString(const char* text) {
    return add(std::make_unique<__CFString>(text, nextName("string")));
}

__CFNumber* Services::makeNumber(CFNumberType type, double value) {
    return add(std::make_unique<__CFNumber>(type, value, nextName("number")));
}

__IOSurface* Services::makeSurface() {
    auto* const surface = make<__IOSurface>("surface");
    surface->base = &surface->useCount; // any place of its own
    surface->stride = 7680;
    return surface;
}

CGDisplayStreamUpdate* Services::makeUpdate(std::initializer_list<CGRect> dirty,
                                            std::initializer_list<CGRect> moved, CGFloat dx,
                                            CGFloat dy) {
    auto* const update = make<CGDisplayStreamUpdate>("update");
    update->dirty = dirty;
    update->moved = moved;
    update->dx = dx;
    update->dy = dy;
    return update;
}

Semaphore* Services::makeSemaphore(std::intptr_t count) {
    const std::lock_guard guard(mutex);
    Semaphore& semaphore = semaphores.emplace_back();
    semaphore.name = nextName("semaphore");
    semaphore.count = count;
    return &semaphore;
}

Queue* Services::makeQueue(const char* label) {
    const std::lock_guard guard(mutex);
    Queue& queue = queues.emplace_back();
    queue.name = nextName("queue");
    queue.label = label;
    return &queue;
}

std::vector<std::string> Services::alive() const {
    std::vector<std::string> names;
    for (const auto& object : objects) {
        if (object->refs == 1)
            names.push_back(object->name);
        else if (object->refs > 1)
            names.push_back(object->name + " x" + std::to_string(object->refs));
    }
    for (const Queue& queue : queues) {
        if (queue.refs > 0)
            names.push_back(queue.name);
    }
    return names;
}

void Services::deliver(CGDisplayStreamFrameStatus status, IOSurfaceRef surface,
                       CGDisplayStreamUpdateRef update) {
    const CGDisplayStreamFrameAvailableHandler handler = streams.back()->handler;
    handler(status, 0, surface, update);
}

void Services::runMainQueue() {
    for (;;) {
        dispatch_block_t block = nullptr;
        {
            const std::lock_guard guard(mutex);
            if (blocks.empty())
                return;
            block = blocks.front();
            blocks.erase(blocks.begin());
        }
        const std::unique_ptr<void, void (*)(void*)> owned(
            reinterpret_cast<void*>(block), [](void* done) { _Block_release(done); });
        block();
    }
}

std::size_t Services::pendingBlocks() {
    const std::lock_guard guard(mutex);
    return blocks.size();
}

void Services::addBlock(dispatch_block_t block) {
    const std::lock_guard guard(mutex);
    blocks.push_back(Block_copy(block));
}

std::string nameOf(const Object* object) {
    return object == nullptr ? "null" : object->name;
}

} // namespace fake
