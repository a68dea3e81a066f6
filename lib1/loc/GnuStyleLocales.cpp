#include "loc/GnuStyleLocales.h"

#include <cstdlib>
#include <memory>

#include "loc/LocaleList.h"
#include "plat/SplitterInPlace.h"
#include "plat/StringUtil.h"

namespace loc {

bool getGnuStyleLocales(const char* defaultLocale, std::vector<plat::String>* locales) {
    const char* const list = std::getenv("LANGUAGE"); // NOLINT(concurrency-mt-unsafe): read alone
    if (list == nullptr)
        return false;
    const std::unique_ptr<char[]> copy(plat::strDup(defaultLocale == nullptr ? "" : defaultLocale));
    plat::SplitterInPlace splitter(copy.get());
    char separator = '\0';
    const char* const language = splitter.nextOneOf("_-.@", &separator);
    const bool hasCountry = separator == '_' || separator == '-';
    const char* const country = hasCountry ? splitter.nextOneOf(".@", nullptr) : nullptr;
    std::vector<plat::String> named;
    parseLocaleList(list, &named, language, country);
    for (const plat::String& locale : named)
        plat::appendUniq(locales, locale.get());
    return !named.empty();
}

} // namespace loc
