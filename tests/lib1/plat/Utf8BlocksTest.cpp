#include "plat/Utf8Blocks.h"

#include <random>
#include <string>

#include <gtest/gtest.h>

#include "lib1/plat/ReferenceUtf8.h"

namespace {

// Both functions may stop early, but never inside a character and never behind something bad.
void expectSkipsOnlyValidText(const std::string& text) {
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    const char* const stop = plat::skipValidUtf8(begin, end);
    ASSERT_LE(begin, stop);
    ASSERT_LE(stop, end);
    EXPECT_TRUE(reference::isValid(begin, stop));
    EXPECT_EQ(std::string(begin, stop).find('\0'), std::string::npos);
    const char* const plainStop = plat::skipPlainBlocks(begin, end);
    for (const char* p = begin; p != plainStop; ++p)
        EXPECT_GT(static_cast<signed char>(*p), 0);
}

const char* const characters[] = {"a",
                                  "\x7F",
                                  "\xC3\xA9",
                                  "\xE2\x82\xAC",
                                  "\xE4\xBF\xBE",
                                  "\xEF\xBF\xBD",
                                  "\xF0\x9F\x98\x80",
                                  "\xED\x9F\xBF"};
const char* const bads[] = {
    "\x80",         "\xC0\x80",     "\xC3", "\xE2\x82",         "\xED\xA0\x80",     "\xEF\xBF\xA0",
    "\xEF\xBF\xBF", "\xF0\x9F\x98", "\xFF", "\xF0\x9F\xBF\xBE", "\xF4\x90\x80\x80", "\xE0\x80\x80"};

std::string textOf(const char* character, std::size_t size) {
    std::string text;
    while (text.size() < size)
        text += character;
    return text;
}

TEST(Utf8Blocks, StopBeforeEveryBadSequenceAtEveryPlace) {
    for (const char* const character : characters) {
        for (const char* const bad : bads) {
            for (std::size_t before = 0; before < 140; ++before) {
                expectSkipsOnlyValidText(textOf(character, before) + bad);
                expectSkipsOnlyValidText(textOf(character, before) + bad + textOf(character, 150));
            }
        }
    }
}

TEST(Utf8Blocks, StopBeforeANulAtEveryPlace) {
    for (const char* const character : characters) {
        for (std::size_t before = 0; before < 140; ++before)
            expectSkipsOnlyValidText(textOf(character, before) + std::string(1, '\0') +
                                     textOf(character, 100));
    }
}

TEST(Utf8Blocks, StopWhereTheEndCutsACharacter) {
    for (const char* const character : characters) {
        const std::string text = textOf(character, 300);
        for (std::size_t length = 0; length < text.size(); ++length)
            expectSkipsOnlyValidText(text.substr(0, length));
    }
}

TEST(Utf8Blocks, SkipPlainTextAlmostToTheEnd) {
    const std::string text(1000, 'a');
    EXPECT_GT(plat::skipValidUtf8(text.data(), text.data() + text.size()), text.data() + 900);
    EXPECT_GT(plat::skipPlainBlocks(text.data(), text.data() + text.size()), text.data() + 900);
}

TEST(Utf8Blocks, SkipOnlyValidPartsOfRandomBytes) {
    std::mt19937 random(20261121); // NOLINT(bugprone-random-generator-seed): repeatable
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        for (unsigned pieces = random() % 60; pieces > 0; --pieces)
            text += characters[random() % std::size(characters)];
        if (!text.empty() && i % 2 == 0)
            text[random() % text.size()] = char(random());
        expectSkipsOnlyValidText(text);
    }
}

} // namespace
