// The whole program, run as a user runs it.

#include "support/Painter.h"
#include "support/ScreenSetup.h"
#include "support/XServer.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using support::Painter;
using support::ScreenSetup;
using support::XServer;

constexpr int patienceMillis = 20'000;

/// A running lumowatch whose output is read as it comes.
class Program {
public:
    explicit Program(std::vector<std::string> arguments) {
        int out[2];
        int err[2];
        if (pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0)
            std::abort();
        std::vector<char*> words{const_cast<char*>(LUMOWATCH)};
        for (std::string& argument : arguments)
            words.push_back(argument.data());
        words.push_back(nullptr);
        process = fork();
        if (process == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            dup2(out[1], STDOUT_FILENO);
            dup2(err[1], STDERR_FILENO);
            execv(LUMOWATCH, words.data());
            _exit(127);
        }
        close(out[1]);
        close(err[1]);
        outFd = out[0];
        errFd = err[0];
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program() {
        if (process > 0) {
            ::kill(process, SIGKILL);
            waitpid(process, nullptr, 0);
        }
        close(outFd);
        close(errFd);
    }

    bool waitForOutput(const std::string& text) {
        while (output.find(text) == std::string::npos) {
            if (!readSome())
                return false;
        }
        return true;
    }

    void signal(int number) const { ::kill(process, number); }

    /// The exit code; -1 when a signal ended it.
    int finish() {
        while (readSome()) {
        }
        int status = 0;
        waitpid(process, &status, 0);
        process = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    std::string output;
    std::string errors;

private:
    bool readSome() {
        pollfd inputs[2] = {{outFd, POLLIN, 0}, {errFd, POLLIN, 0}};
        if (poll(inputs, 2, patienceMillis) <= 0)
            return false;
        const bool hasOutput = append(inputs[0], &output);
        const bool hasErrors = append(inputs[1], &errors);
        return hasOutput || hasErrors;
    }

    static bool append(const pollfd& input, std::string* text) {
        if (input.revents == 0)
            return false;
        char buffer[4096];
        const ssize_t count = read(input.fd, buffer, sizeof buffer);
        if (count > 0)
            text->append(buffer, static_cast<std::size_t>(count));
        return count > 0;
    }

    pid_t process;
    int outFd;
    int errFd;
};

TEST(Lumowatch, HelpIsPrintedAndFine) {
    Program program({"--help"});
    EXPECT_EQ(program.finish(), 0);
    EXPECT_NE(program.output.find("usage: lumowatch [SECONDS [PNG-FOLDER]]"), std::string::npos);
    EXPECT_EQ(program.errors, "");
}

TEST(Lumowatch, BadArgumentsExitWithOne) {
    for (const auto& words : std::vector<std::vector<std::string>>{
             {"soon"}, {"1", "/no/such/folder"}, {"1", "/dev/null"}, {"1", "2", "3"}}) {
        Program program(words);
        EXPECT_EQ(program.finish(), 1);
        EXPECT_NE(program.errors.find("lumowatch: "), std::string::npos);
        EXPECT_EQ(program.output, "");
    }
}

TEST(Lumowatch, NoDisplayExitsWithTwo) {
    for (const char* name : {"", ":4711"}) {
        setenv("DISPLAY", name, 1);
        Program program({"1"});
        EXPECT_EQ(program.finish(), 2);
        EXPECT_NE(program.errors.find("no display"), std::string::npos) << program.errors;
    }
}

TEST(Lumowatch, NoLibraryExitsWithTwo) {
    setenv("LUMO_LIBRARY", "/no/such/library.so", 1);
    Program program({"1"});
    EXPECT_EQ(program.finish(), 2);
    unsetenv("LUMO_LIBRARY");
    EXPECT_NE(program.errors.find("/no/such/library.so"), std::string::npos) << program.errors;
}

TEST(Lumowatch, LibraryWithoutTheFunctionExitsWithTwo) {
    setenv("LUMO_LIBRARY", "libm.so.6", 1);
    Program program({"1"});
    EXPECT_EQ(program.finish(), 2);
    unsetenv("LUMO_LIBRARY");
    EXPECT_NE(program.errors.find("NewDisplayStream"), std::string::npos) << program.errors;
}

class OnServer : public testing::Test {
protected:
    OnServer() { setenv("DISPLAY", server.display().c_str(), 1); }
    XServer server;
};

TEST_F(OnServer, TellsChangesAndEndsAfterItsTime) {
    Program program({"0.3"});
    EXPECT_EQ(program.finish(), 0);
    EXPECT_NE(program.output.find("changed  640x480+0+0"), std::string::npos) << program.output;
    EXPECT_NE(program.output.find("grabbed  640x480+0+0"), std::string::npos);
    EXPECT_NE(program.output.find("1 frames, 1 grabs, 307200 changed pixels, 0 moved areas"),
              std::string::npos);
    EXPECT_EQ(program.errors, "");
}

class EndSignal : public OnServer, public testing::WithParamInterface<int> {};

TEST_P(EndSignal, EndsCleanlyWithTheSummary) {
    Program program({});
    ASSERT_TRUE(program.waitForOutput("grabbed"));
    program.signal(GetParam());
    EXPECT_EQ(program.finish(), 0);
    EXPECT_NE(program.output.find(" s: 1 frames"), std::string::npos) << program.output;
}

INSTANTIATE_TEST_SUITE_P(Signals, EndSignal, testing::Values(SIGINT, SIGTERM));

TEST_F(OnServer, WritesPictures) {
    char name[] = "/tmp/LumowatchTest.XXXXXX";
    const std::string folder = mkdtemp(name);
    Program program({"0", folder});
    ASSERT_TRUE(program.waitForOutput("grab-00001.png"));
    Painter painter(server.display());
    painter.fill(10, 20, 30, 40, 0xff0000);
    painter.sync();
    ASSERT_TRUE(program.waitForOutput("grabbed  30x40+10+20  " + folder + "/grab-00002.png"));
    program.signal(SIGINT);
    EXPECT_EQ(program.finish(), 0);
    EXPECT_TRUE(std::filesystem::exists(folder + "/grab-00001.png"));
    EXPECT_TRUE(std::filesystem::exists(folder + "/grab-00002.png"));
    EXPECT_NE(program.output.find("2 pictures"), std::string::npos);
    std::filesystem::remove_all(folder);
}

TEST_F(OnServer, FollowsANewSizeByItself) {
    Program program({});
    ASSERT_TRUE(program.waitForOutput("grabbed  640x480+0+0"));
    ScreenSetup(server.display()).resize(400, 300);
    ASSERT_TRUE(program.waitForOutput("grabbed  400x300+0+0")) << program.output;
    program.signal(SIGINT);
    EXPECT_EQ(program.finish(), 0);
}

TEST_F(OnServer, ServerThatDiesEndsItWithTwo) {
    Program program({});
    ASSERT_TRUE(program.waitForOutput("grabbed"));
    server.kill();
    EXPECT_EQ(program.finish(), 2);
    EXPECT_NE(program.output.find("the display is gone"), std::string::npos) << program.output;
    EXPECT_NE(program.output.find(" s: 1 frames"), std::string::npos);
}

TEST_F(OnServer, KilledHostLeavesNoSharedMemory) {
    const auto segments = [] {
        const std::filesystem::directory_iterator all("/dev/shm");
        return std::distance(begin(all), end(all));
    };
    const auto before = segments();
    Program program({});
    ASSERT_TRUE(program.waitForOutput("grabbed"));
    program.signal(SIGKILL);
    EXPECT_EQ(program.finish(), -1);
    EXPECT_EQ(segments(), before);
}

} // namespace
