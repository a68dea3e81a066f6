#pragma once

#include "lumowatch/Parameters.h"
#include "lumowatch/Statistics.h"
#include "plat/Rect.h"

#include <CoreGraphics/CGGeometry.h>

#include <cstdio>
#include <memory>
#include <span>
#include <string>

namespace lumowatch {

/// Prints what happens, each event at once.
/// Units: times in seconds since the start; areas in pixels.
class EventPrinter {
public:
    EventPrinter() = default;
    EventPrinter(const EventPrinter&) = delete;
    EventPrinter& operator=(const EventPrinter&) = delete;
    virtual ~EventPrinter() = default;

    /// Ownership: the stream is the caller's, and outlives the printer.
    static std::unique_ptr<EventPrinter> make(EventFormat format, std::FILE* stream);

    virtual void changed(double seconds, std::span<const CGRect> rects) = 0;
    /// (dx, dy) leads from an area back to where its content was.
    virtual void moved(double seconds, CGFloat dx, CGFloat dy, std::span<const CGRect> rects) = 0;
    /// `file` is empty when no picture was written.
    virtual void grabbed(double seconds, const plat::Rect& box, const std::string& file) = 0;
    virtual void note(double seconds, const std::string& text) = 0;
    virtual void summary(const Statistics& statistics) = 0;
};

} // namespace lumowatch
