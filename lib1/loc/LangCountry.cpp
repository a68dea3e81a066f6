#include "loc/LangCountry.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "plat/DPrintf.h"

namespace loc {

namespace {

struct LanguagesCountry {
    char language[3];
    char country[3];
};

/// Sorted by language.
// NOLINTNEXTLINE(readability-identifier-naming): beside the function of that name
constexpr LanguagesCountry langToCanonCountry_[] = {
    {"af", "ZA"}, {"be", "BY"}, {"bg", "BG"}, {"ca", "ES"}, {"cs", "CZ"}, {"da", "DK"},
    {"de", "DE"}, {"dz", "BT"}, {"el", "GR"}, {"en", "US"}, {"es", "ES"}, {"et", "EE"},
    {"fa", "IR"}, {"fi", "FI"}, {"fo", "FO"}, {"fr", "FR"}, {"ga", "IE"}, {"gu", "IN"},
    {"he", "IL"}, {"hi", "IN"}, {"hr", "HR"}, {"hu", "HU"}, {"hy", "AM"}, {"is", "IS"},
    {"it", "IT"}, {"iu", "CA"}, {"ja", "JP"}, {"ka", "GE"}, {"ko", "KR"}, {"lt", "LT"},
    {"lv", "LV"}, {"mk", "MK"}, {"mr", "IN"}, {"mt", "MT"}, {"nb", "NO"}, {"ne", "NP"},
    {"nl", "NL"}, {"nn", "NO"}, {"pl", "PL"}, {"pt", "BR"}, {"ro", "RO"}, {"ru", "RU"},
    {"sk", "SK"}, {"sl", "SI"}, {"sr", "RS"}, {"sv", "SE"}, {"th", "TH"}, {"to", "TO"},
    {"tr", "TR"}, {"uk", "UA"}, {"ur", "PK"}, {"uz", "UZ"}, {"vi", "VN"}, {"zh", "CN"},
};
static_assert(std::size(langToCanonCountry_) == 54);

bool isEmptyText(const char* text) noexcept {
    return text == nullptr || *text == '\0';
}

const char* completedCountry(const char* language, const char* defaultLanguage,
                             const char* defaultCountry) noexcept {
    if (defaultCountry != nullptr && defaultLanguage != nullptr &&
        std::strcmp(language, defaultLanguage) == 0)
        return defaultCountry;
    return langToCanonCountry(language);
}

} // namespace

const char* langToCanonCountry(const char* language) noexcept {
    if (language == nullptr)
        return nullptr;
    const auto* const found = std::lower_bound(
        std::begin(langToCanonCountry_), std::end(langToCanonCountry_), language,
        [](const LanguagesCountry& a, const char* b) { return std::strcmp(a.language, b) < 0; });
    const bool isKnown =
        found != std::end(langToCanonCountry_) && std::strcmp(found->language, language) == 0;
    return isKnown ? found->country : nullptr;
}

LangCountry::LangCountry(const char* language, const char* country, const char* defaultLanguage,
                         const char* defaultCountry, const char* separator) {
    if (isEmptyText(language))
        return;
    if (country == nullptr)
        country = completedCountry(language, defaultLanguage, defaultCountry);
    if (isEmptyText(country))
        code = plat::String(language);
    else
        code.replaceBuf(plat::DPrintf("%s%s%s", language, separator, country).takeBuf());
}

} // namespace loc
