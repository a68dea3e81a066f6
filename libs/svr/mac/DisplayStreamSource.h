#pragma once

namespace svr {

class DisplayStreamClient;

/// Watches one display. Made by NewDisplayStream(); the host owns it and deletes it, which stops
/// it. Threads: start() and stop() on one thread, whose run loop delivers the frames; neither they
/// nor the deletion while frames may still arrive on another. grab() from any thread.
class DisplayStreamSource {
public:
    DisplayStreamSource() = default;
    DisplayStreamSource(const DisplayStreamSource&) = delete;
    DisplayStreamSource& operator=(const DisplayStreamSource&) = delete;
    virtual ~DisplayStreamSource() = default;

    /// Hands the client the box of all changes since the grab before; without any, does nothing.
    virtual void grab() = 0;

    /// Begins to watch. False if the display cannot be watched at all; true also when the system
    /// then refuses to send frames, which is logged.
    /// Errors: throws plat::DynamicFnLoadFailed where the system cannot take pictures.
    virtual bool start() = 0;

    /// Ends watching; does nothing on a source that was not started. Always true.
    virtual bool stop() = 0;
};

} // namespace svr

/// Makes a source for one display, not started yet.
/// Ownership: the caller deletes it; the client must outlive it.
extern "C" __attribute__((visibility("default"))) svr::DisplayStreamSource*
NewDisplayStream(svr::DisplayStreamClient* client, unsigned display);
