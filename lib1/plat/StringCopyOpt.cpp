#include "plat/StringCopyOpt.h"

#include <cstddef>

#include "plat/StringUtil.h"

namespace plat {

/// Sees the private members.
struct StringCopyOptLayout {
    static_assert(offsetof(StringCopyOpt, text) == 0);
    static_assert(offsetof(StringCopyOpt, owned) == sizeof(char*));
};

StringCopyOpt::StringCopyOpt(const char* newText, bool copy)
    : text(copy ? strDup(newText) : newText), owned(copy) {}

} // namespace plat
