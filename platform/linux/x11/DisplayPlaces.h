#pragma once

#include "platform/linux/graphics/PixelRect.h"
#include "platform/linux/x11/Connection.h"

#include <CoreGraphics/CGDirectDisplay.h>

#include <optional>
#include <vector>

namespace platform::x11 {

/// Which display lies where: what callers ask most often, and one question to the server.
struct DisplayPlace {
    CGDirectDisplayID id = 0;
    PixelRect place; ///< in root coordinates; pixels

    friend bool operator==(const DisplayPlace&, const DisplayPlace&) = default;
};

/// The question for the places of all displays, and its answer; the primary display comes first.
/// Shape: for use in a run loop: ask(), then poll() until it says something; or wait().
/// Threads: those of the connection.
class DisplayPlacesQuery {
public:
    using Answer = std::vector<DisplayPlace>;

    explicit DisplayPlacesQuery(Connection& server) noexcept : connection(server) {}
    DisplayPlacesQuery(const DisplayPlacesQuery&) = delete;
    DisplayPlacesQuery& operator=(const DisplayPlacesQuery&) = delete;
    ~DisplayPlacesQuery();

    /// Sends the question; whoever writes it out is the caller. One at a time.
    void ask();
    bool isAsking() const noexcept { return sequence != 0; }

    /// Never waits. Null while there is no answer, and also when the server refuses one: then
    /// isAsking() is over, with the reason in the log.
    std::optional<Answer> poll();

    /// Asks and waits, a few seconds at most. Null, with the reason in the log, without an answer.
    std::optional<Answer> wait();

private:
    std::optional<Answer> answerOf(const void* reply) const;

    Connection& connection;
    unsigned sequence = 0;
};

} // namespace platform::x11
