#include <string>

#include <gtest/gtest.h>

#include "lib1/AllocationHook.h"
#include "plat/LogWriter.h"
#include "plat/Logger.h"

namespace {

class Sink : public plat::Logger {
public:
    using Logger::Logger;
    void write(int, const char*, const char* text) override { lastByte = *text; }
    void flush() override {}

    char lastByte = 0;
};
Sink sink("sink");
plat::LogWriter writer("LoggerAllocationTest");

// What one call allocates.
template <typename Call>
int allocationsOf(Call call) {
    const int before = AllocationHook::count;
    call();
    return AllocationHook::count - before;
}

struct LoggerAllocation : testing::Test {
    LoggerAllocation() { plat::LogWriter::applyLogSetting("*:sink:0"); }
    ~LoggerAllocation() override { plat::LogWriter::applyLogSetting(""); }

    const std::string longText = std::string(5000, 'x');
};

TEST_F(LoggerAllocation, PlainTextNeedsNone) {
    EXPECT_EQ(allocationsOf([&] { writer.error("%s %d %5.2f", longText.c_str(), 1, 2.5); }), 0);
    EXPECT_EQ(sink.lastByte, 'x');
}

TEST_F(LoggerAllocation, EscapedTextNeedsOne) {
    EXPECT_EQ(allocationsOf([] { writer.error("tab\t"); }), 1);
}

TEST_F(LoggerAllocation, DisabledMessageNeedsNone) {
    EXPECT_EQ(allocationsOf([&] { writer.info("%s\t", longText.c_str()); }), 0);
}

} // namespace
