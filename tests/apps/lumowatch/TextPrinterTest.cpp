#include "lumowatch/TextPrinter.h"

#include "loc/Localize.h"
#include "plat/Configuration.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <vector>

namespace {

using lumowatch::Statistics;
using lumowatch::TextPrinter;

class TextPrinterTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        plat::Configuration::global()->set("Locale", "en_US", 50);
        loc::Localize::inst().init({plat::String(LUMOWATCH_STRINGS)});
    }
    void TearDown() override { plat::Configuration::global()->set("Locale", "en_US", 50); }

    static std::string printed(const std::function<void(TextPrinter&)>& print) {
        char* text = nullptr;
        std::size_t size = 0;
        std::FILE* stream = open_memstream(&text, &size);
        TextPrinter printer(stream);
        print(printer);
        std::fclose(stream);
        const std::string result(text, size);
        std::free(text);
        return result;
    }
};

TEST_F(TextPrinterTest, ChangedAreasStandInOneLine) {
    const std::vector<CGRect> rects{CGRectMake(1, 2, 30, 40), CGRectMake(5, 6, 7, 8)};
    EXPECT_EQ(printed([&](auto& out) { out.changed(1.5, rects); }),
              "    1.500  changed  30x40+1+2, 7x8+5+6\n");
}

TEST_F(TextPrinterTest, ManyAreasAreCounted) {
    const std::vector<CGRect> rects(9, CGRectMake(0, 0, 1, 1));
    EXPECT_EQ(printed([&](auto& out) { out.changed(0, rects); }),
              "    0.000  changed  1x1+0+0, 1x1+0+0, 1x1+0+0, 1x1+0+0 and 5 more\n");
}

TEST_F(TextPrinterTest, MovedAreasSayWhereFrom) {
    const std::vector<CGRect> rects{CGRectMake(1, 2, 30, 40)};
    EXPECT_EQ(printed([&](auto& out) { out.moved(10, 0, 20, rects); }),
              "   10.000  moved    30x40+1+2 from +0,+20\n");
    EXPECT_EQ(printed([&](auto& out) { out.moved(10, -3, 0, rects); }),
              "   10.000  moved    30x40+1+2 from -3,+0\n");
}

TEST_F(TextPrinterTest, GrabNamesBoxAndFile) {
    EXPECT_EQ(printed([](auto& out) { out.grabbed(0.25, {10, 20, 110, 70}, "a.png"); }),
              "    0.250  grabbed  100x50+10+20  a.png\n");
    EXPECT_EQ(printed([](auto& out) { out.grabbed(0.25, {10, 20, 110, 70}, ""); }),
              "    0.250  grabbed  100x50+10+20\n");
}

TEST_F(TextPrinterTest, SummaryHoldsEveryFigure) {
    const Statistics seen{5.04, 12, 11, 123456789012, 3, 10, 0.0625};
    EXPECT_EQ(
        printed([&](auto& out) { out.summary(seen); }),
        "5.0 s: 12 frames, 11 grabs, 123456789012 changed pixels, 3 moved areas, 10 pictures, "
        "0.062 s CPU time\n");
}

TEST_F(TextPrinterTest, OneOfAThingIsSingular) {
    const Statistics seen{1, 1, 1, 1, 1, 1, 0};
    EXPECT_EQ(printed([&](auto& out) { out.summary(seen); }),
              "1.0 s: 1 frame, 1 grab, 1 changed pixel, 1 moved area, 1 picture, "
              "0.000 s CPU time\n");
}

TEST_F(TextPrinterTest, SpeaksTheLanguageOfTheLocale) {
    const Statistics seen{2, 0, 1, 2, 3, 4, 0};
    const auto summary = [&](auto& out) { out.summary(seen); };
    plat::Configuration::global()->set("Locale", "de_DE", 50);
    EXPECT_EQ(printed(summary), "2.0 s: 0 Bilder, 1 Abholung, 2 geänderte Pixel, 3 verschobene "
                                "Flächen, 4 Bilddateien, 0.000 s Prozessorzeit\n");
    plat::Configuration::global()->set("Locale", "fr_FR", 50);
    EXPECT_EQ(printed(summary), "2.0 s : 0 image, 1 capture, 2 pixels modifiés, 3 zones déplacées, "
                                "4 fichiers image, 0.000 s de processeur\n");
}

TEST_F(TextPrinterTest, NotesStandAsTheyAre) {
    EXPECT_EQ(printed([](auto& out) { out.note(3, "gone"); }), "    3.000  gone\n");
}

} // namespace
