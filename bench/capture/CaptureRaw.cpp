// The bare X requests beside ours, in one process and turn about; prints JSON.
//   frame ROUNDS      a whole frame made readable: memcpy, MIT-SHM GetImage, our reader
//   scattered ROUNDS  64 scattered 64x64 rectangles: one request each, pipelined, and our reader
//   latency ROUNDS    from drawing to the damage event and to pixels, in a bare event loop

#include "platform/linux/x11/ComposingReader.h"
#include "platform/linux/x11/DamageWatch.h"

#include <xcb/shm.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <random>
#include <string>

namespace {

using namespace platform;
using namespace platform::x11;
using Clock = std::chrono::steady_clock;

constexpr auto quietTime = std::chrono::milliseconds(25);

double microsOf(const std::function<void()>& work) {
    const auto start = Clock::now();
    work();
    return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

double median(std::vector<double> values) {
    std::ranges::nth_element(values,
                             values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2));
    return values[values.size() / 2];
}

class Bench {
public:
    Bench()
        : connection(Connection::open()), width(connection->screen().width_in_pixels),
          height(connection->screen().height_in_pixels),
          reader(ComposingReader::open(*connection, {width, height, 2, nullptr},
                                       SurfaceMemory::SharedFile)),
          plain(Surface::create(width, height, SurfaceMemory::SharedFile)),
          copy(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4) {
        viewport.visible = PixelRect::ofSize(0, 0, width, height);
        segment = connection->newId();
        attachSegment(*connection, *plain, segment);
    }

    void sync() {
        std::free(xcb_get_input_focus_reply(connection->get(),
                                            xcb_get_input_focus(connection->get()), nullptr));
    }

    void readFrame(std::span<const PixelRect> area) {
        reader->send(reader->frames()[0], viewport, area, 0);
        sync();
    }

    /// As a stream reads what was damaged: the rectangles are in a region of the server.
    void readRegion(xcb_xfixes_region_t region) {
        reader->send(reader->frames()[0], viewport, {}, region);
        std::free(xcb_xfixes_fetch_region_reply(
            connection->get(), xcb_xfixes_fetch_region(connection->get(), region), nullptr));
    }

    unsigned askImage(const PixelRect& rect, std::uint32_t offset) {
        return xcb_shm_get_image(
                   connection->get(), connection->root(), static_cast<std::int16_t>(rect.left),
                   static_cast<std::int16_t>(rect.top), static_cast<std::uint16_t>(rect.width()),
                   static_cast<std::uint16_t>(rect.height()), ~0U, XCB_IMAGE_FORMAT_Z_PIXMAP,
                   segment, offset)
            .sequence;
    }

    void awaitImage(unsigned sequence) {
        std::free(xcb_shm_get_image_reply(connection->get(), {sequence}, nullptr));
    }

    void frame(int rounds) {
        const PixelRect all[] = {viewport.visible};
        std::vector<double> copies;
        std::vector<double> images;
        std::vector<double> ours;
        for (int i = 0; i < rounds + 3; ++i) {
            const double a =
                microsOf([&] { std::memcpy(copy.data(), plain->pixels(), copy.size()); });
            const double b = microsOf([&] { awaitImage(askImage(all[0], 0)); });
            const double c = microsOf([&] { readFrame(all); });
            if (i < 3)
                continue; // pages are touched for the first time
            copies.push_back(a);
            images.push_back(b);
            ours.push_back(c);
        }
        std::printf("{\"memcpy\": %.1f, \"getImage\": %.1f, \"ours\": %.1f}\n", median(copies),
                    median(images), median(ours));
    }

