#include "plat/Wildcard.h"

#include <cctype>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using plat::Wildcard;

struct Row {
    const char* name;
    const char* pattern;
    const char* text;
    bool caseSensitive;
    unsigned flags;
    bool isMatch;
    friend void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }
};
class WildcardMatch : public testing::TestWithParam<Row> {};
TEST_P(WildcardMatch, ComparesTheWholeText) {
    EXPECT_EQ(Wildcard::match(GetParam().pattern, GetParam().text, GetParam().caseSensitive,
                              GetParam().flags),
              GetParam().isMatch);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, WildcardMatch,
    testing::Values(
        Row{"CaseIgnored", "*.log", "x.LOG", false, 1, true},
        Row{"CaseSensitive", "*.log", "x.LOG", true, 1, false},
        Row{"StarIsLiteralWithoutTheFlag", "a*", "a*", true, 0, true},
        Row{"NoStarWithoutTheFlag", "a*", "abc", true, 0, false},
        Row{"StarLeftOverWithoutTheFlag", "a*", "a", true, 0, false},
        Row{"OtherBitsMeanNothing", "a*", "abc", true, ~1U, false},
        Row{"AllBitsHoldTheFlag", "a*", "abc", true, ~0U, true},
        Row{"TwoStarsMatchNothing", "**", "", true, 1, true},
        Row{"StarMatchesNothing", "*", "", true, 1, true},
        Row{"TextIsMissing", "a", "", true, 1, false},
        Row{"PatternIsMissing", "", "a", true, 1, false}, Row{"BothEmpty", "", "", true, 1, true},
        Row{"BothEmptyWithoutTheFlag", "", "", true, 0, true},
        Row{"PatternEndsFirst", "ab", "abc", true, 1, false},
        Row{"TextEndsFirst", "abc", "ab", true, 1, false},
        Row{"Equal", "abc", "abc", true, 1, true}, Row{"StarInFront", "*c", "abc", true, 1, true},
        Row{"StarInTheMiddle", "a*c", "abbbc", true, 1, true},
        Row{"StarAtTheEnd", "a*", "a", true, 1, true},
        Row{"StarsAtTheEnd", "a***", "a", true, 1, true},
        Row{"StarTakesStars", "a*b", "a***b", true, 1, true},
        Row{"LastPartMustEnd", "*ab", "abab", true, 1, true},
        Row{"LastPartDoesNotEnd", "*ab", "abac", true, 1, false},
        Row{"EarlierTryFails", "*aab", "aaab", true, 1, true},
        Row{"ThreeStars", "*a*b*c*", "xxaxxbxxcxx", true, 1, true},
        Row{"ThreeStarsOutOfOrder", "*a*c*b*", "xxaxxbxxcxx", true, 1, false},
        Row{"NoQuestionMark", "a?c", "abc", true, 1, false},
        Row{"QuestionMarkIsItself", "a?c", "a?c", true, 1, true},
        Row{"NoClasses", "[a]", "a", true, 1, false}, Row{"NoEscape", "\\*", "*", true, 1, false},
        Row{"HighBytes", "\xE9*", "\xE9\xFF", false, 1, true},
        Row{"MixedCase", "DISPLAY*", "displaystreamimpl", false, 1, true}),
    [](const auto& row) { return row.param.name; });

// The rule as it is stated, with all its recursion.
bool plainMatch(const char* pattern, const char* text, bool caseSensitive, bool hasStars) {
    for (; *pattern != '\0' && *text != '\0'; ++pattern, ++text) {
        if (hasStars && *pattern == '*') {
            for (const char* rest = text;; ++rest) {
                if (plainMatch(pattern + 1, rest, caseSensitive, hasStars))
                    return true;
                if (*rest == '\0')
                    return false;
            }
        }
        const auto fold = [=](char c) {
            return caseSensitive ? int(c) : std::tolower(static_cast<unsigned char>(c));
        };
        if (fold(*pattern) != fold(*text))
            return false;
    }
    while (hasStars && *pattern == '*')
        ++pattern;
    return *pattern == '\0' && *text == '\0';
}

// Every text over an alphabet, up to a length.
std::vector<std::string> allTexts(const std::string& alphabet, std::size_t length) {
    std::vector<std::string> texts{""};
    for (std::size_t i = 0; i < texts.size() && texts[i].size() < length; ++i) {
        for (const char c : alphabet)
            texts.push_back(std::string(texts[i]) + c);
    }
    return texts;
}

void expectTheRecursiveRule(const std::string& patternAlphabet, const std::string& textAlphabet) {
    const std::vector<std::string> texts = allTexts(textAlphabet, 6);
    for (const std::string& pattern : allTexts(patternAlphabet, 5)) {
        for (const std::string& text : texts) {
            for (const bool caseSensitive : {false, true}) {
                for (const unsigned flags : {0U, 1U})
                    ASSERT_EQ(Wildcard::match(pattern.c_str(), text.c_str(), caseSensitive, flags),
                              plainMatch(pattern.c_str(), text.c_str(), caseSensitive, flags == 1))
                        << pattern << " | " << text;
            }
        }
    }
}

TEST(WildcardMatch, AgreesWithTheRecursiveRuleOnAllShortTexts) {
    expectTheRecursiveRule("ab*", "aB");
}

TEST(WildcardMatch, AgreesWithTheRecursiveRuleWhereTheTextHasStars) {
    expectTheRecursiveRule("ab*", "ab*");
}

TEST(WildcardMatch, TakesFrontsOfEveryLength) {
    for (std::size_t length = 0; length < 70; ++length) {
        const std::string front(length, 'x');
        EXPECT_TRUE(Wildcard::match((front + "*").c_str(), front.c_str(), true, 1)) << length;
        EXPECT_TRUE(Wildcard::match((front + "*c").c_str(), (front + "abc").c_str(), true, 1));
        EXPECT_TRUE(Wildcard::match(front.c_str(), front.c_str(), true, 1));
        EXPECT_FALSE(Wildcard::match(front.c_str(), (front + "a").c_str(), true, 1));
        EXPECT_FALSE(Wildcard::match((front + "a").c_str(), front.c_str(), true, 1));
        EXPECT_FALSE(Wildcard::match((front + "a*").c_str(), (front + "b").c_str(), true, 1));
        EXPECT_TRUE(
            Wildcard::match(("*" + front + "a*").c_str(), ("*" + front + "xa").c_str(), true, 1));
    }
}

TEST(WildcardMatch, AnswersHostilePatternsSoon) {
    std::string pattern;
    for (int i = 0; i < 50; ++i)
        pattern += "*a";
    pattern += "*b";
    // By the recursive rule, no machine lives to see the end of this.
    EXPECT_FALSE(Wildcard::match(pattern.c_str(), std::string(10000, 'a').c_str(), true, 1));
}

TEST(WildcardMatch, FoldsEveryByteAsTheSystemDoes) {
    for (int c = 1; c < 256; ++c) {
        const char upper[] = {char(c), '\0'};
        const char lower[] = {char(std::tolower(c)), '\0'};
        EXPECT_TRUE(Wildcard::match(upper, lower, false, 0));
    }
}

} // namespace
