#include "lumowatch/EventPrinter.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <vector>

namespace {

using lumowatch::EventPrinter;
using lumowatch::Statistics;

std::string printed(const std::function<void(const EventPrinter&)>& print) {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* stream = open_memstream(&text, &size);
    print(EventPrinter(stream));
    std::fclose(stream);
    const std::string result(text, size);
    std::free(text);
    return result;
}

TEST(EventPrinter, ChangedAreasStandInOneLine) {
    const std::vector<CGRect> rects{CGRectMake(1, 2, 30, 40), CGRectMake(5, 6, 7, 8)};
    EXPECT_EQ(printed([&](const auto& out) { out.changed(1.5, rects); }),
              "    1.500  changed  30x40+1+2, 7x8+5+6\n");
}

TEST(EventPrinter, ManyAreasAreCounted) {
    const std::vector<CGRect> rects(9, CGRectMake(0, 0, 1, 1));
    EXPECT_EQ(printed([&](const auto& out) { out.changed(0, rects); }),
              "    0.000  changed  1x1+0+0, 1x1+0+0, 1x1+0+0, 1x1+0+0 and 5 more\n");
}

TEST(EventPrinter, MovedAreasSayWhereFrom) {
    const std::vector<CGRect> rects{CGRectMake(1, 2, 30, 40)};
    EXPECT_EQ(printed([&](const auto& out) { out.moved(10, 0, 20, rects); }),
              "   10.000  moved    30x40+1+2 from +0,+20\n");
    EXPECT_EQ(printed([&](const auto& out) { out.moved(10, -3, 0, rects); }),
              "   10.000  moved    30x40+1+2 from -3,+0\n");
}

TEST(EventPrinter, GrabNamesBoxAndFile) {
    EXPECT_EQ(printed([](const auto& out) { out.grabbed(0.25, {10, 20, 110, 70}, "a.png"); }),
              "    0.250  grabbed  100x50+10+20  a.png\n");
    EXPECT_EQ(printed([](const auto& out) { out.grabbed(0.25, {10, 20, 110, 70}, ""); }),
              "    0.250  grabbed  100x50+10+20\n");
}

TEST(EventPrinter, SummaryHoldsEveryFigure) {
    const Statistics seen{5.04, 12, 11, 123456789012, 3, 10, 0.0625};
    EXPECT_EQ(
        printed([&](const auto& out) { out.summary(seen); }),
        "5.0 s: 12 frames, 11 grabs, 123456789012 changed pixels, 3 moved areas, 10 pictures, "
        "0.062 s CPU time\n");
}

} // namespace
