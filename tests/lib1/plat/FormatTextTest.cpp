#include "plat/FormatText.h"

#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "lib1/SystemTexts.h"
namespace {

// A result is the number returned, and the bytes of a room with a guard around it.
struct Result {
    int length;
    std::string bytes;
    bool operator==(const Result&) const = default;
    friend void PrintTo(const Result& result, std::ostream* out) {
        *out << result.length << " '" << result.bytes.c_str() << "'";
    }
};

template <typename Format>
Result formatInto(std::size_t room, Format format) {
    std::string bytes(room + 1, '#');
    const int length = format(bytes.data(), room);
    // What the C library leaves behind the NUL is its own affair.
    if (room != 0 && length >= 0)
        bytes.erase(bytes.begin() + std::ptrdiff_t(std::strlen(bytes.c_str())),
                    bytes.begin() + std::ptrdiff_t(room));
    return {length, bytes};
}

[[gnu::format(printf, 2, 3)]] Result ours(std::size_t room, const char* format, ...) {
    va_list args;
    va_start(args, format);
    Result result = formatInto(room, [&](char* out, std::size_t size) {
        return plat::formatText(out, size, format, args);
    });
    va_end(args);
    return result;
}

[[gnu::format(printf, 2, 3)]] Result systems(std::size_t room, const char* format, ...) {
    va_list args;
    va_start(args, format);
    Result result = formatInto(
        room, [&](char* out, std::size_t size) { return std::vsnprintf(out, size, format, args); });
    va_end(args);
    return result;
}

// Every room from none to more than enough.
template <typename... Args>
void expectAsPrintf(const char* format, Args... args) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
    for (std::size_t room = 0; room < 40; ++room)
        EXPECT_EQ(ours(room, format, args...), systems(room, format, args...))
            << '"' << format << "\" in " << room;
    EXPECT_EQ(ours(5000, format, args...), systems(5000, format, args...)) << format;
#pragma GCC diagnostic pop
}

TEST(FormatText, WritesPlainText) {
    expectAsPrintf("");
    expectAsPrintf("a");
    expectAsPrintf("no directive in this text at all");
    expectAsPrintf("100%%");
    expectAsPrintf("%%%%");
}

TEST(FormatText, WritesInts) {
    for (const int value : {0, 1, -1, 9, 10, 99, 100, 12345, -12345, INT_MAX, INT_MIN}) {
        expectAsPrintf("%d", value);
        expectAsPrintf("<%i>", value);
        expectAsPrintf("%u", unsigned(value));
        expectAsPrintf("%x", unsigned(value));
        expectAsPrintf("%d%d", value, value);
    }
}

TEST(FormatText, WritesEveryPowerOfTen) {
    for (std::int64_t power = 1; power <= 1'000'000'000; power *= 10) {
        for (const std::int64_t value : {power - 1, power, power + 1}) {
            expectAsPrintf("%d", int(value));
            expectAsPrintf("%d", int(-value));
            expectAsPrintf("%lld", 1000000000LL * value);
        }
    }
}

TEST(FormatText, WritesLongInts) {
    for (const long value : {0L, -1L, 123456789L, LONG_MAX, LONG_MIN}) {
        expectAsPrintf("%ld", value);
        expectAsPrintf("%lu", static_cast<unsigned long>(value));
        expectAsPrintf("%lx", static_cast<unsigned long>(value));
    }
    for (const long long value : {0LL, -1LL, 1234567890123456789LL, LLONG_MAX, LLONG_MIN}) {
        expectAsPrintf("%lld", value);
        expectAsPrintf("%llu", static_cast<unsigned long long>(value));
        expectAsPrintf("%llx", static_cast<unsigned long long>(value));
    }
    expectAsPrintf("%zu", std::size_t(-1));
}

TEST(FormatText, WritesTexts) {
    for (const char* const text :
         {"", "a", "abc", "sixteen bytes, so", "a text that is longer than most of them"}) {
        expectAsPrintf("%s", text);
        expectAsPrintf("<%s>", text);
        expectAsPrintf("%s%s", text, text);
    }
    expectAsPrintf("%s", static_cast<const char*>(nullptr));
}

