#include "plat/TransactedFilePtr.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/OpenedModes.h"
#include "lib1/TempDir.h"
#include "lib1/Thrown.h"
#include "lib1/plat/RecordingLogger.h"

namespace {

namespace fs = std::filesystem;
using plat::TransactedFilePtr;
using testing::ElementsAre;
using testing::IsEmpty;
using Line = RecordingLogger::Line;

RecordingLogger recording("transacted");

// What was asked of the disk, in order.
std::vector<std::string> diskCalls;
int fsyncError = 0; // what fsync() fails with, if not 0

} // namespace

// These stand in front of the C library's, also for the library.
extern "C" __attribute__((visibility("default"))) int fsync(int descriptor) {
    struct stat status = {};
    ::fstat(descriptor, &status);
    diskCalls.emplace_back(S_ISDIR(status.st_mode) ? "sync folder" : "sync file");
    if (fsyncError != 0) {
        errno = std::exchange(fsyncError, fsyncError == EINTR ? 0 : fsyncError);
        return -1;
    }
    return int(::syscall(SYS_fsync, descriptor));
}
extern "C" __attribute__((visibility("default"))) int rename(const char* from,
                                                             const char* to) noexcept {
    diskCalls.emplace_back("rename");
    return ::renameat(AT_FDCWD, from, AT_FDCWD, to);
}

