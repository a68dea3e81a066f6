#pragma once

#include <cstdarg>
#include <cstdio>

// A C variadic function is never inlined, but the test in front of a message must be: the entry
// points are templates. Only clang takes the format attribute on those, so clang checks our
// formats.
#if defined(__clang__)
#define PLAT_LOG_FORMAT [[gnu::format(printf, 2, 3)]]
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wgcc-compat"
#else
#define PLAT_LOG_FORMAT
#endif

namespace plat {

class Logger;
class StringParameter;

/// The parameter "Log" of the global configuration: a setting as for LogWriter::applyLogSetting(),
/// applied whenever it changes.
extern StringParameter logParam;

/// A named source of log messages: one at file level in each source file that logs.
/// Shape: silent until a setting gives it a destination; all zero bytes is a silent writer too, so
/// that a message from another file's static initialiser does no harm.
/// Ownership: keeps the pointer to its name; is listed for good, so it must live until exit.
/// Threads: nothing is locked; the setting is to change while no other thread logs.
class LogWriter {
public:
    /// The highest message level that a writer set to the same number lets through.
    static constexpr int errorLevel = 0;
    static constexpr int infoLevel = 30;
    static constexpr int debugLevel = 100;
    static constexpr int debugplusLevel = 110;

    /// Makes a silent writer and lists it in front of the others.
    explicit LogWriter(const char* writerName) noexcept;
    LogWriter(const LogWriter&) = delete;
    LogWriter& operator=(const LogWriter&) = delete;

    /// Each of these writes one message, in the form of printf, if its level is let through;
    /// otherwise nothing is formatted.
    /// Errors: passes on what the destination throws.
    template <typename... Args>
    PLAT_LOG_FORMAT void error(const char* fmt, Args... args) const {
        if (isEnabled(errorLevel))
            prf(errorLevel, fmt, args...);
    }
    template <typename... Args>
    PLAT_LOG_FORMAT void info(const char* fmt, Args... args) const {
        if (isEnabled(infoLevel))
            prf(infoLevel, fmt, args...);
    }
    template <typename... Args>
    PLAT_LOG_FORMAT void debug(const char* fmt, Args... args) const {
        if (isEnabled(debugLevel))
            prf(debugLevel, fmt, args...);
    }
    template <typename... Args>
    PLAT_LOG_FORMAT void debugplus(const char* fmt, Args... args) const {
        if (isEnabled(debugplusLevel))
            prf(debugplusLevel, fmt, args...);
    }

    /// Whether a message of this level has somewhere to go.
    bool isEnabled(int messageLevel) const noexcept {
        return logger != nullptr && level >= messageLevel;
    }

    /// Writes one message of any level without testing whether it is let through; the caller has
    /// done that with isEnabled(), since without a destination this call is the caller's bug.
    [[gnu::format(printf, 3, 0)]] void vprf(int messageLevel, const char* fmt, va_list args) const;

    const char* getName() const noexcept { return name; }
    int getLevel() const noexcept { return level; }
    Logger* getLogger() const noexcept { return logger; }

    /// Applies what the parameter "Log" says, to every writer that exists by now.
    static void refreshLogSetting();

    /// Silences every writer, then applies a whole setting: elements as for setLogParamElement(),
    /// separated by commas, from left to right.
    static void applyLogSetting(const char* setting);

    /// Applies "writer pattern:destination:level" to every writer whose name matches the pattern.
    /// Shape: in the pattern '*' stands for any run of bytes; case is ignored in both names; an
    /// empty destination silences; the level is a decimal number from 0.
    /// Errors: a malformed element is reported on standard error and changes nothing; an unknown
    /// destination is reported there too, and silences. An empty element is ignored.
    static void setLogParamElement(const char* element);

    /// Prints the names of all writers, the newest first, as a block of lines separated by commas.
    /// Units: `width` in columns of one byte; a name that is longer has a line of its own.
    static void listLogWriters(int width, std::FILE* stream);

private:
    struct Layout;

    [[gnu::format(printf, 3, 4)]] void prf(int messageLevel, const char* fmt, ...) const;

    const char* name;
    int level;
    Logger* logger;
    LogWriter* next;
};

} // namespace plat

#if defined(__clang__)
#pragma clang diagnostic pop
#endif
#undef PLAT_LOG_FORMAT
