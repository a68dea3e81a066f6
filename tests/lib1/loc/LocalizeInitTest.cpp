// The manager and the process's locales, which a process has but once: a program of its own.

#include "loc/Localize.h"

#include <atomic>
#include <clocale>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/TempDir.h"
#include "lib1/loc/LocalesInForce.h"
#include "lib1/loc/TestLocales.h"
#include "lib1/plat/RecordingLogger.h"
#include "lib1/plat/VirtualSlot.h"
#include "loc/LString.h"
#include "loc/LocaleSetter.h"
#include "loc/TransMap.h"
#include "plat/Configuration.h"
#include "plat/StringParameter.h"

namespace {

using loc::Localize;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using Line = RecordingLogger::Line;

RecordingLogger recorder("recorder");

void setLocale(const char* locales) {
    ASSERT_TRUE(loc::localeParam.setParam(locales, plat::ConfigParameter::preferencePriority));
}

std::string usageLabel() {
    return LUMO_LOCALIZE("plat_usage_label");
}

struct LocalizeInit : testing::Test {
    LocalizeInit() {
        setLocale("en_US");
        Localize::inst().init({});
    }
    ~LocalizeInit() override {
        for (const char* variable : localeVariables)
            ::unsetenv(variable);
    }
};

TEST(LocaleParameter, IsInTheGlobalConfiguration) {
    EXPECT_EQ(plat::Configuration::global()->get("locale"), &loc::localeParam);
    EXPECT_STREQ(loc::localeParam.getName(), "Locale");
    EXPECT_FALSE(loc::localeParam.isHidden());
}

TEST(LocaleParameter, IsEmptyAtFirst) {
    EXPECT_STREQ(loc::localeParam.value().get(), "");
}

TEST(Localize, FollowsTheParameterThroughTheThirdVirtualOperation) {
    EXPECT_EQ(virtualSlot(&Localize::parameterChanged), 2U);
}

TEST_F(LocalizeInit, ParameterDescribesItself) {
    setLocale("de");
    EXPECT_THAT(loc::localeParam.getDescription(),
                testing::StartsWith("Das zu verwendende Gebietsschema."));
}

struct Row {
    const char* value;
    const char* locales;
    const char* label;
    friend void PrintTo(const Row& row, std::ostream* out) { *out << row.value; }
};
class LocaleValue : public LocalizeInit, public testing::WithParamInterface<Row> {};
TEST_P(LocaleValue, ChoosesTheProcessesLocales) {
    setLocale(GetParam().value);
    EXPECT_EQ(Localize::inst().getLocales(), GetParam().locales);
    EXPECT_EQ(usageLabel(), GetParam().label);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, LocaleValue,
    testing::Values(Row{"de_DE", "de_DE:en_US", "Nutzung:"},
                    Row{"fr_FR", "fr_FR:en_US", "Syntaxe :"}, Row{"es", "es_ES:en_US", "Uso:"},
                    Row{"it_IT", "it_IT:en_US", "Usage:"}, Row{"xx", "xx:en_US", "Usage:"},
                    Row{"en_US", "en_US", "Usage:"}, Row{":", "en_US", "Usage:"},
                    Row{"it:de:fr", "it_IT:de_DE:fr_FR:en_US", "Nutzung:"},
                    // Not moved to the end.
                    Row{"it_IT:en_US:fr_FR", "it_IT:en_US:fr_FR", "Usage:"},
                    Row{"de-AT.UTF-8@euro", "de_AT:en_US", "Nutzung:"}));

TEST_F(LocalizeInit, EmptyValueLeavesTheChoiceToTheSystem) {
    ::setenv("LANGUAGE", "es:de", 1);
    setLocale("");
    EXPECT_EQ(Localize::inst().getLocales(), "es_ES:de_DE:en_US");
    EXPECT_EQ(usageLabel(), "Uso:");
    const loc::LocaleSetter setter(nullptr);
    EXPECT_STREQ(std::localeconv()->decimal_point, ",");
}

TEST_F(LocalizeInit, EmptyValueAndNoWordFromTheSystemIsEnglish) {
    setLocale("");
    EXPECT_EQ(Localize::inst().getLocales(), "en_US");
    EXPECT_EQ(usageLabel(), "Usage:");
}

TEST_F(LocalizeInit, ValueThatNamesNoLocaleIsNotAnEmptyOne) {
    ::setenv("LANG", "de_DE.UTF-8", 1);
    setLocale(":");
    EXPECT_EQ(Localize::inst().getLocales(), "en_US");
    const loc::LocaleSetter setter(nullptr);
    EXPECT_STREQ(std::localeconv()->decimal_point, ".");
}

TEST_F(LocalizeInit, ValueIsTheSystemsLocaleOfTheProcess) {
    setLocale("xx:de_DE");
    EXPECT_STREQ(std::localeconv()->decimal_point, ".");
    const loc::LocaleSetter setter(nullptr);
    EXPECT_STREQ(std::localeconv()->decimal_point, ",");
}

TEST_F(LocalizeInit, ChangeIsLoggedStepByStep) {
    const LogSetting setting("Localize:recorder:100");
    setLocale("xx:de_DE");
    EXPECT_THAT(recorder.take(),
                ElementsAre(Line{30, "Localize", "No OS support for locale \"xx\""},
                            Line{100, "Localize", "Updating process TransMap with locales:"},
                            Line{100, "Localize", " xx"}, Line{100, "Localize", " de_DE"},
                            Line{100, "Localize", " de"}, Line{100, "Localize", " en_US"},
                            Line{100, "Localize", " en"}));
}

TEST_F(LocalizeInit, SecondInitDoesNotListenTwice) {
    Localize::inst().init({});
    const LogSetting setting("Localize:recorder:100");
    setLocale("fr");
    EXPECT_THAT(recorder.takeTexts(), Contains("Updating process TransMap with locales:").Times(1));
}

TEST_F(LocalizeInit, ThreadsWithAMapOfTheirOwnKeepIt) {
    const LocalesInForce own{"fr"};
    setLocale("de");
    EXPECT_EQ(usageLabel(), "Syntaxe :");
    std::thread([] { EXPECT_EQ(usageLabel(), "Nutzung:"); }).join();
}

TEST_F(LocalizeInit, ProcessesLocalesAreTheThreadsWithoutASetter) {
    setLocale("it:de");
    EXPECT_EQ(loc::LocaleSetter::getThreadLocales(), "it_IT:de_DE:en_US");
}

std::string entry(const char* id, const char* text) {
    return std::string("msgid \"") + id + "\"\nmsgstr \"" + text + "\"\n\n";
}

// Each test has locales of its own: a locale's files are looked for once in a process.
TEST_F(LocalizeInit, LaterDirectoriesWin) {
    const TempDir first;
    const TempDir second;
    first.write("strings.f1.po", entry("own_first", "first") + entry("own_both", "first"));
    second.write("strings.f1.po", entry("own_second", "second") + entry("own_both", "second"));
    Localize::inst().init(LocalesInForce::strings({first.get(), second.get()}));
    setLocale("f1");
    EXPECT_STREQ(LUMO_LOCALIZE("own_first"), "first");
    EXPECT_STREQ(LUMO_LOCALIZE("own_second"), "second");
    EXPECT_STREQ(LUMO_LOCALIZE("own_both"), "second");
}

TEST_F(LocalizeInit, FilesOfTheBareLanguageAreRead) {
    const TempDir folder;
    folder.write("strings.f2.po", entry("own_bare", "language") + entry("own_exact", "language"));
    folder.write("strings.f2_XX.po", entry("own_exact", "country"));
    Localize::inst().init(LocalesInForce::strings({folder.get()}));
    setLocale("f2_XX");
    EXPECT_STREQ(LUMO_LOCALIZE("own_bare"), "language");
    EXPECT_STREQ(LUMO_LOCALIZE("own_exact"), "country");
}

TEST_F(LocalizeInit, FilesAreLookedForOnce) {
    const TempDir folder;
    folder.write("strings.f3.po", entry("own_id", "text"));
    Localize::inst().init(LocalesInForce::strings({folder.get()}));
    const LogSetting setting("Localize:recorder:30");
    setLocale("f3");
    setLocale("en_US");
    setLocale("f3");
    Localize::inst().setLocalesFromParam();
    const std::string loaded = "Loaded strings from " + folder / "strings.f3.po";
    EXPECT_THAT(recorder.takeTexts(), Contains(loaded).Times(1));
}

TEST_F(LocalizeInit, FileAddedLaterIsNotSeen) {
    const TempDir folder;
    Localize::inst().init(LocalesInForce::strings({folder.get()}));
    setLocale("f4");
    folder.write("strings.f4.po", entry("own_late", "text"));
    Localize::inst().setLocalesFromParam();
    EXPECT_STREQ(LUMO_LOCALIZE("own_late"), "own_late");
}

TEST_F(LocalizeInit, SettersReadFilesToo) {
    const TempDir folder;
    folder.write("strings.f5.po", entry("own_id5", "text"));
    Localize::inst().init(LocalesInForce::strings({folder.get()}));
    const loc::LocaleSetter setter("f5");
    EXPECT_STREQ(LUMO_LOCALIZE("own_id5"), "text");
}

TEST_F(LocalizeInit, FileReplacesBuiltInTextsWhenMapsAreFilledAgain) {
    const TempDir folder;
    folder.write("strings.pt.po", entry("plat_usage_label", "Uso (pt):"));
    static const char builtIn[] = "built in";
    Localize::inst().addBuiltInString("pt", "plat_usage_label", builtIn);
    Localize::inst().init(LocalesInForce::strings({folder.get()}));
    setLocale("pt_PT");
    EXPECT_EQ(usageLabel(), "Uso (pt):");
}

TEST_F(LocalizeInit, BrokenFilesAreReportedAndTheRestWorks) {
    const TempDir folder;
    folder.write("strings.f6.po", "broken\n" + entry("own_id6", "text"));
    Localize::inst().init(LocalesInForce::strings({folder.get()}));
    const LogSetting setting("Localize:recorder:0");
    setLocale("f6");
    EXPECT_STREQ(LUMO_LOCALIZE("own_id6"), "text");
    EXPECT_THAT(recorder.takeTexts(), Contains(HasSubstr("strings.f6.po:1 ")));
}

TEST_F(LocalizeInit, ThreadsLocaliseWhileTheLocaleChanges) {
    std::atomic<bool> isDone = false;
    std::vector<std::thread> threads;
    threads.reserve(3);
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&isDone] {
            while (!isDone) {
                EXPECT_THAT(usageLabel(), testing::AnyOf("Nutzung:", "Syntaxe :", "Usage:"));
                EXPECT_THAT(loc::LocaleSetter::getThreadLocales().str(), HasSubstr("en_US"));
                const loc::LocaleSetter setter("es");
                EXPECT_EQ(usageLabel(), "Uso:");
            }
        });
    }
    for (int i = 0; i < 30; ++i)
        setLocale(i % 2 == 0 ? "de" : "fr");
    isDone = true;
    for (std::thread& thread : threads)
        thread.join();
}

