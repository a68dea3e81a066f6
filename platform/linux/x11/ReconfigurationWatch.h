#pragma once

#include "platform/linux/x11/DisplayPlaces.h"

#include <CoreGraphics/CGDirectDisplay.h>

#include <memory>
#include <mutex>
#include <vector>

namespace platform::x11 {

/// What differs between two answers, in the order in which callers are told.
struct DisplayChange {
    CGDirectDisplayID display = 0;
    CGDisplayChangeSummaryFlags flags = 0;

    friend bool operator==(const DisplayChange&, const DisplayChange&) = default;
};

/// Those that are gone first, then the others in the order of the later answer.
std::vector<DisplayChange> changesBetween(const std::vector<DisplayPlace>& before,
                                          const std::vector<DisplayPlace>& after);

/// Calls back when displays come, go, move or change their size. Has a connection of its own while
/// somebody is registered, served by the default main context; wakes up for nothing else. When the
/// server goes away that is logged, its displays are told to be gone, and nobody is called any more
/// until a new registration finds a server.
/// Threads: registering on any; callbacks come on the thread that runs the default context.
class ReconfigurationWatch {
public:
    static ReconfigurationWatch& instance();

    CGError add(CGDisplayReconfigurationCallBack callback, void* userInfo);
    CGError remove(CGDisplayReconfigurationCallBack callback, void* userInfo);

private:
    struct Registration {
        CGDisplayReconfigurationCallBack callback = nullptr;
        void* userInfo = nullptr;

        friend bool operator==(const Registration&, const Registration&) = default;
    };
    class Session;

    void tell(const std::vector<DisplayChange>& changes);
    bool isRegistered(const Registration& registration);

    std::mutex mutex; ///< not held while a callback runs
    std::vector<Registration> registrations;
    std::shared_ptr<Session> session;
};

} // namespace platform::x11
