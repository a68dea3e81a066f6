#include "plat/LogWriter.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "Require.h"
#include "lib1/plat/NumberModel.h"
#include "lib1/plat/WildcardModel.h"
#include "plat/BadUtf8.h"
#include "plat/Logger.h"
#include "plat/StringParameter.h"
#include "plat/Utf8.h"

namespace {

class Sink : public plat::Logger {
public:
    using Logger::Logger;

    void write(int, const char* writerName, const char* text) override {
        for (const char* p = text; *p != '\0'; ++p)
            REQUIRE(static_cast<unsigned char>(*p) >= ' ' && *p != '\x7F');
        REQUIRE(plat::isValidUtf8(text));
        lines.emplace_back(writerName);
    }
    void flush() override {}

    std::vector<std::string> lines; ///< the writers that they came from
};

Sink first("d");
Sink second("Other");

plat::LogWriter writers[] = {plat::LogWriter("a"),          plat::LogWriter("Ab"),
                             plat::LogWriter("DisplayAbc"), plat::LogWriter("x:y"),
                             plat::LogWriter("*"),          plat::LogWriter("")};
constexpr std::size_t writerCount = std::size(writers);

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts(1);
    for (const char c : text) {
        if (c == separator)
            parts.emplace_back();
        else
            parts.back() += c;
    }
    return parts;
}

struct Model {
    int levels[writerCount] = {};
    plat::Logger* loggers[writerCount] = {};
    std::string complaints;

    explicit Model(const std::string& setting) {
        for (const std::string& element : split(setting, ','))
            apply(element);
    }

    void apply(const std::string& element) {
        if (element.empty())
            return;
        const std::vector<std::string> parts = split(element, ':');
        const auto level = parts.size() == 3 ? numberOf(parts[2], 10) : std::optional<int>();
        if (!level || *level < 0) {
            complaints += "Failed to parse log param element: '" + element + "'\n";
            return;
        }
        plat::Logger* logger = nullptr;
        if (matches("d", parts[1], false, false))
            logger = &first;
        else if (matches("other", parts[1], false, false))
            logger = &second;
        else if (!parts[1].empty())
            complaints += "No logger found: '" + parts[1] + "'\n";
        for (std::size_t i = 0; i < writerCount; ++i) {
            if (!matches(parts[0], writers[i].getName(), false, true))
                continue;
            levels[i] = *level;
            loggers[i] = logger;
        }
    }
};

/// Sets the parameter, or applies a text that it does not take. The result is what that prints on
/// standard error.
std::string complaintsOf(const std::string& setting) {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* const saved = stderr;
    stderr = open_memstream(&text, &size);
    bool isTaken = true;
    plat::logParam.unsetParam(50, false); // an equal value would change nothing
    try {
        plat::logParam.setParam(setting.c_str(), 50);
    } catch (const plat::BadUtf8&) {
        isTaken = false;
        plat::LogWriter::applyLogSetting(setting.c_str());
    }
    std::fclose(stderr);
    stderr = saved;
    REQUIRE(isTaken == plat::isValidUtf8(setting.c_str()));
    const std::string complaints(text, size);
    std::free(text);
    return complaints;
}

/// The number of messages that a level lets through, of one of each kind.
std::size_t passing(int level) {
    return 1U + (level >= 30) + (level >= 100) + (level >= 110);
}

} // namespace

// The input is a log setting, and then the text of some messages.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string setting(std::string(data, data + size).c_str());
    const Model model(setting);
    REQUIRE(complaintsOf(setting) == model.complaints);
    for (std::size_t i = 0; i < writerCount; ++i) {
        const plat::LogWriter& writer = writers[i];
        REQUIRE(writer.getLevel() == model.levels[i]);
        REQUIRE(writer.getLogger() == model.loggers[i]);
        first.lines.clear();
        second.lines.clear();
        writer.error("%s", setting.c_str());
        writer.info("%s", setting.c_str());
        writer.debug("%s", setting.c_str());
        writer.debugplus("%s", setting.c_str());
        const std::vector<std::string> expected(passing(model.levels[i]), writer.getName());
        REQUIRE(first.lines ==
                (model.loggers[i] == &first ? expected : std::vector<std::string>()));
        REQUIRE(second.lines ==
                (model.loggers[i] == &second ? expected : std::vector<std::string>()));
    }
    return 0;
}
