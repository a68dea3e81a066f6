#include "plat/File.h"

#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/TempDir.h"
#include "lib1/Thrown.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

// What the next calls fail with, the last one first.
std::vector<int> truncateErrors;
std::vector<int> lockErrors;

std::vector<int> lockCommands; // what was asked for

bool failsWith(std::vector<int>* errors) {
    if (errors->empty())
        return false;
    errno = errors->back();
    errors->pop_back();
    return true;
}

template <typename Function>
Function* behind(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

} // namespace

// These stand in front of the C library's, for the library, which is built for large files.
extern "C" __attribute__((visibility("default"))) int ftruncate64(int descriptor,
                                                                  off64_t length) noexcept {
    static auto* const next = behind<int(int, off64_t)>("ftruncate64");
    return failsWith(&truncateErrors) ? -1 : next(descriptor, length);
}
extern "C" __attribute__((visibility("default"))) int fcntl64(int descriptor, int command, ...) {
    static auto* const next = behind<int(int, int, ...)>("fcntl64");
    va_list args;
    va_start(args, command);
    void* const arg = va_arg(args, void*);
    va_end(args);
    if (command == F_SETLK64 || command == F_SETLKW64) {
        lockCommands.push_back(command);
        if (failsWith(&lockErrors))
            return -1;
    }
    return next(descriptor, command, arg);
}

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

// A file that is not: one end of a pipe.
File pipeEnd() {
    int ends[2] = {};
    if (::pipe(ends) != 0)
        return nullptr;
    ::close(ends[1]);
    return File(::fdopen(ends[0], "r"));
}

TEST(FileExists, FollowsLinks) {
    const TempDir dir;
    const std::string file = dir.write("file", "");
    fs::create_symlink("file", dir / "link");
    fs::create_symlink("nothing", dir / "broken");
    for (const std::string& there : {file, dir.str(), dir / "link"}) {
        EXPECT_TRUE(plat::fileExists(there.c_str()));
        EXPECT_TRUE(plat::fileExistsNoThrow(there.c_str()));
    }
    for (const std::string& missing :
         {dir / "none", dir / "none/x", dir / "broken", std::string()}) {
        EXPECT_FALSE(plat::fileExists(missing.c_str()));
        errno = 0;
        EXPECT_FALSE(plat::fileExistsNoThrow(missing.c_str()));
        EXPECT_EQ(errno, ENOENT);
    }
}

TEST(FileExists, ThrowsWhereItCannotTell) {
    const TempDir dir;
    const std::string file = dir.write("notes.txt", "");
    fs::create_symlink("loop", dir / "loop");
    EXPECT_EQ(thrown([&] { plat::fileExists((file + "/x").c_str()); }),
              systemFailure("fileExists(" + file + "/x)", ENOTDIR));
    EXPECT_EQ(thrown([&] { plat::fileExists((dir / "loop").c_str()); }),
              systemFailure("fileExists(" + dir / "loop" + ")", ELOOP));
    errno = 0;
    EXPECT_FALSE(plat::fileExistsNoThrow((file + "/x").c_str()));
    EXPECT_EQ(errno, ENOTDIR);
}

TEST(FileRemove, RemovesFilesAndEmptyDirectories) {
    const TempDir dir;
    dir.write("a", "");
    dir.write("b", "");
    fs::create_directory(dir / "c");
    plat::fileRemove((dir / "a").c_str());
    EXPECT_TRUE(plat::fileRemoveNoThrow((dir / "b").c_str()));
    plat::fileRemove((dir / "c").c_str());
    EXPECT_TRUE(fs::is_empty(dir.str()));
}

TEST(FileRemove, TellsWhatItCannotRemove) {
    const TempDir dir;
    EXPECT_EQ(thrown([&] { plat::fileRemove((dir / "a").c_str()); }),
              systemFailure("fileRemove(" + dir / "a" + ")", ENOENT));
    errno = 0;
    EXPECT_FALSE(plat::fileRemoveNoThrow((dir / "a").c_str()));
    EXPECT_EQ(errno, ENOENT);
}

TEST(FileRename, ReplacesWhatIsThere) {
    const TempDir dir;
    const std::string a = dir.write("a", "new");
    const std::string b = dir.write("b", "old");
    plat::fileRename(a.c_str(), b.c_str());
    EXPECT_EQ(TempDir::read(b), "new");
    EXPECT_TRUE(plat::fileRenameNoThrow(b.c_str(), a.c_str()));
    EXPECT_EQ(TempDir::read(a), "new");
    EXPECT_FALSE(fs::exists(b));
}

