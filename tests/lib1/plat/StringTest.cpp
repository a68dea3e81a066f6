#include "plat/String.h"

#include <cctype>
#include <clocale>
#include <cstring>
#include <set>
#include <utility>

#include <gtest/gtest.h>

#include "plat/StringSet.h"
#include "plat/StringUtil.h"

namespace {

using plat::String;

TEST(String, StartsNull) {
    EXPECT_EQ(String().get(), nullptr);
    EXPECT_STREQ(String().str(), "");
}

TEST(String, CopiesItsText) {
    char text[] = "abc";
    const String string(text);
    text[0] = 'x';
    EXPECT_STREQ(string.get(), "abc");
    EXPECT_STREQ(string.str(), "abc");
    EXPECT_EQ(String(nullptr).get(), nullptr);
}

TEST(String, CopiesAreTheirOwn) {
    String first("abc");
    const String second = first;
    String third;
    third = first;
    first.get()[0] = 'x';
    EXPECT_STREQ(second.get(), "abc");
    EXPECT_STREQ(third.get(), "abc");
    third = String();
    EXPECT_EQ(third.get(), nullptr);
}

TEST(String, SurvivesAssignmentToItself) {
    String string("abc");
    String& same = string;
    string = same;
    EXPECT_STREQ(string.get(), "abc");
    string = std::move(same);
    EXPECT_STREQ(string.get(), "abc");
}

TEST(String, MovesItsArray) {
    String first("abc");
    const char* const array = first.get();
    String second(std::move(first));
    EXPECT_EQ(second.get(), array);
    EXPECT_EQ(first.get(), nullptr); // NOLINT(bugprone-use-after-move):
                                     // a moved String is null
    String third("other");
    third = std::move(second);
    EXPECT_EQ(third.get(), array);
    EXPECT_EQ(second.get(), nullptr); // NOLINT(bugprone-use-after-move)
}

TEST(String, OwnsAndHandsOverArrays) {
    char* const array = plat::strDup("abc");
    String string = String::owning(array);
    EXPECT_EQ(string.get(), array);
    char* const other = plat::strDup("other");
    string.replaceBuf(other);
    EXPECT_EQ(string.get(), other);
    EXPECT_EQ(string.takeBuf(), other);
    EXPECT_EQ(string.get(), nullptr);
    delete[] other;
}

TEST(String, ServesAsOutPointer) {
    String before("a=b");
    String after;
    EXPECT_TRUE(plat::strSplit(before.get(), '=', before.out(), after.out()));
    EXPECT_STREQ(before.get(), "a");
    EXPECT_STREQ(after.get(), "b");
}

TEST(String, EqualsByBytesAndNullOnlyNull) {
    EXPECT_TRUE(String("abc") == "abc");
    EXPECT_FALSE(String("abc") == "ABC");
    EXPECT_FALSE(String("abc") == "ab");
    EXPECT_TRUE(String("") == "");
    EXPECT_FALSE(String("") == nullptr);
    EXPECT_FALSE(String() == "");
    EXPECT_TRUE(String() == nullptr);
    EXPECT_TRUE(String() == String());
    EXPECT_TRUE(String("a") != String());
}

TEST(String, OrdersByBytesWithNullFirst) {
    EXPECT_LT(String("a"), String("b"));
    EXPECT_LT(String("a"), String("ab"));
    EXPECT_LT(String("z"), String("\xC3\xA9"));
    EXPECT_LT(String(), String(""));
    EXPECT_FALSE(String("") < String());
    EXPECT_FALSE(String() < String());
    EXPECT_FALSE(String("a") < String("a"));
}

struct StripRow {
    const char* name;
    const char* text;
    const char* left;
    const char* right;
    friend void PrintTo(const StripRow& row, std::ostream* out) { *out << row.name; }
};
class StringStripping : public testing::TestWithParam<StripRow> {};
TEST_P(StringStripping, RemovesWhiteSpaceInFront) {
    String string(GetParam().text);
    EXPECT_EQ(&string.lstripspace(), &string);
    EXPECT_STREQ(string.get(), GetParam().left);
}
TEST_P(StringStripping, RemovesWhiteSpaceAtTheEndInPlace) {
    String string(GetParam().text);
    const char* const array = string.get();
    EXPECT_EQ(&string.rstripspace(), &string);
    EXPECT_STREQ(string.get(), GetParam().right);
    EXPECT_EQ(string.get(), array);
}
INSTANTIATE_TEST_SUITE_P(
    Texts, StringStripping,
    testing::Values(StripRow{"None", "ab", "ab", "ab"},
                    StripRow{"Both", "  a b\t\n", "a b\t\n", "  a b"},
                    StripRow{"AllKinds", " \t\n\v\f\rx \t\n\v\f\r", "x \t\n\v\f\r", " \t\n\v\f\rx"},
                    StripRow{"Only", "   ", "", ""},
                    StripRow{"HighBytes", "\xA0\xE9 ", "\xA0\xE9 ", "\xA0\xE9"},
                    StripRow{"Empty", "", "", ""}),
    [](const auto& row) { return row.param.name; });

TEST(StringStrip, KeepsTheArrayWhereNothingIsStripped) {
    String string("abc ");
    const char* const array = string.get();
    EXPECT_EQ(string.lstripspace().get(), array);
}

TEST(StringStrip, LeavesNullAloneAtTheEnd) {
    EXPECT_EQ(String().rstripspace().get(), nullptr);
}

struct IntersperseRow {
    const char* name;
    const char* text;
    int every;
    const char* result;
    friend void PrintTo(const IntersperseRow& row, std::ostream* out) { *out << row.name; }
};
class Interspersing : public testing::TestWithParam<IntersperseRow> {};
TEST_P(Interspersing, PutsSeparatorsBetween) {
    String string(GetParam().text);
    EXPECT_EQ(&string.intersperse(':', GetParam().every), &string);
    EXPECT_STREQ(string.get(), GetParam().result);
}
INSTANTIATE_TEST_SUITE_P(Texts, Interspersing,
                         testing::Values(IntersperseRow{"Pairs", "abcdef", 2, "ab:cd:ef"},
                                         IntersperseRow{"PairsAndOne", "abcde", 2, "ab:cd:e"},
                                         IntersperseRow{"EveryByte", "abc", 1, "a:b:c"},
                                         IntersperseRow{"Whole", "abc", 3, "abc"},
                                         IntersperseRow{"BeyondTheEnd", "abc", 9, "abc"},
                                         IntersperseRow{"Zero", "abc", 0, "abc"},
                                         IntersperseRow{"Negative", "abc", -2, "abc"},
                                         IntersperseRow{"Empty", "", 1, ""},
                                         IntersperseRow{"Null", nullptr, 1, ""},
                                         IntersperseRow{"NullByZero", nullptr, 0, nullptr}),
                         [](const auto& row) { return row.param.name; });

TEST(StringCase, ChangesLettersInPlace) {
    String string("aBc-1\xE9");
    const char* const array = string.get();
    EXPECT_EQ(&string.toUpper(), &string);
    EXPECT_STREQ(string.get(), "ABC-1\xE9");
    EXPECT_EQ(&string.toLower(), &string);
    EXPECT_STREQ(string.get(), "abc-1\xE9");
    EXPECT_EQ(string.get(), array);
}

TEST(StringCase, AsksTheSystemForEveryByte) {
    char all[256];
    char upper[256];
    char lower[256];
    for (int i = 0; i < 255; ++i) {
        all[i] = char(i + 1);
        upper[i] = char(std::toupper(i + 1));
        lower[i] = char(std::tolower(i + 1));
    }
    all[255] = upper[255] = lower[255] = '\0';
    EXPECT_STREQ(String(all).toUpper().get(), upper);
    EXPECT_STREQ(String(all).toLower().get(), lower);
}

TEST(AppendUniq, AppendsWhatIsNotThere) {
    std::vector<String> strings;
    plat::appendUniq(&strings, "a");
    plat::appendUniq(&strings, "b");
    plat::appendUniq(&strings, "a");
    plat::appendUniq(&strings, "A");
    ASSERT_EQ(strings.size(), 3U);
    EXPECT_STREQ(strings[0].get(), "a");
    EXPECT_STREQ(strings[1].get(), "b");
    EXPECT_STREQ(strings[2].get(), "A");
}

TEST(AppendUniq, TellsNullFromEmpty) {
    std::vector<String> strings;
    plat::appendUniq(&strings, nullptr);
    plat::appendUniq(&strings, "");
    plat::appendUniq(&strings, nullptr);
    plat::appendUniq(&strings, "");
    ASSERT_EQ(strings.size(), 2U);
    EXPECT_EQ(strings[0].get(), nullptr);
    EXPECT_STREQ(strings[1].get(), "");
}

TEST(AppendUniq, CopiesTheText) {
    char text[] = "abc";
    std::vector<String> strings;
    plat::appendUniq(&strings, text);
    text[0] = 'x';
    EXPECT_STREQ(strings[0].get(), "abc");
}

TEST(EmptyStringSet, IsEmpty) {
    EXPECT_TRUE(plat::emptyStringSet.empty());
}

bool isFound(const char* text, const std::set<String>& in = plat::emptyStringSet) {
    for (const String& string : in) {
        if (string == text)
            return true;
    }
    return false;
}
const bool foundDuringInitialisation = isFound("a");

TEST(EmptyStringSet, ServesStaticInitialisers) {
    EXPECT_FALSE(foundDuringInitialisation);
}

TEST(StringInASet, IsFoundByItsText) {
    std::set<String> strings;
    strings.insert(String("b"));
    strings.insert(String());
    strings.insert(String("a"));
    strings.insert(String("b"));
    EXPECT_EQ(strings.size(), 3U);
    EXPECT_TRUE(strings.contains(String()));
    EXPECT_TRUE(isFound("a", strings));
}

} // namespace
