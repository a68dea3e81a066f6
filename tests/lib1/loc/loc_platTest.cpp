#include "loc/loc_plat.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/loc/LocalesInForce.h"
#include "lib1/plat/RecordingLogger.h"
#include "loc/Localize.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

RecordingLogger recorder("recorder");

const char* const ids[] = {
    "plat_bad_argument",
    "plat_configuration_global_params",
    "plat_configuration_help_default",
    "plat_configuration_log_dests_title",
    "plat_configuration_log_names_title",
    "plat_configuration_option_usage",
    "plat_configuration_option_usage_only",
    "plat_configuration_option_usage_with_extra",
    "plat_configuration_param_usage",
    "plat_missing_argument",
    "plat_param_log",
    "plat_param_logdir",
    "plat_param_logfile",
    "plat_press_return_to_continue",
    "plat_run_with_help",
    "plat_this_program_not_directly",
    "plat_usage_help",
    "plat_usage_label",
};

// The two formats among the ids are read raw, as their users do; all others finished.
bool isFormat(const char* id) {
    return std::strcmp(id, "plat_bad_argument") == 0 ||
           std::strcmp(id, "plat_missing_argument") == 0;
}

std::string textOf(const char* locale, const char* id) {
    const LocalesInForce locales{locale};
    return isFormat(id) ? LUMO_LOCALIZE_RAW(id) : LUMO_LOCALIZE(id);
}

struct TextRow {
    const char* locale;
    const char* id;
    const char* text;
    friend void PrintTo(const TextRow& row, std::ostream* out) {
        *out << row.locale << ' ' << row.id;
    }
};
class PlatText : public testing::TestWithParam<TextRow> {};
TEST_P(PlatText, IsTheGivenOne) {
    EXPECT_EQ(textOf(GetParam().locale, GetParam().id), GetParam().text);
}
INSTANTIATE_TEST_SUITE_P(
    English, PlatText,
    testing::Values(
        TextRow{"en", "plat_bad_argument", "Bad argument '%S'."},
        TextRow{"en", "plat_configuration_global_params", "Global parameters"},
        TextRow{"en", "plat_configuration_help_default", "default"},
        TextRow{"en", "plat_configuration_log_dests_title", "Log destinations:"},
        TextRow{"en", "plat_configuration_log_names_title", "Log names:"},
        TextRow{"en", "plat_configuration_option_usage", "Options may also be parameters."},
        TextRow{"en", "plat_configuration_option_usage_only", "Options are parameters."},
        TextRow{"en", "plat_configuration_option_usage_with_extra",
                "Options are parameters, and also the following:"},
        TextRow{"en", "plat_configuration_param_usage",
                "Parameters can be turned on with -<param> or off with -<param>=0\nValues can be "
                "specified as -<param> <value>\nOther valid forms are <param>=<value> "
                "-<param>=<value> --<param>=<value>\nNames are case-insensitive.  Valid "
                "parameters are listed below."},
        TextRow{"en", "plat_missing_argument", "Missing argument to '%S'."},
        TextRow{"en", "plat_param_log",
                "Record events in the format <log>:<target>:<level>[,...]."},
        TextRow{"en", "plat_param_logdir",
                "Directory in which to store log output directed to file."},
        TextRow{"en", "plat_param_logfile", "File in which to store log output directed to file."},
        TextRow{"en", "plat_press_return_to_continue", "Press Enter/Return key to continue"},
        TextRow{"en", "plat_run_with_help", "Run with -help for usage."},
        TextRow{"en", "plat_this_program_not_directly",
                "This program is not intended to be run directly."},
        TextRow{"en", "plat_usage_help", "Provide [advanced] usage information."},
        TextRow{"en", "plat_usage_label", "Usage:"}));
INSTANTIATE_TEST_SUITE_P(
    Translated, PlatText,
    testing::Values(TextRow{"de", "plat_bad_argument", "Falsches Argument '%S'."},
                    TextRow{"de", "plat_missing_argument", "Fehlendes Argument zu '%S'."},
                    TextRow{"de", "plat_usage_label", "Nutzung:"},
                    TextRow{"de", "plat_configuration_help_default", "Standardeinstellung"},
                    TextRow{"es", "plat_bad_argument", "El argumento '%S' no es correcto."},
                    TextRow{"es", "plat_missing_argument", "Falta el argumento '%S'."},
                    TextRow{"es", "plat_usage_label", "Uso:"},
                    TextRow{"es", "plat_press_return_to_continue",
                            "Pulse la tecla Intro para continuar"},
                    TextRow{"fr", "plat_bad_argument", "Argument incorrect : '%S'."},
                    TextRow{"fr", "plat_missing_argument", "Argument manquant : '%S'."},
                    TextRow{"fr", "plat_usage_label", "Syntaxe :"},
                    TextRow{"fr", "plat_configuration_log_names_title", "Noms de journal :"}));

