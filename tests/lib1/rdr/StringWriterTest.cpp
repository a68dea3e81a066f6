#include "rdr/StringWriter.h"

#include <climits>
#include <cstdint>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "lib1/SystemTexts.h"
#include "rdr/MemOutStream.h"
#include "rdr/OutStreamFull.h"

namespace {

using rdr::MemOutStream;
using rdr::OutStreamFull;
using rdr::StringWriter;

// The text, which must be NUL-terminated inside the buffer.
std::string textOf(MemOutStream& stream) {
    EXPECT_LT(stream.getPtr(), stream.getEnd());
    EXPECT_EQ(*stream.getPtr(), '\0');
    EXPECT_EQ(std::strlen(reinterpret_cast<const char*>(stream.data())),
              std::size_t(stream.length()));
    return reinterpret_cast<const char*>(stream.data());
}

struct AppendRow {
    const char* name;
    const char* text;
    int max;
    const char* result;
    friend void PrintTo(const AppendRow& row, std::ostream* out) { *out << row.name; }
};
class StringWriterAppend : public testing::TestWithParam<AppendRow> {};
TEST_P(StringWriterAppend, AppendsWhatIsAskedFor) {
    for (const int size : {0, 1, 2, 3, 4, 5, 100}) {
        MemOutStream stream(size);
        StringWriter writer(&stream);
        EXPECT_EQ(&writer.append("x"), &writer);
        EXPECT_EQ(&writer.append(GetParam().text, GetParam().max), &writer);
        EXPECT_EQ(textOf(stream), GetParam().result);
    }
}
INSTANTIATE_TEST_SUITE_P(
    Texts, StringWriterAppend,
    testing::Values(AppendRow{"All", "abc", -1, "xabc"}, AppendRow{"Some", "abc", 2, "xab"},
                    AppendRow{"LimitBeyondTheEnd", "abc", 9, "xabc"},
                    AppendRow{"Nothing", "abc", 0, "x"}, AppendRow{"Empty", "", -1, "x"},
                    AppendRow{"Null", nullptr, -1, "x"}, AppendRow{"SomeOfNull", nullptr, 3, "x"}),
    [](const auto& row) { return row.param.name; });

TEST(StringWriterAppend, PutsANulBehindNothing) {
    MemOutStream stream(0);
    StringWriter(&stream).append("");
    EXPECT_EQ(textOf(stream), "");
}

// Counts what goes through the stream's own operation.
class CountingStream : public rdr::OutStream {
public:
    CountingStream() {
        ptr = bytes;
        end = bytes + sizeof bytes;
    }
    void writeBytes(const void* data, int len) override {
        ++writes;
        OutStream::writeBytes(data, len);
    }
    int length() override { return int(ptr - bytes); }
    int nonBlockingBytes() override { return int(end - ptr); }
    int overrun(int, int) override { throw OutStreamFull(); }

