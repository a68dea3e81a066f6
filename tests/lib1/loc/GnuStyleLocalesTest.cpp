#include "loc/GnuStyleLocales.h"

#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

struct Row {
    const char* name;
    const char* language; // null for not set
    const char* defaultLocale;
    bool isNamed;
    std::vector<std::string> locales;
    friend void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }
};
class LanguageVariable : public testing::TestWithParam<Row> {};
TEST_P(LanguageVariable, IsAListOfLocales) {
    if (GetParam().language == nullptr)
        ::unsetenv("LANGUAGE");
    else
        ::setenv("LANGUAGE", GetParam().language, 1);
    std::vector<plat::String> locales{plat::String("first_FI")};
    EXPECT_EQ(loc::getGnuStyleLocales(GetParam().defaultLocale, &locales), GetParam().isNamed);
    std::vector<std::string> texts;
    texts.reserve(locales.size());
    for (const plat::String& locale : locales)
        texts.emplace_back(locale.get());
    std::vector<std::string> expected{"first_FI"};
    expected.insert(expected.end(), GetParam().locales.begin(), GetParam().locales.end());
    EXPECT_EQ(texts, expected);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, LanguageVariable,
    testing::Values(Row{"NotSet", nullptr, "de_DE", false, {}},
                    Row{"Empty", "", "de_DE", false, {}}, Row{"Colons", ":::", "de_DE", false, {}},
                    Row{"One", "de", nullptr, true, {"de_DE"}},
                    Row{"List", "de:fr_CA:en_GB.UTF-8", "", true, {"de_DE", "fr_CA", "en_GB"}},
                    Row{"DefaultCountry", "de:fr", "de_AT", true, {"de_AT", "fr_FR"}},
                    Row{"DefaultWithDash", "de", "de-AT", true, {"de_AT"}},
                    Row{"DefaultWithEncoding", "de", "de_AT.UTF-8@euro", true, {"de_AT"}},
                    Row{"DefaultWithoutCountry", "de", "de.UTF-8", true, {"de_DE"}},
                    Row{"OtherDefault", "de", "fr_CA", true, {"de_DE"}},
                    Row{"AlreadyThere", "first_FI", nullptr, true, {}}),
    [](const auto& row) { return row.param.name; });

} // namespace
