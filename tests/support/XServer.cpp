#include "support/XServer.h"

#include <array>
#include <bit>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <poll.h>
#include <sstream>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace support {

namespace {

constexpr int startMillis = 30000;
constexpr int endMillis = 5000;

[[noreturn]] void fail(const std::string& what) {
    throw std::runtime_error(what + ": " + std::generic_category().message(errno));
}

std::string makeFolder() {
    std::string path = (std::filesystem::temp_directory_path() / "lumo-xvfb-XXXXXX").string();
    if (mkdtemp(path.data()) == nullptr)
        fail("No temporary folder");
    return path;
}

/// The two ends of a pipe, both close-on-exec.
struct Pipe {
    Pipe() {
        if (pipe2(ends.data(), O_CLOEXEC) != 0)
            fail("No pipe");
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    ~Pipe() {
        close(ends[0]);
        closeWriter();
    }
    void closeWriter() {
        if (ends[1] != -1)
            close(ends[1]);
        ends[1] = -1;
    }
    std::array<int, 2> ends{-1, -1};
};

/// The line that the server writes once it serves clients; empty if it ends or takes too long.
std::string readLine(int fd) {
    std::string line;
    for (;;) {
        pollfd input{fd, POLLIN, 0};
        const int ready = poll(&input, 1, startMillis);
        if (ready == -1 && errno == EINTR)
            continue;
        char byte = 0;
        if (ready <= 0 || read(fd, &byte, 1) != 1)
            return {};
        if (byte == '\n')
            return line;
        line += byte;
    }
}

std::vector<std::string> argumentsFor(const XServerOptions& options, const std::string& folder,
                                      int displayFd) {
    std::vector<std::string> arguments{"Xvfb",
                                       "-displayfd",
                                       std::to_string(displayFd),
                                       "-screen",
                                       "0",
                                       std::to_string(options.width) + "x" +
                                           std::to_string(options.height) + "x" +
                                           std::to_string(options.depth),
                                       "-noreset",
                                       "-nolisten",
                                       "tcp",
                                       "-fbdir",
                                       folder};
    for (const std::string& extension : options.withoutExtensions)
        arguments.insert(arguments.end(), {"-extension", extension});
    arguments.insert(arguments.end(), options.arguments.begin(), options.arguments.end());
    return arguments;
}

/// Runs in the child, between fork and exec: system calls only.
[[noreturn]] void becomeServer(char* const* arguments, int displayFd, int log, pid_t parent) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent)
        _exit(1); // NOLINT(concurrency-mt-unsafe): the child has one thread
    sigset_t none;
    sigemptyset(&none);
    pthread_sigmask(SIG_SETMASK, &none, nullptr);
    dup2(log, STDOUT_FILENO);
    dup2(log, STDERR_FILENO);
    fcntl(displayFd, F_SETFD, 0);
    execvp(arguments[0], arguments);
    _exit(127); // NOLINT(concurrency-mt-unsafe): the child has one thread
}

std::string fileText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Reads the frame buffer file: an X window dump, whose header is big-endian whatever the server.
class WindowDump {
public:
    explicit WindowDump(std::string dump) : bytes(std::move(dump)) {
        if (bytes.size() < 100 || field(1) != 7)
            throw std::runtime_error("The frame buffer file is no window dump");
    }

    Picture picture() const {
        const int width = static_cast<int>(field(4));
        const int height = static_cast<int>(field(5));
        const std::size_t pixelBytes = field(11) / 8;
        const std::size_t stride = field(12);
        const std::size_t start = field(0) + std::size_t{field(19)} * colourBytes;
        if (bytes.size() < start + stride * std::size_t(height))
            throw std::runtime_error("The frame buffer file is cut");
        Picture result(width, height);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x)
                result.at(x, y) = colourOf(valueAt(
                    start + std::size_t(y) * stride + std::size_t(x) * pixelBytes, pixelBytes));
        }
        return result;
    }

