#include "rdr/FileInStream.h"

#include <cerrno>
#include <cstdio>
#include <string>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/OpenedModes.h"
#include "lib1/TempDir.h"
#include "lib1/Thrown.h"
#include "rdr/EndOfStream.h"

namespace {

using rdr::EndOfStream;
using rdr::FileInStream;
using testing::ElementsAre;

bool isInherited(int descriptor) {
    return (::fcntl(descriptor, F_GETFD) & FD_CLOEXEC) == 0;
}

bool isOpen(int descriptor) {
    return ::fcntl(descriptor, F_GETFD) != -1;
}

std::string line(rdr::InStream& in) {
    plat::DString read;
    in.readLine(&read);
    return read.get();
}

class FileStream : public testing::Test {
protected:
    TempDir dir;
};

TEST_F(FileStream, ReadsAFile) {
    const std::string path = dir.write("file", "abc\r\n\ndef");
    for (const bool isBinary : {false, true}) {
        FileInStream in(path.c_str(), isBinary);
        EXPECT_EQ(in.pos(), 0);
        EXPECT_EQ(line(in), "abc");
        EXPECT_EQ(line(in), "");
        EXPECT_EQ(line(in), "def");
        EXPECT_EQ(thrown([&] { line(in); }), "EndOfStream: End of stream");
        EXPECT_EQ(thrown([&] { line(in); }), "EndOfStream: End of stream");
        EXPECT_EQ(in.pos(), 9);
    }
}

TEST_F(FileStream, IsOpenedForReading) {
    const std::string path = dir.write("file", "");
    for (const bool isBinary : {false, true}) {
        openedModes.clear();
        FileInStream in(path.c_str(), isBinary);
        in.open(path.c_str(), !isBinary);
        EXPECT_THAT(openedModes, ElementsAre(isBinary ? "rb" : "r", isBinary ? "r" : "rb"));
    }
}

TEST_F(FileStream, Buffers16800Bytes) {
    FileInStream in(dir.write("file", std::string(20000, 'x')).c_str(), true);
    in.skip(1);
    EXPECT_EQ(in.getEnd() - in.getPtr(), 16799);
}

// A file that gives one byte at a time, up to 'e', and then ends or fails.
std::FILE* slowFile(int err) {
    static int error;
    static char next;
    error = err;
    next = 'a';
    const cookie_io_functions_t functions{[](void*, char* to, std::size_t) -> ::ssize_t {
                                              if (next <= 'e') {
                                                  *to = next++;
                                                  return 1;
                                              }
                                              errno = error;
                                              return error == 0 ? 0 : -1;
                                          },
                                          nullptr, nullptr, nullptr};
    return ::fopencookie(nullptr, "r", functions);
}

TEST_F(FileStream, WaitsForAFullBufferOrTheEnd) {
    FileInStream in(slowFile(0), true);
    in.skip(1);
    EXPECT_EQ(std::string(in.getPtr(), in.getEnd()), "bcde");
    in.skip(4);
    EXPECT_THROW(in.skip(1), EndOfStream);
}

TEST_F(FileStream, GivesWhatComesBeforeAReadError) {
    FileInStream in(slowFile(EIO), true);
    in.skip(5);
    EXPECT_EQ(thrown([&] { in.skip(1); }),
              systemFailure("reading from file failed", EIO, "Stdlib"));
    EXPECT_EQ(in.pos(), 5);
}

TEST_F(FileStream, EndsAtOnceForAnEmptyFile) {
    FileInStream in(dir.write("file", "").c_str(), true);
    unsigned char scratch[1];
    EXPECT_THROW(in.getItem_(scratch, 1), EndOfStream);
    EXPECT_THROW(in.overrunOrRewind(false, 1), EndOfStream);
}

TEST_F(FileStream, CountsItsPosition) {
    FileInStream in(dir.write("file", std::string(20001, 'x')).c_str(), true);
    in.skip(20000);
    EXPECT_EQ(in.pos(), 20000);
    unsigned char scratch[1];
    EXPECT_EQ(*in.getItem_(scratch, 1), 'x');
    EXPECT_EQ(in.pos(), 20001);
}

TEST_F(FileStream, ReadsItemsAndLinesLongerThanItsBuffer) {
    const std::string text(50000, 'x');
    FileInStream in(dir.write("file", text + "\n" + text).c_str(), true);
    EXPECT_EQ(line(in), text);
    std::string item(50000, '\0');
    auto* const scratch = reinterpret_cast<unsigned char*>(item.data());
    EXPECT_EQ(in.getItem_(scratch, 50000), scratch);
    EXPECT_EQ(item, text);
}

TEST_F(FileStream, CannotBeRewound) {
    FileInStream in(dir.write("file", "abc").c_str(), true);
    in.checkpoint();
    in.skip(1);
    EXPECT_EQ(thrown([&] { in.rewind(); }), ": Attempt to rewind a non-rewindable stream");
    EXPECT_EQ(thrown([&] { in.reposition(2); }), ": Attempt to rewind a non-rewindable stream");
    EXPECT_EQ(in.pos(), 1);
    std::FILE* const file = std::fopen((dir / "file").c_str(), "r");
    FileInStream adopted(file, true);
    EXPECT_EQ(thrown([&] { adopted.rewind(); }), ": Attempt to rewind a non-rewindable stream");
}

TEST_F(FileStream, IsNotMadeForAFileThatCannotBeOpened) {
    EXPECT_EQ(thrown([&] { FileInStream((dir / "none").c_str(), false); }),
              systemFailure("fileOpen(" + dir / "none" + ")", ENOENT));
}

TEST_F(FileStream, TellsAReadError) {
    FileInStream in(dir.get(), false);
    EXPECT_EQ(thrown([&] { line(in); }),
              systemFailure("reading from file failed", EISDIR, "Stdlib"));
}

TEST_F(FileStream, KeepsWhatItOpensFromOtherPrograms) {
    const std::string path = dir.write("file", "");
    const int next = ::dup(0); // the lowest descriptor that is free
    ::close(next);
    const FileInStream in(path.c_str(), false);
    EXPECT_FALSE(isInherited(next));
    FileInStream later(nullptr, false);
    const int behind = ::dup(0);
    ::close(behind);
    later.open(path.c_str(), true);
    EXPECT_FALSE(isInherited(behind));
}

TEST_F(FileStream, LeavesAnAdoptedFileAsItIs) {
    const std::string path = dir.write("file", "abc");
    std::FILE* const file = std::fopen(path.c_str(), "r");
    const int descriptor = ::fileno(file);
    {
        FileInStream in(file, false);
        EXPECT_TRUE(isInherited(descriptor));
        EXPECT_EQ(line(in), "abc");
    }
    EXPECT_TRUE(isOpen(descriptor)) << "it was not the stream's";
    std::fseek(file, 0, SEEK_SET);
    {
        FileInStream in(nullptr, false);
        in.setFilePtr(file, true);
        EXPECT_TRUE(isInherited(descriptor));
        EXPECT_EQ(line(in), "abc");
    }
    EXPECT_FALSE(isOpen(descriptor));
}

TEST_F(FileStream, GoesOnWithAnotherFile) {
    const std::string a = dir.write("a", "first\nrest of ");
    const std::string b = dir.write("b", "a and b");
    FileInStream in(a.c_str(), false);
    EXPECT_EQ(line(in), "first");
    EXPECT_THROW(in.open((dir / "none").c_str(), false), plat::SystemException);
    in.open(b.c_str(), false);
    EXPECT_EQ(line(in), "rest of a and b") << "what was buffered is not lost";
    EXPECT_EQ(in.pos(), 21);
    in.setFilePtr(std::fopen(a.c_str(), "r"), true);
    EXPECT_EQ(line(in), "first");
    EXPECT_EQ(in.pos(), 27);
}

TEST_F(FileStream, ReadsWhatIsBufferedBeforeTheNextFile) {
    const std::string a = dir.write("a", "one\ntwo\n");
    const std::string b = dir.write("b", "three\n");
    FileInStream in(a.c_str(), false);
    EXPECT_EQ(line(in), "one");
    in.setFilePtr(std::fopen(b.c_str(), "r"), true);
    EXPECT_EQ(in.pos(), 4);
    EXPECT_EQ(line(in), "two");
    EXPECT_EQ(line(in), "three");
    EXPECT_EQ(in.pos(), 14);
}

TEST_F(FileStream, ReadsStandardInput) {
    // In a process of its own, whose standard input is a pipe that delivers in two pieces.
    const auto readStandardInput = [] {
        int ends[2] = {};
        if (::pipe(ends) != 0 || ::dup2(ends[0], 0) != 0)
            std::_Exit(2);
        if (::write(ends[1], "ab", 2) != 2 || ::write(ends[1], "c\nd", 3) != 3)
            std::_Exit(3);
        ::close(ends[1]);
        {
            FileInStream in("-", false);
            if (line(in) != "abc" || line(in) != "d" || isInherited(0))
                std::_Exit(4);
        }
        std::_Exit(isOpen(0) ? 0 : 5);
    };
    EXPECT_EXIT(readStandardInput(), testing::ExitedWithCode(0), "");
}

TEST_F(FileStream, HasNoFileForANullName) {
    const FileInStream in(static_cast<const char*>(nullptr), true);
    EXPECT_EQ(in.getPtr(), in.getEnd());
}

TEST(FileStreamDeathTest, AssertsItsFile) {
    EXPECT_DEATH(line(*std::make_unique<FileInStream>(nullptr, true)),
                 "^Assertion 'file.get\\(\\)' failed at ");
}

} // namespace
