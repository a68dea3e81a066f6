#pragma once

#include <string>
#include <vector>

namespace support {

/// Collects what writers log while it lives; afterwards all are silent again. One at a time.
/// Threads: lines may come on any; make and end it while no other thread logs.
class LogCapture {
public:
    /// The writers whose name matches the pattern, up to this level.
    explicit LogCapture(const std::string& writerPattern = "*", int level = 30);
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;
    ~LogCapture();

    /// Each as "writer: text", the oldest first.
    std::vector<std::string> lines() const;

    /// Whether some line has this in it.
    bool has(const std::string& text) const;
};

} // namespace support
