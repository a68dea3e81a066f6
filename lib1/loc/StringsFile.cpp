#include "loc/StringsFile.h"

#include <cstring>
#include <limits>
#include <string>

#include "loc/Localize.h"
#include "loc/unescapeString.h"
#include "plat/DPrintf.h"
#include "plat/DString.h"
#include "plat/Exception.h"
#include "plat/File.h"
#include "plat/SplitterInPlace.h"
#include "rdr/EndOfMsg.h"
#include "rdr/EndOfStream.h"
#include "rdr/FileInStream.h"
#include "rdr/MemOutStream.h"

namespace loc {

namespace {

/// Empties two texts in the end, also when an exception comes; their memory is for the next entry.
struct ClearedAtEnd {
    std::string& id;
    std::string& text;

    ~ClearedAtEnd() {
        id.clear();
        text.clear();
    }
};

class StringsReader {
public:
    StringsReader(rdr::InStream* stream, const char* messageName, const char* stringLocale,
                  Localize* target) noexcept
        : in(*stream), fileName(messageName), locale(stringLocale), manager(*target) {}

    void read() {
        for (bool isLast = false; !isLast;) {
            isLast = !readLine();
            try {
                takeLine();
            } catch (const plat::Exception& e) {
                vlog.error("%s:%d %s", fileName, lineNumber, e.message.get());
            }
        }
    }

private:
    /// What the next keyword is.
    enum class State { BeforeId, AfterId, AfterText };

    /// The end of the stream is an empty line; returns false there.
    bool readLine() {
        if (lineNumber < std::numeric_limits<int>::max())
            ++lineNumber;
        try {
            lineLength = in.readLine(&line);
            return true;
        } catch (const rdr::EndOfStream&) {
            lineLength = 0;
        } catch (const rdr::EndOfMsg&) {
            lineLength = 0;
        }
        return false;
    }

    void takeLine() {
        if (lineLength == 0)
            endEntry();
        else if (*line.get() == '"')
            append(line.get(), state == State::AfterId ? &msgid : &msgstr);
        else if (*line.get() != '#')
            takeKeyword();
    }

    void endEntry() {
        if (state == State::AfterId)
            throw plat::Exception("Expected msgstr");
        state = State::BeforeId;
        const ClearedAtEnd cleared{msgid, msgstr};
        if (!msgid.empty())
            manager.addString(locale, msgid.c_str(), msgstr.c_str(), fileName);
    }

    void takeKeyword() {
        plat::SplitterInPlace words(line.get());
        char found = '\0';
        const char* const keyword = words.nextOneOf(" ", &found);
        if (found == '\0' || state == State::AfterText)
            throw plat::Exception("Bad command or string");
        const char* const expected = state == State::BeforeId ? "msgid" : "msgstr";
        if (std::strcmp(keyword, expected) != 0)
            throw plat::Exception(1, "Expected %s", expected);
        state = state == State::BeforeId ? State::AfterId : State::AfterText;
        append(keyword + std::strlen(keyword) + 1, state == State::AfterId ? &msgid : &msgstr);
    }

    /// Appends nothing of a string that is bad.
    void append(const char* quoted, std::string* target) const {
        rdr::MemOutStream content(lineLength);
        unescapeString(quoted, &content);
        const auto* const text = reinterpret_cast<const char*>(content.data());
        target->append(text, ::strnlen(text, std::size_t(content.length())));
    }

    rdr::InStream& in;
    const char* fileName;
    const char* locale;
    Localize& manager;

    plat::DString line;
    int lineLength = 0;
    int lineNumber = 0;
    State state = State::BeforeId;
    std::string msgid;
    std::string msgstr;
};

} // namespace

bool loadStringsFile(const char* directory, const char* locale, Localize* manager) {
    const plat::DPrintf path("%s%cstrings.%s.po", directory, '/', locale);
    if (!plat::fileExistsNoThrow(path.get()))
        return false;
    try {
        rdr::FileInStream in(path.get(), false);
        readStringsFile(&in, path.get(), locale, manager);
        vlog.info("Loaded strings from %s", path.get());
        return true;
    } catch (const plat::Exception& e) {
        vlog.error("Error loading strings from %s [%s]", path.get(), e.message.get());
        return false;
    }
}

void readStringsFile(rdr::InStream* stream, const char* fileName, const char* locale,
                     Localize* manager) {
    StringsReader(stream, fileName, locale, manager).read();
}

} // namespace loc