TEST(FormatText, WritesCharacters) {
    expectAsPrintf("%c%c%c", 'a', 0xE9, '%');
    EXPECT_EQ(ours(8, "a%cb", 0).length, 3);
    char out[8];
    std::memset(out, '#', sizeof out);
    EXPECT_EQ(std::snprintf(out, sizeof out, "a%cb", 0), 3);
    const std::string expected(out, 4);
    [](const std::string& bytes, const char* format, ...) {
        char ownOut[8];
        va_list args;
        va_start(args, format);
        plat::formatText(ownOut, sizeof ownOut, format, args);
        va_end(args);
        EXPECT_EQ(std::string(ownOut, 4), bytes);
    }(expected, "a%cb", 0);
}

TEST(FormatText, WritesMixedMessages) {
    expectAsPrintf("fileOpen(%s) failed (%d)", "/a/path", 2);
    expectAsPrintf("Assertion '%s' failed at %s:%d", "x > 0", "a", 12);
    expectAsPrintf("%s %d %u %x %c %%", "a", -1, 1U, 255U, 'x');
}

TEST(FormatText, LeavesEverythingElseToTheSystem) {
    expectAsPrintf("%5d|%-5d|%05d|%+d|% d", 42, 42, 42, 42, 42);
    expectAsPrintf("%02x %#x %X %o", 10U, 255U, 255U, 8U);
    expectAsPrintf("%.3s|%10s|%-10s|%.*s", "abcdef", "abc", "abc", 2, "xyz");
    expectAsPrintf("%f %.2f %g %e", 1.5, 2.25, 1e10, 12345.678);
    expectAsPrintf("%p", static_cast<const void*>(nullptr));
    expectAsPrintf("%hd %hhd", 70000, 300);
    expectAsPrintf("%2$s %1$s", "b", "a");
    expectAsPrintf("text first %d, then %5d", 1, 2);
    expectAsPrintf("%ls", L"wide");
    expectAsPrintf("%jd %td", std::intmax_t(-5), std::ptrdiff_t(6));
}

struct Attempts {
    const char* name;
    const char* format;
    const char* text;
    friend void PrintTo(const Attempts& row, std::ostream* out) { *out << row.name; }
};
class FormatTextAgain : public testing::TestWithParam<Attempts> {};
TEST_P(FormatTextAgain, FindsTheArgumentsAsTheyWere) {
    const auto formatTwice = [](const char* text, const char* format, ...) {
        va_list args;
        va_start(args, format);
        char out[32];
        for (const std::size_t room : {std::size_t(0), std::size_t(4), sizeof out, sizeof out})
            EXPECT_EQ(plat::formatText(out, room, format, args), int(std::strlen(text)));
        va_end(args);
        EXPECT_STREQ(out, text);
    };
    formatTwice(GetParam().text, GetParam().format, 1, "a", 2);
}
INSTANTIATE_TEST_SUITE_P(Formats, FormatTextAgain,
                         testing::Values(Attempts{"OfMessages", "%d %s %x", "1 a 2"},
                                         Attempts{"OfTheSystem", "%d %s %#5x", "1 a   0x2"}),
                         [](const auto& row) { return row.param.name; });

TEST(FormatText, ReportsTheSystemsErrors) {
    ASSERT_TRUE(setLocale("C"));
    EXPECT_LT(ours(32, "%d %ls", 1, L"\x20AC").length, 0); // the locale cannot write it
}

TEST(FormatText, LeavesErrnoAlone) {
    errno = E2BIG;
    ours(32, "%d %s %x", 1, "a", 2U);
    EXPECT_EQ(errno, E2BIG);
}

std::string randomFormat(std::mt19937& random) {
    static const char* const pieces[] = {"%d",         "%u", "%x", "%i",    "a",
                                         "some text ", "%%", " ",  "\u20AC"};
    std::string format;
    int directives = 0;
    for (int i = int(random() % 8); i > 0; --i) {
        const char* const piece = pieces[random() % std::size(pieces)];
        if (piece[0] == '%' && piece[1] != '%' && ++directives > 4)
            continue;
        format += piece;
    }
    return format;
}

TEST(FormatText, AgreesWithTheSystemOnRandomFormats) {
    std::mt19937 random(20261121); // NOLINT(bugprone-random-generator-seed): repeatable
    for (int i = 0; i < 5000; ++i) {
        const std::string format = randomFormat(random);
        int values[4];
        for (int& value : values)
            value = int(random() >> (random() % 32));
        const std::size_t room = random() % 60;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
        EXPECT_EQ(ours(room, format.c_str(), values[0], values[1], values[2], values[3]),
                  systems(room, format.c_str(), values[0], values[1], values[2], values[3]))
            << format;
#pragma GCC diagnostic pop
    }
}

} // namespace
