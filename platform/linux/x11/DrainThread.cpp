#include "platform/linux/x11/DrainThread.h"

#include "plat/LogWriter.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <system_error>
#include <unistd.h>
#include <utility>

static plat::LogWriter vlog("DrainThread");

namespace platform::x11 {
namespace {

constexpr std::int64_t patienceMicros = 10'000;

/// The signals of the host are for its own threads.
class AllSignalsBlocked {
public:
    AllSignalsBlocked() noexcept {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before);
    }
    AllSignalsBlocked(const AllSignalsBlocked&) = delete;
    AllSignalsBlocked& operator=(const AllSignalsBlocked&) = delete;
    ~AllSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before, nullptr); }

private:
    sigset_t before;
};

} // namespace

DrainThread::DrainThread(int watchedFd, Step drainStep)
    : fd(watchedFd), step(std::move(drainStep)),
      timer(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC)), wake(eventfd(0, EFD_CLOEXEC)) {
    if (timer == -1 || wake == -1) {
        vlog.error("No descriptor is left; a slow host will slow down the programs that draw");
        return;
    }
    const AllSignalsBlocked inherited;
    try {
        thread = std::thread([this] { run(); });
    } catch (const std::system_error& error) {
        vlog.error("No thread is left (%d); a slow host will slow down the programs that draw",
                   error.code().value());
    }
}

DrainThread::~DrainThread() {
    close();
    for (const int descriptor : {timer, wake}) {
        if (descriptor != -1)
            ::close(descriptor);
    }
}

void DrainThread::close() noexcept {
    {
        const std::scoped_lock lock(mutex);
        isClosed = true;
        isAway = false;
    }
    if (!thread.joinable())
        return;
    eventfd_write(wake, 1);
    thread.join();
}

void DrainThread::begin() noexcept {
    if (!thread.joinable())
        return;
    {
        const std::scoped_lock lock(mutex);
        isAway = true;
    }
    setTimer(patienceMicros);
}

bool DrainThread::end() noexcept {
    const std::scoped_lock lock(mutex);
    if (isClosed || !isAway)
        return false;
    isAway = false;
    setTimer(0);
    if (hasDrained)
        eventfd_write(wake, 1);
    return std::exchange(hasDrained, false);
}

void DrainThread::setTimer(std::int64_t micros) noexcept {
    itimerspec time{};
    time.it_value.tv_nsec = micros * 1000;
    timerfd_settime(timer, 0, &time, nullptr);
}

void DrainThread::run() noexcept {
    while (sleepUntilNeeded())
        drain();
}

/// Waits for the timer, which only a long callback lets run out; false: the end.
bool DrainThread::sleepUntilNeeded() noexcept {
    {
        // A drain may have taken the wake-up that was meant for the end.
        const std::scoped_lock lock(mutex);
        if (isClosed)
            return false;
    }
    std::array<pollfd, 2> inputs{pollfd{timer, POLLIN, 0}, pollfd{wake, POLLIN, 0}};
    while (poll(inputs.data(), inputs.size(), -1) < 0) {
    }
    std::uint64_t count = 0;
    if (inputs[1].revents != 0)
        eventfd_read(wake, &count);
    // The caller may have come back in between: its setting of the timer stands.
    const std::scoped_lock lock(mutex);
    if (inputs[0].revents != 0) {
        hasDrained = isAway;
        setTimer(0);
    }
    return !isClosed;
}

void DrainThread::drain() noexcept {
    for (;;) {
        std::optional<std::int64_t> sleepMicros;
        {
            const std::scoped_lock lock(mutex);
            if (!isAway || !hasDrained)
                return;
            sleepMicros = step();
        }
        if (!sleepMicros)
            return;
        std::array<pollfd, 2> inputs{pollfd{fd, POLLIN, 0}, pollfd{wake, POLLIN, 0}};
        const int timeout = *sleepMicros < 0 ? -1 : static_cast<int>((*sleepMicros + 999) / 1000);
        poll(inputs.data(), inputs.size(), timeout);
        if (inputs[1].revents != 0) {
            eventfd_t count = 0;
            eventfd_read(wake, &count);
        }
    }
}

} // namespace platform::x11
