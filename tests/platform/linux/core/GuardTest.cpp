#include "platform/linux/core/Guard.h"

#include "plat/Exception.h"
#include "plat/LogWriter.h"
#include "plat/Logger.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <vector>

namespace platform {
namespace {

TEST(Guard, RunsTheFunction) {
    bool hasRun = false;
    runGuarded("test", [&] { hasRun = true; });
    EXPECT_TRUE(hasRun);
}

TEST(Guard, LogsTheTextOfADroppedException) {
    const support::LogCapture log("Platform");
    runGuarded("some queue", [] { throw std::runtime_error("standard text"); });
    runGuarded("some queue", [] { throw plat::Exception("text of ours"); });
    runGuarded("some queue", [] { throw 42; });
    EXPECT_EQ(log.lines(), (std::vector<std::string>{
                               "Platform: some queue: an exception was dropped: standard text",
                               "Platform: some queue: an exception was dropped: text of ours",
                               "Platform: some queue: an exception was dropped"}));
}

class ThrowingLogger : public plat::Logger {
public:
    ThrowingLogger() : Logger("throwing") {}
    void write(int, const char*, const char*) override { throw std::runtime_error("log"); }
    void flush() override {}
};

TEST(Guard, BearsALogThatThrows) {
    static auto* const logger = new ThrowingLogger;
    plat::LogWriter::applyLogSetting("Platform:throwing:0");
    runGuarded(logger->getName(), [] { throw 1; });
    plat::LogWriter::applyLogSetting("");
}

} // namespace
} // namespace platform
