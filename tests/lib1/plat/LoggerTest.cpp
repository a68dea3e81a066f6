#include "plat/Logger.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/plat/RecordingLogger.h"
#include "lib1/plat/VirtualSlot.h"

namespace {

using plat::Logger;
using testing::ElementsAre;
using testing::StartsWith;

RecordingLogger plain("plain");

[[gnu::format(printf, 2, 3)]] void log(Logger& logger, const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    logger.vprf(30, "Writer", fmt, args);
    va_end(args);
}

// What reaches write() of a message.
std::string written(const std::string& message) {
    plain.take();
    log(plain, "%s", message.c_str());
    return plain.takeTexts().at(0);
}

TEST(Logger, DeliversLevelWriterAndText) {
    plain.take();
    log(plain, "%s is %d", "answer", 42);
    EXPECT_THAT(plain.take(), ElementsAre(RecordingLogger::Line{30, "Writer", "answer is 42"}));
}

TEST(Logger, KeepsTheVeryNameItWasGiven) {
    static const char name[] = "kept";
    static const RecordingLogger logger(name); // static, as all here: loggers are listed for good
    EXPECT_EQ(logger.getName(), name);
}

TEST(Logger, IsFoundByNameWithoutRegardToCase) {
    EXPECT_EQ(Logger::getLogger("plain"), &plain);
    EXPECT_EQ(Logger::getLogger("PLAIN"), &plain);
    EXPECT_EQ(Logger::getLogger("plai"), nullptr);
    EXPECT_EQ(Logger::getLogger(""), nullptr);
}

TEST(Logger, NewestOfOneNameIsFound) {
    static const RecordingLogger older("twice");
    static const RecordingLogger newest("Twice");
    EXPECT_EQ(Logger::getLogger("twice"), &newest);
}

TEST(Logger, AreListedNewestFirst) {
    static const RecordingLogger first("listed1");
    static const RecordingLogger last("listed2");
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* const stream = open_memstream(&text, &size);
    Logger::listLoggers(stream);
    std::fclose(stream);
    const std::unique_ptr<char, void (*)(void*)> owned(text, std::free);
    EXPECT_THAT(text, StartsWith("  listed2\n  listed1\n"));
    EXPECT_THAT(text, testing::EndsWith("  plain\n"));
}

TEST(Logger, WriteAndFlushFollowTheDestructor) {
    EXPECT_EQ(virtualSlot(&Logger::write), 2U);
    EXPECT_EQ(virtualSlot(&Logger::flush), 3U);
}

struct TextRow {
    const char* name;
    std::string message;
    std::string text;
    friend void PrintTo(const TextRow& row, std::ostream* out) { *out << row.name; }
};

class LoggedText : public testing::TestWithParam<TextRow> {};

TEST_P(LoggedText, IsPlainOrEscapedAsAWhole) {
    EXPECT_EQ(written(GetParam().message), GetParam().text);
}
INSTANTIATE_TEST_SUITE_P(
    Texts, LoggedText,
    testing::Values(TextRow{"Empty", "", ""}, TextRow{"Blank", " ", " "},
                    TextRow{"LastPlainByte", "a}", "a}"}, TextRow{"Backslash", "\\", "\\"},
                    TextRow{"Tilde", "a~b", "a~~b"}, TextRow{"Tab", "tab\there", "tab~^Ihere"},
                    TextRow{"UnitSeparator", "\x1f", "~^_"}, TextRow{"Delete", "\x7f", "~^?"},
                    TextRow{"LineEnd", "line\n", "line~^J"}, TextRow{"BadByte", "a\xff", "a~M^?"},
                    TextRow{"CharacterStays", "\xc3\xa9", "\xc3\xa9"},
                    TextRow{"CharacterBesideControl", "\xc3\xa9\t~", "\xc3\xa9~^I~~"}),
    [](const auto& row) { return row.param.name; });

TEST(Logger, CutsTextAt4095Bytes) {
    EXPECT_EQ(written(std::string(4095, 'x')), std::string(4095, 'x'));
    EXPECT_EQ(written(std::string(4096, 'x')), std::string(4095, 'x'));
    EXPECT_EQ(written(std::string(100000, 'x')), std::string(4095, 'x'));
}

TEST(Logger, CutsBeforeItEscapes) {
    std::string expected;
    for (int i = 0; i < 4095; ++i)
        expected += "~^I";
    EXPECT_EQ(written(std::string(5000, '\t')), expected);
}

TEST(Logger, CutsAtAWholeCharacter) {
    EXPECT_EQ(written(std::string(4094, 'x') + "\xc3\xa9"), std::string(4094, 'x'));
}

TEST(Logger, PassesOnWhatWriteThrows) {
    plain.onWrite = [] { throw std::string("full"); };
    EXPECT_THROW(log(plain, "plain"), std::string);
    EXPECT_THROW(log(plain, "escaped\n"), std::string);
    plain.onWrite = nullptr;
}

} // namespace