namespace {

Line closeFailure(int err) {
    return {0, "FileStream",
            "fclose(): " + systemErrorText(err) + " (" + std::to_string(err) + ")"};
}

class TransactedFile : public testing::TestWithParam<bool> {
protected:
    TempDir dir;
    std::string path = dir.write("settings.conf", "old");
    std::string temp = path + ".tmp";
};
INSTANTIATE_TEST_SUITE_P(Kinds, TransactedFile, testing::Bool(),
                         [](const auto& row) { return row.param ? "Binary" : "Text"; });

TEST_P(TransactedFile, IsPutInPlaceByCommit) {
    TransactedFilePtr file(path.c_str(), GetParam());
    EXPECT_TRUE(file.isOwned());
    std::fputs("new\n", file.get());
    EXPECT_EQ(TempDir::read(path), "old");
    EXPECT_EQ(TempDir::read(temp), "");
    file.commit();
    EXPECT_EQ(file.get(), nullptr);
    EXPECT_EQ(TempDir::read(path), "new\n");
    EXPECT_FALSE(fs::exists(temp));
}

TEST_P(TransactedFile, IsOpenedForWriting) {
    openedModes.clear();
    const TransactedFilePtr file(path.c_str(), GetParam());
    EXPECT_THAT(openedModes, ElementsAre(GetParam() ? "wb" : "w"));
}

TEST_P(TransactedFile, IsCommittedOnce) {
    {
        TransactedFilePtr file(path.c_str(), GetParam());
        file.commit();
        EXPECT_EQ(TempDir::read(path), "");
        dir.write("settings.conf", "newer");
        dir.write("settings.conf.tmp", "another's");
        file.commit();
    }
    EXPECT_EQ(TempDir::read(path), "newer");
    EXPECT_EQ(TempDir::read(temp), "another's") << "it is no longer ours";
}

TEST_P(TransactedFile, IsDroppedWithoutCommit) {
    {
        const TransactedFilePtr file(path.c_str(), GetParam());
        std::fputs("new", file.get());
    }
    EXPECT_EQ(TempDir::read(path), "old");
    EXPECT_FALSE(fs::exists(temp));
}

TEST_P(TransactedFile, MayBeNew) {
    const std::string fresh = dir / "fresh";
    {
        const TransactedFilePtr file(fresh.c_str(), GetParam());
    }
    EXPECT_FALSE(fs::exists(fresh));
    TransactedFilePtr(fresh.c_str(), GetParam()).commit();
    EXPECT_EQ(TempDir::read(fresh), "");
}

TEST_P(TransactedFile, IsNotBegunWhereItCannotBeOpened) {
    EXPECT_EQ(thrown([&] { TransactedFilePtr((dir / "none/x").c_str(), GetParam()); }),
              systemFailure("fileOpen(" + dir / "none/x.tmp" + ")", ENOENT));
    fs::create_directory(temp);
    EXPECT_EQ(thrown([&] { TransactedFilePtr(path.c_str(), GetParam()); }),
              systemFailure("fileOpen(" + temp + ")", EISDIR));
    EXPECT_TRUE(fs::is_directory(temp));
}

TEST_P(TransactedFile, StaysOpenWhenItsBytesCannotBeWritten) {
    const LogSetting setting("FileStream:transacted:0");
    fs::create_symlink("/dev/full", temp);
    {
        TransactedFilePtr file(path.c_str(), GetParam());
        std::fputs("new", file.get());
        EXPECT_EQ(thrown([&] { file.commit(); }), systemFailure("fflush()", ENOSPC, "Stdlib"));
        EXPECT_NE(file.get(), nullptr);
        EXPECT_EQ(thrown([&] { file.commit(); }), systemFailure("fflush()", EIO, "Stdlib"))
            << "the bytes are lost by now";
        EXPECT_THAT(recording.take(), IsEmpty());
        std::fputs("more", file.get());
    }
    EXPECT_THAT(recording.take(), ElementsAre(closeFailure(ENOSPC)));
    EXPECT_EQ(TempDir::read(path), "old");
    EXPECT_FALSE(fs::is_symlink(temp));
}

TEST_P(TransactedFile, IsClosedBeforeItIsRemoved) {
    const LogSetting setting("FileStream:transacted:0");
    fs::create_symlink("/dev/full", temp);
    bool wasThere = false;
    recording.onWrite = [&] { wasThere = fs::is_symlink(temp); };
    {
        const TransactedFilePtr file(path.c_str(), GetParam());
        std::fputs("new", file.get());
    }
    recording.onWrite = nullptr;
    EXPECT_THAT(recording.take(), ElementsAre(closeFailure(ENOSPC)));
    EXPECT_TRUE(wasThere);
}

TEST_P(TransactedFile, IsClosedAndRemovedWhenItCannotBeRenamed) {
    fs::remove(path);
    fs::create_directory(path);
    {
        TransactedFilePtr file(path.c_str(), GetParam());
        EXPECT_EQ(thrown([&] { file.commit(); }),
                  systemFailure("fileRename(" + temp + "," + path + ")", EISDIR));
        EXPECT_EQ(file.get(), nullptr);
        EXPECT_TRUE(fs::exists(temp));
        EXPECT_EQ(thrown([&] { file.commit(); }), "") << "nothing is open";
    }
    EXPECT_FALSE(fs::exists(temp));
    EXPECT_TRUE(fs::is_directory(path));
}

TEST_P(TransactedFile, IsPutInPlaceWhereOnlyItsCloseFails) {
    const LogSetting setting("FileStream:transacted:0");
    TransactedFilePtr file(path.c_str(), GetParam());
    std::fputs("new", file.get());
    file.flush();
    ::close(::fileno(file.get()));
    file.commit();
    EXPECT_THAT(recording.take(), ElementsAre(closeFailure(EBADF)));
    EXPECT_EQ(TempDir::read(path), "new");
}

TEST_P(TransactedFile, HasASuffixThatCanBeChanged) {
    EXPECT_STREQ(TransactedFilePtr::suffix, ".tmp");
    TransactedFilePtr::suffix = "~%s";
    {
        TransactedFilePtr file(path.c_str(), GetParam());
        TransactedFilePtr::suffix = ".tmp";
        EXPECT_TRUE(fs::exists(path + "~%s"));
        std::fputs("new", file.get());
        file.commit();
    }
    EXPECT_EQ(TempDir::read(path), "new");
}

TEST_P(TransactedFile, IsNamedInTheCurrentFolder) {
    const fs::path before = fs::current_path();
    fs::current_path(dir.str());
    for (const char* const name : {"plain", "-", "./dotted"}) {
        TransactedFilePtr file(name, GetParam());
        EXPECT_TRUE(fs::exists(std::string(name) + ".tmp"));
        std::fputs(name, file.get());
        file.commit();
        EXPECT_EQ(TempDir::read(name), name);
    }
    fs::current_path(before);
}

TEST_P(TransactedFile, IsOnTheDiskBeforeItHasItsName) {
    for (const int err : {0, EINTR}) {
        TransactedFilePtr file(path.c_str(), GetParam());
        std::fputs("new", file.get());
        diskCalls.clear();
        fsyncError = err;
        file.commit();
        if (err == EINTR) {
            EXPECT_THAT(diskCalls, ElementsAre("sync file", "sync file", "rename", "sync folder"));
        } else {
            EXPECT_THAT(diskCalls, ElementsAre("sync file", "rename", "sync folder"));
        }
        EXPECT_EQ(TempDir::read(path), "new");
    }
}

TEST_P(TransactedFile, StaysOpenWhenTheDiskDoesNotTakeIt) {
    for (const int err : {EIO, ENOSPC, EDQUOT}) {
        TransactedFilePtr file(path.c_str(), GetParam());
        std::fputs("new", file.get());
        fsyncError = err;
        EXPECT_EQ(thrown([&] { file.commit(); }), systemFailure("fsync()", err, "Stdlib"));
        EXPECT_NE(file.get(), nullptr);
        EXPECT_EQ(TempDir::read(path), "old");
    }
    fsyncError = 0;
    EXPECT_FALSE(fs::exists(temp));
}

TEST_P(TransactedFile, IsPutInPlaceWhereFilesCannotBeSynced) {
    TransactedFilePtr file(path.c_str(), GetParam());
    std::fputs("new", file.get());
    fsyncError = EINVAL;
    file.commit();
    fsyncError = 0;
    EXPECT_EQ(TempDir::read(path), "new");
}

TEST_P(TransactedFile, NeedsNoFolderThatCanBeRead) {
    fs::create_directory(dir / "writeonly");
    fs::permissions(dir / "writeonly", fs::perms::owner_write | fs::perms::owner_exec);
    TransactedFilePtr file((dir / "writeonly/x").c_str(), GetParam());
    std::fputs("new", file.get());
    file.commit();
    EXPECT_EQ(TempDir::read(dir / "writeonly/x"), "new");
    fs::permissions(dir / "writeonly", fs::perms::owner_all);
}

} // namespace
