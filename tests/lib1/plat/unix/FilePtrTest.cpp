#include "plat/FilePtr.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <type_traits>

#include <fcntl.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/OpenedModes.h"
#include "lib1/TempDir.h"
#include "lib1/Thrown.h"
#include "lib1/plat/RecordingLogger.h"

namespace {

using plat::FilePtr;
using testing::ElementsAre;
using testing::IsEmpty;
using Line = RecordingLogger::Line;

RecordingLogger recording("fileptr");

bool isOpen(int descriptor) {
    return ::fcntl(descriptor, F_GETFD) != -1;
}

TEST(FilePtr, IsEmptyAtFirst) {
    const FilePtr file;
    EXPECT_EQ(file.get(), nullptr);
    EXPECT_TRUE(file.isOwned());
}

TEST(FilePtr, NumbersItsModes) {
    static_assert(std::is_same_v<std::underlying_type_t<FilePtr::Mode>, std::int32_t>);
    EXPECT_EQ(int(FilePtr::Read), 0);
    EXPECT_EQ(int(FilePtr::Write), 1);
    EXPECT_EQ(int(FilePtr::Append), 2);
    EXPECT_EQ(int(FilePtr::AppendRead), 3);
    EXPECT_EQ(int(FilePtr::ReadWrite), 4);
    EXPECT_EQ(int(FilePtr::ReadWriteCreate), 5);
    EXPECT_EQ(int(FilePtr::WriteRead), 6);
}

struct ModeRow {
    const char* name;
    FilePtr::Mode mode;
    const char* opened;        // the mode that an existing file is opened with
    const char* afterMissing;  // what a missing file holds after "new" was written; null: throws
    const char* afterExisting; // what "old data" becomes
    bool reads;
    friend void PrintTo(const ModeRow& row, std::ostream* out) { *out << row.name; }
};
class FilePtrMode : public testing::TestWithParam<std::tuple<ModeRow, bool>> {};
INSTANTIATE_TEST_SUITE_P(
    Modes, FilePtrMode,
    testing::Combine(
        testing::Values(
            ModeRow{"Read", FilePtr::Read, "r", nullptr, "old data", true},
            ModeRow{"Write", FilePtr::Write, "w", "new", "new", false},
            ModeRow{"Append", FilePtr::Append, "a", "new", "old datanew", false},
            ModeRow{"AppendRead", FilePtr::AppendRead, "a+", "new", "old datanew", true},
            ModeRow{"ReadWrite", FilePtr::ReadWrite, "r+", nullptr, "new data", true},
            ModeRow{"ReadWriteCreate", FilePtr::ReadWriteCreate, "r+", "new", "new data", true},
            ModeRow{"WriteRead", FilePtr::WriteRead, "w+", "new", "new", true}),
        testing::Bool()),
    [](const auto& row) {
        return std::string(std::get<0>(row.param).name) +
               (std::get<1>(row.param) ? "Binary" : "Text");
    });

TEST_P(FilePtrMode, OpensAMissingFile) {
    const auto& [row, isBinary] = GetParam();
    const TempDir dir;
    const std::string path = dir / "file";
    if (row.afterMissing == nullptr) {
        EXPECT_EQ(thrown([&, mode = row.mode, binary = isBinary] {
                      FilePtr(path.c_str(), mode, binary);
                  }),
                  systemFailure("fileOpen(" + path + ")", ENOENT));
        EXPECT_EQ(TempDir::read(path), "(none)");
        return;
    }
    {
        const FilePtr file(path.c_str(), row.mode, isBinary);
        EXPECT_TRUE(file.isOwned());
        EXPECT_GE(std::fputs("new", file.get()), 0);
    }
    EXPECT_EQ(TempDir::read(path), row.afterMissing);
}

TEST_P(FilePtrMode, OpensAnExistingFile) {
    const auto& [row, isBinary] = GetParam();
    const TempDir dir;
    const std::string path = dir.write("file", "old data");
    {
        const FilePtr file(path.c_str(), row.mode, isBinary);
        std::fputs("new", file.get());
        EXPECT_EQ(std::fflush(file.get()), 0);
    }
    EXPECT_EQ(TempDir::read(path), row.afterExisting);
}

TEST_P(FilePtrMode, IsOneOfStdio) {
    const auto& [row, isBinary] = GetParam();
    const TempDir dir;
    const std::string path = dir.write("file", "old data");
    openedModes.clear();
    const FilePtr file(path.c_str(), row.mode, isBinary);
    EXPECT_THAT(openedModes, ElementsAre(std::string(row.opened) + (isBinary ? "b" : "")));
}

TEST_P(FilePtrMode, ReadsOrDoesNot) {
    const auto& [row, isBinary] = GetParam();
    const TempDir dir;
    const std::string path = dir.write("file", "old data");
    const FilePtr file(path.c_str(), row.mode, isBinary);
    const int flags = ::fcntl(::fileno(file.get()), F_GETFL) & O_ACCMODE;
    EXPECT_EQ(flags == O_RDONLY || flags == O_RDWR, row.reads);
}

TEST(FilePtrOpen, CreatesWhereItCannotUpdate) {
    const TempDir dir;
    const std::string path = dir / "none/file";
    EXPECT_EQ(thrown([&] { FilePtr(path.c_str(), FilePtr::ReadWriteCreate, false); }),
              systemFailure("fileOpen(" + path + ")", ENOENT))
        << "the error is that of creating it";
    openedModes.clear();
    EXPECT_EQ(thrown([&] { FilePtr(dir.get(), FilePtr::ReadWriteCreate, true); }),
              systemFailure("fileOpen(" + dir.str() + ")", EISDIR));
    EXPECT_THAT(openedModes, ElementsAre("r+b", "w+b")) << "whatever the first failure was";
}

TEST(FilePtrOpen, TakesTheDashForTheStandardFiles) {
    {
        FilePtr file;
        for (const bool isBinary : {false, true}) {
            file.open("-", FilePtr::Read, isBinary);
            EXPECT_EQ(file.get(), stdin);
            EXPECT_FALSE(file.isOwned());
            file.open("-", FilePtr::Write, isBinary);
            EXPECT_EQ(file.get(), stdout);
            EXPECT_FALSE(file.isOwned());
            file.open("-", FilePtr::Append, isBinary);
            EXPECT_EQ(file.get(), stdout);
            EXPECT_FALSE(file.isOwned());
        }
    }
    EXPECT_TRUE(isOpen(0));
    EXPECT_TRUE(isOpen(1));
}

TEST(FilePtrOpen, TakesNoOtherModeForTheDash) {
    const TempDir dir;
    FilePtr file(dir.write("file", "").c_str(), FilePtr::Read, false);
    std::FILE* const before = file.get();
    for (const auto mode :
         {FilePtr::AppendRead, FilePtr::ReadWrite, FilePtr::ReadWriteCreate, FilePtr::WriteRead}) {
        EXPECT_EQ(thrown([&] { file.open("-", mode, false); }),
                  ": Invalid mode for filename \"-\"");
        EXPECT_EQ(file.get(), before) << "the file before stays";
    }
    EXPECT_TRUE(isOpen(::fileno(before)));
}

TEST(FilePtrOpen, ClosesTheFileBefore) {
    const TempDir dir;
    const std::string path = dir.write("file", "");
    FilePtr file(path.c_str(), FilePtr::Read, false);
    const int first = ::fileno(file.get());
    file.open(path.c_str(), FilePtr::Read, false);
    EXPECT_FALSE(isOpen(first));
    const int second = ::fileno(file.get());
    file.open("-", FilePtr::Read, false);
    EXPECT_FALSE(isOpen(second));
    file.open(path.c_str(), FilePtr::ReadWriteCreate, false);
    EXPECT_TRUE(file.isOwned());
    EXPECT_TRUE(isOpen(0));
}

TEST(FilePtrOpen, KeepsTheFileBeforeWhenItThrows) {
    const TempDir dir;
    FilePtr file(dir.write("file", "").c_str(), FilePtr::Read, false);
    std::FILE* const before = file.get();
    EXPECT_EQ(thrown([&] { file.open((dir / "none").c_str(), FilePtr::Read, false); }),
              systemFailure("fileOpen(" + dir / "none" + ")", ENOENT));
    EXPECT_EQ(file.get(), before);
    EXPECT_TRUE(file.isOwned());
    EXPECT_TRUE(isOpen(::fileno(before)));
}

TEST(FilePtrReplacePtr, ClosesOnlyWhatItOwns) {
    const TempDir dir;
    const std::string path = dir.write("file", "");
    std::FILE* const borrowed = std::fopen(path.c_str(), "r");
    std::FILE* const given = std::fopen(path.c_str(), "r");
    const int givenDescriptor = ::fileno(given);
    {
        FilePtr file(borrowed, false);
        EXPECT_FALSE(file.isOwned());
        file.replacePtr(given, true);
        EXPECT_TRUE(file.isOwned());
        EXPECT_EQ(file.get(), given);
        EXPECT_TRUE(isOpen(::fileno(borrowed)));
        file.replacePtr(nullptr, false);
        EXPECT_FALSE(file.isOwned());
        EXPECT_FALSE(isOpen(givenDescriptor));
        file.replacePtr(borrowed, false);
    }
    EXPECT_EQ(std::fclose(borrowed), 0);
}

TEST(FilePtrClose, LogsAFailure) {
    const LogSetting setting("FileStream:fileptr:0");
    FilePtr file("/dev/full", FilePtr::Write, false);
    std::fputs("x", file.get());
    file.replacePtr(nullptr, true);
    const std::string text =
        "fclose(): " + systemErrorText(ENOSPC) + " (" + std::to_string(ENOSPC) + ")";
    EXPECT_THAT(recording.take(), ElementsAre(Line{0, "FileStream", text}));
    {
        const FilePtr destroyed("/dev/full", FilePtr::Write, false);
        std::fputs("x", destroyed.get());
    }
    EXPECT_THAT(recording.take(), ElementsAre(Line{0, "FileStream", text}));
}

TEST(FilePtrClose, ThrowsNothingThatTheLogThrows) {
    const LogSetting setting("FileStream:fileptr:0");
    recording.onWrite = [] { throw plat::Exception("log"); };
    {
        const FilePtr file("/dev/full", FilePtr::Write, false);
        std::fputs("x", file.get());
    }
    recording.onWrite = nullptr;
    EXPECT_EQ(recording.take().size(), 1U);
}

TEST(FilePtrFlush, PassesOnOrTells) {
    const TempDir dir;
    FilePtr file((dir / "file").c_str(), FilePtr::Write, false);
    std::fputs("x", file.get());
    EXPECT_EQ(TempDir::read(dir / "file"), "");
    file.flush();
    EXPECT_EQ(TempDir::read(dir / "file"), "x");
    file.open("/dev/full", FilePtr::Write, false);
    std::fputs("x", file.get());
    EXPECT_EQ(thrown([&] { file.flush(); }), systemFailure("fflush()", ENOSPC, "Stdlib"));
    std::clearerr(file.get());
    FilePtr().flush();
}

std::vector<std::string> linesOf(const std::string& content) {
    const TempDir dir;
    FilePtr file(dir.write("file", content).c_str(), FilePtr::Read, true);
    std::vector<std::string> lines;
    plat::DString line;
    while (file.readLine(&line))
        lines.emplace_back(line.get());
    EXPECT_STREQ(line.get(), "");
    EXPECT_FALSE(file.readLine(&line));
    return lines;
}

TEST(FilePtrReadLine, ReadsUpToLineEnds) {
    EXPECT_THAT(linesOf(""), IsEmpty());
    EXPECT_THAT(linesOf("\n"), ElementsAre(""));
    EXPECT_THAT(linesOf("a"), ElementsAre("a"));
    EXPECT_THAT(linesOf("a\nb\n"), ElementsAre("a", "b"));
    EXPECT_THAT(linesOf("a\n\nb"), ElementsAre("a", "", "b"));
    EXPECT_THAT(linesOf("a\r\n\rb\r"), ElementsAre("a\r", "\rb\r"));
}

TEST(FilePtrReadLine, TakesLinesOfAnyLength) {
    for (const std::size_t size :
         {61U, 62U, 63U, 64U, 65U, 126U, 127U, 128U, 129U, 255U, 256U, 4096U, 100000U}) {
        const std::string text(size, 'x');
        const std::string line = text + "\n";
        EXPECT_THAT(linesOf(text), ElementsAre(text));
        EXPECT_THAT(linesOf(line), ElementsAre(text));
        EXPECT_THAT(linesOf(line + line), ElementsAre(text, text));
    }
}

TEST(FilePtrReadLine, HasRoomOf64Bytes) {
    const TempDir dir;
    FilePtr file(dir.write("file", "a\n").c_str(), FilePtr::Read, false);
    plat::DString line;
    EXPECT_TRUE(file.readLine(&line));
    EXPECT_EQ(line.capacity(), 64);
    line.append(" was there");
    EXPECT_FALSE(file.readLine(&line));
    EXPECT_STREQ(line.get(), "");
}

TEST(FilePtrReadLine, MakesRoomForTwiceWhatItHasRead) {
    const TempDir dir;
    for (const auto& [size, capacity] : {std::pair(62, 64), std::pair(63, 128), std::pair(126, 128),
                                         std::pair(127, 256), std::pair(300, 512)}) {
        const std::string text = std::string(std::size_t(size), 'x') + "\n";
        FilePtr file(dir.write("file", text).c_str(), FilePtr::Read, false);
        plat::DString line;
        EXPECT_TRUE(file.readLine(&line));
        EXPECT_EQ(line.capacity(), capacity) << size;
    }
}

TEST(FilePtrReadLine, CannotSeeANul) {
    EXPECT_THAT(linesOf(std::string("a\0b\nc\n", 6)), ElementsAre("ac"));
    EXPECT_THAT(linesOf(std::string("\0", 1)), ElementsAre(""));
    EXPECT_THAT(linesOf(std::string("\0\n", 2)), ElementsAre(""));
}

TEST(FilePtrReadLine, TellsAReadError) {
    const TempDir dir;
    FilePtr file(dir.get(), FilePtr::Read, false);
    plat::DString line;
    EXPECT_EQ(thrown([&] { file.readLine(&line); }),
              systemFailure("Error reading from file", EISDIR));
    EXPECT_STREQ(line.get(), "");
}

TEST(FilePtrReadLine, LeavesAStringWhenItFailsHalfway) {
    // Gives some bytes, and then an error.
    static int reads = 0;
    const cookie_io_functions_t functions{[](void*, char* to, std::size_t) -> ::ssize_t {
                                              if (++reads == 1) {
                                                  to[0] = 'a';
                                                  to[1] = 'b';
                                                  return 2;
                                              }
                                              errno = EIO;
                                              return -1;
                                          },
                                          nullptr, nullptr, nullptr};
    FilePtr file(::fopencookie(nullptr, "r", functions));
    plat::DString line;
    line.append(std::string(40, 'x').c_str());
    EXPECT_EQ(thrown([&] { file.readLine(&line); }), systemFailure("Error reading from file", EIO));
    EXPECT_STREQ(line.get(), "") << "the bytes of the piece that failed are not there";
}

TEST(FilePtrSetInheritable, ClosesOnExecWhateverIsAsked) {
    const TempDir dir;
    const std::string path = dir.write("file", "");
    for (const bool isInheritable : {false, true}) {
        const FilePtr file(path.c_str(), FilePtr::Read, false);
        EXPECT_EQ(::fcntl(::fileno(file.get()), F_GETFD) & FD_CLOEXEC, 0);
        FilePtr::setInheritable(file.get(), isInheritable);
        EXPECT_EQ(::fcntl(::fileno(file.get()), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
    }
    FilePtr::setInheritable(nullptr, false);
}

} // namespace