private:
    static constexpr std::size_t colourBytes = 12;

    std::uint32_t byteAt(std::size_t at) const { return static_cast<unsigned char>(bytes[at]); }

    std::uint32_t field(std::size_t index) const {
        const std::size_t at = index * 4;
        return byteAt(at) << 24 | byteAt(at + 1) << 16 | byteAt(at + 2) << 8 | byteAt(at + 3);
    }

    bool isMostSignificantFirst() const { return field(7) != 0; }

    std::uint32_t valueAt(std::size_t at, std::size_t count) const {
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < count; ++i)
            value = value << 8 | byteAt(at + (isMostSignificantFirst() ? i : count - 1 - i));
        return value;
    }

    /// Bits that say nothing repeat those that do: 5 bits abcde become abcdeabc.
    static std::uint32_t widened(std::uint32_t pixel, std::uint32_t mask) {
        const int bits = std::popcount(mask);
        std::uint32_t value = (pixel & mask) >> std::countr_zero(mask);
        value <<= 32 - bits;
        for (int filled = bits; filled < 8; filled *= 2)
            value |= value >> filled;
        return value >> 24;
    }

    std::uint32_t colourOf(std::uint32_t pixel) const {
        constexpr std::uint32_t trueColour = 4;
        if (field(13) < trueColour)
            return colourFromTable(pixel);
        return 0xff000000U | widened(pixel, field(14)) << 16 | widened(pixel, field(15)) << 8 |
               widened(pixel, field(16));
    }

    /// An entry is the pixel (4 bytes), red, green and blue (2 bytes each), flags and a pad byte.
    std::uint32_t colourFromTable(std::uint32_t pixel) const {
        const std::size_t at = field(0) + std::size_t{pixel} * colourBytes;
        return 0xff000000U | byteAt(at + 4) << 16 | byteAt(at + 6) << 8 | byteAt(at + 8);
    }

    std::string bytes;
};

} // namespace

XServer::XServer(const XServerOptions& options) : folder(makeFolder()) {
    try {
        start(options);
    } catch (...) {
        end(SIGKILL);
        throw;
    }
}

XServer::~XServer() {
    end(SIGTERM);
    if (frameFile != -1)
        close(frameFile);
}

void XServer::start(const XServerOptions& options) {
    Pipe ready;
    std::vector<std::string> texts = argumentsFor(options, folder, ready.ends[1]);
    std::vector<char*> arguments;
    arguments.reserve(texts.size() + 1);
    for (std::string& text : texts)
        arguments.push_back(text.data());
    arguments.push_back(nullptr);
    const std::string logPath = folder + "/log";
    const int logFile = open(logPath.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    if (logFile == -1)
        fail("No log file for the X server");
    const pid_t parent = getpid();
    process = fork();
    if (process == 0)
        becomeServer(arguments.data(), ready.ends[1], logFile, parent);
    close(logFile);
    if (process == -1)
        fail("fork");
    ready.closeWriter();
    const std::string number = readLine(ready.ends[0]);
    if (number.empty())
        throw std::runtime_error("Xvfb does not start: " + log());
    displayName = ":" + number;
    frameFile = open((folder + "/Xvfb_screen0").c_str(), O_RDONLY | O_CLOEXEC);
    if (frameFile == -1)
        fail("No frame buffer file");
    // Both of us have it open: a test that is killed leaves nothing behind.
    removeFolder();
}

void XServer::removeFolder() const {
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

std::string XServer::log() const {
    return fileText(folder + "/log");
}

void XServer::pause() {
    int status = 0;
    ::kill(process, SIGSTOP);
    while (waitpid(process, &status, WUNTRACED) == -1 && errno == EINTR) {
    }
}

void XServer::resume() {
    ::kill(process, SIGCONT);
}

void XServer::terminate() {
    end(SIGTERM);
}

void XServer::kill() {
    end(SIGKILL);
}

void XServer::end(int signal) {
    if (process > 0) {
        ::kill(process, signal);
        ::kill(process, SIGCONT);
        for (int waited = 0; waitpid(process, nullptr, WNOHANG) == 0; ++waited) {
            if (waited == endMillis)
                ::kill(process, SIGKILL);
            usleep(1000);
        }
        removeTraces();
        process = -1;
    }
    removeFolder();
}

void XServer::removeTraces() const {
    // A killed server leaves its lock and socket; only a lock that names it is ours to remove.
    if (displayName.empty())
        return;
    const std::string number = displayName.substr(1);
    const std::string lock = "/tmp/.X" + number + "-lock";
    std::istringstream text(fileText(lock));
    pid_t owner = -1;
    if (!(text >> owner) || owner != process)
        return;
    unlink(("/tmp/.X11-unix/X" + number).c_str());
    unlink(lock.c_str());
}

Picture XServer::frameBuffer() const {
    struct stat status{};
    if (fstat(frameFile, &status) != 0)
        fail("The frame buffer file");
    std::string dump(static_cast<std::size_t>(status.st_size), '\0');
    if (pread(frameFile, dump.data(), dump.size(), 0) != status.st_size)
        fail("The frame buffer file");
    return WindowDump(std::move(dump)).picture();
}

} // namespace support