TEST(FileRename, TellsBothNames) {
    const TempDir dir;
    const std::string a = dir / "a";
    const std::string b = dir / "b";
    EXPECT_EQ(thrown([&] { plat::fileRename(a.c_str(), b.c_str()); }),
              systemFailure("fileRename(" + a + "," + b + ")", ENOENT));
    errno = 0;
    EXPECT_FALSE(plat::fileRenameNoThrow(a.c_str(), b.c_str()));
    EXPECT_EQ(errno, ENOENT);
}

TEST(FileOpen, OpensOrTellsWhyNot) {
    const TempDir dir;
    const std::string path = dir / "file";
    EXPECT_EQ(thrown([&] { plat::fileOpen(path.c_str(), "r"); }),
              systemFailure("fileOpen(" + path + ")", ENOENT));
    errno = 0;
    EXPECT_EQ(plat::fileOpenNoThrow(path.c_str(), "r"), nullptr);
    EXPECT_EQ(errno, ENOENT);
    File(plat::fileOpen(path.c_str(), "w")).reset();
    EXPECT_NE(File(plat::fileOpenNoThrow(path.c_str(), "r")), nullptr);
    EXPECT_EQ(thrown([&] { plat::fileOpen(path.c_str(), "?"); }),
              systemFailure("fileOpen(" + path + ")", EINVAL));
}

