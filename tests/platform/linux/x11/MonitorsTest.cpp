#include "platform/linux/x11/Monitors.h"

#include "platform/linux/x11/Connection.h"
#include "support/ScreenSetup.h"
#include "support/XServer.h"

#include <gtest/gtest.h>

namespace platform::x11 {
namespace {

using support::ScreenSetup;
using support::XServer;

std::vector<Monitor> monitorsOn(const XServer& server) {
    const auto connection = Connection::open(server.display().c_str());
    if (connection == nullptr)
        return {};
    const auto answer = connection->wait<xcb_randr_get_monitors_reply_t>(
        xcb_randr_get_monitors(connection->get(), connection->root(), 1).sequence, "The monitors");
    return answer != nullptr ? monitorsOf(*answer) : std::vector<Monitor>();
}

TEST(Monitors, AreNamedByTheirOutput) {
    const XServer server({.width = 300, .height = 200});
    const auto monitors = monitorsOn(server);
    ASSERT_EQ(monitors.size(), 1U);
    EXPECT_EQ(monitors[0].id, ScreenSetup(server.display()).firstOutput());
    EXPECT_EQ(monitors[0].output, monitors[0].id);
    EXPECT_EQ(monitors[0].place, (PixelRect{0, 0, 300, 200}));
}

TEST(Monitors, WithoutAnOutputAreNamedByTheirName) {
    const XServer server({.width = 300, .height = 200});
    ScreenSetup setup(server.display());
    setup.setMonitor("Left", 0, 0, 100, 200);
    setup.setMonitor("Right", 100, 10, 200, 150, true, true);
    const auto monitors = monitorsOn(server);
    ASSERT_EQ(monitors.size(), 2U);
    const xcb_atom_t leftName = setup.atomOf("Left");
    const Monitor* left = findMonitor(monitors, nameFlag | leftName);
    ASSERT_NE(left, nullptr);
    EXPECT_EQ(left->name, leftName);
    EXPECT_EQ(left->output, 0U);
    EXPECT_EQ(left->place, (PixelRect{0, 0, 100, 200}));
    EXPECT_FALSE(left->isPrimary);
    const Monitor* right = findMonitor(monitors, setup.firstOutput());
    ASSERT_NE(right, nullptr);
    EXPECT_EQ(right->name, setup.atomOf("Right"));
    EXPECT_EQ(right->place, (PixelRect{100, 10, 300, 160}));
    EXPECT_TRUE(right->isPrimary);
}

TEST(Monitors, AreNoneWhileTheOutputIsOff) {
    const XServer server({.width = 300, .height = 200});
    ScreenSetup(server.display()).turnOutputOff();
    EXPECT_TRUE(monitorsOn(server).empty());
}

Monitor monitor(CGDirectDisplayID id, bool isPrimary) {
    Monitor result;
    result.id = id;
    result.isPrimary = isPrimary;
    return result;
}

struct Search {
    const char* name;
    std::vector<Monitor> monitors;
    CGDirectDisplayID id;
    CGDirectDisplayID found; ///< 0: none
    friend void PrintTo(const Search& row, std::ostream* out) { *out << row.name; }
};

class FindMonitor : public testing::TestWithParam<Search> {};

TEST_P(FindMonitor, FindsTheOneThatIsMeant) {
    const Monitor* found = findMonitor(GetParam().monitors, GetParam().id);
    EXPECT_EQ(found != nullptr ? found->id : 0, GetParam().found);
}

INSTANTIATE_TEST_SUITE_P(
    Lists, FindMonitor,
    testing::Values(Search{"NoneInAnEmptyList", {}, 5, 0}, Search{"NoMainInAnEmptyList", {}, 0, 0},
                    Search{"ByIdentifier", {monitor(4, true), monitor(5, false)}, 5, 5},
                    Search{"NotByAnother", {monitor(4, true), monitor(5, false)}, 6, 0},
                    Search{"PrimaryIsMain", {monitor(4, false), monitor(5, true)}, 0, 5},
                    Search{"FirstIsMainElse", {monitor(4, false), monitor(5, false)}, 0, 4}),
    [](const auto& row) { return row.param.name; });

} // namespace
} // namespace platform::x11
