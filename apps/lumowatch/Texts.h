#pragma once

#include "loc/LString.h"
#include "loc/Localize.h"

#include <cstdint>
#include <string>

namespace lumowatch {

/// Makes this program's texts known, from the folder "strings" beside it, in the user's language.
/// Call it before anything is said; a later change of "Locale" is followed.
void initTexts();

/// A text that takes no arguments.
inline std::string text(loc::msgid_t id) {
    return LUMO_LOCALIZE(id);
}

/// A text with its arguments put in.
template <typename... Values>
std::string formatted(loc::msgid_t id, Values... values) {
    loc::LString result;
    result.xprintf(LUMO_LOCALIZE_RAW(id), loc::PrintfArgs(values...));
    return result.str();
}

/// The text of a number of things, in the form that the number calls for: "1 grab", "2 grabs".
std::string counted(loc::msgid_t stem, std::int64_t count);

} // namespace lumowatch
