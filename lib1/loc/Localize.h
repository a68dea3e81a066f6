#pragma once

#include <map>
#include <set>
#include <vector>

#include "loc/MsgId.h"
#include "loc/Translation.h"
#include "plat/LogWriter.h"
#include "plat/ParameterChangedCallback.h"
#include "plat/String.h"
#include "plat/StringCopyOpt.h"

namespace plat {
class StringParameter;
}

namespace loc {

class TransMap;

/// The log of localisation.
extern plat::LogWriter vlog;

/// Makes errors of localisation end the process: a missing text, a format that does not fit its
/// arguments. False unless an application sets it.
extern bool abortOnError;

/// "Locale": a list of locales separated by colons, the preferred first; empty for the choice of
/// the operating system.
extern plat::StringParameter localeParam;

/// Owns every localised text of the process, and its choice of locales.
/// Shape: before init() texts can be added, but the process has no locales, so that every text is
/// missing. Programs call it first of all. A locale's files are looked for once, when it is first
/// asked for: what comes into the directories later is not seen.
/// Threads: one recursive lock guards all texts and maps; adding texts takes none: that is for
/// static initialisers, and for strings files, whose loading holds it. While it is held, things are
/// logged: a log destination must not wait for a thread that localises.
class Localize : private plat::ParameterChangedCallback {
public:
    Localize(const Localize&) = delete;
    Localize& operator=(const Localize&) = delete;
    ~Localize() override;

    /// The only one. Static initialisers may call this.
    static Localize& inst();

    /// Reads strings files from these directories from now on, the later ones winning, and follows
    /// "Locale" for good. May be called again.
    void init(const std::vector<plat::String>& newStringsDirs);
    /// Gives the process the locales that "Locale" says: its texts, the system's locale, and the
    /// language of the user interface.
    void setLocalesFromParam();
    void parameterChanged(plat::ConfigParameter* param, int priority) override;

    /// The locales of the process joined by ':', the preferred first; empty before init().
    plat::String getLocales() const;

    /// Reads the strings files of the locales for which that was not done yet.
    void loadStringsFiles(const std::vector<plat::String>& stringLocales);
    /// Fills a map, null for the calling thread's current map, with the texts of the given locales,
    /// their bare languages, and English. Strings files that this needs are read first.
    void setTransMapLocales(const std::vector<plat::String>& newLocales, TransMap* map);
    /// Fills a map, null for the calling thread's current map, with the texts that its locales have
    /// by now.
    void updateTransMap(TransMap* map);

    /// Adds a copy of a text from a strings file; a text that was there is replaced.
    /// Errors: text that is no UTF-8 is logged, with the name of the file, and repaired.
    void addString(const char* locale, const char* msgid, const char* text, const char* source);
    /// Adds a text that is known to be UTF-8. With `copy` id and text are copied; else both must
    /// live until exit. Maps that point to the text they had see the new one.
    void addSanitized(const char* locale, const char* msgid, const char* text, bool copy);
    /// Adds a text that is compiled in: id and text are static.
    /// Errors: asserts that it is UTF-8.
    void addBuiltInString(const char* locale, const char* msgid, const char* text);

private:
    friend struct LocalizeLayout;

    using Texts = std::map<plat::StringCopyOpt, Translation>;

    Localize();
    void setLastLocale(const char* locale);
    Texts::iterator placeOf(const plat::StringCopyOpt& id);

    std::map<plat::String, Texts> strings;
    std::vector<plat::String> locales; ///< most preferred first
    std::vector<plat::String> stringsDirs;
    std::set<plat::String> loadedLocales;
    // Where the last text was added: the next one often belongs right behind it. Texts stay where
    // they are for good.
    const plat::String* lastLocale = nullptr;
    Texts* lastTexts = nullptr;
    Texts::iterator lastPlace; ///< the end: the last locale has no text yet
};

/// The text of an id for the calling thread's locales: a raw format, or a finished text, and always
/// the same of both for one id. Call it as LUMO_LOCALIZE or LUMO_LOCALIZE_RAW.
/// Ownership: the manager's; not to be kept across a change of locales.
/// Errors: a missing text is logged, with the place that asked if `file` is not null, and the id
/// returned; fatal only with abortOnError.
const char* localize(msgid_t msgid, const char* file, int line, bool raw);

/// The raw format of the plural form that fits a count, of a text whose counts lie between min and
/// max. Call it as LUMO_LOCALIZE_PLURAL. Ownership and errors: as localize().
const char* localizePlural(msgid_t msgid, int count, int min, int max, const char* file, int line);

} // namespace loc

/// The finished text of an id that takes no arguments.
#define LUMO_LOCALIZE(msgid) ::loc::localize(msgid, __FILE__, __LINE__, false)

/// The format of an id, for LString::xprintf.
#define LUMO_LOCALIZE_RAW(msgid) ::loc::localize(msgid, __FILE__, __LINE__, true)

/// The format of an id for a count that lies between min and max, for LString::xprintf.
#define LUMO_LOCALIZE_PLURAL(msgid, count, min, max)                                               \
    ::loc::localizePlural(msgid, count, min, max, __FILE__, __LINE__)
