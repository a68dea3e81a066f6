// The whole program, run as a user runs it.

#include "support/Painter.h"
#include "support/ScreenSetup.h"
#include "support/XServer.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <poll.h>
#include <sstream>
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
    explicit Program(std::vector<std::string> arguments, const char* path = LUMOWATCH) {
        int out[2];
        int err[2];
        if (pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0)
            std::abort();
        std::vector<char*> words{const_cast<char*>(path)};
        for (std::string& argument : arguments)
            words.push_back(argument.data());
        words.push_back(nullptr);
        process = fork();
        if (process == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            dup2(out[1], STDOUT_FILENO);
            dup2(err[1], STDERR_FILENO);
            execv(path, words.data());
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

/// Every test speaks English unless it says otherwise.
const bool isEnglish = [] {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"})
        unsetenv(name);
    return setenv("LANGUAGE", "en_US", 1) == 0;
}();

bool holds(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

TEST(Lumowatch, HelpIsPrintedAndFine) {
    ASSERT_TRUE(isEnglish);
    for (const char* help : {"-help", "--help", "-h", "/?"}) {
        Program program({help});
        EXPECT_EQ(program.finish(), 0) << help;
        EXPECT_TRUE(holds(program.output, "Usage: lumowatch [-help [all]]")) << program.output;
        EXPECT_TRUE(holds(program.output, "Parameters can be turned on with -<param>"));
        EXPECT_TRUE(holds(program.output, "  Display        - Identifier of the display to watch"))
            << program.output;
        EXPECT_FALSE(holds(program.output, "Log names:"));
        EXPECT_EQ(program.errors, "");
    }
}

TEST(Lumowatch, AllHelpNamesTheLogs) {
    Program program({"-help", "all"});
    EXPECT_EQ(program.finish(), 0);
    EXPECT_TRUE(holds(program.output, "Log names:")) << program.output;
    EXPECT_TRUE(holds(program.output, "ConfigParameter"));
    EXPECT_TRUE(holds(program.output, "Log destinations:"));
    EXPECT_TRUE(holds(program.output, "  stderr\n"));
    EXPECT_TRUE(holds(program.output, "  file\n"));
}

struct Help {
    const char* language; ///< of the environment
    std::vector<std::string> words;
    std::vector<const char*> says;
};

class HelpLanguage : public testing::TestWithParam<Help> {};

TEST_P(HelpLanguage, IsThatOfTheUser) {
    setenv("LANGUAGE", GetParam().language, 1);
    Program program(GetParam().words);
    EXPECT_EQ(program.finish(), 0);
    setenv("LANGUAGE", "en_US", 1);
    for (const char* text : GetParam().says)
        EXPECT_TRUE(holds(program.output, text)) << text << " in\n" << program.output;
    EXPECT_EQ(program.errors, "");
}

INSTANTIATE_TEST_SUITE_P(
    Languages, HelpLanguage,
    testing::Values(
        Help{"fr_FR", {"-help"}, {"Syntaxe :", "Observe un écran", "Identifiant de l’écran"}},
        Help{"es", {"-help"}, {"Uso:", "Observa una pantalla", "Identificador de la pantalla"}},
        Help{"en_US",
             {"-Locale=de_DE", "-help"},
             {"Nutzung:", "Beobachtet einen Bildschirm", "Kennung des zu beobachtenden"}},
        Help{"de", {"-Locale=it_IT", "-help"}, {"Usage:", "Watches a display"}}));

TEST(Lumowatch, TheLanguageOfLangIsSpoken) {
    unsetenv("LANGUAGE");
    setenv("LANG", "fr_FR.UTF-8", 1);
    Program program({"-help"});
    EXPECT_EQ(program.finish(), 0);
    setenv("LANGUAGE", "en_US", 1);
    unsetenv("LANG");
    EXPECT_TRUE(holds(program.output, "Syntaxe :")) << program.output;
}

/// The program, its libraries and its texts at another place, in French with these.
class Installed {
public:
    explicit Installed(const std::string& french) {
        const auto built = std::filesystem::path(LUMOWATCH).parent_path();
        std::filesystem::create_directory(folder);
        std::filesystem::copy(built / "strings", folder / "strings");
        for (const auto& file : std::filesystem::directory_iterator(built)) {
            const std::string name = file.path().filename();
            if (name == "lumowatch" || name.starts_with("liblumo"))
                std::filesystem::copy(file.path(), folder / name);
        }
        std::ofstream(textsPath()) << french;
    }
    Installed(const Installed&) = delete;
    Installed& operator=(const Installed&) = delete;
    ~Installed() { std::filesystem::remove_all(folder); }

    std::string programPath() const { return folder / "lumowatch"; }
    std::string textsPath() const { return folder / "strings" / "strings.fr.po"; }

private:
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("lumowatch-" + std::to_string(getpid()));
};

TEST(Lumowatch, ABrokenFileOfTextsIsToldLineByLineAndTheRestIsSpoken) {
    const Installed installed("msgid \"lumowatch_exit_codes\"\n"
                              "msgstr \"no end\n"
                              "\n"
                              "msgid \"plat_usage_label\"\n"
                              "msgstr \"Mode d’emploi :\"\n"
                              "\n"
                              "msgctxt \"nobody\"\n"
                              "msgid \"lumowatch_purpose\"\n"
                              "msgstr \"Regarde un écran.\"\n");
    setenv("LANGUAGE", "fr", 1);
    const std::string path = installed.programPath();
    Program program({"-help"}, path.c_str());
    EXPECT_EQ(program.finish(), 0);
    setenv("LANGUAGE", "en_US", 1);
    EXPECT_TRUE(holds(program.output, "Mode d’emploi : lumowatch")) << program.output;
    EXPECT_TRUE(holds(program.output, "Regarde un écran.")) << program.output;
    const std::string place = "Localize: " + installed.textsPath() + ":";
    EXPECT_EQ(program.errors, place + "2 Missing terminator\n" + place + "7 Expected msgid\n");
}

TEST(Lumowatch, BadArgumentsExitWithOne) {
    for (const auto& words : std::vector<std::vector<std::string>>{{"soon"},
                                                                   {"-Seconds=soon"},
                                                                   {"-Seconds=-1"},
                                                                   {"-Events=xml"},
                                                                   {"--Seconds", "1"},
                                                                   {"-Png"},
                                                                   {"-Seconds=1", "1"}}) {
        Program program(words);
        EXPECT_EQ(program.finish(), 1) << words[0];
        EXPECT_EQ(program.errors.find("lumowatch: Bad argument '"), 0u) << program.errors;
        EXPECT_TRUE(holds(program.errors, "'.  Run with -help for usage.\n")) << program.errors;
        EXPECT_EQ(program.output, "");
    }
}

TEST(Lumowatch, AFolderThatIsNoneExitsWithOne) {
    for (const char* folder : {"/no/such/folder", "/dev/null"}) {
        Program program({std::string("-Png=") + folder});
        EXPECT_EQ(program.finish(), 1);
        EXPECT_EQ(program.errors, std::string("lumowatch: there is no folder '") + folder + "'\n");
    }
}

TEST(Lumowatch, NoDisplayExitsWithTwo) {
    for (const char* name : {"", ":4711"}) {
        setenv("DISPLAY", name, 1);
        for (const char* word : {"-Seconds=1", "-ListDisplays"}) {
            Program program({word});
            EXPECT_EQ(program.finish(), 2);
            EXPECT_NE(program.errors.find("no display"), std::string::npos) << program.errors;
        }
    }
}

TEST(Lumowatch, NoLibraryExitsWithTwo) {
    setenv("LUMO_LIBRARY", "/no/such/library.so", 1);
    Program program({"-Seconds=1"});
    EXPECT_EQ(program.finish(), 2);
    unsetenv("LUMO_LIBRARY");
    EXPECT_NE(program.errors.find("/no/such/library.so"), std::string::npos) << program.errors;
}

TEST(Lumowatch, LibraryWithoutTheFunctionExitsWithTwo) {
    setenv("LUMO_LIBRARY", "libm.so.6", 1);
    Program program({"-Seconds=1"});
    EXPECT_EQ(program.finish(), 2);
    unsetenv("LUMO_LIBRARY");
    EXPECT_NE(program.errors.find("NewDisplayStream"), std::string::npos) << program.errors;
}

class OnServer : public testing::Test {
protected:
    OnServer() { setenv("DISPLAY", server.display().c_str(), 1); }
    XServer server;
};

TEST_F(OnServer, TellsChangesAndEndsAfterItsGrabs) {
    Program program({"-Grabs=1"});
    EXPECT_EQ(program.finish(), 0);
    EXPECT_NE(program.output.find("changed  640x480+0+0"), std::string::npos) << program.output;
    EXPECT_NE(program.output.find("grabbed  640x480+0+0"), std::string::npos);
    EXPECT_NE(program.output.find("1 frame, 1 grab, 307200 changed pixels, 0 moved areas"),
              std::string::npos);
    EXPECT_EQ(program.errors, "");
}

TEST_F(OnServer, EndsAfterItsTime) {
    Program program({"-Seconds=1", "-Events=none"});
    EXPECT_EQ(program.finish(), 0);
    EXPECT_EQ(program.output, "");
    EXPECT_EQ(program.errors, "");
}

TEST_F(OnServer, ListsItsDisplays) {
    Program program({"-ListDisplays"});
    EXPECT_EQ(program.finish(), 0);
    EXPECT_TRUE(holds(program.output, "  640x480+0+0  main\n")) << program.output;
    const std::string identifier = std::to_string(std::stoul(program.output));
    Program chosen({"-Display=" + identifier, "-Grabs=1"});
    EXPECT_EQ(chosen.finish(), 0);
    EXPECT_TRUE(holds(chosen.output, "grabbed  640x480+0+0"));
}

TEST_F(OnServer, AnUnknownDisplayExitsWithTwo) {
    Program program({"-Display=123456789"});
    EXPECT_EQ(program.finish(), 2);
    EXPECT_EQ(program.errors,
              "lumowatch: there is no display 123456789; -ListDisplays prints them\n");
}

TEST_F(OnServer, JsonLinesAreJson) {
    Program program({"-Log=*:stderr:100", "-Grabs=1", "-Events=json"});
    EXPECT_EQ(program.finish(), 0);
    std::vector<std::string> events;
    std::istringstream lines(program.output);
    for (std::string line; std::getline(lines, line);)
        events.push_back(nlohmann::json::parse(line).at("event"));
    EXPECT_EQ(events, (std::vector<std::string>{"changed", "grab", "summary"}));
    EXPECT_TRUE(holds(program.errors, "ConfigParameter: set Grabs(Int) to 1")) << program.errors;
    EXPECT_TRUE(holds(program.errors, "ScreenWatch: Watching display ")) << program.errors;
}

// The program and the library that it loads share one set of writers and destinations.
TEST_F(OnServer, TheLibrarysOwnWritersFollowTheSetting) {
    Program program({"-Log=DynamicFn:stderr:110", "-Grabs=1"});
    EXPECT_EQ(program.finish(), 0);
    EXPECT_EQ(program.errors.find("DynamicFn: found 'CGDisplayCreateImageForRect' in '"), 0u)
        << program.errors;
    Program listing({"-help", "all"});
    EXPECT_EQ(listing.finish(), 0);
    EXPECT_TRUE(holds(listing.output, "ScreenWatch")) << "the platform layer is linked";
}

TEST_F(OnServer, LogsGoToAFile) {
    char name[] = "/tmp/LumowatchTest.XXXXXX";
    const std::string folder = mkdtemp(name);
    Program program({"-LogDir", folder, "-LogFile=own.log", "-Log=*:file:100", "-Grabs=1"});
    EXPECT_EQ(program.finish(), 0);
    EXPECT_EQ(program.errors, "");
    std::ostringstream log;
    log << std::ifstream(folder + "/own.log").rdbuf();
    EXPECT_TRUE(holds(log.str(), " ScreenWatch: Watching display ")) << log.str();
    std::filesystem::remove_all(folder);
}

class EndSignal : public OnServer, public testing::WithParamInterface<int> {};

TEST_P(EndSignal, EndsCleanlyWithTheSummary) {
    Program program({});
    ASSERT_TRUE(program.waitForOutput("grabbed"));
    program.signal(GetParam());
    EXPECT_EQ(program.finish(), 0);
    EXPECT_NE(program.output.find(" s: 1 frame"), std::string::npos) << program.output;
}

INSTANTIATE_TEST_SUITE_P(Signals, EndSignal, testing::Values(SIGINT, SIGTERM));

TEST_F(OnServer, WritesPictures) {
    char name[] = "/tmp/LumowatchTest.XXXXXX";
    const std::string folder = mkdtemp(name);
    Program program({"-png", folder});
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
    EXPECT_NE(program.output.find(" s: 1 frame"), std::string::npos);
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
