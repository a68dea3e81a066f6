#pragma once

#include <cstdarg>
#include <cstdio>

namespace plat {

/// A named destination of log messages. The foundation defines none: hosts derive theirs.
/// Ownership: keeps the pointer to its name; is listed for good, so it must live until exit.
/// Threads: nothing is locked. Loggers are made before other threads log; write() comes on whatever
/// thread logs.
class Logger {
public:
    /// Lists the logger in front of the others.
    explicit Logger(const char* loggerName) noexcept;
    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;
    virtual ~Logger();

    /// Delivers one finished line.
    /// Shape: `text` without a line end; control characters, bytes that are no UTF-8 and '~' are
    /// escaped with '~'. Ownership: both texts are borrowed for the call.
    virtual void write(int level, const char* writerName, const char* text) = 0;

    /// Brings everything written so far to where it is kept.
    virtual void flush() = 0;

    /// Formats a message and delivers it with write(). A text of more than 4095 bytes is cut.
    /// Errors: passes on what write() throws. Allocates only to escape.
    [[gnu::format(printf, 4, 0)]] void vprf(int level, const char* writerName, const char* fmt,
                                            va_list args);

    const char* getName() const noexcept { return name; }

    /// The newest logger of that name, case ignored, or null.
    static Logger* getLogger(const char* wanted);

    /// Prints each name on a line of its own behind two blanks, the newest first.
    static void listLoggers(std::FILE* stream);

private:
    struct Layout;

    const char* name;
    Logger* next;
};

} // namespace plat
