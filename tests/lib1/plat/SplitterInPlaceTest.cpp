#include "plat/SplitterInPlace.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using plat::SplitterInPlace;
using testing::ElementsAre;

using Tokens = std::vector<std::string>;

template <typename Next>
Tokens split(std::string text, Next next) {
    SplitterInPlace splitter(text.data());
    Tokens tokens;
    while (const char* const token = next(splitter))
        tokens.emplace_back(token);
    EXPECT_EQ(next(splitter), nullptr) << "null must last";
    return tokens;
}

Tokens splitAt(const char* text, char separator) {
    return split(text, [=](SplitterInPlace& splitter) { return splitter.next(separator); });
}

Tokens splitAtString(const char* text, const char* separator) {
    return split(text, [=](SplitterInPlace& splitter) { return splitter.nextString(separator); });
}

// Each token with the separator found behind it, '.' for 0.
Tokens splitAtAnyOf(const char* text, const char* separators) {
    char found = 'x';
    Tokens tokens = split(
        text, [&](SplitterInPlace& splitter) { return splitter.nextOneOf(separators, &found); });
    EXPECT_EQ(found, '\0');
    std::string copy = text;
    SplitterInPlace splitter(copy.data());
    for (std::string& token : tokens) {
        found = 'x';
        splitter.nextOneOf(separators, &found);
        token += found == '\0' ? '.' : found;
    }
    return tokens;
}

TEST(SplitterNext, GivesTheTokens) {
    EXPECT_THAT(splitAt("a,,b", ','), ElementsAre("a", "", "b"));
    EXPECT_THAT(splitAt("abc", ','), ElementsAre("abc"));
    EXPECT_THAT(splitAt("", ','), ElementsAre(""));
    EXPECT_THAT(splitAt("a,", ','), ElementsAre("a", ""));
    EXPECT_THAT(splitAt(",", ','), ElementsAre("", ""));
}

TEST(SplitterNext, NulSeparatesNothing) {
    EXPECT_THAT(splitAt("ab", '\0'), ElementsAre("ab"));
}

TEST(SplitterNext, CutsInPlace) {
    char text[] = "a,b";
    SplitterInPlace splitter(text);
    EXPECT_EQ(splitter.next(','), text);
    EXPECT_EQ(text[1], '\0');
    EXPECT_EQ(splitter.next(','), text + 2);
}

TEST(SplitterNext, TakesAnotherSeparatorEachTime) {
    char text[] = "a=b,c";
    SplitterInPlace splitter(text);
    EXPECT_STREQ(splitter.next('='), "a");
    EXPECT_STREQ(splitter.next(','), "b");
    EXPECT_STREQ(splitter.nextOneOf(",=", nullptr), "c");
    EXPECT_EQ(splitter.nextString("x"), nullptr);
}

TEST(SplitterNextOneOf, TellsTheSeparator) {
    EXPECT_THAT(splitAtAnyOf("key=value", " ="), ElementsAre("key=", "value."));
    EXPECT_THAT(splitAtAnyOf("a b=c", " ="), ElementsAre("a ", "b=", "c."));
    EXPECT_THAT(splitAtAnyOf("", " ="), ElementsAre("."));
    EXPECT_THAT(splitAtAnyOf("a=", " ="), ElementsAre("a=", "."));
    EXPECT_THAT(splitAtAnyOf("abc", ""), ElementsAre("abc."));
}

TEST(SplitterNextOneOf, ClearsTheSeparatorEvenWhenNothingIsLeft) {
    SplitterInPlace splitter(nullptr);
    char found = 'x';
    EXPECT_EQ(splitter.nextOneOf(",", &found), nullptr);
    EXPECT_EQ(found, '\0');
}

TEST(SplitterNextString, GivesTheTokens) {
    EXPECT_THAT(splitAtString("a::b", "::"), ElementsAre("a", "b"));
    EXPECT_THAT(splitAtString("a:b", "::"), ElementsAre("a:b"));
    EXPECT_THAT(splitAtString("a:::b", "::"), ElementsAre("a", ":b"));
    EXPECT_THAT(splitAtString("::", "::"), ElementsAre("", ""));
    EXPECT_THAT(splitAtString("", "::"), ElementsAre(""));
}

TEST(SplitterNextString, EmptyTextSeparatesNothing) {
    EXPECT_THAT(splitAtString("ab", ""), ElementsAre("ab"));
}

TEST(SplitterNextString, OverwritesOnlyTheFirstByte) {
    char text[] = "a::b";
    SplitterInPlace splitter(text);
    splitter.nextString("::");
    EXPECT_EQ(std::string(text, 4), std::string("a\0:b", 4));
}

TEST(Splitter, OfNullHasNoToken) {
    SplitterInPlace splitter(nullptr);
    EXPECT_EQ(splitter.next(','), nullptr);
    EXPECT_EQ(splitter.nextOneOf(",", nullptr), nullptr);
    EXPECT_EQ(splitter.nextString(","), nullptr);
}

} // namespace
