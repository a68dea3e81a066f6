#pragma once

#include "lumowatch/EventPrinter.h"

namespace lumowatch {

/// Prints events for a person to read, one a line, in the language of the user.
/// Shape: areas as WIDTHxHEIGHT+X+Y.
class TextPrinter final : public EventPrinter {
public:
    explicit TextPrinter(std::FILE* stream) : out(stream) {}

    void changed(double seconds, std::span<const CGRect> rects) override;
    void moved(double seconds, CGFloat dx, CGFloat dy, std::span<const CGRect> rects) override;
    void grabbed(double seconds, const plat::Rect& box, const std::string& file) override;
    void note(double seconds, const std::string& text) override;
    void summary(const Statistics& statistics) override;

private:
    void print(double seconds, const std::string& text);

    std::FILE* out;
};

} // namespace lumowatch
