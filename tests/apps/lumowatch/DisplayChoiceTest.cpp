#include "lumowatch/DisplayChoice.h"

#include "loc/Localize.h"
#include "plat/Configuration.h"
#include "support/ScreenSetup.h"
#include "support/XServer.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <string>

namespace {

using lumowatch::chooseDisplay;
using support::ScreenSetup;
using support::XServer;

/// What the list prints; "none" before it when it says that there is no display.
std::string listed() {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* stream = open_memstream(&text, &size);
    const bool isAny = lumowatch::listDisplays(stream);
    std::fclose(stream);
    const std::string result(text, size);
    std::free(text);
    return (isAny ? "" : "none") + result;
}

/// One line of the list.
std::string line(CGDirectDisplayID display, const std::string& rest) {
    std::array<char, 16> number{};
    std::snprintf(number.data(), number.size(), "%10u", display);
    return number.data() + ("  " + rest + "\n");
}

class DisplayChoice : public testing::Test {
protected:
    DisplayChoice() {
        setenv("DISPLAY", server.display().c_str(), 1);
        plat::Configuration::global()->set("Locale", "en_US", 50);
        loc::Localize::inst().init({plat::String(LUMOWATCH_STRINGS)});
    }
    ~DisplayChoice() override { unsetenv("DISPLAY"); }

    const XServer server{{.width = 300, .height = 200}};
    ScreenSetup setup{server.display()};
};

TEST_F(DisplayChoice, ZeroIsTheMainDisplay) {
    EXPECT_EQ(chooseDisplay(0), setup.firstOutput());
}

TEST_F(DisplayChoice, IdentifierIsItsDisplay) {
    EXPECT_EQ(chooseDisplay(static_cast<int>(setup.firstOutput())), setup.firstOutput());
}

TEST_F(DisplayChoice, UnknownIdentifierIsNone) {
    EXPECT_EQ(chooseDisplay(123456789), kCGNullDirectDisplay);
    EXPECT_EQ(chooseDisplay(-1), kCGNullDirectDisplay);
}

TEST_F(DisplayChoice, ListsEachWithTheMainOneMarked) {
    setup.setMonitor("Left", 0, 0, 100, 200);
    setup.setMonitor("Right", 100, 20, 200, 150, true, true);
    const CGDirectDisplayID left = 0x80000000U | setup.atomOf("Left");
    EXPECT_EQ(listed(),
              line(setup.firstOutput(), "200x150+100+20  main") + line(left, "100x200+0+0"));
}

TEST_F(DisplayChoice, IsNoneWhileTheOutputIsOff) {
    const int display = static_cast<int>(setup.firstOutput());
    setup.turnOutputOff();
    EXPECT_EQ(chooseDisplay(0), kCGNullDirectDisplay);
    EXPECT_EQ(chooseDisplay(display), kCGNullDirectDisplay);
    EXPECT_EQ(listed(), "none");
}

TEST(DisplayChoiceWithoutAServer, IsNone) {
    unsetenv("DISPLAY");
    EXPECT_EQ(chooseDisplay(0), kCGNullDirectDisplay);
    EXPECT_EQ(chooseDisplay(1), kCGNullDirectDisplay);
    EXPECT_EQ(listed(), "none");
}

} // namespace
