#pragma once

#include <functional>
#include <mutex>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "plat/LogWriter.h"
#include "plat/Logger.h"

/// A log destination that keeps every line. Make one at file level: destinations are never
/// unlisted.
class RecordingLogger : public plat::Logger {
public:
    struct Line {
        int level;
        std::string writer;
        std::string text;

        bool operator==(const Line&) const = default;
        friend void PrintTo(const Line& line, std::ostream* out) {
            *out << line.level << ' ' << line.writer << ": " << line.text;
        }
    };

    using Logger::Logger;

    void write(int level, const char* writerName, const char* text) override {
        {
            const std::lock_guard lock(mutex);
            kept.push_back({level, writerName, text});
        }
        if (onWrite)
            onWrite();
    }
    void flush() override { ++flushes; }

    /// All lines since the last call.
    std::vector<Line> take() {
        const std::lock_guard lock(mutex);
        return std::exchange(kept, {});
    }

    /// The texts of all lines since the last call.
    std::vector<std::string> takeTexts() {
        std::vector<std::string> texts;
        for (Line& line : take())
            texts.push_back(std::move(line.text));
        return texts;
    }

    std::function<void()> onWrite; ///< called after each line was kept; may throw
    int flushes = 0;

private:
    std::mutex mutex;
    std::vector<Line> kept;
};

/// Applies a log setting for the length of a scope; afterwards every writer is silent.
class LogSetting {
public:
    explicit LogSetting(const char* setting) { plat::LogWriter::applyLogSetting(setting); }
    LogSetting(const LogSetting&) = delete;
    LogSetting& operator=(const LogSetting&) = delete;
    ~LogSetting() { plat::LogWriter::applyLogSetting(""); }
};
