#include "lumowatch/FileLogger.h"

#include "lumowatch/Parameters.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

namespace {

using lumowatch::FileLogger;

class FileLoggerTest : public testing::Test {
protected:
    FileLoggerTest() {
        char name[] = "/tmp/FileLoggerTest.XXXXXX";
        folder = mkdtemp(name);
        lumowatch::logDirParam.setParam(folder.c_str(), 50);
        lumowatch::logFileParam.setParam("test.log", 50);
    }
    ~FileLoggerTest() override { std::filesystem::remove_all(folder); }

    std::string content() const {
        std::ostringstream text;
        text << std::ifstream(folder + "/test.log").rdbuf();
        return text.str();
    }

    std::string folder;
};

const std::string time = R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3})";

TEST_F(FileLoggerTest, MakesTheFileWithTheFirstLine) {
    FileLogger logger;
    EXPECT_FALSE(std::filesystem::exists(folder + "/test.log"));
    logger.write(0, "Some", "went wrong");
    logger.write(30, "Other", "went well");
    EXPECT_TRUE(std::regex_match(
        content(), std::regex(time + " Some: went wrong\n" + time + " Other: went well\n")))
        << content();
}

TEST_F(FileLoggerTest, AddsToWhatIsThere) {
    std::ofstream(folder + "/test.log") << "before\n";
    FileLogger().write(0, "Some", "after");
    EXPECT_TRUE(std::regex_match(content(), std::regex("before\n" + time + " Some: after\n")));
}

TEST_F(FileLoggerTest, TellsOnceThatItCannotWrite) {
    lumowatch::logDirParam.setParam("/no/such/folder", 50);
    FileLogger logger;
    testing::internal::CaptureStderr();
    logger.write(0, "Some", "one");
    logger.write(0, "Some", "two");
    logger.flush();
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_EQ(told.find("lumowatch: fileOpen(/no/such/folder/test.log)"), 0u) << told;
    EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 1) << told;
}

} // namespace
