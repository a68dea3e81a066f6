#pragma once

#include "lumowatch/EventPrinter.h"

namespace lumowatch {

/// Prints events for a program to read: one JSON object (RFC 8259) a line, in ASCII.
///
/// Shape: each has "event" and "seconds". "changed": "rects". "moved": "rects", "dx", "dy".
/// "grab": "box", and "file" if a picture was written. "note": "text". "summary": the figures. An
/// area is [x, y, width, height].
class JsonPrinter final : public EventPrinter {
public:
    explicit JsonPrinter(std::FILE* stream) : out(stream) {}

    void changed(double seconds, std::span<const CGRect> rects) override;
    void moved(double seconds, CGFloat dx, CGFloat dy, std::span<const CGRect> rects) override;
    void grabbed(double seconds, const plat::Rect& box, const std::string& file) override;
    void note(double seconds, const std::string& text) override;
    void summary(const Statistics& statistics) override;

private:
    std::FILE* out;
};

} // namespace lumowatch