    int writes = 0;
    unsigned char bytes[64];
};

TEST(StringWriterAppend, WritesThroughTheStream) {
    CountingStream stream;
    StringWriter(&stream).append("abc").append("def", 2);
    EXPECT_EQ(stream.writes, 2);
    EXPECT_STREQ(reinterpret_cast<const char*>(stream.bytes), "abcde");
}

TEST(StringWriterFormat, GrowsASmallStreamOnce) {
    MemOutStream stream(8);
    StringWriter writer(&stream);
    EXPECT_EQ(&writer.prf("%d", 123456789), &writer);
    EXPECT_EQ(textOf(stream), "123456789");
    EXPECT_EQ(stream.getEnd() - stream.data(), 16);
}

TEST(StringWriterFormat, AppendsFormattedText) {
    MemOutStream stream;
    StringWriter(&stream).append("x=").prf("%d, %s", 42, "y").prf("%c", '!');
    EXPECT_EQ(textOf(stream), "x=42, y!");
}

class StringWriterFormatLength : public testing::TestWithParam<int> {};
TEST_P(StringWriterFormatLength, TakesAnyLengthInAnyRoom) {
    const std::string text(std::size_t(GetParam()), 'a');
    for (const int size : {0, 1, 7, 8, 9, 100}) {
        MemOutStream stream(size);
        StringWriter(&stream).prf("%s", text.c_str());
        EXPECT_EQ(textOf(stream), text);
    }
}
INSTANTIATE_TEST_SUITE_P(Lengths, StringWriterFormatLength,
                         testing::Values(0, 1, 2, 3, 6, 7, 8, 98, 99, 100, 101, 5000));

TEST(StringWriterFormat, GoesOnWithMoreRoomUntilTheStreamIsFull) {
    // A character that the locale cannot write is an error of the formatter, in any room.
    ASSERT_TRUE(setLocale("C"));
    MemOutStream stream(4, 1000);
    StringWriter writer(&stream);
    writer.append("abc");
    EXPECT_THROW(writer.prf("%ls", L"\x20AC"), OutStreamFull);
    EXPECT_EQ(stream.length(), 3);
}

TEST(StringWriterAppendChar, AppendsOneCharacter) {
    for (const int size : {0, 1, 2, 3, 100}) {
        MemOutStream stream(size);
        StringWriter writer(&stream);
        EXPECT_EQ(&writer.appendChar('a'), &writer);
        EXPECT_EQ(textOf(stream), "a");
        writer.appendChar('b').appendChar('c');
        EXPECT_EQ(textOf(stream), "abc");
    }
}

TEST(StringWriterAppendChar, AppendsManyCharacters) {
    MemOutStream stream(0);
    StringWriter writer(&stream);
    EXPECT_EQ(&writer.appendChar('a', 3), &writer);
    EXPECT_EQ(textOf(stream), "aaa");
    EXPECT_EQ(stream.getEnd() - stream.data(), 4);
    writer.appendChar('b', 1);
    EXPECT_EQ(textOf(stream), "aaab");
}

TEST(StringWriterAppendChar, DoesNothingForLessThanOne) {
    MemOutStream stream(4);
    stream.getPtr()[0] = '#';
    StringWriter writer(&stream);
    writer.appendChar('a', 0).appendChar('a', -1).appendChar('a', INT_MIN);
    EXPECT_EQ(stream.length(), 0);
    EXPECT_EQ(*stream.getPtr(), '#') << "not even the NUL";
}

TEST(StringWriterAppendChar, FailsAsAnAllocationBeyondAnInt) {
    MemOutStream stream(4);
    StringWriter writer(&stream);
    EXPECT_THROW(writer.appendChar('a', INT_MAX), std::bad_alloc);
}

class StringWriterAppendInt : public testing::TestWithParam<std::int64_t> {};
TEST_P(StringWriterAppendInt, WritesDecimals) {
    for (const int size : {0, 1, 8, 20, 21, 100}) {
        MemOutStream stream(size);
        StringWriter writer(&stream);
        EXPECT_EQ(&writer.append("x").appendInt(GetParam()), &writer);
        EXPECT_EQ(textOf(stream), "x" + std::to_string(GetParam()));
    }
}
INSTANTIATE_TEST_SUITE_P(Values, StringWriterAppendInt,
                         testing::Values(0, 1, -1, 9, 10, 99, 100, INT_MAX, INT_MIN, UINT_MAX,
                                         std::int64_t(UINT_MAX) + 1, INT64_MAX, INT64_MIN));

TEST(StringWriterUnderALimit, UsesOneByteLess) {
    MemOutStream stream(4, 8);
    StringWriter writer(&stream);
    writer.append("1234567");
    EXPECT_EQ(textOf(stream), "1234567");
    EXPECT_THROW(writer.appendChar('8'), OutStreamFull);
    EXPECT_THROW(writer.prf("%d", 8), OutStreamFull);
    EXPECT_EQ(textOf(stream), "1234567");
    // The text goes in, and only its NUL finds no room.
    EXPECT_THROW(writer.append("8"), OutStreamFull);
    EXPECT_EQ(stream.length(), 8);
}

TEST(StringWriterUnderALimit, FillsAStringExactly) {
    MemOutStream stream(4, 8);
    StringWriter(&stream).prf("%d", 12345).append("67");
    plat::DString string;
    stream.passBufTo(&string);
    EXPECT_STREQ(string.get(), "1234567");
    EXPECT_EQ(string.capacity(), 8);
}

} // namespace
