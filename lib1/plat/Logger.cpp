#include "plat/Logger.h"

#include "plat/SString.h"
#include "plat/Utf8.h"

#include <cstddef>
#include <cstring>
#include <memory>

#include <strings.h>

namespace plat {

// Constant-initialised: loggers of other files may be made before this file's turn comes.
static constinit Logger* loggers = nullptr;

struct Logger::Layout {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof" // both compilers lay out polymorphic types so
    static_assert(offsetof(Logger, name) == sizeof(void*));
    static_assert(offsetof(Logger, next) == 2 * sizeof(void*));
#pragma GCC diagnostic pop
};

namespace {

constexpr int maxText = 4096;
constexpr char escapeChar = '~';

// Printable ASCII ends with '~' (126), which is the escape character itself.
bool isPlain(const char* text) {
    unsigned special = 0;
    // No early exit: the loop over a known length is one that compilers vectorise.
    const std::size_t length = std::strlen(text);
    for (std::size_t i = 0; i < length; ++i)
        special |= static_cast<unsigned char>(text[i] - ' ') >= escapeChar - ' ';
    return special == 0;
}

} // namespace

Logger::Logger(const char* loggerName) noexcept : name(loggerName), next(loggers) {
    loggers = this;
}

// Stays in the list: loggers live until exit, and one that went earlier must no longer be named.
Logger::~Logger() = default;

void Logger::vprf(int level, const char* writerName, const char* fmt, va_list args) {
    SString<maxText> text;
    text.vprf(fmt, args);
    if (isPlain(text.get())) {
        write(level, writerName, text.get());
        return;
    }
    const std::unique_ptr<char[]> escaped(strvisUtf8(text.get(), escapeChar));
    write(level, writerName, escaped.get());
}

Logger* Logger::getLogger(const char* wanted) {
    for (Logger* logger = loggers; logger != nullptr; logger = logger->next) {
        if (strcasecmp(logger->name, wanted) == 0)
            return logger;
    }
    return nullptr;
}

void Logger::listLoggers(std::FILE* stream) {
    for (const Logger* logger = loggers; logger != nullptr; logger = logger->next)
        std::fprintf(stream, "  %s\n", logger->name);
}

} // namespace plat
