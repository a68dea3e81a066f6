#include "lumowatch/CaptureLibrary.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace lumowatch {
namespace {

class CaptureLibraryTest : public testing::Test {
protected:
    ~CaptureLibraryTest() override { unsetenv("LUMO_LIBRARY"); }

    bool loads(const char* path) {
        setenv("LUMO_LIBRARY", path, 1);
        return library.load(&error);
    }

    CaptureLibrary library;
    std::string error;
};

class Client final : public svr::DisplayStreamClient {
public:
    void pixelsGrabbed(const void*, plat::Rect, int, int) override {}
    void rectsChanged(int, const CGRect*) override {}
    void rectsMoved(CGFloat, CGFloat, int, const CGRect*) override {}
};

TEST_F(CaptureLibraryTest, LoadsTheLibraryThatTheEnvironmentNames) {
    ASSERT_TRUE(loads(LUMO_SCREEN_HELPER)) << error;
    EXPECT_TRUE(error.empty());
    Client client;
    EXPECT_NE(library.newSource(&client, 0), nullptr); // no display is needed before the start
}

TEST_F(CaptureLibraryTest, SaysInTheSystemsWordsWhyThereIsNone) {
    EXPECT_FALSE(loads("/nowhere/library.so"));
    EXPECT_NE(error.find("/nowhere/library.so: cannot open shared object file"), std::string::npos)
        << error;
}

TEST_F(CaptureLibraryTest, SaysThatALibraryIsAnotherOne) {
    EXPECT_FALSE(loads("libm.so.6"));
    EXPECT_EQ(error, "libm.so.6 has no function NewDisplayStream");
}

TEST_F(CaptureLibraryTest, LooksBesideTheProgramWithoutTheVariable) {
    const std::string beside =
        std::filesystem::read_symlink("/proc/self/exe").parent_path() / "lumoscreenhelper.so";
    for (const bool isEmpty : {true, false}) {
        error.clear();
        if (isEmpty)
            setenv("LUMO_LIBRARY", "", 1);
        else
            unsetenv("LUMO_LIBRARY");
        EXPECT_FALSE(library.load(&error));
        EXPECT_NE(error.find(beside), std::string::npos) << error;
    }
}

} // namespace
} // namespace lumowatch
