#include "loc/Localize.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <mutex>
#include <utility>

#include "loc/LocaleList.h"
#include "loc/LocaleSetter.h"
#include "loc/OsLocale.h"
#include "loc/StringsFile.h"
#include "loc/TextCache.h"
#include "loc/TransMap.h"
#include "loc/loc_loc.h"
#include "plat/Assertion.h"
#include "plat/DPrintf.h"
#include "plat/DString.h"
#include "plat/StringParameter.h"
#include "plat/Utf8.h"
#include "plat/unix/Mutex.h"

namespace loc {

// The order of these is given: the table is registered before the others are made.
static const AddLocStrings_loc locStrings;
static plat::Mutex localizeMutex;
plat::LogWriter vlog("Localize");
plat::StringParameter localeParam("Locale", loc::msgid_t("loc_param_locale"), "");

constinit bool abortOnError = false;

/// Sees the private members.
struct LocalizeLayout {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof" // both compilers lay out polymorphic types so
    static_assert(offsetof(Localize, strings) == sizeof(void*));
    static_assert(offsetof(Localize, locales) ==
                  offsetof(Localize, strings) + sizeof(decltype(Localize::strings)));
    static_assert(offsetof(Localize, stringsDirs) ==
                  offsetof(Localize, locales) + sizeof(decltype(Localize::locales)));
    static_assert(offsetof(Localize, loadedLocales) ==
                  offsetof(Localize, stringsDirs) + sizeof(decltype(Localize::stringsDirs)));
#pragma GCC diagnostic pop
};

namespace {

/// Texts that this thread has found, by the address of the id: an id is a literal, looked up again
/// and again. What was found in another generation of texts and maps does not count.
thread_local constinit TextCache textCache;

/// Reports a text that is missing and gives its id in its place.
const char* handleError(const char* what, const char* file, msgid_t msgid, int line) {
    const char* const id = msgid.str() == nullptr ? "" : msgid.str();
    plat::DPrintf message("%s for \"%s\"", what, id);
    if (file != nullptr)
        message.prf(" (%s:%d)", file, line);
    vlog.error("%s", message.str());
    if (abortOnError) {
        std::fprintf(stderr, "%s\nAborting\n", message.str());
        std::abort();
    }
    return id;
}

} // namespace

Localize::Localize() = default;
Localize::~Localize() = default;

Localize& Localize::inst() {
    static Localize instance;
    return instance;
}

void Localize::init(const std::vector<plat::String>& newStringsDirs) {
    plat::ParameterChangedCallback* const listener = this;
    auto& listeners = localeParam.callbacks;
    if (std::find(listeners.begin(), listeners.end(), listener) == listeners.end())
        listeners.push_back(listener);
    {
        const std::lock_guard lock(localizeMutex);
        stringsDirs = newStringsDirs;
    }
    setLocalesFromParam();
}

void Localize::setLocalesFromParam() {
    const char* const wanted = localeParam.value().str();
    const bool isWanted = *wanted != '\0';
    std::vector<plat::String> chosen;
    if (isWanted)
        parseLocaleList(wanted, &chosen);
    else
        LocaleSetter::useOsProcessLocale(&chosen);
    plat::appendUniq(&chosen, "en_US");
    {
        const std::lock_guard lock(localizeMutex);
        locales = chosen;
    }
    setUiLocale(chosen);
    if (isWanted)
        LocaleSetter::setProcessLocale(chosen);
    setTransMapLocales(chosen, TransMap::getProcessInst());
}

void Localize::parameterChanged(plat::ConfigParameter* /*param*/, int /*priority*/) {
    setLocalesFromParam();
}

plat::String Localize::getLocales() const {
    const std::lock_guard lock(localizeMutex);
    plat::DString joined;
    for (const plat::String& locale : locales) {
        if (&locale != &locales.front())
            joined.appendChar(':');
        joined.append(locale.get());
    }
    return plat::String(joined.str());
}

void Localize::loadStringsFiles(const std::vector<plat::String>& stringLocales) {
    const std::lock_guard lock(localizeMutex);
    for (const plat::String& locale : stringLocales) {
        if (!loadedLocales.insert(locale).second)
            continue;
        for (const plat::String& directory : stringsDirs)
            loadStringsFile(directory.get(), locale.get(), this);
    }
}

void Localize::setTransMapLocales(const std::vector<plat::String>& newLocales, TransMap* map) {
    if (map == nullptr)
        map = TransMap::getThreadInst();
    std::vector<plat::String> stringLocales;
    getStringLocales(newLocales, &stringLocales);
    loadStringsFiles(stringLocales);
    const std::lock_guard lock(localizeMutex); // nobody is to see new locales with old texts
    map->locales = std::move(stringLocales);
    updateTransMap(map);
}

void Localize::updateTransMap(TransMap* map) {
    const std::lock_guard lock(localizeMutex);
    if (map == nullptr)
        map = TransMap::getThreadInst();
    TextCache::renew();
    map->translations.clear();
    vlog.debug("Updating %s TransMap with locales:",
               map == TransMap::getProcessInst() ? "process" : "thread");
    for (const plat::String& locale : map->locales) {
        vlog.debug(" %s", locale.str());
        const auto found = strings.find(locale);
        if (found == strings.end())
            continue;
        for (const auto& [msgid, translation] : found->second)
            map->translations.try_emplace(msgid, &translation);
        TextCache::renew(); // a log destination may have looked plurals up before these were there
    }
}

void Localize::addString(const char* locale, const char* msgid, const char* text,
                         const char* source) {
    if (plat::isValidUtf8(text)) {
        addSanitized(locale, msgid, text, true);
        return;
    }
    vlog.error("Bad UTF-8 in %s from %s for '%s' locale", msgid, source, locale);
    const std::unique_ptr<char[]> repaired(plat::sanitizeUtf8(text));
    addSanitized(locale, msgid, repaired.get(), true);
}

void Localize::addSanitized(const char* locale, const char* msgid, const char* text, bool copy) {
    TextCache::renew();
    setLastLocale(locale);
    const plat::StringCopyOpt key(msgid, false); // an id that is there already is not copied
    lastPlace = placeOf(key);
    if (lastPlace == lastTexts->end() || key < lastPlace->first)
        lastPlace = lastTexts->try_emplace(lastPlace, plat::StringCopyOpt(msgid, copy));
    lastPlace->second.set(text, copy);
}

void Localize::setLastLocale(const char* locale) {
    if (lastLocale != nullptr && *lastLocale == locale)
        return;
    auto& [found, texts] = *strings.try_emplace(plat::String(locale)).first;
    lastLocale = &found;
    lastTexts = &texts;
    lastPlace = texts.end();
}

/// The first text of the last locale whose id is not less.
Localize::Texts::iterator Localize::placeOf(const plat::StringCopyOpt& id) {
    const auto end = lastTexts->end();
    if (lastPlace != end && lastPlace->first < id) {
        const auto next = std::next(lastPlace);
        if (next == end || !(next->first < id))
            return next;
    }
    return lastTexts->lower_bound(id);
}

void Localize::addBuiltInString(const char* locale, const char* msgid, const char* str) {
    using plat::isValidUtf8;
    LUMO_ASSERT_FATAL_MSG(isValidUtf8(str), "Bad UTF-8 in %s", msgid);
    addSanitized(locale, msgid, str, false);
}

const char* localize(msgid_t msgid, const char* file, int line, bool raw) {
    TextCache::Key key{msgid.str(), TransMap::getThreadInst(), TextCache::generation()};
    key.kind = raw ? TextCache::Raw : TextCache::Finished;
    if (const char* const text = textCache.find(key))
        return text;
    const std::lock_guard lock(localizeMutex);
    const Translation* const translation = TransMap::getThreadInst()->get(msgid);
    if (translation == nullptr)
        return handleError("Missing translation", file, msgid, line);
    const char* const text = translation->get(raw, msgid);
    key.generation = TextCache::generation(); // the first reading changes it
    return textCache.add(key, text);
}

const char* localizePlural(msgid_t msgid, int count, int min, int max, const char* file, int line) {
    TextCache::Key key{msgid.str(), TransMap::getThreadInst(), TextCache::generation()};
    key.kind = TextCache::pluralKind(count);
    key.min = min;
    key.max = max;
    if (const char* const text = textCache.find(key))
        return text;
    const std::lock_guard lock(localizeMutex);
    const Translation* const translation =
        TransMap::getThreadInst()->getPlural(msgid, count, min, max);
    if (translation == nullptr)
        return handleError("Missing plural translation", file, msgid, line);
    key.generation = TextCache::generation();
    return textCache.add(key, translation->get(true, msgid));
}

} // namespace loc
