#include "rdr/BufferedInStream.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <deque>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/Thrown.h"
#include "lib1/plat/VirtualSlot.h"
#include "rdr/BlockException.h"
#include "rdr/EndOfStream.h"

namespace {

using rdr::BlockException;
using rdr::BufferedInStream;
using rdr::EndOfStream;
using testing::ElementsAre;

// A source that delivers pieces; an empty one says that there is no data now. It ends behind them.
class PieceInStream : public BufferedInStream {
public:
    explicit PieceInStream(std::deque<std::string> script, int size = -1, bool isRewindable = true)
        : BufferedInStream(size), pieces(std::move(script)) {
        rewindable = isRewindable;
    }

    int read(void* buf, int len) override {
        asked.push_back(len);
        if (pieces.empty())
            throw EndOfStream();
        std::string& piece = pieces.front();
        const std::size_t n = std::min(piece.size(), std::size_t(len));
        std::memcpy(buf, piece.data(), n);
        piece.erase(0, n);
        if (piece.empty())
            pieces.pop_front();
        return int(n);
    }

    std::string rest() const { return {ptr, end}; }
    using InStream::checkpointPtr;

    std::vector<int> asked; ///< the lengths of all reads

private:
    std::deque<std::string> pieces;
};

TEST(BufferedInStream, LaysItsOperationsOutInOrder) {
    EXPECT_EQ(virtualSlot(&BufferedInStream::pos), 2U);
    EXPECT_EQ(virtualSlot(&BufferedInStream::overrun), 7U);
    EXPECT_EQ(virtualSlot(&BufferedInStream::read), 8U);
}

TEST(BufferedInStream, StartsEmpty) {
    PieceInStream in({"a"});
    EXPECT_EQ(in.getPtr(), in.getEnd());
    EXPECT_EQ(in.getPtr(), in.checkpointPtr);
    EXPECT_NE(in.getPtr(), nullptr);
    EXPECT_EQ(in.pos(), 0);
    EXPECT_FALSE(in.dump);
}

TEST(BufferedInStream, Has16800BytesOrWhatIsAskedFor) {
    for (const auto& [size, expected] :
         {std::pair(-1, 16800), std::pair(INT_MIN, 16800), std::pair(1, 1), std::pair(7, 7)}) {
        PieceInStream in({"a"}, size);
        in.overrun(1);
        EXPECT_THAT(in.asked, ElementsAre(expected));
    }
}

TEST(BufferedInStream, FillsInUpToTheItem) {
    PieceInStream in({"ab", "c", "defg", "h"}, 100);
    EXPECT_TRUE(in.overrun(5));
    EXPECT_EQ(in.rest(), "abcdefg");
    EXPECT_THAT(in.asked, ElementsAre(100, 98, 97));
    EXPECT_TRUE(in.overrun(7));
    EXPECT_EQ(in.asked.size(), 3U) << "they are there already";
    EXPECT_TRUE(in.overrun(8));
    EXPECT_EQ(in.rest(), "abcdefgh");
}

TEST(BufferedInStream, FillsInNoMoreThanItsBufferHolds) {
    PieceInStream in({"abcdefghij"}, 4);
    EXPECT_TRUE(in.overrun(100));
    EXPECT_EQ(in.rest(), "abcd");
    EXPECT_TRUE(in.overrun(INT_MAX));
    EXPECT_THAT(in.asked, ElementsAre(4));
}

TEST(BufferedInStream, TellsThatThereIsNoDataNow) {
    PieceInStream in({"ab", "", "c"}, 10);
    EXPECT_FALSE(in.overrun(3));
    EXPECT_EQ(in.rest(), "ab") << "what has come is kept";
    EXPECT_TRUE(in.overrun(3));
    EXPECT_EQ(in.rest(), "abc");
}

TEST(BufferedInStream, KeepsWhatHasComeWhenItEnds) {
    PieceInStream in({"ab"}, 10);
    EXPECT_THROW(in.overrun(3), EndOfStream);
    EXPECT_EQ(in.rest(), "ab");
}

TEST(BufferedInStream, KeepsWhatWasReadSinceTheCheckpoint) {
    PieceInStream in({"abcd", "efgh"}, 6);
    in.overrun(4);
    in.skip(1);
    in.checkpoint();
    in.skip(2);
    const unsigned char* const start = in.getPtr() - 3;
    EXPECT_TRUE(in.overrun(3));
    EXPECT_EQ(in.checkpointPtr, start) << "moved to the start";
    EXPECT_EQ(in.pos(), 3);
    EXPECT_EQ(in.rest(), "defg");
    in.rewind();
    EXPECT_EQ(in.pos(), 1);
    EXPECT_EQ(in.rest(), "bcdefg");
    EXPECT_THAT(in.asked, ElementsAre(6, 3));
}

TEST(BufferedInStream, MovesEvenWhatOverlaps) {
    std::string data;
    for (int i = 0; i < 1000; ++i)
        data += char('a' + i % 26);
    PieceInStream in({data}, 100, false);
    std::string read;
    for (const int n : {1, 99, 3, 50, 100, 98, 7, 64}) {
        std::vector<unsigned char> scratch(100);
        const unsigned char* const p = in.getItem_(scratch.data(), n);
        read.append(p, p + n);
        EXPECT_EQ(in.pos(), int(read.size()));
    }
    EXPECT_EQ(read, data.substr(0, read.size()));
}

TEST(BufferedInStream, HasRoomForAMessageOfItsSize) {
    PieceInStream in({"abcd", "efgh"}, 4);
    in.skip(4);
    EXPECT_TRUE(in.overrun(1)) << "with nothing new";
    EXPECT_EQ(in.rest(), "");
    EXPECT_EQ(thrown([&] { in.skip(1); }), ": InStream overrun: buffer size exceeded");
    in.checkpoint();
    in.skip(4);
    EXPECT_EQ(in.pos(), 8);
}

TEST(BufferedInStream, ReadsNothingLongerThanItsBufferWhereItCanRewind) {
    const std::string tooLong = ": InStream overrun: buffer size exceeded";
    PieceInStream line({"abcdefgh\n"}, 4);
    plat::DString read;
    EXPECT_EQ(thrown([&] { line.readLine(&read); }), tooLong);
    EXPECT_STREQ(read.get(), "abcd");
    PieceInStream item({"abcdefgh"}, 4);
    unsigned char scratch[5];
    EXPECT_EQ(thrown([&] { item.getItem_(scratch, 5); }), tooLong);
}

TEST(BufferedInStream, ReadsAnyLengthWithoutRewinding) {
    PieceInStream in({std::string(1000, 'x') + "\nabc"}, 4, false);
    plat::DString line;
    EXPECT_EQ(in.readLine(&line), 1000);
    EXPECT_EQ(in.readLine(&line), 3);
    EXPECT_EQ(in.pos(), 1004);
}

TEST(BufferedInStream, StartsAMessageAgain) {
    PieceInStream in({"ab", "", "c", "", "\n", ""}, 10);
    plat::DString line;
    EXPECT_THROW(in.readLine(&line), BlockException);
    EXPECT_EQ(in.pos(), 0);
    EXPECT_THROW(in.readLine(&line), BlockException);
    EXPECT_EQ(in.readLine(&line), 3);
    EXPECT_STREQ(line.get(), "abc");
}

TEST(BufferedInStream, CanBeOfNoSize) {
    PieceInStream in({"a"}, 0);
    EXPECT_TRUE(in.overrun(1));
    EXPECT_EQ(thrown([&] { in.skip(1); }), ": InStream overrun: buffer size exceeded");
}

TEST(BufferedInStream, CountsOnBehindTheLargestPosition) {
    struct Endless : BufferedInStream {
        Endless() : BufferedInStream(1 << 24) { rewindable = false; }
        int read(void*, int len) override { return len; }
    } in;
    in.skip(INT_MAX);
    EXPECT_EQ(in.pos(), INT_MAX);
    in.skip(1);
    EXPECT_EQ(in.pos(), INT_MIN);
    in.skip(1 << 25);
    EXPECT_EQ(in.pos(), INT_MIN + (1 << 25));
}

TEST(BufferedInStreamDump, PrintsWhatIsRead) {
    PieceInStream in({"ab", std::string(17, 'x')});
    testing::internal::CaptureStderr();
    in.skip(1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    in.dump = true;
    testing::internal::CaptureStderr();
    in.overrun(10);
    const std::string text = testing::internal::GetCapturedStderr();
    EXPECT_THAT(text, testing::StartsWith(" <-- "));
    EXPECT_THAT(text, testing::HasSubstr("\n     78 ")) << "five blanks in front";
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2);
    EXPECT_EQ(text.find("61"), std::string::npos) << "not what was read before";
}

TEST(BufferedInStreamDump, PrintsEachBlockOnItsOwn) {
    PieceInStream in({"abc", "de"});
    in.dump = true;
    testing::internal::CaptureStderr();
    in.overrun(5);
    const std::string text = testing::internal::GetCapturedStderr();
    EXPECT_THAT(text,
                testing::MatchesRegex(" <-- [^\n]*61 62 63 [^\n]*\n <-- [^\n]*64 65 [^\n]*\n"));
}

TEST(BufferedInStreamDeathTest, AssertsWhatReadReturns) {
    struct Liar : BufferedInStream {
        explicit Liar(int n) : BufferedInStream(4), result(n) {}
        int read(void*, int) override { return result; }
        int result;
    };
    EXPECT_DEATH(Liar(5).overrun(1), "Assertion 'count > 0 && count <= room' failed");
    EXPECT_DEATH(Liar(-1).overrun(1), "Assertion 'count > 0 && count <= room' failed");
}

} // namespace
