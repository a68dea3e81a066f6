#pragma once

#include "lumowatch/Statistics.h"
#include "plat/Rect.h"

#include <CoreGraphics/CGGeometry.h>

#include <cstdio>
#include <span>
#include <string>

namespace lumowatch {

/// Prints events for a person to read, one a line, each at once.
/// Units: times in seconds since the start; areas as WIDTHxHEIGHT+X+Y in pixels.
class EventPrinter {
public:
    explicit EventPrinter(std::FILE* stream) : out(stream) {}

    void changed(double seconds, std::span<const CGRect> rects) const;
    void moved(double seconds, CGFloat dx, CGFloat dy, std::span<const CGRect> rects) const;
    void grabbed(double seconds, const plat::Rect& box, const std::string& file) const;
    void note(double seconds, const char* text) const;
    void summary(const Statistics& statistics) const;

private:
    std::FILE* out;
};

} // namespace lumowatch
