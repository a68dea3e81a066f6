#include "lumowatch/EventPrinter.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace {

using lumowatch::EventFormat;
using lumowatch::EventPrinter;
using lumowatch::Statistics;

std::string printed(EventFormat format) {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* stream = open_memstream(&text, &size);
    const auto printer = EventPrinter::make(format, stream);
    const CGRect rect = CGRectMake(0, 0, 1, 1);
    printer->changed(0, {&rect, 1});
    printer->moved(0, 0, 1, {&rect, 1});
    printer->grabbed(0, {0, 0, 1, 1}, "a.png");
    printer->note(0, "gone");
    printer->summary(Statistics());
    std::fclose(stream);
    const std::string result(text, size);
    std::free(text);
    return result;
}

TEST(EventPrinter, EachFormatHasItsPrinter) {
    EXPECT_EQ(printed(EventFormat::Json).substr(0, 2), "{\"");
    EXPECT_EQ(printed(EventFormat::Text).substr(0, 9), "    0.000");
    EXPECT_EQ(printed(EventFormat::None), "");
}

} // namespace
