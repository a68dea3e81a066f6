#include "loc/PluralRule.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <memory>

#include "plat/SplitterInPlace.h"
#include "plat/StringUtil.h"

namespace loc {

static_assert(offsetof(PluralRule, suffix) == 0);
static_assert(offsetof(PluralRule, forms) == sizeof(void*));

namespace {

using Forms = std::vector<plat::SString<256>>;

void append(Forms* ids, msgid_t stem, const char* form) {
    ids->emplace_back().prf("%s_%s", stem.str() == nullptr ? "" : stem.str(), form);
}

const char* singularForOne(int count) {
    return count == 1 ? "sing" : "zeromany";
}

void singularForOneForms(msgid_t stem, int min, int max, Forms* ids) {
    if (min <= 1 && max >= 1)
        append(ids, stem, "sing");
    if (min != 1 || max != 1)
        append(ids, stem, "zeromany");
}

const char* singularForZero(int count) {
    return count == 0 || count == 1 ? "zerosing" : "many";
}

// Not the mirror of the choice above, and meant so: a range from 0 or 1 does not ask for
// "zerosing", so that a language is used when only "many" was translated.
void singularForZeroForms(msgid_t stem, int min, int max, Forms* ids) {
    if (min < 0 && max >= 0)
        append(ids, stem, "zerosing");
    if (min < -1 || max >= 2)
        append(ids, stem, "many");
}

const char* oneForm(int /*count*/) {
    return "singplural";
}

void oneFormForms(msgid_t stem, int /*min*/, int /*max*/, Forms* ids) {
    append(ids, stem, "singplural");
}

constexpr PluralRule rules[] = {
    {singularForOne, singularForOneForms},
    {singularForZero, singularForZeroForms},
    {oneForm, oneFormForms},
};

constexpr const char* languagesWithoutPlural[] = {"ja", "vi", "ko", "zh"};

} // namespace

const PluralRule* getRuleForLocale(const char* locale) {
    const std::unique_ptr<char[]> copy(plat::strDup(locale == nullptr ? "" : locale));
    plat::SplitterInPlace splitter(copy.get());
    char separator = '\0';
    const char* const language = splitter.nextOneOf("_-.@", &separator);
    const bool hasCountry = separator == '_' || separator == '-';
    const char* const country = hasCountry ? splitter.nextOneOf(".@", nullptr) : "";
    const auto isLanguage = [language](const char* code) {
        return std::strcmp(language, code) == 0;
    };
    if (isLanguage("fr") || (isLanguage("pt") && std::strcmp(country, "BR") == 0))
        return &rules[1];
    if (std::any_of(std::begin(languagesWithoutPlural), std::end(languagesWithoutPlural),
                    isLanguage))
        return &rules[2];
    return &rules[0];
}

} // namespace loc
