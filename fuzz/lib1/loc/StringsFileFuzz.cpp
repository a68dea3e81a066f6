#include "loc/StringsFile.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "Require.h"
#include "lib1/loc/UnescapeModel.h"
#include "loc/Localize.h"
#include "plat/Logger.h"
#include "rdr/BufferedInStream.h"
#include "rdr/EndOfStream.h"

namespace {

using Entries = std::vector<std::pair<std::string, std::string>>;

Entries added;
std::vector<std::string> logged;

class Log : public plat::Logger {
public:
    using Logger::Logger;
    void write(int, const char*, const char* text) override { logged.emplace_back(text); }
    void flush() override {}
};
Log destination("fuzz");

// Delivers its bytes a few at a time.
class PieceStream : public rdr::BufferedInStream {
public:
    PieceStream(std::string content, std::size_t size) : rest(std::move(content)), piece(size) {
        rewindable = false;
    }
    int read(void* buf, int len) override {
        if (rest.empty())
            throw rdr::EndOfStream();
        const std::size_t n = std::min({rest.size(), piece, std::size_t(len)});
        std::memcpy(buf, rest.data(), n);
        rest.erase(0, n);
        return int(n);
    }

private:
    std::string rest;
    std::size_t piece;
};

// Short for what entries are made of, so that whole ones are found.
const std::vector<std::string> tokens{
    "msgid \"", "msgstr \"", "\"\n", "\n",   "\n\n", "\"\n\n", "msgid \"a\"\nmsgstr \"b\"\n",
    "\r\n",     "#",         "\\x4", "\\10", "\\n",  "\\\"",   "\\000",
    "msgid ",   "\\",
};

// The syntax, line by line.
struct Model {
    Entries entries;
    std::vector<std::string> reports;

    explicit Model(const std::string& content) {
        std::string line;
        for (const char c : content) {
            if (c == '\n') {
                take(std::exchange(line, ""));
            } else if (c != '\r') {
                line += c;
            }
        }
        if (!line.empty())
            take(line);
        take("");
    }

private:
    void take(const std::string& line) {
        ++number;
        if (line.empty())
            end();
        else if (line[0] == '"')
            append(line, state == 1 ? &msgid : &msgstr);
        else if (line[0] != '#')
            keyword(line.c_str());
    }

    void end() {
        if (state == 1) {
            report("Expected msgstr");
            return;
        }
        if (!msgid.empty())
            entries.emplace_back(msgid, msgstr);
        msgid.clear();
        msgstr.clear();
        state = 0;
    }

    void keyword(const std::string& line) {
        const std::size_t blank = line.find(' ');
        const std::string expected = state == 0 ? "msgid" : "msgstr";
        if (blank == std::string::npos || state == 2)
            report("Bad command or string");
        else if (line.substr(0, blank) != expected)
            report("Expected " + expected);
        else
            append(line.substr(blank + 1), ++state == 1 ? &msgid : &msgstr);
    }

    void append(const std::string& quoted, std::string* target) {
        const UnescapeModel string(quoted.c_str());
        if (string.fault.empty())
            *target += string.content.c_str();
        else
            report(string.fault);
    }

    void report(const std::string& fault) {
        reports.push_back("file.po:" + std::to_string(number) + " " + fault);
    }

    std::string msgid;
    std::string msgstr;
    int state = 0;
    int number = 0;
};

} // namespace

// In the place of the manager's, which would keep all texts.
void loc::Localize::addString(const char* locale, const char* msgid, const char* text,
                              const char* source) {
    REQUIRE(std::strcmp(locale, "de") == 0 && std::strcmp(source, "file.po") == 0);
    added.emplace_back(msgid, text);
}

// The first byte says how many bytes come at a time; the least bit, whether small bytes are tokens.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool isLogging = (plat::LogWriter::applyLogSetting("Localize:fuzz:0"), true);
    if (size == 0 || !isLogging)
        return 0;
    std::string content;
    for (std::size_t i = 1; i < size; ++i) {
        if ((data[0] & 1) != 0 && data[i] < tokens.size())
            content += tokens[data[i]];
        else
            content += char(data[i]);
    }
    PieceStream in(content, data[0] < 2 ? content.size() + 1 : data[0]);
    added.clear();
    logged.clear();
    loc::readStringsFile(&in, "file.po", "de", &loc::Localize::inst());
    const Model model(content);
    REQUIRE(added == model.entries);
    REQUIRE(logged == model.reports);
    return 0;
}
