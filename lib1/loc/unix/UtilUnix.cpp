// Systems whose users choose their languages through the environment, for each process.

#include "loc/OsLocale.h"

#include <cstdlib>
#include <memory>

#include "loc/GnuStyleLocales.h"
#include "loc/LangCountry.h"
#include "loc/LocaleList.h"
#include "plat/SplitterInPlace.h"
#include "plat/StringUtil.h"

namespace loc {

namespace {

/// The locale of messages as the system's own programs find it; "" for none.
const char* messageLocale() {
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* const value =
            std::getenv(variable); // NOLINT(concurrency-mt-unsafe): read alone
        if (plat::strLen(value) > 0)
            return value;
    }
    return "";
}

void getPreferredLocales(std::vector<plat::String>* locales) {
    const char* const messages = messageLocale();
    if (!getGnuStyleLocales(messages, locales))
        parseLocaleList(messages, locales);
}

/// Finds the locale of the system for a language in its usual country.
bool findForLanguage(const char* locale, LibcLocale* result) {
    const std::unique_ptr<char[]> copy(plat::strDup(locale));
    const char* const language = plat::SplitterInPlace(copy.get()).nextOneOf("_-.@", nullptr);
    const LangCountry usual(language, nullptr, nullptr, nullptr, "_");
    return findLibcLocale(usual.get(), result);
}

} // namespace

void getOsLibcLocale(LibcLocale* result, std::vector<plat::String>* locales) {
    getPreferredLocales(locales);
    for (const plat::String& locale : *locales) {
        if (findLibcLocale(locale.get(), result) || findForLanguage(locale.get(), result))
            return;
    }
    *result = LibcLocale{plat::String("C")};
}

// What draws user interfaces here follows the environment, which is not ours to change.
void setUiLocale(const std::vector<plat::String>& /*locales*/) {}

} // namespace loc
