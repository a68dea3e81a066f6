#include "plat/CurrentDirectory.h"

#include <cerrno>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "lib1/TempDir.h"
#include "lib1/Thrown.h"

namespace {

using plat::CurrentDirectory;

// Goes to a folder for the length of a scope.
struct InDirectory {
    explicit InDirectory(const std::string& path) { std::filesystem::current_path(path); }
    ~InDirectory() { std::filesystem::current_path(before); }
    std::filesystem::path before = std::filesystem::current_path();
};

TEST(CurrentDirectory, IsWhereItWasAtConstruction) {
    const TempDir dir;
    const CurrentDirectory before;
    EXPECT_EQ(std::filesystem::path(before.get()), std::filesystem::current_path());
    const InDirectory in(dir.str());
    const CurrentDirectory now;
    EXPECT_EQ(std::filesystem::path(now.get()), std::filesystem::canonical(dir.str()));
    EXPECT_STRNE(before.get(), now.get());
}

TEST(CurrentDirectory, MayBeLong) {
    const TempDir dir;
    for (const int wanted : {1022, 1023, 1024, 1025, 2047, 2048, 2049, 3500}) {
        std::string path = std::filesystem::canonical(dir.str()).string();
        while (int(path.size()) + 202 < wanted)
            path += '/' + std::string(200, 'x');
        path += '/' + std::string(std::size_t(wanted - int(path.size()) - 1), 'y');
        std::filesystem::create_directories(path);
        const InDirectory in(path);
        EXPECT_EQ(CurrentDirectory().get(), path);
    }
}

TEST(CurrentDirectory, ThrowsWhereItIsGone) {
    const TempDir dir;
    const std::string path = dir / "gone";
    std::filesystem::create_directory(path);
    const InDirectory in(path);
    std::filesystem::remove(path);
    EXPECT_EQ(thrown([] { CurrentDirectory(); }), systemFailure("getcwd", ENOENT));
}

} // namespace