class PlatId : public testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(All, PlatId, testing::ValuesIn(ids));

TEST_P(PlatId, HasAnEntryOfItsOwnInEveryLanguage) {
    std::map<std::string, std::string> localeOfText;
    for (const char* locale : {"de", "es", "fr", "en"})
        localeOfText.emplace(textOf(locale, GetParam()), locale);
    EXPECT_EQ(localeOfText.size(), 4U);
}

TEST_P(PlatId, KeepsTheColonsAndPeriodsOfTheEnglishText) {
    const char last = textOf("en", GetParam()).back();
    for (const char* locale : {"de", "es", "fr"}) {
        const char lastOfLocale = textOf(locale, GetParam()).back();
        if (last == ':' || last == '.')
            EXPECT_EQ(lastOfLocale, last) << locale;
        else
            EXPECT_THAT(std::string(".:"), Not(HasSubstr(std::string(1, lastOfLocale)))) << locale;
    }
}

TEST_P(PlatId, FrenchColonHasAPlainBlankInFront) {
    const std::string text = textOf("fr", GetParam());
    if (!text.empty() && text.back() == ':') {
        EXPECT_TRUE(text.ends_with(" :")) << text;
    }
}

TEST_P(PlatId, ReadsAsItIsMeantTo) {
    const LogSetting setting("Localize:recorder:0");
    for (const char* locale : {"de", "es", "fr", "en"})
        textOf(locale, GetParam());
    EXPECT_THAT(recorder.takeTexts(), IsEmpty());
}

struct QuoteRow {
    const char* locale;
    const char* open;
    const char* close;
    friend void PrintTo(const QuoteRow& row, std::ostream* out) { *out << row.locale; }
};
class Quotes : public testing::TestWithParam<QuoteRow> {};
TEST_P(Quotes, AreTheLanguagesOwn) {
    for (const char* id :
         {"plat_configuration_param_usage", "plat_param_log", "plat_run_with_help"}) {
        const std::string text = textOf(GetParam().locale, id);
        EXPECT_THAT(text, HasSubstr(GetParam().open)) << id;
        EXPECT_THAT(text, HasSubstr(GetParam().close)) << id;
    }
}
INSTANTIATE_TEST_SUITE_P(Languages, Quotes,
                         testing::Values(QuoteRow{"de", "„", "“"}, QuoteRow{"es", "«", "»"},
                                         QuoteRow{"fr", "«\u00A0", "\u00A0»"}));

// What a user types is the same in every language.
class Syntax : public testing::TestWithParam<const char*> {};
TEST_P(Syntax, IsKept) {
    const std::string usage = textOf(GetParam(), "plat_configuration_param_usage");
    for (const char* part : {"-<param>", "-<param>=0", "-<param> <value>", "<param>=<value>",
                             "-<param>=<value>", "--<param>=<value>"})
        EXPECT_THAT(usage, HasSubstr(part));
    EXPECT_EQ(std::count(usage.begin(), usage.end(), '\n'), 3);
    EXPECT_THAT(textOf(GetParam(), "plat_param_log"), HasSubstr("<log>:<target>:<level>[,...]"));
    EXPECT_THAT(textOf(GetParam(), "plat_run_with_help"), HasSubstr("-help"));
    EXPECT_THAT(textOf(GetParam(), "plat_usage_help"), testing::ContainsRegex("\\[.*\\]"));
}
INSTANTIATE_TEST_SUITE_P(Languages, Syntax, testing::Values("de", "es", "fr", "en"));

TEST(GermanUsage, SaysThatCaseCountsAndHasItsOwnGrammar) {
    const std::string usage = textOf("de", "plat_configuration_param_usage");
    EXPECT_THAT(usage, HasSubstr("Groß-/Kleinschreibung beachtet"));
    EXPECT_THAT(usage, HasSubstr("könne mit"));
}

TEST(AddLocStringsPlat, RegistersOnce) {
    static std::string before;
    before = textOf("de", "plat_param_logdir");
    loc::Localize::inst().addBuiltInString("de", "plat_param_logdir", "replaced");
    const AddLocStrings_plat again;
    EXPECT_EQ(textOf("de", "plat_param_logdir"), "replaced");
    loc::Localize::inst().addBuiltInString("de", "plat_param_logdir", before.c_str());
}

} // namespace
