#include "loc/loc_loc.h"

#include <cstring>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/loc/LocalesInForce.h"
#include "loc/Localize.h"
#include "loc/Translation.h"

namespace {

using testing::StartsWith;

// All but the description of the parameter are formats.
const char* textOf(const char* locale, const char* id) {
    const LocalesInForce locales{locale};
    const loc::Translation* const translation = locales.map.get(id);
    if (translation == nullptr)
        return nullptr;
    const bool raw =
        std::strcmp(id, "loc_param_locale") != 0 && std::strstr(id, "_time_") == nullptr;
    return translation->get(raw, id);
}

struct Row {
    const char* locale;
    const char* id;
    const char* text;
    friend void PrintTo(const Row& row, std::ostream* out) { *out << row.locale << ' ' << row.id; }
};
class LocText : public testing::TestWithParam<Row> {};
TEST_P(LocText, IsTheGivenOne) {
    EXPECT_STREQ(textOf(GetParam().locale, GetParam().id), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    English, LocText,
    testing::Values(
        Row{"en", "loc_byterate_unit_sing", "%D byte/s"},
        Row{"en", "loc_byterate_unit_zeromany", "%D bytes/s"},
        Row{"en", "loc_bytesize_unit_sing", "%D byte"},
        Row{"en", "loc_bytesize_unit_zeromany", "%D bytes"},
        Row{"en", "loc_period_day_zeromany", "%D days"},
        Row{"en", "loc_period_hour_zeromany", "%D hours"},
        Row{"en", "loc_period_minute_zeromany", "%D minutes"},
        Row{"en", "loc_period_second_sing", "%D second"},
        Row{"en", "loc_period_second_zeromany", "%D seconds"},
        Row{"en", "loc_time_tomorrow", "tomorrow"}, Row{"en", "loc_time_yesterday", "yesterday"},
        Row{"en", "loc_timedate_separator", "%1$S, %2$S"},
        Row{"en", "loc_timezone_separator", "%1$S %2$S"},
        Row{"en", "loc_param_locale",
            "Locale to use. Specify one of en_US, de_DE, es_ES, or fr_FR, or leave empty to "
            "select the user or system locale as appropriate."}));
INSTANTIATE_TEST_SUITE_P(German, LocText,
                         testing::Values(Row{"de", "loc_byterate_unit_sing", "%D Byte/s"},
                                         Row{"de", "loc_byterate_unit_zeromany", "%D Bytes/s"},
                                         Row{"de", "loc_bytesize_unit_sing", "%D Byte"},
                                         Row{"de", "loc_bytesize_unit_zeromany", "%D Bytes"},
                                         Row{"de", "loc_period_day_zeromany", "%D Tage"},
                                         Row{"de", "loc_period_hour_zeromany", "%D Stunden"},
                                         Row{"de", "loc_period_minute_zeromany", "%D Minuten"},
                                         Row{"de", "loc_period_second_sing", "%D Sekunde"},
                                         Row{"de", "loc_period_second_zeromany", "%D Sekunden"},
                                         Row{"de", "loc_timedate_separator", "%1$S %2$S"},
                                         Row{"de", "loc_timezone_separator", "%1$S %2$S"}));
INSTANTIATE_TEST_SUITE_P(Spanish, LocText,
                         testing::Values(Row{"es", "loc_byterate_unit_sing", "%D byte/s"},
                                         Row{"es", "loc_byterate_unit_zeromany", "%D bytes/s"},
                                         Row{"es", "loc_bytesize_unit_sing", "%D byte"},
                                         Row{"es", "loc_bytesize_unit_zeromany", "%D bytes"},
                                         Row{"es", "loc_period_day_zeromany", "%D días"},
                                         Row{"es", "loc_period_hour_zeromany", "%D horas"},
                                         Row{"es", "loc_period_minute_zeromany", "%D minutos"},
                                         Row{"es", "loc_period_second_sing", "%D segundo"},
                                         Row{"es", "loc_period_second_zeromany", "%D segundos"},
                                         Row{"es", "loc_timedate_separator", "%1$S, %2$S"},
                                         Row{"es", "loc_timezone_separator", "%1$S %2$S"}));
INSTANTIATE_TEST_SUITE_P(French, LocText,
                         testing::Values(Row{"fr", "loc_byterate_unit_many", "%D octets/s"},
                                         Row{"fr", "loc_byterate_unit_zerosing", "%D octet/s"},
                                         Row{"fr", "loc_byterate_kilo_many", "%D Kio/s"},
                                         Row{"fr", "loc_byterate_kilo_zerosing", "%D Kio/s"},
                                         Row{"fr", "loc_byterate_mega_many", "%D Mio/s"},
                                         Row{"fr", "loc_byterate_mega_zerosing", "%D Mio/s"},
                                         Row{"fr", "loc_byterate_giga_many", "%D Gio/s"},
                                         Row{"fr", "loc_byterate_giga_zerosing", "%D Gio/s"},
                                         Row{"fr", "loc_bytesize_unit_many", "%D octets"},
                                         Row{"fr", "loc_bytesize_unit_zerosing", "%D octet"},
                                         Row{"fr", "loc_bytesize_kilo_many", "%D Kio"},
                                         Row{"fr", "loc_bytesize_kilo_zerosing", "%D Kio"},
                                         Row{"fr", "loc_bytesize_mega_many", "%D Mio"},
                                         Row{"fr", "loc_bytesize_mega_zerosing", "%D Mio"},
                                         Row{"fr", "loc_bytesize_giga_many", "%D Gio"},
                                         Row{"fr", "loc_bytesize_giga_zerosing", "%D Gio"},
                                         Row{"fr", "loc_bytesize_tera_many", "%D Tio"},
                                         Row{"fr", "loc_bytesize_tera_zerosing", "%D Tio"},
                                         Row{"fr", "loc_period_day_many", "%D jours"},
                                         Row{"fr", "loc_period_hour_many", "%D heures"},
                                         Row{"fr", "loc_period_minute_many", "%D minutes"},
                                         Row{"fr", "loc_period_second_many", "%D secondes"},
                                         Row{"fr", "loc_period_second_zerosing", "%D seconde"},
                                         Row{"fr", "loc_timedate_separator", "%1$S %2$S"},
                                         Row{"fr", "loc_timezone_separator", "%1$S %2$S"}));

struct UnitRow {
    const char* stem;
    const char* text;
    friend void PrintTo(const UnitRow& row, std::ostream* out) { *out << row.stem; }
};
class BinaryUnit : public testing::TestWithParam<UnitRow> {};
TEST_P(BinaryUnit, HasTheSameTextForBothFormsInThreeLanguages) {
    for (const char* locale : {"de", "es", "en"}) {
        for (const char* form : {"_sing", "_zeromany"}) {
            const std::string id = std::string(GetParam().stem) + form;
            EXPECT_STREQ(textOf(locale, id.c_str()), GetParam().text) << locale << ' ' << id;
        }
    }
}
INSTANTIATE_TEST_SUITE_P(Stems, BinaryUnit,
                         testing::Values(UnitRow{"loc_byterate_kilo", "%D KiB/s"},
                                         UnitRow{"loc_byterate_mega", "%D MiB/s"},
                                         UnitRow{"loc_byterate_giga", "%D GiB/s"},
                                         UnitRow{"loc_bytesize_kilo", "%D KiB"},
                                         UnitRow{"loc_bytesize_mega", "%D MiB"},
                                         UnitRow{"loc_bytesize_giga", "%D GiB"},
                                         UnitRow{"loc_bytesize_tera", "%D TiB"}));

struct DescriptionRow {
    const char* locale;
    const char* beginning;
    friend void PrintTo(const DescriptionRow& row, std::ostream* out) { *out << row.locale; }
};
class LocaleDescription : public testing::TestWithParam<DescriptionRow> {};
TEST_P(LocaleDescription, BeginsAsGivenAndNamesTheLocales) {
    const std::string text = textOf(GetParam().locale, "loc_param_locale");
    EXPECT_THAT(text, StartsWith(GetParam().beginning));
    for (const char* locale : {"en_US", "de_DE", "es_ES", "fr_FR"})
        EXPECT_THAT(text, testing::HasSubstr(locale));
    EXPECT_EQ(text.back(), '.');
}
INSTANTIATE_TEST_SUITE_P(Languages, LocaleDescription,
                         testing::Values(DescriptionRow{"de", "Das zu verwendende Gebietsschema. "},
                                         DescriptionRow{"es",
                                                        "Configuración regional que utilizar. "},
                                         DescriptionRow{"fr", "Langue à utiliser. "}));

// A locale's map falls back to the English texts, so that each row stands for those too.
class MissingText : public testing::TestWithParam<const char*> {};
TEST_P(MissingText, IsMeantToBeMissingInEveryLanguage) {
    for (const char* locale : {"de", "es", "fr", "en"})
        EXPECT_EQ(textOf(locale, GetParam()), nullptr) << locale;
}
INSTANTIATE_TEST_SUITE_P(Ids, MissingText,
                         testing::Values("loc_period_day_sing", "loc_period_hour_sing",
                                         "loc_period_minute_sing", "loc_period_day_zerosing",
                                         "loc_period_hour_zerosing", "loc_period_minute_zerosing",
                                         "loc_byterate_tera_sing", "loc_byterate_tera_zeromany",
                                         "loc_byterate_tera_zerosing", "loc_byterate_tera_many",
                                         "loc_bytesize_unit_singplural", "loc_bytesize_kilo",
                                         "loc_timedate"));

class FrenchForm : public testing::TestWithParam<const char*> {};
TEST_P(FrenchForm, IsMissingInOtherLanguages) {
    EXPECT_NE(textOf("fr", GetParam()), nullptr);
    for (const char* locale : {"de", "es", "en"})
        EXPECT_EQ(textOf(locale, GetParam()), nullptr) << locale;
}
INSTANTIATE_TEST_SUITE_P(Ids, FrenchForm,
                         testing::Values("loc_bytesize_unit_many", "loc_bytesize_unit_zerosing",
                                         "loc_byterate_kilo_many", "loc_period_day_many",
                                         "loc_period_second_zerosing"));

class EnglishOnly : public testing::TestWithParam<const char*> {};
TEST_P(EnglishOnly, IsTheEnglishEntryInEveryLanguage) {
    const LocalesInForce english{"en"};
    for (const char* locale : {"de", "es", "fr"}) {
        const LocalesInForce locales{locale};
        EXPECT_EQ(locales.map.get(GetParam()), english.map.get(GetParam())) << locale;
    }
}
INSTANTIATE_TEST_SUITE_P(Ids, EnglishOnly,
                         testing::Values("loc_time_tomorrow", "loc_time_yesterday"));

TEST(FrenchPlural, OfOneKilobyteIsTheZerosingForm) {
    const LocalesInForce locales{"fr"};
    const loc::Translation* const form = locales.map.getPlural("loc_bytesize_kilo", 1, 0, 1023);
    ASSERT_NE(form, nullptr);
    EXPECT_EQ(form, locales.map.get("loc_bytesize_kilo_zerosing"));
    EXPECT_STREQ(form->get(true, "loc_bytesize_kilo"), "%D Kio");
}

TEST(PluralOfDays, IsMissingWhereARangeIncludesOneExceptInFrench) {
    for (const char* locale : {"en", "de", "es"}) {
        const LocalesInForce locales{locale};
        EXPECT_EQ(locales.map.getPlural("loc_period_day", 3, 0, 9), nullptr) << locale;
        EXPECT_NE(locales.map.getPlural("loc_period_day", 3, 2, 9), nullptr) << locale;
    }
    const LocalesInForce french{"fr"};
    EXPECT_NE(french.map.getPlural("loc_period_day", 3, 0, 9), nullptr);
    EXPECT_EQ(french.map.getPlural("loc_period_day", 1, 0, 9), nullptr);
}

TEST(AddLocStringsLoc, RegistersOnce) {
    static std::string before;
    before = textOf("de", "loc_timezone_separator");
    loc::Localize::inst().addBuiltInString("de", "loc_timezone_separator", "%1$S at %2$S");
    const AddLocStrings_loc again;
    EXPECT_STREQ(textOf("de", "loc_timezone_separator"), "%1$S at %2$S");
    loc::Localize::inst().addBuiltInString("de", "loc_timezone_separator", before.c_str());
}

} // namespace