    void scattered(int rounds) {
        std::mt19937 random(5);
        std::vector<PixelRect> rects;
        for (int i = 0; i < 64; ++i)
            rects.push_back(PixelRect::ofSize(
                static_cast<int>(random() % static_cast<unsigned>(width - 64)),
                static_cast<int>(random() % static_cast<unsigned>(height - 64)), 64, 64));
        std::vector<xcb_rectangle_t> corners;
        for (const PixelRect& rect : rects)
            corners.push_back({static_cast<std::int16_t>(rect.left),
                               static_cast<std::int16_t>(rect.top), 64, 64});
        const std::uint32_t region = connection->newId();
        xcb_xfixes_create_region(connection->get(), region,
                                 static_cast<std::uint32_t>(corners.size()), corners.data());
        std::vector<double> pipelined;
        std::vector<double> ours;
        for (int i = 0; i < rounds; ++i) {
            pipelined.push_back(microsOf([&] {
                std::vector<unsigned> asked;
                std::uint32_t offset = 0;
                for (const PixelRect& rect : rects) {
                    asked.push_back(askImage(rect, offset));
                    offset += 64 * 64 * 4;
                }
                for (const unsigned sequence : asked)
                    awaitImage(sequence);
                // Packed as they come, they still have to go to their places.
                for (std::size_t r = 0; r < rects.size(); ++r) {
                    for (std::size_t y = 0; y < 64; ++y)
                        std::memcpy(&copy[((static_cast<std::size_t>(rects[r].top) + y) *
                                               static_cast<std::size_t>(width) +
                                           static_cast<std::size_t>(rects[r].left)) *
                                          4],
                                    plain->pixels() + (r * 64 + y) * 64 * 4, 64 * 4);
                }
            }));
            ours.push_back(microsOf([&] { readRegion(region); }));
        }
        std::printf("{\"pipelined\": %.1f, \"ours\": %.1f}\n", median(pipelined), median(ours));
    }

    void latency(int rounds) {
        const auto drawer = Connection::open();
        const std::uint32_t gc = drawer->newId();
        xcb_create_gc(drawer->get(), gc, drawer->root(), 0, nullptr);
        const auto damage = DamageWatch::open(*connection);
        xcb_flush(connection->get());
        std::vector<double> events;
        std::vector<double> pixels;
        for (int i = 0; i < rounds; ++i) {
            damage->sendTake();
            sync();
            while (const Reply<xcb_generic_event_t> old{xcb_poll_for_event(connection->get())}) {
            }
            // The server goes to sleep meanwhile and this process does not, as in the host.
            for (const auto quiet = Clock::now(); Clock::now() - quiet < quietTime;) {
            }
            const std::uint32_t colour = static_cast<std::uint32_t>(i * 40503) & 0xffffff;
            const xcb_rectangle_t rect{300, 200, 64, 64};
            xcb_change_gc(drawer->get(), gc, XCB_GC_FOREGROUND, &colour);
            xcb_poly_fill_rectangle(drawer->get(), drawer->root(), gc, 1, &rect);
            const auto start = Clock::now();
            xcb_flush(drawer->get());
            const Reply<xcb_generic_event_t> event{xcb_wait_for_event(connection->get())};
            const auto seen = Clock::now();
            awaitImage(askImage({300, 200, 364, 264}, 0));
            const auto read = Clock::now();
            events.push_back(std::chrono::duration<double, std::micro>(seen - start).count());
            pixels.push_back(std::chrono::duration<double, std::micro>(read - start).count());
        }
        std::printf("{\"event\": %.1f, \"pixels\": %.1f}\n", median(events), median(pixels));
    }

private:
    std::unique_ptr<Connection> connection;
    int width;
    int height;
    std::unique_ptr<ComposingReader> reader;
    Ref<Surface> plain;
    std::vector<std::uint8_t> copy;
    Viewport viewport;
    std::uint32_t segment = 0;
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 3)
        return 1;
    Bench bench;
    const std::string what = argv[1];
    const int rounds = std::atoi(argv[2]);
    if (what == "frame")
        bench.frame(rounds);
    else if (what == "scattered")
        bench.scattered(rounds);
    else if (what == "latency")
        bench.latency(rounds);
    else
        return 1;
    return 0;
}
