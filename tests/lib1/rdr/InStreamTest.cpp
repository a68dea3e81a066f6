#include "rdr/InStream.h"

#include <climits>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/FreedBytes.h"
#include "lib1/plat/VirtualSlot.h"
#include "lib1/rdr/ScriptedInStream.h"
#include "rdr/StringTooLongException.h"

namespace {

using rdr::BlockException;
using rdr::EndOfMsg;
using rdr::EndOfStream;
using rdr::InStream;
using rdr::StringTooLongException;
using testing::ElementsAre;

using Array = std::unique_ptr<char[]>;

// What an exception said; "" when nothing was thrown.
template <typename Call>
std::string thrownText(Call call) {
    try {
        call();
    } catch (const plat::Exception& e) {
        return e.message.get();
    }
    return "";
}

// Rewindable or not, a reader does the same as long as no data is missing.
class EitherInStream : public testing::TestWithParam<bool> {
protected:
    ScriptedInStream stream(std::deque<SourceStep> script, int capacity = 1 << 20) const {
        return ScriptedInStream(std::move(script), GetParam(), capacity);
    }
};
INSTANTIATE_TEST_SUITE_P(Kinds, EitherInStream, testing::Bool(), [](const auto& row) {
    return row.param ? "Rewindable" : "NotRewindable";
});

TEST(InStream, LaysItsOperationsOutInOrder) {
    // The destructor takes the first two slots.
    EXPECT_EQ(virtualSlot(&InStream::pos), 2U);
    EXPECT_EQ(virtualSlot(&InStream::checkpoint), 3U);
    EXPECT_EQ(virtualSlot(&InStream::rewind), 4U);
    EXPECT_EQ(virtualSlot(&InStream::reposition), 5U);
    EXPECT_EQ(virtualSlot(&InStream::atEndMsg), 6U);
    EXPECT_EQ(virtualSlot(&InStream::overrun), 7U);
}

TEST(InStream, StartsEmptyAndRewindable) {
    struct Bare : InStream {
        int pos() override { return 7; }
        bool overrun(int) override { return false; }
        using InStream::checkpointPos;
        using InStream::checkpointPtr;
        using InStream::rewindable;
    } stream;
    EXPECT_EQ(stream.getPtr(), nullptr);
    EXPECT_EQ(stream.getEnd(), nullptr);
    EXPECT_EQ(stream.checkpointPtr, nullptr);
    EXPECT_EQ(stream.checkpointPos, 0);
    EXPECT_TRUE(stream.rewindable);
    EXPECT_FALSE(stream.atEndMsg());
    stream.checkpoint();
    EXPECT_EQ(stream.checkpointPos, 7);
    EXPECT_FALSE(stream.overrunOrRewind(false, 1));
}

TEST(InStreamExceptions, CarryTheirTextsAndNames) {
    EXPECT_STREQ(BlockException().message.get(), "Reading from InStream would block");
    EXPECT_STREQ(BlockException().typeName.get(), "BlockException");
    EXPECT_STREQ(StringTooLongException().message.get(), "String exceeds maximum length");
    EXPECT_STREQ(StringTooLongException().typeName.get(), "StringTooLongException");
    EXPECT_STREQ(EndOfStream().message.get(), "End of stream");
    EXPECT_STREQ(EndOfStream().typeName.get(), "EndOfStream");
    EXPECT_STREQ(EndOfMsg().typeName.get(), "EndOfMsg");
}

TEST_P(EitherInStream, RefillTellsThatThereAreBytes) {
    ScriptedInStream in = stream({bytes("ab"), bytes("c")});
    EXPECT_TRUE(in.overrunOrRewind(true, 3));
    EXPECT_EQ(in.rest(), "abc");
    EXPECT_THAT(in.requests, ElementsAre(3));
}

TEST_P(EitherInStream, RefillTellsThatThereAreNone) {
    for (const SourceStep& none : {noData, throwsBlock}) {
        ScriptedInStream in = stream({none, none, bytes("a")});
        EXPECT_FALSE(in.overrunOrRewind(false, 1));
        EXPECT_EQ(thrownText([&] { in.overrunOrRewind(true, 1); }),
                  "Reading from InStream would block");
        EXPECT_TRUE(in.overrunOrRewind(false, 1));
    }
}

TEST_P(EitherInStream, RefillReplacesABlockExceptionByItsOwn) {
    struct OwnText : ScriptedInStream {
        using ScriptedInStream::ScriptedInStream;
        bool overrun(int) override {
            BlockException e;
            e.message.append(", I say");
            throw e;
        }
    } in({}, GetParam());
    EXPECT_EQ(thrownText([&] { in.overrunOrRewind(true, 1); }),
              "Reading from InStream would block");
}

TEST_P(EitherInStream, RefillPassesOtherExceptionsOn) {
    ScriptedInStream in = stream({bytes("ab"), endsMessage, fails});
    in.overrunOrRewind(true, 1);
    in.skip(1);
    EXPECT_THROW(in.overrunOrRewind(false, 2), EndOfMsg);
    EXPECT_EQ(thrownText([&] { in.overrunOrRewind(false, 2); }), "broken");
    EXPECT_THROW(in.overrunOrRewind(false, 2), EndOfStream);
    EXPECT_EQ(in.rest(), "b") << "went back";
}

TEST(InStreamRefill, GoesBackToTheCheckpointForLackOfData) {
    ScriptedInStream in({bytes("abcd"), noData, throwsBlock, bytes("e")});
    in.skip(1);
    in.checkpoint();
    in.skip(3);
    EXPECT_FALSE(in.overrunOrRewind(false, 1));
    EXPECT_EQ(in.rest(), "bcd");
    EXPECT_THROW(in.skip(4), BlockException);
    EXPECT_EQ(in.pos(), 1);
    in.skip(4);
    EXPECT_EQ(in.pos(), 5);
}

TEST(InStreamRefill, StaysWhereItWasWithoutRewinding) {
    ScriptedInStream in({bytes("abc"), noData, bytes("d")}, false);
    in.skip(3);
    EXPECT_THROW(in.skip(1), BlockException);
    EXPECT_EQ(in.pos(), 3);
    in.skip(1);
    EXPECT_EQ(in.pos(), 4);
}

TEST(InStreamRefill, FailsOnceTheBufferIsFullOfKeptBytes) {
    ScriptedInStream in({bytes("abcdef")}, true, 4);
    in.skip(4);
    EXPECT_EQ(thrownText([&] { in.skip(1); }), "InStream overrun: buffer size exceeded");
    EXPECT_EQ(thrownText([&] { in.overrunOrRewind(false, 1); }),
              "InStream overrun: buffer size exceeded");
    in.checkpoint();
    in.skip(2);
    EXPECT_EQ(in.pos(), 6);
}

TEST(InStreamRefill, TakesNoRewindingForALongReadOfSmallPieces) {
    ScriptedInStream in({bytes(std::string(100, 'x'))}, false, 4);
    in.skip(100);
    EXPECT_EQ(in.pos(), 100);
}

TEST(InStreamRewind, GoesBackToTheCheckpoint) {
    ScriptedInStream in({bytes("abcdef")});
    in.skip(2);
    in.checkpoint();
    in.skip(3);
    in.rewind();
    EXPECT_EQ(in.pos(), 2);
    EXPECT_EQ(in.rest(), "cdef");
}

TEST(InStreamRewind, ThrowsWhereItIsNotRewindable) {
    ScriptedInStream in({bytes("abc")}, false);
    in.skip(2);
    EXPECT_EQ(thrownText([&] { in.rewind(); }), "Attempt to rewind a non-rewindable stream");
    EXPECT_EQ(in.pos(), 2);
}

TEST(InStreamReposition, GoesToAPositionFromTheCheckpoint) {
    ScriptedInStream in({bytes("abc"), bytes("def")});
    in.skip(1);
    in.checkpoint();
    in.skip(1);
    in.reposition(5);
    EXPECT_EQ(in.pos(), 5);
    EXPECT_EQ(in.rest(), "f");
    in.reposition(1);
    EXPECT_EQ(in.pos(), 1);
    EXPECT_EQ(thrownText([&] { in.reposition(0); }), "Can't reposition before checkpoint");
    EXPECT_EQ(in.pos(), 1);
    EXPECT_THROW(in.reposition(7), EndOfStream);
}

TEST(InStreamReposition, ThrowsWhereItIsNotRewindable) {
    ScriptedInStream in({bytes("abc")}, false);
    in.skip(1);
    EXPECT_EQ(thrownText([&] { in.reposition(2); }), "Attempt to rewind a non-rewindable stream");
    EXPECT_EQ(thrownText([&] { in.reposition(0); }), "Attempt to rewind a non-rewindable stream");
    EXPECT_EQ(thrownText([&] { in.reposition(-1); }), "Can't reposition before checkpoint");
}

TEST(InStreamSetPtr, MovesForwardInTheBuffer) {
    ScriptedInStream in({bytes("abc")});
    in.skip(1);
    in.setPtr(in.getPtr());
    EXPECT_EQ(in.rest(), "bc");
    in.setPtr(in.getPtr() + 1);
    EXPECT_EQ(in.rest(), "c");
    in.setPtr(in.getEnd());
    EXPECT_EQ(in.rest(), "");
}

TEST(InStreamSetPtrDeathTest, AssertsThePointer) {
    ScriptedInStream in({bytes("abc")});
    in.skip(1);
    const char* const text = "^Assertion 'p >= ptr && p <= end' failed at lib1/rdr/InStream.h:";
    EXPECT_DEATH(in.setPtr(in.getPtr() - 1), text);
    EXPECT_DEATH(in.setPtr(in.getEnd() + 1), text);
    EXPECT_DEATH(in.setPtr(nullptr), text);
}

std::string item(InStream& in, int size) {
    unsigned char scratch[16] = {};
    const unsigned char* const p = in.getItem_(scratch, size);
    return {p, p + size};
}

TEST_P(EitherInStream, HandsAnItemOutWithoutCopying) {
    ScriptedInStream in = stream({bytes("abcdef")});
    unsigned char scratch[4] = {};
    EXPECT_EQ(item(in, 2), "ab");
    const unsigned char* const start = in.getPtr();
    EXPECT_EQ(in.getItem_(scratch, 4), start);
    EXPECT_EQ(scratch[0], 0);
    EXPECT_EQ(in.getPtr(), start + 4);
    EXPECT_THAT(in.requests, ElementsAre(2));
}

TEST_P(EitherInStream, RefillsForAWholeItem) {
    ScriptedInStream in = stream({bytes("a"), bytes("b"), bytes("cd")});
    EXPECT_EQ(item(in, 4), "abcd");
    EXPECT_THAT(in.requests, ElementsAre(4));
}

TEST(InStreamItem, IsCopiedWhereTheBufferIsTooSmall) {
    ScriptedInStream in({bytes("abcdefghij")}, false, 4);
    in.skip(3);
    unsigned char scratch[6] = {};
    EXPECT_EQ(in.getItem_(scratch, 6), scratch);
    EXPECT_EQ(std::string(scratch, scratch + 6), "defghi");
    EXPECT_THAT(in.requests, ElementsAre(1, 6, 1));
    EXPECT_EQ(in.pos(), 9);
}

TEST(InStreamItem, GoesBackToTheCheckpointForLackOfData) {
    ScriptedInStream in({bytes("abc"), noData, bytes("d")});
    EXPECT_THROW(item(in, 4), BlockException);
    EXPECT_EQ(in.rest(), "abc");
    EXPECT_EQ(item(in, 4), "abcd");
}

TEST(InStreamItem, PassesTheEndOn) {
    ScriptedInStream in({bytes("abc")});
    EXPECT_THROW(item(in, 4), EndOfStream);
    EXPECT_EQ(in.rest(), "abc");
    EXPECT_EQ(item(in, 3), "abc");
}

struct ItemsRow {
    const char* name;
    int buffered;
    int wanted;
    int delivered;
    friend void PrintTo(const ItemsRow& row, std::ostream* out) { *out << row.name; }
};
class InStreamItems : public testing::TestWithParam<ItemsRow> {};
INSTANTIATE_TEST_SUITE_P(Counts, InStreamItems,
                         testing::Values(ItemsRow{"One", 9, 1, 1}, ItemsRow{"AllButOne", 9, 2, 2},
                                         ItemsRow{"All", 9, 3, 3}, ItemsRow{"Fewer", 9, 4, 3},
                                         ItemsRow{"WholeOnesOnly", 8, INT_MAX, 2},
                                         ItemsRow{"OneOnly", 5, 2, 1}),
                         [](const auto& row) { return row.param.name; });

TEST_P(InStreamItems, AreThoseInTheBuffer) {
    const auto& [name, buffered, wanted, delivered] = GetParam();
    ScriptedInStream in({bytes(std::string("abcdefghi").substr(0, std::size_t(buffered)))});
    in.overrunOrRewind(true, buffered);
    unsigned char scratch[3];
    int n = wanted;
    const unsigned char* const start = in.getPtr();
    EXPECT_EQ(in.getItems(scratch, 3, &n), start);
    EXPECT_EQ(n, delivered);
    EXPECT_EQ(in.pos(), 3 * delivered);
    EXPECT_THAT(in.requests, ElementsAre(buffered));
}

TEST(InStreamItems, AreRefilledToOneAtLeast) {
    ScriptedInStream in({bytes("a"), bytes("bcdefgh")});
    in.overrunOrRewind(true, 1);
    unsigned char scratch[3];
    int n = 5;
    const unsigned char* const items = in.getItems(scratch, 3, &n);
    EXPECT_EQ(n, 2);
    EXPECT_EQ(std::string(items, items + 6), "abcdef");
    EXPECT_THAT(in.requests, ElementsAre(1, 3));
}

TEST(InStreamItems, AreOneInTheScratchWhereTheBufferIsTooSmall) {
    ScriptedInStream in({bytes("abcdefghij")}, false, 2);
    unsigned char scratch[3];
    int n = 3;
    EXPECT_EQ(in.getItems(scratch, 3, &n), scratch);
    EXPECT_EQ(n, 1);
    EXPECT_EQ(std::string(scratch, scratch + 3), "abc");
    EXPECT_EQ(in.pos(), 3);
}

TEST(InStreamItemsDeathTest, AssertsThatSomeAreWanted) {
    ScriptedInStream in({bytes("abc")});
    unsigned char scratch[1];
    for (int n : {0, -1, INT_MIN})
        EXPECT_DEATH(in.getItems(scratch, 1, &n), "^Assertion '\\*nItems > 0' failed at ");
}

std::string withLongLength(std::uint32_t length, const std::string& text) {
    const char header[] = {char(length >> 24), char(length >> 16), char(length >> 8), char(length)};
    return std::string(header, 4) + text;
}

// One byte at a time, with a pause before each: everything straddles.
std::deque<SourceStep> byteByByte(const std::string& text) {
    std::deque<SourceStep> script;
    for (const char c : text)
        script.push_back(bytes(std::string(1, c)));
    return script;
}

TEST_P(EitherInStream, ReadsLongStrings) {
    const std::string text("a\0b\xFF", 4); // any bytes
    for (const bool inOne : {true, false}) {
        const std::string data = withLongLength(4, text) + withLongLength(0, "");
        ScriptedInStream in = stream(inOne ? std::deque{bytes(data)} : byteByByte(data));
        const Array read(in.readLongString(4));
        EXPECT_EQ(std::string(read.get(), 5), text + '\0');
        const Array empty(in.readLongString(0));
        EXPECT_STREQ(empty.get(), "");
        EXPECT_THROW(in.readLongString(4), EndOfStream);
    }
}

TEST(InStreamLongString, TakesItsLengthWithTheMostSignificantByteFirst) {
    ScriptedInStream in({bytes(withLongLength(0x010203, std::string(0x010203, 'x')))});
    const Array read(in.readLongString(UINT_MAX));
    EXPECT_EQ(std::strlen(read.get()), 0x010203U);
}

TEST(InStreamLongString, OfTheLargestLengthHasRoomForItsNulOrNone) {
    if (sizeof(std::size_t) > sizeof(std::uint32_t))
        GTEST_SKIP() << "only with 32 bits the two make 0";
    ScriptedInStream in({bytes(withLongLength(UINT_MAX, "abc"))});
    EXPECT_THROW(in.readLongString(UINT_MAX), std::bad_alloc);
    EXPECT_EQ(in.rest(), "abc");
}

TEST(InStreamLongString, IsReadInPiecesOfASmallBuffer) {
    const std::string text = "The quick brown fox jumps over the lazy dog";
    ScriptedInStream in({bytes(withLongLength(std::uint32_t(text.size()), text))}, false, 5);
    const Array read(in.readLongString(1000));
    EXPECT_EQ(read.get(), text);
}

TEST_P(EitherInStream, RefusesLongStringsByTheirLength) {
    ScriptedInStream in = stream({bytes(withLongLength(6, "abcdef"))});
    EXPECT_EQ(thrownText([&] { in.readLongString(5); }), "String exceeds maximum length");
    EXPECT_EQ(in.pos(), 4);
    ScriptedInStream top = stream({bytes(withLongLength(UINT_MAX, "abcdef"))});
    EXPECT_THROW(top.readLongString(UINT_MAX - 1), StringTooLongException);
    EXPECT_EQ(top.pos(), 4);
}

TEST(InStreamLongString, IsReadAgainAfterALackOfData) {
    const std::string data = withLongLength(3, "abc");
    for (std::size_t cut = 0; cut < data.size(); ++cut) {
        ScriptedInStream in({bytes(data.substr(0, cut)), noData, bytes(data.substr(cut))});
        EXPECT_THROW(in.readLongString(9), BlockException);
        EXPECT_EQ(in.pos(), 0);
        const Array read(in.readLongString(9));
        EXPECT_STREQ(read.get(), "abc");
    }
}

TEST_P(EitherInStream, ReadsShortStrings) {
    const std::string longest(255, 'x');
    const std::string text("a\0b\xFF", 4);
    const std::string data = '\xFF' + longest + '\x04' + text + '\0';
    for (const bool inOne : {true, false}) {
        const auto script = inOne ? std::deque{bytes(data)} : byteByByte(data);
        ScriptedInStream into = stream(script);
        ScriptedInStream fresh = stream(script);
        ScriptedInStream secure = stream(script);
        for (const std::string& expected : {longest, text, std::string()}) {
            const std::string withNul = expected + '\0';
            char dest[256];
            std::memset(dest, 'y', sizeof dest);
            into.readShortString(dest);
            EXPECT_EQ(std::string(dest, withNul.size()), withNul);
            const Array array(fresh.readShortString());
            EXPECT_EQ(std::string(array.get(), withNul.size()), withNul);
            const Array secret(secure.readShortSecureString());
            EXPECT_EQ(std::string(secret.get(), withNul.size()), withNul);
        }
        char dest[256];
        EXPECT_THROW(into.readShortString(dest), EndOfStream);
        EXPECT_THROW(fresh.readShortString(), EndOfStream);
        EXPECT_THROW(secure.readShortSecureString(), EndOfStream);
    }
}

// The sanitizers that look for leaks see the arrays of readers that fail halfway.
TEST_P(EitherInStream, FreesAStringThatEndsHalfway) {
    const std::string cutShort = "\x05"
                                 "abc";
    EXPECT_THROW(stream({bytes(cutShort)}).readShortString(), EndOfStream);
    EXPECT_THROW(stream({bytes(cutShort)}).readShortSecureString(), EndOfStream);
    EXPECT_THROW(stream({bytes(cutShort), noData}).readShortSecureString(), BlockException);
    EXPECT_THROW(stream({bytes(withLongLength(5, "abc")), fails}).readLongString(5),
                 plat::Exception);
    ScriptedInStream half = stream({bytes(withLongLength(FreedBytes::watchedSize - 1, "secret"))});
    FreedBytes::last = {};
    EXPECT_THROW(half.readLongString(10000), EndOfStream);
    EXPECT_EQ(std::string(FreedBytes::last.data(), 6), "secret") << "the array was not freed";
}

TEST_P(EitherInStream, SkipsBytes) {
    ScriptedInStream in = stream({bytes("ab"), bytes("cde"), bytes("f")});
    in.skip(0);
    in.skip(-1);
    in.skip(INT_MIN);
    EXPECT_THAT(in.requests, ElementsAre());
    in.skip(4);
    EXPECT_EQ(in.pos(), 4);
    EXPECT_EQ(in.rest(), "e");
    in.skip(2);
    EXPECT_THROW(in.skip(INT_MAX), EndOfStream);
    EXPECT_EQ(in.pos(), 6);
}

TEST_P(EitherInStream, SkipsWhatIsAvailable) {
    ScriptedInStream in = stream({bytes("abc"), noData, bytes("de"), noData});
    EXPECT_EQ(in.skipAvailBytes(2, true), 2);
    EXPECT_EQ(in.skipAvailBytes(2, true), 1);
    in.checkpoint();
    EXPECT_EQ(in.skipAvailBytes(2, false), 0);
    EXPECT_EQ(in.skipAvailBytes(INT_MAX, false), 2);
    in.checkpoint();
    EXPECT_THROW(in.skipAvailBytes(1, true), BlockException);
    EXPECT_THROW(in.skipAvailBytes(1, false), EndOfStream);
    EXPECT_EQ(in.pos(), 5);
}

TEST_P(EitherInStream, RefillsOnceToSkipNothing) {
    ScriptedInStream in = stream({bytes("abc"), noData});
    EXPECT_EQ(in.skipAvailBytes(0, true), 0);
    EXPECT_EQ(in.skipAvailBytes(-1, true), 0);
    EXPECT_THAT(in.requests, ElementsAre(1));
    EXPECT_EQ(in.rest(), "abc");
    EXPECT_EQ(in.skipAvailBytes(9, true), 3);
    EXPECT_THROW(in.skipAvailBytes(0, true), BlockException);
}

TEST_P(EitherInStream, SkipsNothingBackwards) {
    ScriptedInStream in = stream({bytes("abc")});
    in.skip(2);
    EXPECT_EQ(in.skipAvailBytes(0, true), 0);
    EXPECT_EQ(in.skipAvailBytes(-1, true), 0);
    EXPECT_EQ(in.skipAvailBytes(INT_MIN, true), 0);
    EXPECT_EQ(in.pos(), 2);
}

std::string line(InStream& in, int maxLen = 0) {
    plat::DString read;
    const int length = in.readLine(&read, maxLen);
    EXPECT_EQ(read.get()[length], '\0');
    return {read.get(), std::size_t(length)};
}

struct LinesRow {
    const char* name;
    std::string data;
    std::vector<std::string> lines;
    friend void PrintTo(const LinesRow& row, std::ostream* out) { *out << row.name; }
};
class InStreamLines : public testing::TestWithParam<LinesRow> {};
INSTANTIATE_TEST_SUITE_P(
    Texts, InStreamLines,
    testing::Values(LinesRow{"None", "", {}}, LinesRow{"OneEmpty", "\n", {""}},
                    LinesRow{"TwoEmpty", "\n\n", {"", ""}}, LinesRow{"One", "abc\n", {"abc"}},
                    LinesRow{"LastUnended", "abc\r\ndef", {"abc", "def"}},
                    LinesRow{"ReturnsAnywhere", "\ra\r\rb\n\rc\r", {"ab", "c"}},
                    LinesRow{"ReturnsOnly", "\r\r", {}},
                    LinesRow{"EmptyOfReturns", "\r\r\n\r", {""}},
                    LinesRow{"Nuls",
                             std::string("a\0b\n\0\n\0", 7),
                             {std::string("a\0b", 3), std::string(1, '\0'), std::string(1, '\0')}},
                    LinesRow{"Long",
                             std::string(1000, 'x') + "\r\n" + std::string(70, 'y'),
                             {std::string(1000, 'x'), std::string(70, 'y')}}),
    [](const auto& row) { return row.param.name; });

TEST_P(InStreamLines, AreReadOneByOne) {
    for (const bool inOne : {true, false}) {
        const auto script =
            inOne ? std::deque{bytes(GetParam().data)} : byteByByte(GetParam().data);
        ScriptedInStream in(script);
        for (const std::string& expected : GetParam().lines)
            EXPECT_EQ(line(in), expected);
        EXPECT_THROW(line(in), EndOfStream);
        EXPECT_THROW(line(in), EndOfStream);
    }
}

TEST_P(InStreamLines, AreReadIntoAnArray) {
    for (const bool inOne : {true, false}) {
        const auto script =
            inOne ? std::deque{bytes(GetParam().data)} : byteByByte(GetParam().data);
        ScriptedInStream in(script);
        char dest[1002];
        for (const std::string& expected : GetParam().lines) {
            std::memset(dest, 'z', sizeof dest);
            const std::string withNul = expected + '\0';
            EXPECT_EQ(in.readLine(dest, sizeof dest), int(expected.size()));
            EXPECT_EQ(std::string(dest, withNul.size()), withNul);
            EXPECT_EQ(dest[withNul.size()], 'z');
        }
        EXPECT_THROW(in.readLine(dest, sizeof dest), EndOfStream);
    }
}

TEST(InStreamLine, MayHaveItsLastByteAndAReturnAnywhere) {
    for (std::size_t length = 0; length <= 130; ++length) {
        for (std::size_t place = 0; place <= length; ++place) {
            const std::string text(length, '\x8A'); // '\n' with the top bit
            ScriptedInStream in({bytes(std::string(text).insert(place, "\r") + "\nnext\n")});
            ASSERT_EQ(line(in), text) << place;
            ASSERT_EQ(line(in), "next");
        }
    }
}

TEST(InStreamLine, EndsWithTheMessageToo) {
    ScriptedInStream in({bytes("ab"), endsMessage, bytes("cd"), endsMessage, endsMessage});
    EXPECT_EQ(line(in), "ab");
    char dest[4];
    EXPECT_EQ(in.readLine(dest, 4), 2);
    EXPECT_STREQ(dest, "cd");
    EXPECT_THROW(line(in), EndOfMsg);
}

TEST(InStreamLine, PassesOtherExceptionsOn) {
    ScriptedInStream in({bytes("ab"), fails, bytes("cd"), fails, bytes("\n")}, false);
    EXPECT_EQ(thrownText([&] { line(in); }), "broken");
    char dest[4];
    EXPECT_EQ(thrownText([&] { in.readLine(dest, 4); }), "broken");
    EXPECT_EQ(line(in), "");
}

TEST(InStreamLine, IsAStringAlsoWhenItsReadingFails) {
    for (const SourceStep& failure : {fails, noData, throwsBlock}) {
        ScriptedInStream in({bytes("ab"), failure}, false);
        plat::DString read;
        read.append(std::string(40, 'x').c_str());
        EXPECT_THROW(in.readLine(&read, 0), plat::Exception);
        EXPECT_STREQ(read.get(), "ab");
    }
}

TEST(InStreamLine, IsReadAgainAfterALackOfData) {
    ScriptedInStream in({bytes("ab\r"), noData, bytes("c"), throwsBlock, bytes("\nd")});
    EXPECT_THROW(line(in), BlockException);
    char dest[4];
    EXPECT_THROW(in.readLine(dest, 4), BlockException);
    EXPECT_EQ(line(in), "abc");
    EXPECT_EQ(line(in), "d");
}

TEST(InStreamLine, KeepsWhatTheStringHasRoomFor) {
    ScriptedInStream in({bytes("ab\ncd\n")});
    plat::DString read;
    in.readLine(&read, 0);
    EXPECT_EQ(read.capacity(), 64);
    read.append(" and more");
    const char* const array = read.get();
    in.readLine(&read, 0);
    EXPECT_STREQ(read.get(), "cd");
    EXPECT_EQ(read.get(), array);
}

TEST(InStreamLine, IsNotLongerThanItsMaximum) {
    ScriptedInStream in({bytes("abc\na\rbc\r\nabcd\nabcdef\nx")});
    EXPECT_EQ(line(in, 3), "abc");
    EXPECT_EQ(line(in, 3), "abc");
    plat::DString read;
    EXPECT_EQ(thrownText([&] { in.readLine(&read, 3); }), "String exceeds maximum length");
    EXPECT_STREQ(read.get(), "abcd");
    EXPECT_EQ(line(in, 3), "") << "the fourth byte is read, the line's end is not";
    EXPECT_THROW(in.readLine(&read, 3), StringTooLongException);
    EXPECT_EQ(line(in, 3), "ef");
    EXPECT_EQ(line(in, 1), "x");
}

TEST(InStreamLine, HasAMaximumUnlessOneIsGiven) {
    const std::string longest(262144, 'x');
    ScriptedInStream in({bytes(longest + "\n" + longest + "y\n" + longest + "y")});
    EXPECT_EQ(line(in), longest);
    EXPECT_THROW(line(in), StringTooLongException);
    EXPECT_EQ(line(in, INT_MAX), "");
    EXPECT_EQ(line(in, INT_MAX), longest + "y");
    EXPECT_THROW(line(in, -1), EndOfStream);
}

TEST(InStreamArrayLine, IsCutWhereTheArrayIsFull) {
    ScriptedInStream in({bytes("abcdef\nabcd\ngh\n")});
    char dest[] = "zzzzzz";
    EXPECT_EQ(in.readLine(dest, 4), 4);
    EXPECT_STREQ(dest, "abcdzz") << "no NUL is written";
    EXPECT_EQ(in.readLine(dest, 4), 2);
    EXPECT_STREQ(dest, "ef");
    EXPECT_EQ(in.readLine(dest, 4), 4);
    EXPECT_EQ(in.readLine(dest, 4), 0) << "the '\\n' was left";
    EXPECT_EQ(in.readLine(dest, 1), 1);
    EXPECT_EQ(dest[0], 'g');
    EXPECT_EQ(line(in), "h");
}

TEST(InStreamArrayLine, ReadsNothingIntoNoRoom) {
    ScriptedInStream in({});
    char* const none = nullptr;
    EXPECT_EQ(in.readLine(none, 0), 0);
    EXPECT_EQ(in.readLine(none, -1), 0);
    EXPECT_THAT(in.requests, ElementsAre());
}

// A reader that is told to wait starts again whenever data is missing, and reads what it would have
// read if all had been there at once.
TEST(InStreamMessage, IsTheSameHoweverItsBytesArrive) {
    const std::string data = withLongLength(3, "abc") + "\x02" + "de" + "fg\r\nhij" + "\n";
    const auto readMessage = [](ScriptedInStream& in) {
        const Array longString(in.readLongString(3));
        const Array shortString(in.readShortString());
        const std::string first = line(in);
        return std::string(longString.get()) + '|' + shortString.get() + '|' + first + '|' +
               line(in);
    };
    for (std::size_t a = 0; a < data.size(); ++a) {
        for (std::size_t b = a; b < data.size(); ++b) {
            ScriptedInStream in({bytes(data.substr(0, a)), noData, bytes(data.substr(a, b - a)),
                                 throwsBlock, bytes(data.substr(b))});
            int waits = 0;
            for (std::string read; read.empty();) {
                try {
                    read = readMessage(in);
                    EXPECT_EQ(read, "abc|de|fg|hij");
                } catch (const BlockException&) {
                    ASSERT_EQ(in.pos(), 0);
                    ++waits;
                }
            }
            ASSERT_EQ(waits, 2);
        }
    }
}

} // namespace
