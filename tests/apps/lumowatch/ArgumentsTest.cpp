#include "lumowatch/Arguments.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using lumowatch::Arguments;

struct Parsed {
    Arguments arguments;
    bool isFine;
    std::string error;
};

Parsed parse(std::vector<const char*> words) {
    words.insert(words.begin(), "lumowatch");
    Parsed parsed;
    parsed.isFine =
        parsed.arguments.parse(static_cast<int>(words.size()), words.data(), &parsed.error);
    return parsed;
}

TEST(Arguments, NothingMeansUntilInterruptedWithoutPictures) {
    const Parsed parsed = parse({});
    EXPECT_TRUE(parsed.isFine);
    EXPECT_EQ(parsed.arguments.seconds, 0);
    EXPECT_EQ(parsed.arguments.pngFolder, "");
    EXPECT_FALSE(parsed.arguments.isHelp);
}

TEST(Arguments, SecondsAndFolderAreTaken) {
    const Parsed parsed = parse({"2.5", "pictures"});
    EXPECT_TRUE(parsed.isFine);
    EXPECT_EQ(parsed.arguments.seconds, 2.5);
    EXPECT_EQ(parsed.arguments.pngFolder, "pictures");
}

class BadSeconds : public testing::TestWithParam<const char*> {};

TEST_P(BadSeconds, AreRefusedByName) {
    const Parsed parsed = parse({GetParam()});
    EXPECT_FALSE(parsed.isFine);
    EXPECT_EQ(parsed.error, std::string("not a number of seconds: '") + GetParam() + "'");
}

INSTANTIATE_TEST_SUITE_P(Words, BadSeconds,
                         testing::Values("", "x", "-1", "1x", " 1", "1e400", "nan", "inf", "0x10",
                                         "99999999999999"));

TEST(Arguments, TooManyAreRefused) {
    EXPECT_EQ(parse({"1", "a", "b"}).error, "too many arguments");
}

class HelpWord : public testing::TestWithParam<const char*> {};

TEST_P(HelpWord, AsksForHelpWhateverElseStandsThere) {
    EXPECT_TRUE(parse({GetParam()}).arguments.isHelp);
    const Parsed parsed = parse({"nonsense", GetParam(), "more", "words"});
    EXPECT_TRUE(parsed.isFine);
    EXPECT_TRUE(parsed.arguments.isHelp);
}

INSTANTIATE_TEST_SUITE_P(Words, HelpWord, testing::Values("--help", "-help", "-h"));

} // namespace
