#include "plat/LogWriter.h"

#include "loc/loc_plat.h"
#include "plat/DString.h"
#include "plat/Logger.h"
#include "plat/ParameterChangedCallback.h"
#include "plat/SplitterInPlace.h"
#include "plat/StringParameter.h"
#include "plat/StringUtil.h"
#include "plat/Wildcard.h"

#include <cstddef>
#include <memory>
#include <type_traits>

// Made first: the description of the parameter below is one of these texts.
static const AddLocStrings_plat platStrings;

namespace plat {

// Constant-initialised: writers of other files may be made before this file's turn comes.
static constinit LogWriter* logWriters = nullptr;

StringParameter logParam("Log", loc::msgid_t("plat_param_log"), "", false, nullptr);

struct LogWriter::Layout {
    static_assert(std::is_standard_layout_v<LogWriter>);
    static_assert(std::is_trivially_destructible_v<LogWriter>); // exit undoes nothing
    static_assert(offsetof(LogWriter, name) == 0);
    static_assert(offsetof(LogWriter, level) == sizeof(void*));
    static_assert(offsetof(LogWriter, logger) == 2 * sizeof(void*));
    static_assert(offsetof(LogWriter, next) == 3 * sizeof(void*));
};

namespace {

/// Follows the parameter "Log".
class LogParameterChangedCallback : public ParameterChangedCallback {
public:
    explicit LogParameterChangedCallback(ConfigParameter& param) {
        param.callbacks.push_back(this);
    }
    void parameterChanged(ConfigParameter*, int) override { LogWriter::refreshLogSetting(); }
};

LogParameterChangedCallback logParamChangedCallback(logParam);

void reportMalformed(const char* element) {
    std::fprintf(stderr, "Failed to parse log param element: '%s'\n", element);
}

// An unknown name gives null, the destination that silences.
Logger* findDestination(const char* name) {
    if (*name == '\0')
        return nullptr;
    Logger* logger = Logger::getLogger(name);
    if (logger == nullptr)
        std::fprintf(stderr, "No logger found: '%s'\n", name);
    return logger;
}

} // namespace

LogWriter::LogWriter(const char* writerName) noexcept
    : name(writerName), level(0), logger(nullptr), next(logWriters) {
    logWriters = this;
}

void LogWriter::vprf(int messageLevel, const char* fmt, va_list args) const {
    logger->vprf(messageLevel, name, fmt, args);
}

void LogWriter::refreshLogSetting() {
    applyLogSetting(logParam.value().get());
}

void LogWriter::applyLogSetting(const char* setting) {
    setLogParamElement("*::0");
    const std::unique_ptr<char[]> copy(strDup(setting));
    SplitterInPlace splitter(copy.get());
    while (const char* element = splitter.next(','))
        setLogParamElement(element);
}

void LogWriter::setLogParamElement(const char* element) {
    if (strLen(element) == 0)
        return;
    const std::unique_ptr<char[]> copy(strDup(element));
    SplitterInPlace splitter(copy.get());
    const char* pattern = splitter.next(':');
    const char* loggerName = splitter.next(':');
    const char* levelText = splitter.next('\0');
    int newLevel = 0;
    if (levelText == nullptr || !strToInt(&newLevel, levelText, 10) || newLevel < 0) {
        reportMalformed(element);
        return;
    }
    Logger* newLogger = findDestination(loggerName);
    for (LogWriter* writer = logWriters; writer != nullptr; writer = writer->next) {
        if (!Wildcard::match(pattern, writer->name, false, Wildcard::star))
            continue;
        writer->level = newLevel;
        writer->logger = newLogger;
    }
}

void LogWriter::listLogWriters(int width, std::FILE* stream) {
    DString block;
    int room = 0;
    for (const LogWriter* writer = logWriters; writer != nullptr; writer = writer->next) {
        const int length = strLen(writer->name);
        const bool fits = length < room;
        if (writer == logWriters)
            block.append("  ");
        else
            block.append(fits ? ", " : ",\n  ");
        if (!fits)
            room = width - 2;
        block.append(writer->name);
        room -= length + 2;
    }
    block.appendChar('\n');
    std::fputs(block.str(), stream);
}

void LogWriter::prf(int messageLevel, const char* fmt, ...) const {
    va_list args;
    va_start(args, fmt);
    try {
        vprf(messageLevel, fmt, args);
    } catch (...) {
        va_end(args);
        throw;
    }
    va_end(args);
}

} // namespace plat
