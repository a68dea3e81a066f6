#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "apps/mac/lumoscreenhelper/fake/Objects.h"

namespace fake {

/// A semaphore that can be looked at.
struct Semaphore : dispatch_semaphore_s {
    std::string name;
    std::mutex mutex;
    std::condition_variable raised;
    std::intptr_t count = 0;
    int waiters = 0;
};

/// The display services, scripted: they do what a test says, keep count of every object, and write
/// down every call. Nothing happens by itself: a test delivers frames and runs the main queue.
/// Threads: the functions that the engine calls, from any; the rest, only while no other thread
/// does.
class Services {
public:
    static Services& get();

    /// Forgets everything: objects, answers, calls.
    void reset();

    // What the services answer.
    CGRect bounds = CGRectMake(0, 0, 1920, 1080);
    std::size_t imageWidth = 1;
    bool givesImages = true;
    bool givesStreams = true;
    bool givesRunLoopSources = true;
    bool givesDictionaries = true;
    CGError startError = 0;
    CGError stopError = 0;
    /// What a merge gives: by default a new update with the rectangles of both.
    std::function<CGDisplayStreamUpdateRef(CGDisplayStreamUpdateRef, CGDisplayStreamUpdateRef)>
        merge;

    /// The run loop of the calling thread; the main one unless set otherwise.
    static void setCurrentRunLoop(CFRunLoopRef loop) noexcept;
    static CFRunLoopRef currentRunLoop() noexcept;
    __CFRunLoop mainLoop{"main loop"};
    __CFRunLoop otherLoop{"other loop"};

    // What was called, one line each: "CFRetain(surface1)".
    bool recording = true; ///< switched off, nothing is allocated to record
    bool tracing = false;  ///< also to standard error, for tests of a process that ends
    template <typename Line>
    void record(const Line& line) {
        if (recording)
            addCall(line());
    }
    std::vector<std::string> takeCalls();
    /// The misuses seen: a release too many, an unlock without a lock.
    std::vector<std::string> errors;
    void addError(const std::string& error);

    /// The arrays of the last dictionary made, all four elements of them.
    const void** lastKeys = nullptr;
    const void** lastValues = nullptr;

    // Objects. Those made here belong to the test, with one reference.
    template <typename T>
    T* make(const char* kind) {
        return add(std::make_unique<T>(nextName(kind)));
    }
    __CFString* makeString(const char* text);
    __CFNumber* makeNumber(CFNumberType type, double value);
    __IOSurface* makeSurface();
    CGDisplayStreamUpdate* makeUpdate(std::initializer_list<CGRect> dirty,
                                      std::initializer_list<CGRect> moved = {}, CGFloat dx = 0,
                                      CGFloat dy = 0);
    Semaphore* makeSemaphore(std::intptr_t count);
    Queue* makeQueue(const char* label);

    /// The streams, semaphores and queues made so far.
    std::vector<CGDisplayStream*> streams;
    std::deque<Semaphore> semaphores;
    std::deque<Queue> queues;
    Queue mainQueue;

    /// The names of all objects that have references, and how many: "update1 x2".
    std::vector<std::string> alive() const;

    /// Calls the handler of the newest stream, as the service does: surface and update are
    /// borrowed.
    void deliver(CGDisplayStreamFrameStatus status, IOSurfaceRef surface,
                 CGDisplayStreamUpdateRef update);
    /// Delivers a complete frame.
    void deliver(IOSurfaceRef surface, CGDisplayStreamUpdateRef update) {
        deliver(kCGDisplayStreamFrameStatusFrameComplete, surface, update);
    }

    /// Runs what was dispatched to the main queue. Errors: passes on what a block throws; that
    /// block is done with.
    void runMainQueue();
    std::size_t pendingBlocks();
    void addBlock(dispatch_block_t block);

    std::string nextName(const char* kind);
    /// Which update's rectangles these are: "update1.dirty".
    std::string nameOfRects(const CGRect* rects);

private:
    Services() = default;

    void addCall(std::string line);

    template <typename T>
    T* add(std::unique_ptr<T> object) {
        T* const added = object.get();
        const std::lock_guard guard(mutex);
        objects.push_back(std::move(object));
        return added;
    }

    std::recursive_mutex mutex;
    std::vector<std::unique_ptr<Object>> objects;
    std::map<std::string, int> numbers;
    std::vector<std::string> calls;
    std::vector<dispatch_block_t> blocks;
};

/// The name of an object, "null" for null.
std::string nameOf(const Object* object);

} // namespace fake
