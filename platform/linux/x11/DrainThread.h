#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

namespace platform::x11 {

/// Takes over a stream's work with its server while the host keeps the stream's thread inside a
/// callback for long: damage that nobody takes would slow down every program that draws. Asleep at
/// all other times; a callback that returns in time costs two timer settings.
/// Threads: begin() and end() on the thread that serves the stream.
class DrainThread {
public:
    /// One step of that work; how long it may then sleep unless the descriptor becomes readable.
    /// Null: nothing is left to do until end(). Units: microseconds; negative: for as long as
    /// nothing comes. Threads: this one's own, only between begin() and end().
    using Step = std::function<std::optional<std::int64_t>()>;

    /// Errors: without a thread or descriptors left in the system it does nothing, which is logged.
    DrainThread(int watchedFd, Step drainStep);
    ~DrainThread();
    DrainThread(const DrainThread&) = delete;
    DrainThread& operator=(const DrainThread&) = delete;

    /// The caller goes away; after a while this thread works in its place.
    void begin() noexcept;

    /// The caller is back, and alone again. Whether this thread worked meanwhile.
    bool end() noexcept;

    /// Ends the thread. To be called before what a step works on goes away; possibly between
    /// begin() and end().
    void close() noexcept;

private:
    void run() noexcept;
    bool sleepUntilNeeded() noexcept;
    void drain() noexcept;
    void setTimer(std::int64_t micros) noexcept;

    const int fd;
    const Step step;
    int timer;
    int wake; ///< becomes readable when a drain has to end
    std::mutex mutex;
    bool isAway = false;
    bool hasDrained = false;
    bool isClosed = false;
    std::thread thread;
};

} // namespace platform::x11
