#include "rdr/MemOutStream.h"

#include <climits>
#include <cstring>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "lib1/FreedBytes.h"
#include "rdr/OutStreamFull.h"

namespace {

using rdr::MemOutStream;
using rdr::OutStreamFull;

std::string written(MemOutStream& stream) {
    return {reinterpret_cast<const char*>(stream.data()), std::size_t(stream.length())};
}

int allocated(const MemOutStream& stream) {
    return int(stream.getEnd() - stream.data());
}

void write(MemOutStream& stream, const std::string& text) {
    stream.writeBytes(text.data(), int(text.size()));
}

TEST(MemOutStream, StartsWith256BytesOrWhatIsAskedFor) {
    EXPECT_EQ(allocated(MemOutStream(-1, 0)), 256);
    EXPECT_EQ(allocated(MemOutStream()), 256);
    EXPECT_EQ(allocated(MemOutStream(0)), 0);
    EXPECT_EQ(allocated(MemOutStream(16)), 16);
    EXPECT_NE(MemOutStream(0).data(), nullptr);
}

TEST(MemOutStream, DoublesItsAllocation) {
    MemOutStream stream(-1, 0);
    write(stream, std::string(256, 'a'));
    EXPECT_EQ(allocated(stream), 256);
    write(stream, std::string(44, 'b'));
    EXPECT_EQ(allocated(stream), 512);
    EXPECT_EQ(written(stream), std::string(256, 'a') + std::string(44, 'b'));
}

TEST(MemOutStream, JumpsToWhatALargeWriteNeeds) {
    MemOutStream stream(16);
    write(stream, "abc");
    write(stream, std::string(100, 'x'));
    EXPECT_EQ(allocated(stream), 103);
    EXPECT_EQ(written(stream), "abc" + std::string(100, 'x'));
}

TEST(MemOutStream, GrowsFromNothing) {
    MemOutStream stream(0);
    write(stream, "a");
    EXPECT_EQ(allocated(stream), 1);
    write(stream, "b");
    EXPECT_EQ(allocated(stream), 2);
    write(stream, "c");
    EXPECT_EQ(allocated(stream), 4);
    EXPECT_EQ(written(stream), "abc");
}

TEST(MemOutStream, WritesNothingForNoBytes) {
    MemOutStream stream(0);
    stream.writeBytes(nullptr, 0);
    EXPECT_EQ(stream.length(), 0);
    EXPECT_EQ(allocated(stream), 0);
}

TEST(MemOutStream, KeepsPiecesOfEverySize) {
    MemOutStream stream(0);
    std::string expected;
    for (std::size_t size = 0; size < 100; ++size) {
        std::string piece(size, '\0');
        for (std::size_t i = 0; i < size; ++i)
            piece[i] = char('!' + (i + size) % 90);
        write(stream, piece);
        expected += piece;
        ASSERT_EQ(written(stream), expected);
    }
}

TEST(MemOutStreamOverrun, MakesRoomForAllItems) {
    MemOutStream stream(4);
    write(stream, "abc");
    EXPECT_EQ(stream.overrun(3, 5), 5);
    EXPECT_EQ(allocated(stream), 18);
    EXPECT_EQ(written(stream), "abc");
}

TEST(MemOutStreamOverrun, ReturnsWhatFitsUnderTheLimit) {
    MemOutStream stream(4, 10);
    write(stream, "abc");
    EXPECT_EQ(stream.overrun(3, 5), 2); // 7 bytes are left
    EXPECT_EQ(allocated(stream), 10);
    EXPECT_EQ(stream.overrun(7, 1), 1);
    EXPECT_THROW(stream.overrun(8, 1), OutStreamFull);
}

TEST(MemOutStreamOverrun, SkippingPastTheLimitThrowsAndStaysInside) {
    MemOutStream stream(4, 10);
    EXPECT_THROW(stream.skip(11), OutStreamFull);
    EXPECT_EQ(stream.length(), 10);
    EXPECT_EQ(stream.getPtr(), stream.getEnd());
}

TEST(MemOutStreamOverrun, FailsAsAnAllocationBeyondAnInt) {
    MemOutStream stream(4);
    write(stream, "abc");
    EXPECT_THROW(stream.overrun(INT_MAX, 1), std::bad_alloc);
    EXPECT_THROW(stream.overrun(1 << 20, 1 << 20), std::bad_alloc);
    EXPECT_EQ(written(stream), "abc");
}

TEST(MemOutStreamLimit, TakesExactlyTheMaximum) {
    MemOutStream stream(16, 20);
    for (int i = 0; i < 20; ++i)
        write(stream, "x");
    try {
        write(stream, "y");
        ADD_FAILURE() << "nothing thrown";
    } catch (const OutStreamFull& e) {
        EXPECT_STREQ(e.message.get(), "OutStream full");
        EXPECT_STREQ(e.typeName.get(), "OutStreamFull");
    }
    EXPECT_EQ(written(stream), std::string(20, 'x'));
}

TEST(MemOutStreamLimit, FailingCallWritesNothing) {
    MemOutStream stream(16, 20);
    write(stream, std::string(15, 'x'));
    EXPECT_THROW(write(stream, "123456"), OutStreamFull);
    EXPECT_EQ(written(stream), std::string(15, 'x'));
    write(stream, "12345");
    EXPECT_EQ(stream.length(), 20);
}

TEST(MemOutStreamLimit, HoldsBelowTheAllocation) {
    MemOutStream stream(100, 20);
    EXPECT_EQ(allocated(stream), 20);
    write(stream, std::string(20, 'x'));
    EXPECT_THROW(write(stream, "y"), OutStreamFull);
}

TEST(MemOutStreamLimit, GrowsNoFurtherThanTheMaximum) {
    MemOutStream stream(16, 20);
    write(stream, std::string(17, 'x'));
    EXPECT_EQ(allocated(stream), 20);
}

TEST(MemOutStreamLimit, CanBeSetAndLifted) {
    MemOutStream stream(100);
    write(stream, "abc");
    stream.setMaxLen(5);
    EXPECT_EQ(allocated(stream), 5);
    EXPECT_THROW(write(stream, "def"), OutStreamFull);
    stream.setMaxLen(0);
    EXPECT_EQ(allocated(stream), 100);
    write(stream, "def");
    EXPECT_EQ(written(stream), "abcdef");
}

TEST(MemOutStreamLimit, BelowWhatIsWrittenLosesNothing) {
    MemOutStream stream(100);
    write(stream, "abcdef");
    stream.setMaxLen(3);
    EXPECT_EQ(written(stream), "abcdef");
    EXPECT_THROW(write(stream, "g"), OutStreamFull);
    EXPECT_THROW(stream.writeBytes("", 0), OutStreamFull);
    EXPECT_THROW(stream.skip(1), OutStreamFull);
    EXPECT_THROW(stream.ensureRoom(1), OutStreamFull);
    EXPECT_EQ(written(stream), "abcdef");
    stream.setMaxLen(7);
    write(stream, "g");
    EXPECT_EQ(written(stream), "abcdefg");
}

TEST(MemOutStream, TellsWhatCanStillBeWritten) {
    MemOutStream open(4);
    EXPECT_EQ(open.nonBlockingBytes(), 2147483647);
    write(open, "abc");
    EXPECT_EQ(open.nonBlockingBytes(), 2147483647);
    MemOutStream limited(4, 20);
    EXPECT_EQ(limited.nonBlockingBytes(), 20);
    write(limited, "abc");
    EXPECT_EQ(limited.nonBlockingBytes(), 17);
}

TEST(MemOutStreamTakeBuf, HandsOverTheArrayWithoutANul) {
    MemOutStream stream(4);
    write(stream, "abcd");
    const unsigned char* const data = stream.data();
    const std::unique_ptr<unsigned char[]> buf(stream.takeBuf());
    EXPECT_EQ(buf.get(), data);
    EXPECT_EQ(std::memcmp(buf.get(), "abcd", 4), 0);
    EXPECT_EQ(stream.length(), 0);
    EXPECT_EQ(stream.data(), nullptr);
    EXPECT_EQ(stream.getPtr(), nullptr);
    EXPECT_EQ(stream.getEnd(), nullptr);
}

TEST(MemOutStreamTakeBuf, LeavesAStreamThatCanBeWritten) {
    MemOutStream stream(4, 6);
    write(stream, "abcd");
    const std::unique_ptr<unsigned char[]> first(stream.takeBuf());
    EXPECT_EQ(stream.takeBuf(), nullptr);
    write(stream, "ef");
    EXPECT_EQ(written(stream), "ef");
    EXPECT_THROW(write(stream, "12345"), OutStreamFull); // the limit stays
}

TEST(MemOutStreamPassBufTo, BufferGetsArrayAndLength) {
    MemOutStream stream(100);
    write(stream, "abc");
    plat::MBuf<unsigned char> buf;
    stream.passBufTo(&buf);
    EXPECT_EQ(buf.length(), 3);
    EXPECT_EQ(std::memcmp(buf.get(), "abc", 3), 0);
    EXPECT_EQ(stream.length(), 0);
    stream.passBufTo(&buf);
    EXPECT_EQ(buf.length(), 0);
    EXPECT_EQ(buf.get(), nullptr);
}

TEST(MemOutStreamPassBufTo, SecureBufferWipesItsOldArray) {
    plat::MBuf<unsigned char> buf(true);
    auto* const secret = new unsigned char[FreedBytes::watchedSize];
    std::memset(secret, 's', FreedBytes::watchedSize);
    buf.replaceBuf(secret, FreedBytes::watchedSize);
    FreedBytes::last.fill('#');
    MemOutStream stream(4);
    write(stream, "abc");
    stream.passBufTo(&buf);
    EXPECT_EQ(FreedBytes::last, FreedBytes::Bytes{});
    EXPECT_EQ(buf.length(), 3);
}

TEST(MemOutStreamPassBufTo, StringGetsANulAndTheWrittenLength) {
    MemOutStream stream;
    write(stream, "abc");
    plat::DString string;
    string.append("old");
    stream.passBufTo(&string);
    EXPECT_STREQ(string.get(), "abc");
    EXPECT_EQ(string.capacity(), 4);
    EXPECT_EQ(stream.length(), 0);
    string.append("def");
    EXPECT_STREQ(string.get(), "abcdef");
    EXPECT_EQ(string.capacity(), 8);
}

TEST(MemOutStreamPassBufTo, StringGetsTheFullArrayGrown) {
    MemOutStream stream(3);
    write(stream, "abc");
    plat::DString string;
    stream.passBufTo(&string);
    EXPECT_STREQ(string.get(), "abc");
    EXPECT_EQ(string.capacity(), 4);
    stream.passBufTo(&string); // nothing left: an empty text
    EXPECT_STREQ(string.get(), "");
    EXPECT_EQ(string.capacity(), 1);
}

TEST(MemOutStreamPassBufTo, StringNeedsRoomForTheNul) {
    MemOutStream stream(4, 4);
    write(stream, "abcd");
    plat::DString string;
    string.append("old");
    EXPECT_THROW(stream.passBufTo(&string), OutStreamFull);
    EXPECT_STREQ(string.get(), "old");
    EXPECT_EQ(written(stream), "abcd");
}

TEST(MemOutStream, LeavesOutgrownArraysAsTheyAre) {
    MemOutStream stream(FreedBytes::watchedSize);
    write(stream, std::string(FreedBytes::watchedSize, 's'));
    FreedBytes::last.fill('#');
    write(stream, "x");
    FreedBytes::Bytes unwiped;
    unwiped.fill('s');
    EXPECT_EQ(FreedBytes::last, unwiped);
}

} // namespace
