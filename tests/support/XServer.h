#pragma once

#include "support/Picture.h"

#include <string>
#include <sys/types.h>
#include <vector>

namespace support {

struct XServerOptions {
    int width = 640;
    int height = 480;
    int depth = 24;
    /// Names as Xvfb's -extension takes them: "DAMAGE", "MIT-SHM", "XFIXES", "RENDER", "RANDR" ...
    std::vector<std::string> withoutExtensions = {};
    /// Further arguments, as they stand.
    std::vector<std::string> arguments = {};
};

/// A real X server (Xvfb) of this test's own, on a display number that was free. Its frame buffer
/// lies in a file, so that a test can look at the very pixels that the server shows.
/// Errors: the constructor throws std::runtime_error when the server does not come up.
/// Threads: the server dies with the thread that started it, so let that be the main one.
class XServer {
public:
    explicit XServer(const XServerOptions& options = {});
    XServer(const XServer&) = delete;
    XServer& operator=(const XServer&) = delete;
    ~XServer();

    /// The name to connect to, such as ":7".
    const std::string& display() const noexcept { return displayName; }
    pid_t pid() const noexcept { return process; }
    bool isRunning() const noexcept { return process > 0; }

    /// Stops the process so that it answers nothing (SIGSTOP), and lets it go on.
    void pause();
    void resume();

    /// Ends the process, politely (SIGTERM) or not (SIGKILL), and waits until it is gone.
    void terminate();
    void kill();

    /// Everything that the server shows now, or showed when it ended, opaque, in the size that it
    /// started with: it is up to date with each request that was served.
    Picture frameBuffer() const;

private:
    void start(const XServerOptions& options);
    void end(int signal);
    void removeFolder() const;
    void removeTraces() const;
    std::string log() const;

    pid_t process = -1;
    std::string displayName;
    std::string folder;
    int frameFile = -1;
};

} // namespace support
