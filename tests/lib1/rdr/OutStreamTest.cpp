#include "rdr/OutStream.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/plat/VirtualSlot.h"

namespace {

using rdr::OutStream;
using testing::ElementsAre;
using testing::Pair;

// A stream that hands out room in small pieces and passes each full piece on.
class PieceStream : public OutStream {
public:
    explicit PieceStream(int pieceSize) : piece(std::size_t(pieceSize), '\0') { startPiece(); }

    int length() override { return int(passed.size()) + int(ptr - start()); }
    int nonBlockingBytes() override { return int(end - ptr); }
    int overrun(int itemSize, int nItems) override {
        requests.emplace_back(itemSize, nItems);
        passed.append(piece.data(), std::size_t(ptr - start()));
        startPiece();
        return std::min(nItems, int(piece.size()) / itemSize);
    }

    std::string written() { return passed + std::string(piece.data(), std::size_t(ptr - start())); }

    std::vector<std::pair<int, int>> requests;

private:
    unsigned char* start() { return reinterpret_cast<unsigned char*>(piece.data()); }
    void startPiece() {
        ptr = start();
        end = start() + piece.size();
    }

    std::string piece;
    std::string passed;
};

TEST(OutStream, LaysItsOperationsOutInOrder) {
    // The destructor takes the first two slots.
    EXPECT_EQ(virtualSlot(&OutStream::writeBytes), 2U);
    EXPECT_EQ(virtualSlot(&OutStream::length), 3U);
    EXPECT_EQ(virtualSlot(&OutStream::flush), 4U);
    EXPECT_EQ(virtualSlot(&OutStream::getFlushingStream), 5U);
    EXPECT_EQ(virtualSlot(&OutStream::unflushedBytes), 6U);
    EXPECT_EQ(virtualSlot(&OutStream::nonBlockingBytes), 7U);
    EXPECT_EQ(virtualSlot(&OutStream::shutdown), 8U);
    EXPECT_EQ(virtualSlot(&OutStream::overrun), 9U);
}

TEST(OutStreamWriteBytes, CopiesInPieces) {
    PieceStream stream(4);
    stream.writeBytes("ab", 2);
    EXPECT_THAT(stream.requests, ElementsAre());
    stream.writeBytes("cdefghijk", 9); // two fit, seven are left, then three
    EXPECT_EQ(stream.written(), "abcdefghijk");
    EXPECT_THAT(stream.requests, ElementsAre(Pair(1, 7), Pair(1, 3)));
}

TEST(OutStreamWriteBytes, AsksForNoRoomWhereItFitsExactly) {
    PieceStream stream(4);
    stream.writeBytes("abcd", 4);
    EXPECT_THAT(stream.requests, ElementsAre());
    stream.writeBytes("", 0);
    EXPECT_THAT(stream.requests, ElementsAre());
    EXPECT_EQ(stream.written(), "abcd");
}

TEST(OutStreamSkip, MovesOverBytesInPieces) {
    PieceStream stream(4);
    stream.skip(0);
    stream.skip(-5);
    EXPECT_EQ(stream.length(), 0);
    stream.skip(11);
    EXPECT_EQ(stream.length(), 11);
    EXPECT_THAT(stream.requests, ElementsAre(Pair(1, 7), Pair(1, 3)));
}

TEST(OutStreamSkip, LeavesTheBytesAsTheyAre) {
    PieceStream stream(4);
    stream.writeBytes("ab", 2);
    unsigned char* const p = stream.getPtr();
    p[0] = 'x';
    stream.skip(1);
    EXPECT_EQ(stream.written(), "abx");
}

TEST(OutStreamSetPtr, MovesWithinTheRoom) {
    PieceStream stream(4);
    stream.setPtr(stream.getPtr());
    EXPECT_EQ(stream.length(), 0);
    stream.setPtr(stream.getEnd());
    EXPECT_EQ(stream.length(), 4);
}

TEST(OutStreamSetPtrDeathTest, AssertsThePointer) {
    PieceStream stream(4);
    stream.skip(2);
    const char* const text = "^Assertion 'p >= ptr && p <= end' failed at lib1/rdr/OutStream.h:";
    EXPECT_DEATH(stream.setPtr(stream.getPtr() - 1), text);
    EXPECT_DEATH(stream.setPtr(stream.getEnd() + 1), text);
    EXPECT_DEATH(stream.setPtr(nullptr), text);
}

struct LongRow {
    const char* name;
    const char* text;
    int max;
    std::string bytes;
    friend void PrintTo(const LongRow& row, std::ostream* out) { *out << row.name; }
};
class WriteLongString : public testing::TestWithParam<LongRow> {};
TEST_P(WriteLongString, WritesLengthAndBytes) {
    for (const int pieceSize : {1, 3, 100}) {
        PieceStream stream(pieceSize);
        stream.writeLongString(GetParam().text, GetParam().max);
        EXPECT_EQ(stream.written(), GetParam().bytes);
    }
}
INSTANTIATE_TEST_SUITE_P(
    Texts, WriteLongString,
    testing::Values(LongRow{"Whole", "hello", 0, std::string("\0\0\0\5hello", 9)},
                    LongRow{"Cut", "hello", 3, std::string("\0\0\0\3hel", 7)},
                    LongRow{"FitsExactly", "hello", 5, std::string("\0\0\0\5hello", 9)},
                    LongRow{"BelowTheLimit", "hello", 9, std::string("\0\0\0\5hello", 9)},
                    LongRow{"Empty", "", 0, std::string("\0\0\0\0", 4)},
                    LongRow{"Null", nullptr, 0, std::string("\0\0\0\0", 4)}),
    [](const auto& row) { return row.param.name; });

TEST(WriteLongString, WritesTheMostSignificantByteFirst) {
    PieceStream stream(1000);
    const std::string text(0x010203, 'x');
    stream.writeLongString(text.c_str());
    EXPECT_EQ(stream.written(), std::string("\0\1\2\3", 4) + text);
}

TEST(WriteLongString, HasNoLimitByDefault) {
    PieceStream stream(4);
    stream.writeLongString("hello");
    EXPECT_EQ(stream.written(), std::string("\0\0\0\5hello", 9));
}

class WriteShortString : public testing::TestWithParam<int> {};
TEST_P(WriteShortString, WritesAtMost255Bytes) {
    const int written = std::min(GetParam(), 255);
    PieceStream stream(7);
    stream.writeShortString(std::string(std::size_t(GetParam()), 'x').c_str());
    EXPECT_EQ(stream.written(),
              std::string(1, char(written)) + std::string(std::size_t(written), 'x'));
}
INSTANTIATE_TEST_SUITE_P(Lengths, WriteShortString, testing::Values(0, 1, 254, 255, 256, 300));

TEST(WriteShortString, CutsInsideACharacter) {
    PieceStream stream(300);
    stream.writeShortString((std::string(254, 'x') + "\u00E9").c_str());
    EXPECT_EQ(stream.written(), "\xFF" + std::string(254, 'x') + "\xC3");
}

TEST(WriteShortString, TakesNullForEmpty) {
    PieceStream stream(4);
    stream.writeShortString(nullptr);
    EXPECT_EQ(stream.written(), std::string(1, '\0'));
}

TEST(OutStreamFlushing, IsTheStreamsOwnAffairByDefault) {
    PieceStream stream(4);
    stream.writeBytes("abc", 3);
    stream.flush();
    stream.shutdown();
    EXPECT_EQ(stream.written(), "abc");
    EXPECT_EQ(stream.getFlushingStream(), &stream);
    EXPECT_EQ(stream.unflushedBytes(), 0);
}

// A stream whose bytes another one flushes.
class ForwardingStream : public PieceStream {
public:
    explicit ForwardingStream(OutStream* stream) : PieceStream(4), to(stream) {}
    OutStream* getFlushingStream() override { return to; }

private:
    OutStream* to;
};

class BufferedStream : public PieceStream {
public:
    BufferedStream() : PieceStream(4) {}
    int unflushedBytes() override { return 17; }
};

TEST(OutStreamFlushing, AsksTheStreamThatFlushes) {
    BufferedStream buffered;
    ForwardingStream inner(&buffered);
    ForwardingStream outer(&inner);
    EXPECT_EQ(inner.unflushedBytes(), 17);
    EXPECT_EQ(outer.unflushedBytes(), 17);
}

} // namespace
