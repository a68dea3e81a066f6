#include "plat/Assertion.h"

#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/AllocationHook.h"
#include "lib1/plat/RecordingLogger.h"
#include "plat/LogWriter.h"

namespace {

using plat::AssertionFail;
using testing::ElementsAre;
using testing::HasSubstr;

RecordingLogger record("record");

TEST(AssertionFail, NamesConditionFileAndLine) {
    const AssertionFail failure("x > 0", "a", 12);
    EXPECT_STREQ(failure.message.get(), "Assertion 'x > 0' failed at a:12");
    EXPECT_STREQ(failure.typeName.get(), "AssertionFail");
    EXPECT_STREQ(failure.expr, "x > 0");
    EXPECT_STREQ(failure.file, "a");
    EXPECT_EQ(failure.line, 12);
}

TEST(AssertionFail, KeepsTheVeryTextsItWasGiven) {
    static const char expr[] = "x";
    static const char file[] = "f";
    const AssertionFail failure(expr, file, 1);
    EXPECT_EQ(failure.expr, expr);
    EXPECT_EQ(failure.file, file);
}

TEST(AssertionFail, TakesAnExplanation) {
    AssertionFail failure("x > 0", "a", 12);
    EXPECT_EQ(&failure.fmt("bad %d", 5), &failure);
    EXPECT_STREQ(failure.message.get(), "Assertion 'x > 0' failed at a:12: bad 5");
    EXPECT_STREQ(AssertionFail("0", "f", 1).fmt("%s", "Bad UTF-8 string").message.get(),
                 "Assertion '0' failed at f:1: Bad UTF-8 string");
}

TEST(AssertionFail, CutsLongTexts) {
    const std::string longText(300, 'x');
    AssertionFail failure(longText.c_str(), "f", 1);
    failure.fmt("%s", "more");
    EXPECT_EQ(failure.message.get(), "Assertion '" + std::string(244, 'x'));
}

TEST(AssertionFail, IsCaughtAsAnException) {
    try {
        throw AssertionFail("x", "f", 1);
    } catch (const plat::Exception& e) {
        EXPECT_STREQ(e.message.get(), "Assertion 'x' failed at f:1");
    }
}

TEST(AssertWarn, LogsAsAnErrorAndLeavesStandardErrorAlone) {
    const LogSetting setting("Assertion:record:0");
    record.take();
    testing::internal::CaptureStderr();
    plat::assertWarn_(AssertionFail("x", "f", 1));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_THAT(record.take(), ElementsAre(RecordingLogger::Line{
                                   0, "Assertion", "Warning: Assertion 'x' failed at f:1"}));
}

TEST(AssertWarn, NeedsNoLog) {
    plat::assertWarn_(AssertionFail("x", "f", 1));
}

TEST(AssertWarn, DropsWhateverTheLogThrows) {
    const LogSetting setting("Assertion:record:0");
    record.onWrite = [] { throw std::runtime_error("log"); };
    plat::assertWarn_(AssertionFail("x", "f", 1));
    record.onWrite = [] { throw 5; };
    plat::assertWarn_(AssertionFail("x", "f", 1));
    record.onWrite = nullptr;
}

TEST(AssertWarn, AllocatesNothing) {
    const AssertionFail failure("x", "f", 1);
    const int before = AllocationHook::count;
    plat::assertWarn_(failure);
    EXPECT_EQ(AllocationHook::count, before);
}

TEST(AssertFatalDeathTest, PrintsTheMessageAndAborts) {
    EXPECT_EXIT(plat::assertFatal_(AssertionFail("client", "f", 1)),
                testing::KilledBySignal(SIGABRT), "^Assertion 'client' failed at f:1\n$");
}

// Writes what reaches the log to standard error, where the death test reads it.
void logToStderr() {
    plat::LogWriter::applyLogSetting("Assertion:record:0");
    record.onWrite = [] {
        for (const RecordingLogger::Line& line : record.take())
            std::fprintf(stderr, "[%d %s %s]", line.level, line.writer.c_str(), line.text.c_str());
    };
}

TEST(AssertFatalDeathTest, LogsBehindStandardError) {
    const auto fail = [] {
        logToStderr();
        plat::assertFatal_(AssertionFail("0", "f", 1).fmt("100%%"));
    };
    EXPECT_EXIT(fail(), testing::KilledBySignal(SIGABRT),
                "^Assertion '0' failed at f:1: 100%\n"
                "\\[0 Assertion Assertion '0' failed at f:1: 100%\\]$");
}

TEST(AssertFatalDeathTest, AbortsWhateverTheLogThrows) {
    const auto fail = [](const std::function<void()>& onWrite) {
        plat::LogWriter::applyLogSetting("Assertion:record:0");
        record.onWrite = onWrite;
        plat::assertFatal_(AssertionFail("0", "f", 1));
    };
    EXPECT_EXIT(fail([] { throw std::runtime_error("log"); }), testing::KilledBySignal(SIGABRT),
                "^Assertion '0' failed at f:1\n$");
    EXPECT_EXIT(fail([] { throw 5; }), testing::KilledBySignal(SIGABRT),
                "^Assertion '0' failed at f:1\n$");
}

// A log writer's file may be initialised behind the file that asserts.
struct EarlyWarning {
    EarlyWarning() { plat::assertWarn_(AssertionFail("early", "f", 1)); }
} earlyWarning;

TEST(CheckDeathTest, PrintsConditionFileAndLine) {
    const int x = 0;
    EXPECT_DEATH(LUMO_ASSERT_FATAL(x > 0),
                 "^Assertion 'x > 0' failed at tests/lib1/plat/AssertionTest.cpp:[0-9]+\n$");
    EXPECT_DEATH(LUMO_ASSERT_FATAL_MSG(x > 0, "bad %d", x),
                 "^Assertion 'x > 0' failed at [^:]*:[0-9]+: bad 0\n$");
}

TEST(Check, LetsATrueConditionPass) {
    int evaluations = 0;
    LUMO_ASSERT_FATAL(++evaluations == 1);
    LUMO_ASSERT_FATAL_MSG(++evaluations == 2, "%d", ++evaluations);
    LUMO_ASSERT_WARN(++evaluations == 3);
    LUMO_ASSERT_WARN_MSG(++evaluations == 4, "%d", ++evaluations);
    LUMO_ASSERT_THROW(++evaluations == 5);
    EXPECT_EQ(evaluations, 5);
}

TEST(Check, WarningFormLogs) {
    const LogSetting setting("Assertion:record:0");
    record.take();
    const int x = 0;
    LUMO_ASSERT_WARN(x > 0);
    LUMO_ASSERT_WARN_MSG(x > 1, "bad %d", x);
    EXPECT_THAT(record.takeTexts(),
                ElementsAre(HasSubstr("Warning: Assertion 'x > 0' failed at tests/"),
                            testing::EndsWith(": bad 0")));
}

TEST(Check, ThrowingFormThrowsAndSaysNothing) {
    const LogSetting setting("Assertion:record:0");
    record.take();
    const int x = 0;
    testing::internal::CaptureStderr();
    EXPECT_THROW(LUMO_ASSERT_THROW(x > 0), AssertionFail);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_THAT(record.takeTexts(), testing::IsEmpty());
}

} // namespace
