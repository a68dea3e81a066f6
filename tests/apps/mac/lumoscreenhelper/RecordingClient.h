#pragma once

#include <cstdio>
#include <functional>
#include <string>

#include "apps/mac/lumoscreenhelper/fake/Services.h"
#include "svr/mac/DisplayStreamClient.h"

/// A client that writes what it is told among the calls of the fake services, and then does what
/// the test says.
class RecordingClient : public svr::DisplayStreamClient {
public:
    std::function<void()> onGrabbed;
    std::function<void()> onChanged;
    std::function<void()> onMoved;

    const void* pixels = nullptr; ///< as told last

    void hostOperation() override {
        fake::Services::get().record([] { return "client.hostOperation()"; });
    }

    void pixelsGrabbed(const void* newPixels, plat::Rect box, int bytesPerPixel,
                       int strideBytes) override {
        pixels = newPixels;
        fake::Services::get().record([&] {
            char text[128];
            std::snprintf(text, sizeof(text), "client.pixelsGrabbed(%d %d %d %d, %d, %d)", box.left,
                          box.top, box.right, box.bottom, bytesPerPixel, strideBytes);
            return std::string(text);
        });
        if (onGrabbed)
            onGrabbed();
    }

    void rectsChanged(int count, const CGRect* rects) override {
        fake::Services::get().record([&] {
            return "client.rectsChanged(" + std::to_string(count) + ", " +
                   fake::Services::get().nameOfRects(rects) + ")";
        });
        if (onChanged)
            onChanged();
    }

    void rectsMoved(CGFloat dx, CGFloat dy, int count, const CGRect* rects) override {
        fake::Services::get().record([&] {
            char text[64];
            std::snprintf(text, sizeof(text), "client.rectsMoved(%g, %g, ", double(dx), double(dy));
            return text + std::to_string(count) + ", " + fake::Services::get().nameOfRects(rects) +
                   ")";
        });
        if (onMoved)
            onMoved();
    }
};
