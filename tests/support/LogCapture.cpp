#include "support/LogCapture.h"

#include "plat/LogWriter.h"
#include "plat/Logger.h"

#include <algorithm>
#include <mutex>

namespace support {

namespace {

class Collector : public plat::Logger {
public:
    Collector() : Logger("capture") {}

    void write(int, const char* writerName, const char* text) override {
        const std::lock_guard lock(mutex);
        collected.push_back(std::string(writerName) + ": " + text);
    }
    void flush() override {}

    std::vector<std::string> lines() {
        const std::lock_guard lock(mutex);
        return collected;
    }

    void clear() {
        const std::lock_guard lock(mutex);
        collected.clear();
    }

private:
    std::mutex mutex;
    std::vector<std::string> collected;
};

/// Loggers are listed for good.
Collector& collector() {
    static auto* const instance = new Collector;
    return *instance;
}

} // namespace

LogCapture::LogCapture(const std::string& writerPattern, int level) {
    collector().clear();
    plat::LogWriter::applyLogSetting((writerPattern + ":capture:" + std::to_string(level)).c_str());
}

LogCapture::~LogCapture() {
    plat::LogWriter::applyLogSetting("");
}

std::vector<std::string> LogCapture::lines() const {
    return collector().lines();
}

bool LogCapture::has(const std::string& text) const {
    const std::vector<std::string> all = lines();
    return std::any_of(all.begin(), all.end(), [&text](const std::string& line) {
        return line.find(text) != std::string::npos;
    });
}

} // namespace support
