#include "plat/Configuration.h"

#include <ostream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/loc/LocalesInForce.h"
#include "lib1/plat/ParameterListener.h"
#include "plat/BadUtf8.h"
#include "plat/BoolParameter.h"
#include "plat/Exception.h"
#include "plat/IntParameter.h"
#include "plat/ParameterAlias.h"
#include "plat/StringParameter.h"

namespace {

using plat::BoolParameter;
using plat::Configuration;
using plat::IntParameter;
using plat::StringParameter;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using Args = std::vector<const char*>;

static_assert(Configuration::UsageNormal == 0);
static_assert(Configuration::UsageAll == 1);
static_assert(Configuration::UsageXml == 2);

// The callback is a plain function: what it hears is kept here.
std::vector<Configuration::UsageType> usageCalls;
Configuration* usageConfig = nullptr;

void recordUsage(Configuration::UsageType type, Configuration* config) {
    usageCalls.push_back(type);
    usageConfig = config;
}

struct ConfigurationArgsTest : testing::Test {
    ConfigurationArgsTest() {
        usageCalls.clear();
        usageConfig = nullptr;
    }

    Configuration config{"Test", nullptr};
    StringParameter log{"Logging", "", "", false, &config};
    BoolParameter verbose{"Verbose", "", false, false, &config};
    IntParameter width{"Width", "", 1, false, &config};
    const LocalesInForce english{"en_US"};

    /// What all three parameters hold, in the form of a command line.
    std::string values() const {
        return valueOf(log) + " " + valueOf(verbose) + " " + valueOf(width);
    }

    /// Processes a whole command line; the result is the message of what is thrown, if anything.
    std::string process(Args args, Configuration::UsageCallback usage = nullptr) {
        args.push_back(nullptr);
        try {
            config.processParamArgs(args.data(), usage);
        } catch (const plat::Exception& failure) {
            EXPECT_STREQ(failure.typeName.get(), "BadCmdLineArg");
            return failure.message.get();
        }
        return "";
    }

