#pragma once

#include <cstddef>

#include "loc/Localize.h"

namespace loc {

/// One entry of a table of built-in texts; all three are literals.
struct BuiltInString {
    const char* locale;
    const char* msgid;
    const char* text; ///< UTF-8
};

/// Registers a table. Ownership: it must live until exit, its texts are not copied.
template <std::size_t N>
void addBuiltInStrings(const BuiltInString (&table)[N]) {
    for (const BuiltInString& entry : table)
        Localize::inst().addBuiltInString(entry.locale, entry.msgid, entry.text);
}

} // namespace loc
