#include "plat/SecureString.h"

#include <cstring>
#include <memory>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "lib1/FreedBytes.h"

namespace {

using plat::secureMemCpy;
using plat::secureMemEq;
using plat::secureStrCmp;
using plat::secureStrDup;
using plat::SecureString;
using plat::secureZeroMemory;

TEST(SecureZeroMemory, SetsExactlyTheBytesGiven) {
    for (std::size_t length = 0; length < 100; ++length) {
        std::string bytes(length + 2, '#');
        secureZeroMemory(bytes.data() + 1, length);
        EXPECT_EQ(bytes, "#" + std::string(length, '\0') + "#");
    }
}

TEST(SecureZeroMemory, IsNotRemovedWhereTheBytesAreFreedNext) {
    char* const secret = new char[FreedBytes::watchedSize];
    std::memset(secret, 's', FreedBytes::watchedSize);
    FreedBytes::last.fill('#');
    secureZeroMemory(secret, FreedBytes::watchedSize);
    delete[] secret;
    EXPECT_EQ(FreedBytes::last, FreedBytes::Bytes{});
}

TEST(SecureMemEq, ComparesEveryByte) {
    for (std::size_t length = 0; length < 150; ++length) {
        std::string a(length, 'a');
        const std::string b = a; // NOLINT(performance-unnecessary-copy-initialization)
        EXPECT_TRUE(secureMemEq(a.data(), b.data(), length));
        for (std::size_t i = 0; i < length; ++i) {
            for (const int bit : {1, 0x80}) {
                a[i] = char(a[i] ^ bit);
                EXPECT_FALSE(secureMemEq(a.data(), b.data(), length)) << i << " of " << length;
                a[i] = b[i];
            }
        }
    }
}

TEST(SecureMemEq, TakesNothingForEqual) {
    EXPECT_TRUE(secureMemEq("a", "b", 0));
    EXPECT_TRUE(secureMemEq(nullptr, nullptr, 0));
}

TEST(SecureMemEq, DifferencesDoNotCancelOut) {
    std::string a(64, '\0');
    std::string b(64, '\0');
    a[0] = a[16] = a[32] = '\x55'; // one and the same difference in each vector
    EXPECT_FALSE(secureMemEq(a.data(), b.data(), 64));
    EXPECT_FALSE(secureMemEq(a.data(), b.data(), 48));
}

TEST(SecureMemEq, LooksAtNoByteOutside) {
    const std::string a = "xabcx";
    const std::string b = "yabcy";
    EXPECT_TRUE(secureMemEq(a.data() + 1, b.data() + 1, 3));
}

TEST(SecureMemCpy, CopiesExactlyTheBytesGiven) {
    for (const std::size_t length : {std::size_t(0), std::size_t(1), std::size_t(33)}) {
        std::string to(length + 2, '#');
        secureMemCpy(to.data() + 1, std::string(length, 'x').data(), length);
        EXPECT_EQ(to, "#" + std::string(length, 'x') + "#");
    }
}

struct DupRow {
    const char* name;
    const char* text;
    int maxLength;
    const char* copy;
    friend void PrintTo(const DupRow& row, std::ostream* out) { *out << row.name; }
};
class SecureStrDup : public testing::TestWithParam<DupRow> {};
TEST_P(SecureStrDup, CopiesWhatIsAskedFor) {
    const std::unique_ptr<char[]> copy(secureStrDup(GetParam().text, GetParam().maxLength));
    EXPECT_STREQ(copy.get(), GetParam().copy);
}
INSTANTIATE_TEST_SUITE_P(
    Texts, SecureStrDup,
    testing::Values(DupRow{"All", "abc", -1, "abc"}, DupRow{"Nothing", "abc", 0, ""},
                    DupRow{"Some", "abc", 2, "ab"}, DupRow{"LimitBeyondTheEnd", "abc", 9, "abc"},
                    DupRow{"Empty", "", -1, ""}, DupRow{"Null", nullptr, -1, nullptr},
                    DupRow{"SomeOfNull", nullptr, 2, nullptr}),
    [](const auto& row) { return row.param.name; });

struct CmpRow {
    const char* name;
    const char* a;
    const char* b;
    int result;
    friend void PrintTo(const CmpRow& row, std::ostream* out) { *out << row.name; }
};
class SecureStrCmp : public testing::TestWithParam<CmpRow> {};
TEST_P(SecureStrCmp, ReturnsTheFirstDifference) {
    EXPECT_EQ(secureStrCmp(GetParam().a, GetParam().b), GetParam().result);
    EXPECT_EQ(secureStrCmp(GetParam().b, GetParam().a), -GetParam().result);
}
INSTANTIATE_TEST_SUITE_P(
    Texts, SecureStrCmp,
    testing::Values(CmpRow{"Equal", "abc", "abc", 0}, CmpRow{"Empty", "", "", 0},
                    CmpRow{"BothNull", nullptr, nullptr, 0}, CmpRow{"OneNull", nullptr, "", -1},
                    CmpRow{"NullAndText", nullptr, "zzz", -1},
                    CmpRow{"FirstDifference", "abz", "aez", 'b' - 'e'},
                    CmpRow{"Prefix", "abc", "ab", 'c'}, CmpRow{"Unsigned", "\xFF", "\x01", 0xFE}),
    [](const auto& row) { return row.param.name; });

char* secretText() {
    char* const text = new char[FreedBytes::watchedSize];
    std::memset(text, 's', FreedBytes::watchedSize);
    text[FreedBytes::watchedSize - 1] = '\0';
    FreedBytes::last.fill('#');
    return text;
}

TEST(SecureString, StartsNullAndOwnsWhatItIsGiven) {
    EXPECT_EQ(SecureString().get(), nullptr);
    char* const text = secretText();
    const SecureString string(text);
    EXPECT_EQ(string.get(), text);
}

TEST(SecureString, WipesTheOldTextWhenItIsReplaced) {
    SecureString string(secretText());
    char* const next = secureStrDup("next");
    EXPECT_EQ(&string.replaceBuf(next), &string);
    EXPECT_EQ(FreedBytes::last, FreedBytes::Bytes{});
    EXPECT_EQ(string.get(), next);
    string.replaceBuf(nullptr);
    EXPECT_EQ(string.get(), nullptr);
}

TEST(SecureString, WipesItsTextInTheEnd) {
    {
        const SecureString string(secretText());
    }
    EXPECT_EQ(FreedBytes::last, FreedBytes::Bytes{});
}

TEST(SecureString, WipesTheLengthOfItsTextOnly) {
    char* const text = secretText();
    text[2] = '\0';
    {
        const SecureString string(text);
    }
    EXPECT_EQ(std::string(FreedBytes::last.data(), 4), std::string("\0\0\0s", 4));
}

TEST(SecureString, MovesItsText) {
    SecureString first(secureStrDup("abc"));
    const char* const text = first.get();
    SecureString second(std::move(first));
    EXPECT_EQ(second.get(), text);
    EXPECT_EQ(first.get(), nullptr); // NOLINT(bugprone-use-after-move):
                                     // a moved string is null
    SecureString third(secretText());
    third = std::move(second);
    EXPECT_EQ(third.get(), text);
    EXPECT_EQ(FreedBytes::last, FreedBytes::Bytes{});
}

} // namespace