TEST(FileOpenFd, OpensOrTellsWhyNot) {
    const TempDir dir;
    const std::string path = dir / "file";
    EXPECT_EQ(thrown([&] { plat::fileOpenFd(path.c_str(), O_RDONLY, 0); }),
              systemFailure("fileOpenFd(" + path + ")", ENOENT));
    errno = 0;
    EXPECT_EQ(plat::fileOpenFdNoThrow(path.c_str(), O_RDONLY, 0), -1);
    EXPECT_EQ(errno, ENOENT);
    const int created = plat::fileOpenFd(path.c_str(), O_CREAT | O_WRONLY, 0600);
    struct stat status = {};
    EXPECT_EQ(::fstat(created, &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600U);
    EXPECT_EQ(::close(created), 0);
    const int opened = plat::fileOpenFdNoThrow(path.c_str(), O_RDONLY, 0);
    EXPECT_NE(opened, -1);
    EXPECT_EQ(::close(opened), 0);
}

TEST(FileTruncate, SetsTheLength) {
    const TempDir dir;
    const std::string path = dir.write("file", "abcdef");
    const File file(plat::fileOpen(path.c_str(), "r+"));
    plat::fileTruncate(file.get(), 3);
    EXPECT_EQ(TempDir::read(path), "abc");
    plat::fileTruncate(file.get(), 5);
    EXPECT_EQ(TempDir::read(path), std::string("abc\0\0", 5));
}

TEST(FileTruncate, GoesOnWhereASignalComes) {
    const TempDir dir;
    const std::string path = dir.write("file", "abcdef");
    const File file(plat::fileOpen(path.c_str(), "r+"));
    truncateErrors = {EINTR, EINTR};
    plat::fileTruncate(file.get(), 3);
    EXPECT_EQ(TempDir::read(path), "abc");
    truncateErrors = {EFBIG, EINTR};
    EXPECT_EQ(thrown([&] { plat::fileTruncate(file.get(), 2); }),
              systemFailure("fileTruncate(ftruncate)", EFBIG));
}

TEST(FileTruncate, TellsWhatItCannotDo) {
    const TempDir dir;
    const File file(plat::fileOpen(dir.write("file", "abc").c_str(), "r+"));
    EXPECT_EQ(thrown([&] { plat::fileTruncate(file.get(), -1); }),
              systemFailure("fileTruncate(ftruncate)", EINVAL));
}

TEST(FilePosition, IsOf64Bits) {
    const TempDir dir;
    const std::int64_t far = std::int64_t(5) << 32;
    const File file(plat::fileOpen((dir / "file").c_str(), "w+"));
    plat::fileTruncate(file.get(), far + 3);
    EXPECT_EQ(plat::fileTell(file.get()), 0);
    EXPECT_EQ(plat::fileGetSize(file.get()), far + 3);
    EXPECT_EQ(plat::fileTell(file.get()), 0);
    plat::fileSeek(file.get(), far, SEEK_SET);
    EXPECT_EQ(plat::fileTell(file.get()), far);
    EXPECT_TRUE(plat::fileSeekNoThrow(file.get(), -2, SEEK_END));
    EXPECT_EQ(plat::fileTellNoThrow(file.get()), far + 1);
    plat::fileSeek(file.get(), -far, SEEK_CUR);
    EXPECT_EQ(plat::fileTell(file.get()), 1);
    EXPECT_EQ(plat::fileGetSize(file.get()), far + 3);
    EXPECT_EQ(plat::fileTell(file.get()), 1);
}

TEST(FilePosition, CountsWhatIsBuffered) {
    const TempDir dir;
    const File file(plat::fileOpen((dir / "file").c_str(), "w"));
    std::fputs("abc", file.get());
    EXPECT_EQ(plat::fileGetSize(file.get()), 3);
    EXPECT_EQ(plat::fileTell(file.get()), 3);
}

TEST(FilePosition, TellsThatThereIsNone) {
    const File file = pipeEnd();
    EXPECT_EQ(thrown([&] { plat::fileTell(file.get()); }), systemFailure("fileTell", ESPIPE));
    EXPECT_EQ(thrown([&] { plat::fileGetSize(file.get()); }), systemFailure("fileTell", ESPIPE));
    EXPECT_EQ(thrown([&] { plat::fileSeek(file.get(), 0, SEEK_SET); }),
              systemFailure("fileSeek", ESPIPE));
    errno = 0;
    EXPECT_EQ(plat::fileTellNoThrow(file.get()), -1);
    EXPECT_EQ(errno, ESPIPE);
    errno = 0;
    EXPECT_FALSE(plat::fileSeekNoThrow(file.get(), 0, SEEK_SET));
    EXPECT_EQ(errno, ESPIPE);
    const TempDir dir;
    const File real(plat::fileOpen(dir.write("file", "").c_str(), "r"));
    EXPECT_EQ(thrown([&] { plat::fileSeek(real.get(), -1, SEEK_SET); }),
              systemFailure("fileSeek", EINVAL));
}

// A process that holds the lock of a file until it is told to let go.
class LockHolder {
public:
    explicit LockHolder(const std::string& path) {
        int toHolder[2] = {};
        int fromHolder[2] = {};
        if (::pipe(toHolder) != 0 || ::pipe(fromHolder) != 0)
            std::abort();
        holder = ::fork();
        if (holder == 0) {
            ::close(toHolder[1]);
            std::FILE* const file = std::fopen(path.c_str(), "r+");
            char byte = plat::fileLock(file, true) ? 'y' : 'n';
            if (::write(fromHolder[1], &byte, 1) == 1 && ::read(toHolder[0], &byte, 1) == 1)
                plat::fileUnlock(file);
            // Lives on: only the unlocking has ended the lock.
            if (::write(fromHolder[1], &byte, 1) == 1)
                while (::read(toHolder[0], &byte, 1) == 1) {
                }
            std::_Exit(0);
        }
        ::close(toHolder[0]);
        ::close(fromHolder[1]);
        told = toHolder[1];
        tells = fromHolder[0];
        EXPECT_EQ(answer(), 'y');
    }
    ~LockHolder() {
        ::close(told);
        ::close(tells);
        ::waitpid(holder, nullptr, 0);
    }
    void askToLetGo() const { EXPECT_EQ(::write(told, "g", 1), 1); }
    char answer() const {
        char byte = 0;
        EXPECT_EQ(::read(tells, &byte, 1), 1);
        return byte;
    }

private:
    pid_t holder = 0;
    int told = -1;
    int tells = -1;
};

TEST(FileLock, KeepsOtherProcessesOut) {
    const TempDir dir;
    const std::string path = dir.write("file", "");
    const File file(plat::fileOpen(path.c_str(), "r+"));
    const LockHolder holder(path);
    EXPECT_FALSE(plat::fileLock(file.get(), false));
    holder.askToLetGo();
    EXPECT_EQ(holder.answer(), 'g');
    EXPECT_TRUE(plat::fileLock(file.get(), false));
}

TEST(FileLock, BelongsToTheProcess) {
    const TempDir dir;
    const std::string path = dir.write("file", "");
    const File one(plat::fileOpen(path.c_str(), "r+"));
    const File other(plat::fileOpen(path.c_str(), "r+"));
    EXPECT_TRUE(plat::fileLock(one.get(), false));
    EXPECT_TRUE(plat::fileLock(other.get(), false));
    EXPECT_TRUE(plat::fileLock(other.get(), true));
    plat::fileUnlock(one.get());
    plat::fileUnlock(one.get());
}

// What another process sees of the locks on one byte of a file.
struct flock lockSeen(const std::string& path, off_t byte) {
    int ends[2] = {};
    struct flock lock = {};
    EXPECT_EQ(::pipe(ends), 0);
    const pid_t other = ::fork();
    if (other == 0) {
        lock.l_type = F_RDLCK;
        lock.l_start = byte;
        lock.l_len = 1;
        const int descriptor = ::open(path.c_str(), O_RDWR);
        const bool isTold = ::fcntl(descriptor, F_GETLK, &lock) == 0 &&
                            ::write(ends[1], &lock, sizeof lock) == ssize_t(sizeof lock);
        std::_Exit(isTold ? 0 : 1);
    }
    ::close(ends[1]);
    EXPECT_EQ(::read(ends[0], &lock, sizeof lock), ssize_t(sizeof lock));
    ::close(ends[0]);
    ::waitpid(other, nullptr, 0);
    return lock;
}

TEST(FileLock, IsForWritingInTheWholeFile) {
    const TempDir dir;
    const std::string path = dir.write("file", "abc");
    const File file(plat::fileOpen(path.c_str(), "r+"));
    plat::fileSeek(file.get(), 2, SEEK_SET);
    EXPECT_TRUE(plat::fileLock(file.get(), false));
    for (const off_t byte : {0, 2, 3, 1 << 30}) {
        const struct flock seen = lockSeen(path, byte);
        EXPECT_EQ(seen.l_type, F_WRLCK) << byte;
        EXPECT_EQ(seen.l_start, 0);
        EXPECT_EQ(seen.l_len, 0);
    }
    plat::fileUnlock(file.get());
    EXPECT_EQ(lockSeen(path, 0).l_type, F_UNLCK);
}

TEST(FileLock, IsDroppedWithAnyHandleOfTheFile) {
    const TempDir dir;
    const std::string path = dir.write("file", "");
    const File file(plat::fileOpen(path.c_str(), "r+"));
    EXPECT_TRUE(plat::fileLock(file.get(), false));
    EXPECT_EQ(lockSeen(path, 0).l_type, F_WRLCK);
    File(plat::fileOpen(path.c_str(), "r")).reset();
    EXPECT_EQ(lockSeen(path, 0).l_type, F_UNLCK);
}

TEST(FileLock, TakesEitherErrorForAnothersLock) {
    const TempDir dir;
    const File file(plat::fileOpen(dir.write("file", "").c_str(), "r+"));
    for (const bool wait : {false, true}) {
        for (const int err : {EAGAIN, EACCES}) {
            lockErrors = {err};
            EXPECT_FALSE(plat::fileLock(file.get(), wait));
        }
        lockErrors = {ENOLCK};
        EXPECT_EQ(thrown([&] { plat::fileLock(file.get(), wait); }),
                  systemFailure("fileLock", ENOLCK));
    }
}

TEST(FileLock, IsAskedForAgainWhereASignalComes) {
    const TempDir dir;
    const File file(plat::fileOpen(dir.write("file", "").c_str(), "r+"));
    for (const auto& [wait, command] : {std::pair(false, F_SETLK64), std::pair(true, F_SETLKW64)}) {
        lockCommands.clear();
        lockErrors = {EINTR, EINTR};
        EXPECT_TRUE(plat::fileLock(file.get(), wait));
        EXPECT_THAT(lockCommands, ElementsAre(command, command, command));
    }
    lockErrors = {EINTR};
    EXPECT_EQ(thrown([&] { plat::fileUnlock(file.get()); }), "");
}

void ignoreSignal(int) {}

TEST(FileLock, WaitsAlsoWhereASignalComes) {
    const TempDir dir;
    const std::string path = dir.write("file", "");
    const File file(plat::fileOpen(path.c_str(), "r+"));
    const LockHolder holder(path);
    // Signals that interrupt the call, one after the other, until the lock is free; the last one
    // that is ignored lets it go.
    struct sigaction action = {};
    action.sa_handler = ignoreSignal;
    struct sigaction before = {};
    ::sigaction(SIGALRM, &action, &before);
    const itimerval often = {{0, 1000}, {0, 1000}};
    const itimerval never = {};
    ::setitimer(ITIMER_REAL, &often, nullptr);
    const pid_t helper = ::fork();
    if (helper == 0) {
        // Timers are not inherited: this one waits undisturbed, for the waiter to be interrupted.
        ::usleep(20000);
        holder.askToLetGo();
        std::_Exit(0);
    }
    EXPECT_TRUE(plat::fileLock(file.get(), true));
    ::setitimer(ITIMER_REAL, &never, nullptr);
    ::sigaction(SIGALRM, &before, nullptr);
    ::waitpid(helper, nullptr, 0);
}

TEST(FileLock, TellsWhatItCannotDo) {
    const TempDir dir;
    const File reading(plat::fileOpen(dir.write("file", "").c_str(), "r"));
    EXPECT_EQ(thrown([&] { plat::fileLock(reading.get(), false); }),
              systemFailure("fileLock", EBADF));
    char bytes[4] = {};
    const File memory(::fmemopen(bytes, sizeof bytes, "r"));
    EXPECT_EQ(thrown([&] { plat::fileUnlock(memory.get()); }), systemFailure("fileUnlock", EBADF));
}

} // namespace
