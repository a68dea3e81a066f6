#include "loc/Translation.h"

#include <cstddef>
#include <cstring>

#include "loc/LString.h"
#include "loc/TextCache.h"
#include "plat/Assertion.h"
#include "plat/StringUtil.h"

namespace loc {

/// Sees the private members.
struct TranslationLayout {
    static_assert(offsetof(Translation, text) == 0);
    static_assert(offsetof(Translation, owned) == sizeof(char*));
    static_assert(offsetof(Translation, state) == sizeof(char*) + sizeof(Translation::State));
};

Translation::~Translation() {
    if (owned)
        delete[] text;
}

void Translation::set(const char* newText, bool copy) {
    const char* const stored = copy ? plat::strDup(newText) : newText;
    if (owned)
        delete[] text;
    text = stored;
    owned = copy;
    state = TR_UNUSED;
}

const char* Translation::get(bool raw, msgid_t msgid) const {
    if (state == TR_UNUSED) {
        state = raw ? TR_RAW : TR_FORMATTED;
        if (!raw && std::strchr(text, '%') != nullptr)
            finish();
    } else {
        LUMO_ASSERT_FATAL_MSG((raw == (state == TR_RAW)),
                              "Can't use same string as both raw and formatted - %s", msgid.str());
    }
    return text;
}

void Translation::finish() const {
    LString finished;
    finished.xprintf(text);
    TextCache::renew(); // a log destination may have read the unfinished text
    if (owned)
        delete[] text;
    text = finished.takeBuf();
    owned = true;
}

} // namespace loc
