#include "loc/LibcLocale.h"

#include <clocale>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "lib1/loc/TestLocales.h"
#include "loc/GlobalLocaleSetter.h"
#include "loc/LibcLocaleSetter.h"

namespace {

using loc::findLibcLocale;
using loc::LibcLocale;

struct EncRow {
    const char* name;
    int encType;
    const char* base;
    const char* rest;
    friend void PrintTo(const EncRow& row, std::ostream* out) { *out << row.name; }
};
class EncType : public testing::TestWithParam<EncRow> {};
TEST_P(EncType, IsTheSystemsWord) {
    plat::String base;
    plat::String rest;
    EXPECT_EQ(loc::getEncType(GetParam().name, &base, &rest), GetParam().encType);
    EXPECT_STREQ(base.get(), GetParam().base);
    EXPECT_STREQ(rest.get(), GetParam().rest);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, EncType,
    testing::Values(
        EncRow{"de_DE.UTF-8", 1, "de_DE", nullptr}, EncRow{"de_DE.ISO-8859-1", 2, "de_DE", nullptr},
        EncRow{"fr_FR", 2, "fr_FR", nullptr}, EncRow{"de_AT@euro", 2, "de_AT", "euro"},
        EncRow{"sr_RS.UTF-8@latin", 1, "sr_RS", "latin"}, EncRow{"C", 3, "C", nullptr},
        EncRow{"POSIX", 3, "C", nullptr}, EncRow{"en_AU.US-ASCII", 3, "en_AU", nullptr},
        EncRow{"tr_TR", 0, "tr_TR", nullptr},
        // Unknown to the system: nothing of what the name says counts.
        EncRow{"de_DE", 0, "de_DE", nullptr}, EncRow{"qq_QQ.UTF-8", 0, "qq_QQ", "UTF-8"},
        EncRow{"qq_QQ.UTF-8@x", 0, "qq_QQ", "UTF-8@x"}, EncRow{"qq_QQ@x.y", 0, "qq_QQ", "x.y"},
        EncRow{"qq_QQ.", 0, "qq_QQ", ""}, EncRow{"../x", 0, "", "./x"}));

TEST(EncType, OfAnEmptyNameIsTheEnvironments) {
    ::setenv("LC_ALL", "de_DE.UTF-8", 1);
    plat::String base;
    plat::String rest;
    EXPECT_EQ(loc::getEncType("", &base, &rest), LibcLocale::utf8Enc);
    EXPECT_STREQ(base.get(), "de_DE");
    EXPECT_EQ(loc::getEncType(nullptr, &base, &rest), LibcLocale::utf8Enc);
    ::unsetenv("LC_ALL");
}

struct FindRow {
    const char* name;
    bool isFound;
    const char* found;
    int encType;
    friend void PrintTo(const FindRow& row, std::ostream* out) { *out << row.name; }
};
class FindLibcLocale : public testing::TestWithParam<FindRow> {};
TEST_P(FindLibcLocale, PrefersUtf8) {
    // Once afresh, once remembered.
    for (int i = 0; i < 2; ++i) {
        LibcLocale result;
        EXPECT_EQ(findLibcLocale(GetParam().name, &result), GetParam().isFound);
        EXPECT_STREQ(result.name.get(), GetParam().found);
        EXPECT_EQ(result.encType, GetParam().encType);
    }
}
INSTANTIATE_TEST_SUITE_P(Rows, FindLibcLocale,
                         testing::Values(FindRow{"de_DE", true, "de_DE.UTF-8", 1},
                                         FindRow{"de_DE.UTF-8", true, "de_DE.UTF-8", 1},
                                         FindRow{"de_DE.ISO-8859-1", true, "de_DE.UTF-8", 1},
                                         FindRow{"fr_FR", true, "fr_FR.UTF-8", 1},
                                         FindRow{"de_AT@euro", true, "de_AT@euro", 2},
                                         FindRow{"sr_RS@latin", true, "sr_RS.UTF-8@latin", 1},
                                         FindRow{"pt_PT", true, "pt_PT.ISO-8859-1", 2},
                                         FindRow{"en_AU", true, "en_AU.US-ASCII", 3},
                                         FindRow{"C", true, "C.UTF-8", 1},
                                         FindRow{"tr_TR", false, "tr_TR", 0},
                                         FindRow{"sr_RS", false, "sr_RS", 0},
                                         FindRow{"xx", false, "xx", 0},
                                         // "UTF-8" is then taken for a modifier.
                                         FindRow{"qq_QQ.UTF-8", false, "qq_QQ.UTF-8", 0}));

TEST(FindLibcLocale, RemembersWhatItFound) {
    LibcLocale result;
    ASSERT_TRUE(findLibcLocale("es_ES", &result));
    const NoLocales none;
    ASSERT_EQ(loc::GlobalLocaleSetter("es_ES.UTF-8").accepted(), nullptr);
    EXPECT_TRUE(findLibcLocale("es_ES", &result));
    EXPECT_STREQ(result.name.get(), "es_ES.UTF-8");
}

TEST(FindLibcLocale, DoesNotRememberFailures) {
    LibcLocale result;
    {
        const NoLocales none;
        EXPECT_FALSE(findLibcLocale("en_US", &result));
    }
    EXPECT_TRUE(findLibcLocale("en_US", &result));
}

TEST(FindLibcLocale, LeavesTheProcessesLocaleAsItWas) {
    LibcLocale result;
    findLibcLocale("xx_XX", &result);
    findLibcLocale("en_US.UTF-8", &result);
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
}

TEST(FindLibcLocale, AsksNotForTheThreadsOwnLocale) {
    const loc::LibcLocaleSetter own("de_DE.ISO-8859-1");
    plat::String base;
    plat::String rest;
    EXPECT_EQ(loc::getEncType("fr_FR.UTF-8", &base, &rest), LibcLocale::utf8Enc);
}

TEST(FindLibcLocale, ThreadsDoNotMixUpTheirProbes) {
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            LibcLocale result;
            for (int j = 0; j < 50; ++j)
                EXPECT_FALSE(findLibcLocale("xx_XX", &result));
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
}

struct TagRow {
    const char* name;
    bool (*find)(const char* base, const char* modifier, LibcLocale* result);
    const char* base;
    const char* modifier;
    const char* found; // null for none
    int encType;
    friend void PrintTo(const TagRow& row, std::ostream* out) { *out << row.name; }
};
class TagSearch : public testing::TestWithParam<TagRow> {};
TEST_P(TagSearch, GivesTheFirstNameThatTheSystemHas) {
    LibcLocale result{plat::String("untouched"), 7};
    EXPECT_EQ(GetParam().find(GetParam().base, GetParam().modifier, &result),
              GetParam().found != nullptr);
    EXPECT_STREQ(result.name.get(), GetParam().found == nullptr ? "untouched" : GetParam().found);
    EXPECT_EQ(result.encType, GetParam().encType);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, TagSearch,
    testing::Values(
        TagRow{"Utf8", loc::findUtf8Locale, "de_DE", nullptr, "de_DE.UTF-8", 1},
        TagRow{"EmptyModifier", loc::findUtf8Locale, "de_DE", "", "de_DE.UTF-8", 1},
        TagRow{"Modifier", loc::findUtf8Locale, "sr_RS", "latin", "sr_RS.UTF-8@latin", 1},
        TagRow{"WrongModifier", loc::findUtf8Locale, "sr_RS", "xx", nullptr, 7},
        TagRow{"NoUtf8", loc::findUtf8Locale, "pt_PT", nullptr, nullptr, 7},
        TagRow{"NullBase", loc::findUtf8Locale, nullptr, nullptr, nullptr, 7},
        TagRow{"Latin1", loc::findLatin1OrAsciiLocale, "de_DE", nullptr, "de_DE.ISO-8859-1", 2},
        TagRow{"Ascii", loc::findLatin1OrAsciiLocale, "en_AU", nullptr, "en_AU.US-ASCII", 3},
        TagRow{"NoLatin1", loc::findLatin1OrAsciiLocale, "es_ES", nullptr, nullptr, 7}),
    [](const auto& row) { return row.param.name; });

TEST(TagSearch, TakesABaseLongerThanItsBuffer) {
    LibcLocale result;
    EXPECT_FALSE(loc::findUtf8Locale(std::string(1000, 'x').c_str(), "y", &result));
}

} // namespace
