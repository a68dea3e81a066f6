#pragma once

#include <vector>

#include "loc/MsgId.h"
#include "plat/SString.h"

namespace loc {

/// How a language chooses the form of a text by a count. A form's text is stored under the stem,
/// "_" and the form's name.
struct PluralRule {
    /// The name of the form for a count.
    const char* (*suffix)(int count);
    /// Appends the ids of the forms that must be there for counts from min to max. Ids of more than
    /// 255 bytes are cut.
    void (*forms)(msgid_t stem, int min, int max, std::vector<plat::SString<256>>* ids);
};

/// The rule of a locale, such as "pt_BR": never null. Case counts.
const PluralRule* getRuleForLocale(const char* locale);

} // namespace loc
