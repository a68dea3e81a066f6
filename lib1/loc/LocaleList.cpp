#include "loc/LocaleList.h"

#include "loc/LangCountry.h"
#include "plat/SplitterInPlace.h"
#include "plat/StringUtil.h"

namespace loc {

namespace {

/// A locale code, cut in place.
struct LocaleParts {
    const char* language;
    const char* country = nullptr; ///< null without a separator for it

    explicit LocaleParts(char* code) noexcept {
        plat::SplitterInPlace splitter(code);
        char separator = '\0';
        language = splitter.nextOneOf("_-.@", &separator);
        if (separator == '_' || separator == '-')
            country = splitter.nextOneOf(".@", nullptr);
    }
};

} // namespace

void parseLocaleList(const char* list, std::vector<plat::String>* locales,
                     const char* defaultLanguage, const char* defaultCountry) {
    plat::String copy(list);
    plat::SplitterInPlace items(copy.get());
    while (char* const item = items.next(':')) {
        const LocaleParts parts(item);
        const LangCountry code(parts.language, parts.country, defaultLanguage, defaultCountry, "_");
        if (!code.isEmpty())
            plat::appendUniq(locales, code.get());
    }
}

void getStringLocales(const std::vector<plat::String>& locales,
                      std::vector<plat::String>* stringLocales) {
    for (const plat::String& locale : locales) {
        plat::appendUniq(stringLocales, locale.str());
        plat::String copy(locale.str());
        const LocaleParts parts(copy.get());
        if (plat::strLen(parts.country) != 0 && *parts.language != '\0')
            plat::appendUniq(stringLocales, parts.language);
    }
    plat::appendUniq(stringLocales, "en_US");
    plat::appendUniq(stringLocales, "en");
}

} // namespace loc