    /// Processes arguments up to the first that is no setting; the result is that one's place.
    std::ptrdiff_t processSome(Args args, Configuration::UsageCallback usage = nullptr) {
        args.push_back(nullptr);
        const char** arg = args.data();
        config.processParamArgs(&arg, usage);
        return arg - args.data();
    }
};

struct HelpRow {
    const char* arg;
    bool isHelp;
    friend void PrintTo(const HelpRow& row, std::ostream* out) {
        *out << (row.arg == nullptr ? "null" : row.arg);
    }
};

class HelpArg : public testing::TestWithParam<HelpRow> {};

TEST_P(HelpArg, IsRecognised) {
    EXPECT_EQ(plat::isHelpArg(GetParam().arg), GetParam().isHelp);
}
INSTANTIATE_TEST_SUITE_P(
    Args, HelpArg,
    testing::Values(HelpRow{"-help", true}, HelpRow{"-HELP", true}, HelpRow{"--help", true},
                    HelpRow{"--Help", true}, HelpRow{"-h", true}, HelpRow{"-H", true},
                    HelpRow{"/?", true}, HelpRow{nullptr, false}, HelpRow{"", false},
                    HelpRow{"help", false}, HelpRow{"--h", false}, HelpRow{"-?", false},
                    HelpRow{"/help", false}, HelpRow{"-helpme", false}, HelpRow{"-help ", false}));

struct FormRow {
    const char* name;
    Args args;
    std::ptrdiff_t taken; // how many arguments are taken
    const char* values;   // of the three parameters afterwards
    friend void PrintTo(const FormRow& row, std::ostream* out) { *out << row.name; }
};

class ArgumentForm : public ConfigurationArgsTest, public testing::WithParamInterface<FormRow> {};

TEST_P(ArgumentForm, IsTakenByTheLoop) {
    EXPECT_EQ(processSome(GetParam().args), GetParam().taken);
    EXPECT_EQ(values(), GetParam().values);
}

TEST_P(ArgumentForm, IsTakenOneByOne) {
    Args args = GetParam().args;
    args.push_back(nullptr);
    const char** arg = args.data();
    while (config.processParamArg(&arg))
        ++arg;
    EXPECT_EQ(arg - args.data(), GetParam().taken);
    EXPECT_EQ(values(), GetParam().values);
}
INSTANTIATE_TEST_SUITE_P(
    Forms, ArgumentForm,
    testing::Values(
        FormRow{"None", {}, 0, " 0 1"}, FormRow{"Empty", {""}, 0, " 0 1"},
        FormRow{"Switch", {"-verbose"}, 1, " 1 1"},
        FormRow{"SwitchWithTwoDashes", {"--VERBOSE"}, 1, " 1 1"},
        FormRow{"Value", {"width=80"}, 1, " 0 80"},
        FormRow{"DashedValue", {"-width=80"}, 1, " 0 80"},
        FormRow{"TwoDashesAndValue", {"--width=80"}, 1, " 0 80"},
        FormRow{"TwoWords", {"-width", "80"}, 2, " 0 80"},
        FormRow{"TwoWordsOfText", {"-logging", "-x=y"}, 2, "-x=y 0 1"},
        FormRow{"TwoDashesAndTwoWords", {"--width", "80"}, 0, " 0 1"},
        FormRow{"NoDashAndTwoWords", {"width", "80"}, 0, " 0 1"},
        FormRow{"ValueMissing", {"-width"}, 0, " 0 1"},
        FormRow{"ValueRefused", {"-width", "x"}, 0, " 0 1"},
        FormRow{"SwitchTakesNoSecondWord", {"-verbose", "0"}, 1, " 1 1"},
        // The first form fails, so that the second looks for a parameter named "width=x".
        FormRow{"ValueRefusedWithNextWord", {"-width=x", "80"}, 0, " 0 1"},
        FormRow{"All", {"-Logging=*:file:100", "-verbose", "-width", "80"}, 4, "*:file:100 1 80"},
        FormRow{"StopsAtTheFirstOther", {"-verbose", "file", "-width=80"}, 1, " 1 1"},
        FormRow{"StopsAtHelp", {"-verbose", "-help", "-width=80"}, 1, " 1 1"},
        FormRow{"StopsAtTheLaunchersArgument", {"-psn_0_1", "-verbose"}, 0, " 0 1"},
        FormRow{"LastWins", {"width=2", "-width", "3"}, 3, " 0 3"}),
    [](const auto& row) { return row.param.name; });

TEST_F(ConfigurationArgsTest, SetsPreferences) {
    EXPECT_EQ(process({"-width", "80", "--verbose"}), "");
    EXPECT_THAT(valuesOf(width), ElementsAre(Pair(50, "80"), Pair(100, "1")));
    EXPECT_THAT(valuesOf(verbose), ElementsAre(Pair(50, "1"), Pair(100, "0")));
}

TEST_F(ConfigurationArgsTest, OneArgumentMovesOntoItsValueOnly) {
    const char* args[] = {"-width", "80", "rest", nullptr};
    const char** arg = args;
    EXPECT_TRUE(config.processParamArg(&arg));
    EXPECT_EQ(arg, args + 1);
    arg = args + 2;
    EXPECT_FALSE(config.processParamArg(&arg));
    EXPECT_EQ(arg, args + 2);
    arg = args + 3;
    EXPECT_FALSE(config.processParamArg(&arg)); // the end
    EXPECT_EQ(arg, args + 3);
    const char* single[] = {"width=2", nullptr};
    arg = single;
    EXPECT_TRUE(config.processParamArg(&arg));
    EXPECT_EQ(arg, single);
}

TEST_F(ConfigurationArgsTest, AliasOfASwitchAndATextTakesNoSecondWord) {
    plat::ParameterAlias alias("Verbose", "Logging", nullptr);
    config.addAlias("both", &alias);
    EXPECT_EQ(processSome({"-both", "x"}), 1);
    EXPECT_EQ(values(), " 1 1");
}

struct UsageRow {
    const char* name;
    Args args;
    std::vector<Configuration::UsageType> calls;
    friend void PrintTo(const UsageRow& row, std::ostream* out) { *out << row.name; }
};

class UsageRequest : public ConfigurationArgsTest, public testing::WithParamInterface<UsageRow> {};

TEST_P(UsageRequest, CallsBack) {
    Args args = GetParam().args;
    const std::ptrdiff_t before = processSome(args);
    EXPECT_THAT(usageCalls, IsEmpty());                // without a callback
    EXPECT_EQ(processSome(args, recordUsage), before); // the help argument is not taken
    EXPECT_EQ(usageCalls, GetParam().calls);
    EXPECT_EQ(usageConfig, GetParam().calls.empty() ? nullptr : &config);
}
INSTANTIATE_TEST_SUITE_P(
    Requests, UsageRequest,
    testing::Values(UsageRow{"None", {"-verbose"}, {}}, UsageRow{"OtherArgument", {"file"}, {}},
                    UsageRow{"Alone", {"-help"}, {Configuration::UsageNormal}},
                    UsageRow{"Short", {"-h"}, {Configuration::UsageNormal}},
                    UsageRow{"OtherWord", {"--help", "me"}, {Configuration::UsageNormal}},
                    UsageRow{"All", {"/?", "all"}, {Configuration::UsageAll}},
                    UsageRow{"AllUpper", {"-HELP", "ALL"}, {Configuration::UsageAll}},
                    UsageRow{"Xml", {"-help", "xml"}, {Configuration::UsageXml}},
                    UsageRow{"XmlMixed", {"-help", "Xml"}, {Configuration::UsageXml}},
                    UsageRow{"WordTooLong", {"-help", "xmlx"}, {Configuration::UsageNormal}},
                    UsageRow{"BehindSettings",
                             {"-verbose", "-width", "2", "-help", "all"},
                             {Configuration::UsageAll}},
                    UsageRow{"BehindAnother", {"file", "-help"}, {}}),
    [](const auto& row) { return row.param.name; });

TEST_F(ConfigurationArgsTest, ParameterNamedHelpWins) {
    const BoolParameter help("help", "", false, false, &config);
    EXPECT_EQ(process({"-help"}, recordUsage), "");
    EXPECT_THAT(usageCalls, IsEmpty());
    EXPECT_EQ(valueOf(help), "1");
}

struct BadRow {
    const char* name;
    Args args;
    const char* bad; // the argument that is reported; null for none
    friend void PrintTo(const BadRow& row, std::ostream* out) { *out << row.name; }
};

class WholeCommandLine : public ConfigurationArgsTest,
                         public testing::WithParamInterface<BadRow> {};

TEST_P(WholeCommandLine, ReportsWhatIsLeft) {
    const char* const bad = GetParam().bad;
    const std::string problem = bad == nullptr ? "" : std::string("Bad argument '") + bad + "'.";
    EXPECT_EQ(process(GetParam().args), problem);
    EXPECT_EQ(process(GetParam().args, recordUsage),
              problem + (bad == nullptr ? "" : "  Run with -help for usage."));
}
INSTANTIATE_TEST_SUITE_P(
    Lines, WholeCommandLine,
    testing::Values(BadRow{"Empty", {}, nullptr},
                    BadRow{"Settings", {"-verbose", "-width", "80"}, nullptr},
                    BadRow{"Word", {"foo"}, "foo"},
                    BadRow{"WordBehindSettings", {"-verbose", "value"}, "value"},
                    BadRow{"EmptyWord", {""}, ""},
                    BadRow{"TwoDashesAndTwoWords", {"--width", "80"}, "--width"},
                    BadRow{"HelpAfterTheCallback", {"-help", "ALL"}, "-help"},
                    BadRow{"PercentSigns", {"%S%n%s"}, "%S%n%s"},
                    BadRow{"LaunchersArgument", {"-psn_0_12345"}, nullptr},
                    BadRow{"LaunchersArgumentAlone", {"-psn_"}, nullptr},
                    BadRow{"LaunchersArgumentLast", {"-verbose", "-psn_0_12345"}, nullptr},
                    BadRow{"BehindLaunchersArgument", {"-psn_0_12345", "x"}, "x"},
                    BadRow{"SettingBehindLaunchersArgument", {"-psn_0_1", "-verbose"}, "-verbose"},
                    BadRow{"HelpBehindLaunchersArgument", {"-psn_0_1", "-help"}, "-help"},
                    BadRow{"TwoLaunchersArguments", {"-psn_0_1", "-psn_0_2"}, "-psn_0_2"},
                    BadRow{"LauncherUpperCase", {"-PSN_0_1"}, "-PSN_0_1"},
                    BadRow{"LauncherCutShort", {"-psn"}, "-psn"},
                    BadRow{"LauncherTwoDashes", {"--psn_0_1"}, "--psn_0_1"}),
    [](const auto& row) { return row.param.name; });

TEST_F(ConfigurationArgsTest, CallsBackBeforeItThrows) {
    EXPECT_EQ(process({"-help", "ALL"}, recordUsage),
              "Bad argument '-help'.  Run with -help for usage.");
    EXPECT_THAT(usageCalls, ElementsAre(Configuration::UsageAll));
    EXPECT_EQ(usageConfig, &config);
    usageCalls.clear();
    process({"-psn_0_1", "-help"}, recordUsage);
    EXPECT_THAT(usageCalls, IsEmpty());
}

TEST_F(ConfigurationArgsTest, KeepsWhatWasSetBeforeTheBadArgument) {
    process({"-width", "80", "bad", "-verbose"});
    EXPECT_EQ(values(), " 0 80");
}

TEST_F(ConfigurationArgsTest, LeavesTheCallersArgumentsAsTheyAre) {
    const char* args[] = {"-width", "80", nullptr};
    config.processParamArgs(args, nullptr);
    EXPECT_STREQ(args[0], "-width");
    EXPECT_STREQ(args[1], "80");
}

TEST_F(ConfigurationArgsTest, CutsLongArguments) {
    const std::string longText(300, 'x');
    EXPECT_EQ(process({longText.c_str()}), "Bad argument '" + std::string(255 - 14, 'x'));
}

TEST_F(ConfigurationArgsTest, SpeaksTheUsersLanguage) {
    const LocalesInForce french{"fr_FR"};
    EXPECT_EQ(process({"foo"}), "Argument incorrect : 'foo'.");
}

TEST(ConfigurationArgs, IdsStandForTheTextsBeforeTheProcessHasLocales) {
    Configuration config("Test", nullptr);
    const char* args[] = {"foo", nullptr};
    try {
        config.processParamArgs(args, recordUsage);
        ADD_FAILURE() << "no exception";
    } catch (const plat::Exception& failure) {
        EXPECT_STREQ(failure.message.get(), "plat_bad_argument  plat_run_with_help");
    }
}

TEST_F(ConfigurationArgsTest, ReportsWhatIsNoUtf8AsItIs) {
    EXPECT_EQ(process({"\xFF\xC3"}), "Bad argument '\xFF\xC3'.");
    EXPECT_EQ(process({"\xFF=\xFF", "-width=\xFF"}), "Bad argument '\xFF=\xFF'.");
}

TEST_F(ConfigurationArgsTest, PassesOnBadUtf8) {
    const char* oneWord[] = {"logging=\xFF", nullptr};
    const char* twoWords[] = {"-logging", "\xFF", nullptr};
    for (const char** args : {oneWord, twoWords}) {
        const char** arg = args;
        EXPECT_THROW(config.processParamArg(&arg), plat::BadUtf8);
        arg = args;
        EXPECT_THROW(config.processParamArgs(&arg, nullptr), plat::BadUtf8);
        EXPECT_THROW(config.processParamArgs(args, nullptr), plat::BadUtf8);
    }
}

} // namespace