// Texts of each kind, in three languages; the forms are those of each language.
void addThings() {
    struct {
        const char* locale;
        const char* one;
        const char* others;
        const char* text;
    } const rows[] = {{"de", "own_things_sing", "own_things_zeromany", "%D Dinge"},
                      {"fr", "own_things_zerosing", "own_things_many", "%D choses"},
                      {"en", "own_things_sing", "own_things_zeromany", "%D things"}};
    for (const auto& row : rows) {
        Localize::inst().addBuiltInString(row.locale, row.one, row.text);
        Localize::inst().addBuiltInString(row.locale, row.others, row.text);
        Localize::inst().addBuiltInString(row.locale, "own_percent", "100 %%");
    }
}

std::string threeThings() {
    loc::LString text;
    text.xprintf(LUMO_LOCALIZE_PLURAL("own_things", 3, 0, 9), loc::PrintfArgs(3));
    return text.str();
}

std::string percent() {
    return LUMO_LOCALIZE("own_percent");
}

void pushAndPopMaps() {
    const LocalesInForce french{"fr"};
    EXPECT_EQ(threeThings(), "3 choses");
    {
        const loc::TransMap empty;
        EXPECT_EQ(percent(), "own_percent");
        const loc::LocaleSetter german("de");
        EXPECT_EQ(threeThings(), "3 Dinge");
        EXPECT_EQ(percent(), "100 %");
    }
    EXPECT_EQ(threeThings(), "3 choses");
}

TEST_F(LocalizeInit, ThreadsPushAndPopMapsWhileTheLocaleChanges) {
    addThings();
    setLocale("fr");
    std::atomic<bool> isDone = false;
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&isDone] {
            do {
                EXPECT_THAT(threeThings(), testing::AnyOf("3 Dinge", "3 choses", "3 things"));
                EXPECT_EQ(percent(), "100 %"); // finished by whoever comes first
                pushAndPopMaps();
            } while (!isDone);
        });
    }
    for (int i = 0; i < 20; ++i) {
        setLocale("de");
        EXPECT_EQ(threeThings(), "3 Dinge");
        setLocale("fr");
        EXPECT_EQ(threeThings(), "3 choses");
        setLocale("en");
        EXPECT_EQ(threeThings(), "3 things");
    }
    isDone = true;
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace
