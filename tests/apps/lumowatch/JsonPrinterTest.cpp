#include "lumowatch/JsonPrinter.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdio>
#include <functional>
#include <vector>

namespace {

using lumowatch::JsonPrinter;
using lumowatch::Statistics;
using Json = nlohmann::json;

std::string printed(const std::function<void(JsonPrinter&)>& print) {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* stream = open_memstream(&text, &size);
    JsonPrinter printer(stream);
    print(printer);
    std::fclose(stream);
    const std::string result(text, size);
    std::free(text);
    return result;
}

/// What a reader makes of the one line that is printed.
Json read(const std::function<void(JsonPrinter&)>& print) {
    const std::string line = printed(print);
    EXPECT_EQ(line.find('\n'), line.size() - 1) << line;
    return Json::parse(line);
}

const std::vector<CGRect> twoRects{CGRectMake(1, 2, 30, 40), CGRectMake(0.5, 6, 7, 8)};

TEST(JsonPrinter, ChangedAreas) {
    EXPECT_EQ(read([](auto& out) { out.changed(1.5, twoRects); }),
              (Json{{"event", "changed"},
                    {"seconds", 1.5},
                    {"rects", {{1, 2, 30, 40}, {0.5, 6, 7, 8}}}}));
}

TEST(JsonPrinter, NoAreasAreAnEmptyList) {
    EXPECT_EQ(read([](auto& out) { out.changed(0, {}); })["rects"], Json::array());
}

TEST(JsonPrinter, MovedAreas) {
    EXPECT_EQ(read([](auto& out) { out.moved(0.0625, -3, 20, twoRects); }),
              (Json{{"event", "moved"},
                    {"seconds", 0.063},
                    {"rects", {{1, 2, 30, 40}, {0.5, 6, 7, 8}}},
                    {"dx", -3},
                    {"dy", 20}}));
}

TEST(JsonPrinter, GrabWithAndWithoutAFile) {
    EXPECT_EQ(read([](auto& out) { out.grabbed(2, {10, 20, 110, 70}, ""); }),
              (Json{{"event", "grab"}, {"seconds", 2}, {"box", {10, 20, 100, 50}}}));
    EXPECT_EQ(read([](auto& out) { out.grabbed(2, {0, 0, 1, 1}, "a.png"); })["file"], "a.png");
}

TEST(JsonPrinter, AnyTextIsQuotedInAscii) {
    for (const char* text : {"a\"b\\c", "tab\tline\n", "caf\xc3\xa9", "\xf0\x9f\x98\x80"}) {
        const std::string line = printed([&](auto& out) { out.note(0, text); });
        EXPECT_TRUE(std::ranges::all_of(line, [](unsigned char c) { return c < 0x80; })) << line;
        EXPECT_EQ(Json::parse(line)["text"], text);
    }
    EXPECT_EQ(read([](auto& out) { out.note(0, "bad\xff"); })["text"], "bad\xef\xbf\xbd");
}

TEST(JsonPrinter, SummaryHoldsEveryFigure) {
    const Statistics seen{5.04, 12, 11, 123456789012, 3, 10, 0.0625};
    EXPECT_EQ(read([&](auto& out) { out.summary(seen); }), (Json{{"event", "summary"},
                                                                 {"seconds", 5.04},
                                                                 {"frames", 12},
                                                                 {"grabs", 11},
                                                                 {"changedPixels", 123456789012},
                                                                 {"movedAreas", 3},
                                                                 {"pictures", 10},
                                                                 {"cpuSeconds", 0.0625}}));
}

} // namespace
