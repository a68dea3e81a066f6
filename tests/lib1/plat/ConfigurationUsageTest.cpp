#include "plat/Configuration.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <ostream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/loc/LocalesInForce.h"
#include "lib1/plat/RecordingLogger.h"
#include "plat/BinaryParameter.h"
#include "plat/BoolParameter.h"
#include "plat/IntParameter.h"
#include "plat/StringParameter.h"

namespace {

using plat::BoolParameter;
using plat::Configuration;
using plat::IntParameter;
using plat::StringParameter;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

RecordingLogger recorder("recorder");

struct ConfigurationUsageTest : testing::Test {
    Configuration config{"Test", nullptr};
    const LocalesInForce english{"en_US"};

    std::string listed(bool showHidden = false, bool showValues = true, int width = 79,
                       int indent = 14) const {
        return listed(config, showHidden, showValues, width, indent);
    }
    static std::string listed(const Configuration& which, bool showHidden, bool showValues,
                              int width, int indent) {
        char* text = nullptr;
        std::size_t size = 0;
        std::FILE* const stream = open_memstream(&text, &size);
        which.list(showHidden, showValues, stream, width, indent);
        std::fclose(stream);
        const std::unique_ptr<char, void (*)(void*)> owned(text, std::free);
        return {text, size};
    }
    std::string printed(bool all, bool showValues) const {
        testing::internal::CaptureStdout();
        config.printParamUsage(all, showValues);
        std::fflush(stdout);
        return testing::internal::GetCapturedStdout();
    }
};

TEST_F(ConfigurationUsageTest, HeadingIsTheNameOrTheDescription) {
    EXPECT_EQ(listed(), "Test Parameters:\n");
    const Configuration described("Test", loc::msgid_t("plat_configuration_global_params"));
    EXPECT_EQ(listed(described, false, true, 79, 14), "Global parameters:\n");
    const LocalesInForce german{"de_DE"};
    EXPECT_THAT(listed(described, false, true, 79, 14),
                testing::AllOf(Not(StartsWith("Global parameters")), EndsWith(":\n")));
}

TEST_F(ConfigurationUsageTest, GlobalConfigurationHasADescription) {
    EXPECT_THAT(listed(*Configuration::global(), false, true, 79, 14),
                StartsWith("Global parameters:\n"));
}

TEST_F(ConfigurationUsageTest, ListsNameDescriptionAndValue) {
    const BoolParameter flag("Verbose", "Say more.", false, false, &config);
    IntParameter number("Width", "In columns.", 80, false, &config);
    number.setParam("100", 50); // what is in force, though the note calls it the default
    const StringParameter text("Name", "", "a b", false, &config);
    EXPECT_EQ(listed(), "Test Parameters:\n"
                        "  Name           - (default=a b)\n"
                        "  Verbose        - Say more. (default=0)\n"
                        "  Width          - In columns. (default=100)\n");
}

TEST(ConfigurationUsage, IdStandsForTheTextBeforeTheProcessHasLocales) {
    Configuration config("Test", nullptr);
    const BoolParameter flag("Verbose", "Say more.", false, false, &config);
    EXPECT_EQ(ConfigurationUsageTest::listed(config, false, true, 79, 14),
              "Test Parameters:\n"
              "  Verbose        - Say more. (plat_configuration_help_default=0)\n");
}

TEST_F(ConfigurationUsageTest, LeavesValuesOutIfToldSo) {
    const BoolParameter flag("Verbose", "Say more.", false, false, &config);
    EXPECT_EQ(listed(false, false), "Test Parameters:\n"
                                    "  Verbose        - Say more.\n");
}

TEST_F(ConfigurationUsageTest, TellsNoBytes) {
    const unsigned char bytes[] = {1};
    const plat::BinaryParameter key("Key", "Secret.", {bytes, 1}, &config);
    EXPECT_EQ(listed(), "Test Parameters:\n"
                        "  Key            - Secret.\n");
}

TEST_F(ConfigurationUsageTest, NullTextIsEmpty) {
    StringParameter text("Name", "d", "a", false, &config);
    text.setValue(plat::String(), 50);
    EXPECT_EQ(listed(), "Test Parameters:\n"
                        "  Name           - d (default=)\n");
}

TEST_F(ConfigurationUsageTest, SortsByNameWhateverTheCase) {
    const BoolParameter c("c", "", false, false, &config);
    const BoolParameter a("A", "older", false, false, &config);
    const BoolParameter b("B", "", false, false, &config);
    const BoolParameter again("a", "newer", false, false, &config);
    EXPECT_EQ(listed(false, false), "Test Parameters:\n"
                                    "  a              - newer\n"
                                    "  A              - older\n"
                                    "  B              -\n"
                                    "  c              -\n");
}

TEST_F(ConfigurationUsageTest, ListsHiddenParametersOnDemandAndInternalOnesNever) {
    const BoolParameter shown("shown", "", false, false, &config);
    const BoolParameter hidden("hidden", "", false, true, &config);
    const BoolParameter internal("_internal", "", false, false, &config);
    EXPECT_EQ(listed(false, false), "Test Parameters:\n"
                                    "  shown          -\n");
    EXPECT_EQ(listed(true, false), "Test Parameters:\n"
                                   "  hidden         -\n"
                                   "  shown          -\n");
}

TEST_F(ConfigurationUsageTest, ListsChildrenTheSameWay) {
    Configuration first("First", nullptr);
    Configuration second("Second", nullptr);
    Configuration deep("Deep", nullptr);
    config.registerChild(&first, true);
    config.registerChild(&second, true);
    first.registerChild(&deep, true);
    const BoolParameter a("a", "", false, true, &first);
    const BoolParameter b("b", "", true, false, &deep);
    EXPECT_EQ(listed(true, true, 79, 3), "Test Parameters:\n"
                                         "First Parameters:\n"
                                         "  a   - (default=0)\n"
                                         "Deep Parameters:\n"
                                         "  b   - (default=1)\n"
                                         "Second Parameters:\n");
    EXPECT_EQ(listed(false, false, 79, 3), "Test Parameters:\n"
                                           "First Parameters:\n"
                                           "Deep Parameters:\n"
                                           "  b   -\n"
                                           "Second Parameters:\n");
}

TEST_F(ConfigurationUsageTest, WrapsDescriptionsBehindTheNames) {
    const BoolParameter flag("Verbose",
                             "One two three four five six seven eight nine ten eleven twelve "
                             "thirteen fourteen fifteen.",
                             false, false, &config);
    EXPECT_EQ(listed(),
              "Test Parameters:\n"
              "  Verbose        - One two three four five six seven eight nine ten eleven\n"
              "                   twelve thirteen fourteen fifteen. (default=0)\n");
}

TEST_F(ConfigurationUsageTest, LongNamesPushTheDescription) {
    const BoolParameter flag("AVeryLongParameterName", "Text.", false, false, &config);
    EXPECT_EQ(listed(false, false), "Test Parameters:\n"
                                    "  AVeryLongParameterName - Text.\n");
}

struct WidthRow {
    int width;
    bool showValues;
    const char* text; // behind the heading
    friend void PrintTo(const WidthRow& row, std::ostream* out) { *out << row.width; }
};

class NotePlace : public ConfigurationUsageTest, public testing::WithParamInterface<WidthRow> {};

// "  N    - abcdef" is 15 bytes long, and "(default=0)" has 11 columns.
TEST_P(NotePlace, DependsOnTheRoom) {
    const BoolParameter flag("N", "abcdef", false, false, &config);
    EXPECT_EQ(listed(false, GetParam().showValues, GetParam().width, 4),
              std::string("Test Parameters:\n") + GetParam().text);
}
INSTANTIATE_TEST_SUITE_P(Widths, NotePlace,
                         testing::Values(WidthRow{27, true, "  N    - abcdef (default=0)\n"},
                                         WidthRow{26, true,
                                                  "  N    - abcdef\n"
                                                  "         (default=0)\n"},
                                         // An empty note leaves a blank, which wrapping drops,
                                         WidthRow{16, false, "  N    - abcdef\n"},
                                         // or a line, if there is no room even for that.
                                         WidthRow{15, false, "  N    - abcdef\n\n"}),
                         [](const auto& row) { return "Width" + std::to_string(row.param.width); });

TEST_F(ConfigurationUsageTest, LongNotesAreWrappedToo) {
    const StringParameter text("N", "abc", "one two three", false, &config);
    EXPECT_EQ(listed(false, true, 20, 1), "Test Parameters:\n"
                                          "  N - abc\n"
                                          "      (default=one\n"
                                          "      two three)\n");
}

TEST_F(ConfigurationUsageTest, UnusualWidthsDoNoHarm) {
    const StringParameter text("Name", "abc def", "x", false, &config);
    for (const int width : {-5, 0, 1, 5}) {
        for (const int indent : {-7, -5, 0, 3, 200})
            EXPECT_THAT(listed(true, true, width, indent), HasSubstr("Name"));
    }
}

TEST_F(ConfigurationUsageTest, CountsColumnsInTheLocaleOfTheThread) {
    const unsigned char bytes[] = {1};
    const plat::BinaryParameter key("Key", "Secret.", {bytes, 1}, &config);
    const BoolParameter flag("Verbose", "Say more.", false, false, &config);
    const LogSetting setting("Localize:recorder:100");
    recorder.take();
    listed();
    // Once for each wrapping, and once for the width of the note.
    const std::vector<std::string> texts = recorder.takeTexts();
    EXPECT_EQ(std::count(texts.begin(), texts.end(), "setting locale "), 1 + 3);
    EXPECT_EQ(std::count(texts.begin(), texts.end(), "restoring locale"), 1 + 3);
}

TEST_F(ConfigurationUsageTest, UsageTextIsLocalised) {
    EXPECT_THAT(Configuration::paramUsageText(),
                StartsWith("Parameters can be turned on with -<param> or off with -<param>=0\n"));
    const LocalesInForce german{"de_DE"};
    EXPECT_THAT(Configuration::paramUsageText(), Not(StartsWith("Parameters can")));
}

constexpr const char* usageText =
    "Parameters can be turned on with -<param> or off with -<param>=0\n"
    "Values can be specified as -<param> <value>\n"
    "Other valid forms are <param>=<value> -<param>=<value> --<param>=<value>\n"
    "Names are case-insensitive.  Valid parameters are listed below.\n\n";

TEST_F(ConfigurationUsageTest, PrintsHowToWriteParametersAndTheListing) {
    const BoolParameter flag("Verbose", "Say more.", false, false, &config);
    const BoolParameter hidden("Quiet", "Say less.", false, true, &config);
    EXPECT_EQ(printed(false, true), std::string(usageText) +
                                        "Test Parameters:\n"
                                        "  Verbose        - Say more. (default=0)\n");
    EXPECT_EQ(printed(false, false), std::string(usageText) + "Test Parameters:\n"
                                                              "  Verbose        - Say more.\n");
}

TEST_F(ConfigurationUsageTest, PrintsLogNamesAndDestinationsWithAll) {
    const BoolParameter hidden("Quiet", "Say less.", false, true, &config);
    const std::string text = printed(true, false);
    EXPECT_THAT(text, StartsWith(std::string(usageText) + "Test Parameters:\n"
                                                          "  Quiet          - Say less.\n"
                                                          "\nLog names:\n  "));
    EXPECT_THAT(text, HasSubstr("ConfigParameter"));
    EXPECT_THAT(text, EndsWith("\n\nLog destinations:\n  recorder\n"));
}

} // namespace
