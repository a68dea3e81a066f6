#include "plat/Directory.h"

#include <cerrno>
#include <filesystem>
#include <string>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "lib1/OrdinaryUser.h"
#include "lib1/TempDir.h"
#include "lib1/Thrown.h"
#include "plat/Exception.h"

namespace {

namespace fs = std::filesystem;

int chmodError = 0; // what chmod() fails with, if not 0

} // namespace

// This stands in front of the C library's, also for the library.
extern "C" __attribute__((visibility("default"))) int chmod(const char* path,
                                                            mode_t mode) noexcept {
    if (chmodError != 0) {
        errno = chmodError;
        return -1;
    }
    return ::fchmodat(AT_FDCWD, path, mode, 0);
}

namespace {

unsigned modeOf(const std::string& path) {
    struct stat status = {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

int lowestFreeDescriptor() {
    const int descriptor = ::dup(0);
    ::close(descriptor);
    return descriptor;
}

class Directories : public testing::Test {
protected:
    // Beside what is asked for, only the umask counts.
    Directories() : umaskBefore(::umask(022)) {}
    ~Directories() override { ::umask(umaskBefore); }

    TempDir dir;

private:
    mode_t umaskBefore;
};
using MkDir = Directories;
using MkPath = Directories;
using MkDirMatchParent = Directories;
using FileMakePrivate = Directories;
using IsDir = Directories;
using RmDir = Directories;
using ChDir = Directories;

TEST_F(MkDir, CreatesADirectory) {
    const std::string path = dir / "new";
    EXPECT_TRUE(plat::mkDir(path.c_str(), false, false));
    EXPECT_TRUE(fs::is_directory(path));
    EXPECT_EQ(modeOf(path), 0755U);
    ::umask(0);
    EXPECT_TRUE(plat::mkDir((dir / "open").c_str(), false, true));
    EXPECT_EQ(modeOf(dir / "open"), 0777U);
}

TEST_F(MkDir, CreatesAPrivateDirectory) {
    EXPECT_TRUE(plat::mkDir((dir / "a").c_str(), true, false));
    EXPECT_EQ(modeOf(dir / "a"), 0700U);
    EXPECT_TRUE(plat::mkDir((dir / "b").c_str(), true, true));
    EXPECT_EQ(modeOf(dir / "b"), 0700U);
}

TEST_F(MkDir, TellsThatADirectoryExists) {
    const std::string path = dir / "there";
    fs::create_directory(path);
    EXPECT_FALSE(plat::mkDir(path.c_str(), false, false));
    EXPECT_FALSE(plat::mkDir(path.c_str(), true, false));
    EXPECT_FALSE(plat::mkDir(path.c_str(), false, true));
    EXPECT_EQ(modeOf(path), 0755U) << "made private";
    EXPECT_FALSE(plat::mkDir(path.c_str(), true, true));
    EXPECT_EQ(modeOf(path), 0700U);
    EXPECT_FALSE(plat::mkDir("/", false, false));
}

TEST_F(MkDir, TakesALinkToADirectoryForOne) {
    fs::create_directory(dir / "there");
    fs::create_symlink("there", dir / "link");
    EXPECT_FALSE(plat::mkDir((dir / "link").c_str(), true, true));
    EXPECT_EQ(modeOf(dir / "there"), 0700U);
}

TEST_F(MkDir, ThrowsWhereSomethingElseExists) {
    const std::string file = dir.write("file", "");
    EXPECT_EQ(thrown([&] { plat::mkDir(file.c_str(), false, false); }),
              systemFailure("mkDir(" + file + ")", EEXIST));
    EXPECT_EQ(thrown([&] { plat::mkDir(file.c_str(), true, true); }),
              systemFailure("mkDir(" + file + ")", EEXIST));
    fs::create_symlink("nothing", dir / "link");
    EXPECT_EQ(thrown([&] { plat::mkDir((dir / "link").c_str(), false, false); }),
              systemFailure("mkDir(" + dir / "link" + ")", EEXIST));
}

TEST_F(MkDir, ThrowsWhereItCannotBe) {
    dir.write("file", "");
    EXPECT_EQ(thrown([&] { plat::mkDir((dir / "a/b").c_str(), false, false); }),
              systemFailure("mkDir(" + dir / "a/b" + ")", ENOENT));
    EXPECT_EQ(thrown([&] { plat::mkDir((dir / "file/b").c_str(), false, false); }),
              systemFailure("mkDir(" + dir / "file/b" + ")", ENOTDIR));
    EXPECT_EQ(thrown([&] { plat::mkDir("", false, false); }), systemFailure("mkDir()", ENOENT));
}

TEST_F(MkDir, KeepsTheErrorNumberWhereTheTextIsCut) {
    const std::string path = dir / std::string(1000, 'x');
    try {
        plat::mkDir(path.c_str(), false, false);
        ADD_FAILURE() << "nothing thrown";
    } catch (const plat::SystemException& e) {
        EXPECT_EQ(e.err, ENAMETOOLONG);
        EXPECT_EQ(std::string(e.message.get()), ("mkDir(" + path).substr(0, 255));
    }
}

TEST_F(MkPath, CreatesWhatIsMissing) {
    EXPECT_TRUE(plat::mkPath((dir / "a/b/c").c_str(), false, false));
    EXPECT_EQ(modeOf(dir / "a"), 0755U);
    EXPECT_EQ(modeOf(dir / "a/b"), 0755U);
    EXPECT_EQ(modeOf(dir / "a/b/c"), 0755U);
    EXPECT_FALSE(plat::mkPath((dir / "a/b/c").c_str(), false, false));
    EXPECT_TRUE(plat::mkPath((dir / "a/b/d").c_str(), false, false));
}

TEST_F(MkPath, LeavesTheDirectoriesAboveAsTheyAre) {
    fs::create_directory(dir / "a");
    EXPECT_TRUE(plat::mkPath((dir / "a/b/c").c_str(), true, true));
    EXPECT_EQ(modeOf(dir / "a"), 0755U);
    EXPECT_EQ(modeOf(dir / "a/b"), 0700U);
    EXPECT_EQ(modeOf(dir / "a/b/c"), 0700U);
    ::chmod((dir / "a/b").c_str(), 0755);
    ::chmod((dir / "a/b/c").c_str(), 0755);
    EXPECT_FALSE(plat::mkPath((dir / "a/b/c").c_str(), true, false));
    EXPECT_EQ(modeOf(dir / "a/b/c"), 0755U);
    EXPECT_FALSE(plat::mkPath((dir / "a/b/c").c_str(), true, true));
    EXPECT_EQ(modeOf(dir / "a/b/c"), 0700U);
    EXPECT_EQ(modeOf(dir / "a/b"), 0755U);
}

TEST_F(MkPath, LeavesAParentThatExistsAsItIs) {
    // Nothing can be made at the '.' of a directory that is missing, so the parent comes next.
    fs::create_directory(dir / "a");
    const std::string path = dir / "a/b/.";
    EXPECT_EQ(thrown([&] { plat::mkPath(path.c_str(), true, true); }),
              systemFailure("mkDir(" + path + ")", ENOENT));
    EXPECT_EQ(modeOf(dir / "a"), 0755U);
}

TEST_F(MkPath, TellsThatTheParentBringsTheDirectory) {
    // The system goes to "other/n/m", and on to "target/m" as soon as "n" is there.
    fs::create_directories(dir / "other/inner");
    fs::create_directories(dir / "target/m");
    fs::create_symlink("other/inner", dir / "link");
    fs::create_symlink("../n/../target", dir / "other/n");
    EXPECT_FALSE(plat::mkPath((dir / "link/../n/m").c_str(), false, false));
    EXPECT_TRUE(fs::is_empty(dir / "n"));
}

TEST_F(MkPath, CreatesDeepPaths) {
    std::string path = dir.str();
    for (int i = 0; i < 300; ++i)
        path += "/x";
    EXPECT_TRUE(plat::mkPath(path.c_str(), false, false));
    EXPECT_TRUE(fs::is_directory(path));
    EXPECT_FALSE(plat::mkPath((path + "//").c_str(), false, false));
}

TEST_F(MkPath, PassesOtherErrorsOn) {
    const std::string file = dir.write("file", "");
    EXPECT_EQ(thrown([&] { plat::mkPath((file + "/a/b").c_str(), false, false); }),
              systemFailure("mkDir(" + file + "/a/b)", ENOTDIR));
    EXPECT_EQ(thrown([&] { plat::mkPath(file.c_str(), false, false); }),
              systemFailure("mkDir(" + file + ")", EEXIST));
}

TEST_F(MkPath, EndsForThePathOfNothing) {
    EXPECT_EQ(thrown([] { plat::mkPath("", false, false); }), systemFailure("mkDir()", ENOENT));
}

TEST_F(MkPath, TakesTheParentByTheText) {
    // The system looks for "../x" beside what the link leads to; "missing" is what the text gives.
    fs::create_symlink("missing/inner", dir / "link");
    EXPECT_THROW(plat::mkPath((dir / "link/../x/y").c_str(), false, false), plat::SystemException);
    EXPECT_TRUE(fs::is_directory(dir / "x"));
}

TEST_F(MkDirMatchParent, TakesThePermissionsOfTheParent) {
    struct Row {
        unsigned parent, shared, own;
    };
    for (const Row row : {Row{0755, 0755, 0700}, Row{0777, 0755, 0700}, Row{0750, 0750, 0700},
                          Row{01777, 01755, 01700}, Row{0700, 0700, 0700}}) {
        ::chmod(dir.get(), row.parent);
        EXPECT_TRUE(plat::mkDirMatchParent((dir / "shared").c_str(), false));
        EXPECT_EQ(modeOf(dir / "shared"), row.shared);
        EXPECT_TRUE(plat::mkDirMatchParent((dir / "own/").c_str(), true));
        EXPECT_EQ(modeOf(dir / "own"), row.own);
        fs::remove(dir / "shared");
        fs::remove(dir / "own");
    }
}

TEST_F(MkDirMatchParent, TakesTheOwnerOfTheParent) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only the superuser gives files away";
    fs::create_directory(dir / "parent");
    ASSERT_EQ(::chown((dir / "parent").c_str(), 12, 34), 0);
    EXPECT_TRUE(plat::mkDirMatchParent((dir / "parent/new").c_str(), false));
    struct stat status = {};
    ASSERT_EQ(::stat((dir / "parent/new").c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 12U);
    EXPECT_EQ(status.st_gid, 34U);
}

TEST_F(MkDirMatchParent, SaysWhatItCannotDo) {
    ::chmod(dir.get(), 0755);
    fs::create_directory(dir / "parent");
    ::chmod((dir / "parent").c_str(), 0777);
    asOrdinaryUser([&] {
        struct stat status = {};
        ::stat(dir.get(), &status);
        if (status.st_uid == ::geteuid())
            return; // this user owns the parent, so it can do all
        EXPECT_EQ(thrown([&] { plat::mkDirMatchParent((dir / "parent/new").c_str(), false); }),
                  systemFailure("mkDirMatchParent/chown", EPERM));
    });
}

TEST_F(MkDirMatchParent, SaysWhereItCannotTakeThePermissions) {
    chmodError = EROFS;
    EXPECT_EQ(thrown([&] { plat::mkDirMatchParent((dir / "new").c_str(), false); }),
              systemFailure("mkDirMatchParent/chmod", EROFS));
    chmodError = 0;
    EXPECT_EQ(modeOf(dir / "new"), 0700U) << "it was never open to others";
}

TEST_F(MkDirMatchParent, LooksForTheParentByTheText) {
    // The new directory comes to "x", beside what the link leads to; the text says "a/x".
    fs::create_directories(dir / "x");
    fs::create_directories(dir / "target");
    fs::create_directories(dir / "a");
    fs::create_directory_symlink(dir / "target", dir / "a/link");
    EXPECT_EQ(thrown([&] { plat::mkDirMatchParent((dir / "a/link/../x/new").c_str(), false); }),
              systemFailure("mkDirMatchParent/stat", ENOENT));
    EXPECT_EQ(modeOf(dir / "x/new"), 0700U);
}

TEST_F(MkDirMatchParent, ChangesNothingThatExists) {
    fs::create_directory(dir / "there");
    ::chmod((dir / "there").c_str(), 0775);
    EXPECT_FALSE(plat::mkDirMatchParent((dir / "there").c_str(), false));
    EXPECT_FALSE(plat::mkDirMatchParent((dir / "there").c_str(), true));
    EXPECT_EQ(modeOf(dir / "there"), 0775U);
    EXPECT_EQ(thrown([&] { plat::mkDirMatchParent((dir / "a/b").c_str(), true); }),
              systemFailure("mkDir(" + dir / "a/b" + ")", ENOENT));
}

TEST_F(FileMakePrivate, TakesTheOthersPermissions) {
    struct Row {
        unsigned before, after;
    };
    for (const Row row : {Row{0777, 0700}, Row{0644, 0600}, Row{0604, 0600}, Row{0070, 0},
                          Row{0600, 0600}, Row{0500, 0500}, Row{07755, 07700}, Row{01700, 01700}}) {
        const std::string path = dir.write("file", "");
        ::chmod(path.c_str(), row.before);
        plat::fileMakePrivate(path.c_str());
        EXPECT_EQ(modeOf(path), row.after);
        fs::remove(path);
    }
}

TEST_F(FileMakePrivate, TakesTheFileItself) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only the superuser has files of others";
    const std::string path = dir.write("file", "");
    ASSERT_EQ(::chown(path.c_str(), 12, 34), 0);
    ASSERT_EQ(::chmod(path.c_str(), 04755), 0);
    plat::fileMakePrivate(path.c_str());
    struct stat status = {};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 0U);
    EXPECT_EQ(status.st_gid, 34U) << "the group stays";
    EXPECT_EQ(status.st_mode & 07777, 04700U) << "the bits that it had before it changed hands";
}

TEST_F(FileMakePrivate, LeavesWhatIsPrivateAlready) {
    ::chmod(dir.get(), 0777);
    asOrdinaryUser([&] {
        // The system takes the set-user-id bit of a file that is given to anybody, its owner too.
        const std::string path = dir.write("file", "");
        ::chmod(path.c_str(), 04700);
        chmodError = EROFS;
        EXPECT_EQ(thrown([&] { plat::fileMakePrivate(path.c_str()); }), "");
        EXPECT_EQ(modeOf(path), 04700U);
    });
}

TEST_F(FileMakePrivate, SaysWhatItCannotDo) {
    EXPECT_EQ(thrown([&] { plat::fileMakePrivate((dir / "none").c_str()); }),
              systemFailure("fileMakePrivate/stat(" + dir / "none" + ")", ENOENT));
    ::chmod(dir.get(), 0755);
    const std::string path = dir.write("file", "");
    chmodError = EROFS;
    EXPECT_EQ(thrown([&] { plat::fileMakePrivate(path.c_str()); }),
              systemFailure("fileMakePrivate/chmod(" + path + ")", EROFS));
    chmodError = 0;
    asOrdinaryUser([&] {
        struct stat status = {};
        ::stat(path.c_str(), &status);
        if (status.st_uid == ::geteuid())
            return; // this user owns the file, so it can do all
        EXPECT_EQ(thrown([&] { plat::fileMakePrivate(path.c_str()); }),
                  systemFailure("fileMakePrivate/chown(" + path + ")", EPERM));
    });
}

TEST_F(IsDir, FollowsLinks) {
    EXPECT_TRUE(plat::isDir(dir.get()));
    EXPECT_TRUE(plat::isDir("/"));
    EXPECT_FALSE(plat::isDir(dir.write("file", "").c_str()));
    EXPECT_FALSE(plat::isDir((dir / "file/x").c_str()));
    EXPECT_FALSE(plat::isDir((dir / "none").c_str()));
    EXPECT_FALSE(plat::isDir(""));
    fs::create_symlink(".", dir / "link");
    fs::create_symlink("nothing", dir / "broken");
    EXPECT_TRUE(plat::isDir((dir / "link").c_str()));
    EXPECT_FALSE(plat::isDir((dir / "broken").c_str()));
}

TEST_F(RmDir, RemovesAnEmptyDirectory) {
    fs::create_directory(dir / "a");
    fs::create_directory(dir / "b");
    plat::rmDir((dir / "a").c_str(), false);
    EXPECT_TRUE(plat::rmDirNoThrow((dir / "b").c_str(), false));
    EXPECT_TRUE(fs::is_empty(dir.str()));
}

TEST_F(RmDir, TellsWhatItCannotRemove) {
    const std::string full = dir / "full";
    fs::create_directory(full);
    dir.write("full/file", "");
    errno = 0;
    EXPECT_FALSE(plat::rmDirNoThrow(full.c_str(), false));
    EXPECT_EQ(errno, ENOTEMPTY);
    EXPECT_EQ(thrown([&] { plat::rmDir(full.c_str(), false); }),
              systemFailure("rmDir(" + full + ")", ENOTEMPTY));
    for (const bool isRecursive : {false, true}) {
        EXPECT_EQ(thrown([&] { plat::rmDir((dir / "none").c_str(), isRecursive); }),
                  systemFailure("rmDir(" + dir / "none" + ")", ENOENT));
        EXPECT_EQ(thrown([&] { plat::rmDir((dir / "full/file").c_str(), isRecursive); }),
                  systemFailure("rmDir(" + dir / "full/file" + ")", ENOTDIR));
        errno = 0;
        EXPECT_FALSE(plat::rmDirNoThrow((dir / "none").c_str(), isRecursive));
        EXPECT_EQ(errno, ENOENT);
    }
    EXPECT_EQ(TempDir::read(full + "/file"), "");
}

TEST_F(RmDir, RemovesWhatIsInIt) {
    const std::string tree = dir / "tree";
    fs::create_directories(tree + "/a/b/c");
    fs::create_directory(tree + "/empty");
    dir.write("tree/.hidden", "x");
    dir.write("tree/..x", "x");
    dir.write("tree/a/b/file", "x");
    dir.write("tree/\xFF % \n", "x");
    plat::rmDir(tree.c_str(), true);
    EXPECT_FALSE(fs::exists(tree));
}

TEST_F(RmDir, RemovesLinksAndNotWhatTheyLeadTo) {
    fs::create_directory(dir / "kept");
    dir.write("kept/file", "x");
    fs::create_directory(dir / "tree");
    fs::create_directory_symlink(dir / "kept", dir / "tree/link");
    fs::create_symlink("nothing", dir / "tree/broken");
    EXPECT_TRUE(plat::rmDirNoThrow((dir / "tree").c_str(), true));
    EXPECT_FALSE(fs::exists(dir / "tree"));
    EXPECT_EQ(TempDir::read(dir / "kept/file"), "x");
}

TEST_F(RmDir, EmptiesTheDirectoryThatItsPathLeadsTo) {
    fs::create_directory(dir / "emptied");
    dir.write("emptied/file", "x");
    fs::create_directory_symlink("emptied", dir / "link");
    const std::string path = dir / "link";
    EXPECT_FALSE(plat::rmDirNoThrow(path.c_str(), true));
    EXPECT_EQ(errno, ENOTDIR);
    EXPECT_TRUE(fs::is_empty(dir / "emptied"));
    EXPECT_EQ(thrown([&] { plat::rmDir(path.c_str(), true); }),
              systemFailure("rmDir(" + path + ")", ENOTDIR));
    EXPECT_TRUE(fs::is_symlink(path));
}

TEST_F(RmDir, GoesDeep) {
    std::string path = dir / "tree";
    for (int i = 0; i < 300; ++i)
        path += "/x";
    fs::create_directories(path);
    rlimit before = {};
    ::getrlimit(RLIMIT_NOFILE, &before);
    rlimit few = before;
    few.rlim_cur = 50; // fewer than the tree is deep
    ::setrlimit(RLIMIT_NOFILE, &few);
    plat::rmDir((dir / "tree").c_str(), true);
    ::setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_FALSE(fs::exists(dir / "tree"));
}

TEST_F(RmDir, ThrowsForAFileThatItCannotRemove) {
    ::chmod(dir.get(), 0777);
    asOrdinaryUser([&] {
        const std::string tree = dir / "tree";
        fs::create_directories(tree + "/inner");
        dir.write("tree/inner/file", "");
        ::chmod((tree + "/inner").c_str(), 0500);
        const std::string expected = systemFailure("fileRemove(" + tree + "/inner/file)", EACCES);
        EXPECT_EQ(thrown([&] { plat::rmDirNoThrow(tree.c_str(), true); }), expected);
        EXPECT_EQ(thrown([&] { plat::rmDir(tree.c_str(), true); }), expected);
        ::chmod((tree + "/inner").c_str(), 0700);
    });
}

TEST_F(RmDir, LeavesNothingOpenWhenItThrows) {
    ::chmod(dir.get(), 0777);
    asOrdinaryUser([&] {
        const std::string tree = dir / "tree";
        fs::create_directories(tree);
        dir.write("tree/file", "");
        ::chmod(tree.c_str(), 0500);
        const int free = lowestFreeDescriptor();
        EXPECT_THROW(plat::rmDirNoThrow(tree.c_str(), true), plat::SystemException);
        EXPECT_EQ(lowestFreeDescriptor(), free);
        ::chmod(tree.c_str(), 0700);
    });
}

TEST_F(RmDir, SkipsWhatItCannotLookAt) {
    ::chmod(dir.get(), 0777);
    asOrdinaryUser([&] {
        const std::string tree = dir / "tree";
        fs::create_directories(tree + "/inner");
        dir.write("tree/file", "");
        ::chmod(tree.c_str(), 0600); // the names can be read, and nothing else
        errno = 0;
        EXPECT_EQ(thrown([&] { EXPECT_FALSE(plat::rmDirNoThrow(tree.c_str(), true)); }), "");
        EXPECT_EQ(errno, ENOTEMPTY);
        ::chmod(tree.c_str(), 0700);
        EXPECT_TRUE(fs::exists(tree + "/file"));
    });
}

TEST_F(RmDir, IgnoresSubdirectoriesThatItCannotRemove) {
    ::chmod(dir.get(), 0777);
    asOrdinaryUser([&] {
        const std::string tree = dir / "tree";
        fs::create_directories(tree + "/unreadable/inner");
        ::chmod((tree + "/unreadable").c_str(), 0);
        errno = 0;
        EXPECT_FALSE(plat::rmDirNoThrow(tree.c_str(), true));
        EXPECT_EQ(errno, ENOTEMPTY);
        EXPECT_EQ(thrown([&] { plat::rmDir(tree.c_str(), true); }),
                  systemFailure("rmDir(" + tree + ")", ENOTEMPTY));
        fs::create_directory(tree + "/empty");
        ::chmod((tree + "/empty").c_str(), 0);
        EXPECT_TRUE(plat::rmDirNoThrow((tree + "/empty").c_str(), true)) << "it needs no listing";
        ::chmod((tree + "/unreadable").c_str(), 0700);
    });
}

TEST_F(ChDir, GoesThere) {
    const fs::path before = fs::current_path();
    plat::chDir(dir.get());
    EXPECT_EQ(fs::current_path(), fs::canonical(dir.str()));
    EXPECT_TRUE(plat::chDirNoThrow("/"));
    EXPECT_EQ(fs::current_path(), fs::path("/"));
    fs::current_path(before);
}

TEST_F(ChDir, TellsWhereItCannotGo) {
    const fs::path before = fs::current_path();
    const std::string file = dir.write("file", "");
    EXPECT_EQ(thrown([&] { plat::chDir(file.c_str()); }),
              systemFailure("chDir(" + file + ")", ENOTDIR));
    EXPECT_EQ(thrown([] { plat::chDir(""); }), systemFailure("chDir()", ENOENT));
    errno = 0;
    EXPECT_FALSE(plat::chDirNoThrow((dir / "none").c_str()));
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(fs::current_path(), before);
}

} // namespace
