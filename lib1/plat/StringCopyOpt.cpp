#include "plat/StringCopyOpt.h"

#include <cstddef>
#include <cstring>

#include "plat/StringUtil.h"

namespace plat {

/// Sees the private members.
struct StringCopyOptLayout {
    static_assert(offsetof(StringCopyOpt, text) == 0);
    static_assert(offsetof(StringCopyOpt, owned) == sizeof(char*));
};

StringCopyOpt::StringCopyOpt(const char* newText, bool copy)
    : text(copy ? strDup(newText) : newText), owned(copy) {}

bool operator<(const StringCopyOpt& a, const StringCopyOpt& b) noexcept {
    if (a.get() == nullptr || b.get() == nullptr)
        return a.get() == nullptr && b.get() != nullptr;
    return std::strcmp(a.get(), b.get()) < 0;
}

} // namespace plat
