#include "loc/LibcLocaleSetter.h"

#include <cstddef>

namespace loc {

/// Sees the private members.
struct LibcLocaleSetterLayout {
    static_assert(offsetof(LibcLocaleSetter, saved) == 0);
    static_assert(offsetof(LibcLocaleSetter, created) == sizeof(locale_t));
};

namespace {

constexpr int allButCollation =
    LC_CTYPE_MASK | LC_MESSAGES_MASK | LC_MONETARY_MASK | LC_NUMERIC_MASK | LC_TIME_MASK;

/// Makes a locale in two steps; null if either fails.
locale_t create(const char* name) {
    const locale_t collation = ::newlocale(LC_COLLATE_MASK, name, locale_t());
    if (collation == locale_t())
        return locale_t();
    const locale_t whole = ::newlocale(allButCollation, name, collation);
    if (whole == locale_t())
        ::freelocale(collation); // it is ours still
    return whole;
}

} // namespace

LibcLocaleSetter::LibcLocaleSetter(const char* name)
    : saved(::uselocale(locale_t())), created(create(name == nullptr ? "" : name)) {
    if (created != locale_t())
        ::uselocale(created);
}

LibcLocaleSetter::~LibcLocaleSetter() {
    ::uselocale(saved);
    if (created != locale_t())
        ::freelocale(created);
}

} // namespace loc
