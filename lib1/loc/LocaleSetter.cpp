#include "loc/LocaleSetter.h"

#include <cstddef>
#include <mutex>

#include "loc/LocaleList.h"
#include "loc/Localize.h"
#include "loc/OsLocale.h"
#include "plat/Assertion.h"
#include "plat/StringUtil.h"
#include "plat/unix/Mutex.h"
#include "plat/unix/ThreadLocalPtr.h"

namespace loc {

/// Sees the private members.
struct LocaleSetterLayout {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof" // both compilers lay the pointers out so
    static_assert(offsetof(LocaleSetter, libcLocale) == 0);
    static_assert(offsetof(LocaleSetter, requested) == sizeof(LibcLocale));
    static_assert(offsetof(LocaleSetter, previous) == sizeof(LibcLocale) + sizeof(void*));
    static_assert(offsetof(LocaleSetter, transMap) == sizeof(LibcLocale) + 2 * sizeof(void*));
    static_assert(offsetof(LocaleSetter, libcSetter) == sizeof(LibcLocale) + 3 * sizeof(void*));
#pragma GCC diagnostic pop
};

namespace {

const LibcLocale defaultLocale{plat::String("C")};
LibcLocale processLocale{plat::String("C")};
plat::Mutex processLocaleMutex;

plat::ThreadLocalPtr<LocaleSetter>& innermost() noexcept {
    static plat::ThreadLocalPtr<LocaleSetter> slot;
    return slot;
}

void logUnsupported(const char* locale) {
    vlog.info("No OS support for locale \"%s\"", locale);
}

/// The system's locale for the first code that it has one for; "C" if there is none.
LibcLocale firstSupported(const std::vector<plat::String>& locales,
                          void (*onUnsupported)(const char*)) {
    LibcLocale result;
    for (const plat::String& locale : locales) {
        if (findLibcLocale(locale.get(), &result))
            return result;
        onUnsupported(locale.str());
    }
    return defaultLocale;
}

// The finder has run by then: it has a lock of its own, and the two are never held together.
void storeProcessLocale(const LibcLocale& locale) {
    const std::lock_guard lock(processLocaleMutex);
    processLocale = locale;
}

} // namespace

LocaleSetter::LocaleSetter(const char* list)
    : libcLocale(defaultLocale), requested(plat::strLen(list) > 0 ? list : nullptr),
      previous(innermost().get()) {
    vlog.debug("setting locale %s", requested.str());
    innermost().set(this);
    try {
        apply();
    } catch (...) {
        innermost().set(previous);
        throw;
    }
}

LocaleSetter::~LocaleSetter() {
    LocaleSetter* const thrInst = innermost().get();
    LUMO_ASSERT_FATAL(thrInst == this);
    innermost().set(previous);
    vlog.debug("restoring locale");
}

void LocaleSetter::setProcessLocale(const std::vector<plat::String>& locales) {
    storeProcessLocale(firstSupported(locales, logUnsupported));
}

void LocaleSetter::useOsProcessLocale(std::vector<plat::String>* locales) {
    LibcLocale locale;
    getOsLibcLocale(&locale, locales);
    storeProcessLocale(locale);
}

void LocaleSetter::getLibcLocale(const std::vector<plat::String>& locales, LibcLocale* result) {
    *result = firstSupported(locales, [](const char*) {});
}

const LibcLocale& LocaleSetter::getThreadLibcLocale() {
    const LocaleSetter* const setter = innermost().get();
    const bool hasList = setter != nullptr && setter->requested.get() != nullptr;
    return hasList ? setter->libcLocale : defaultLocale;
}

plat::String LocaleSetter::getThreadLocales() {
    const LocaleSetter* setter = innermost().get();
    while (setter != nullptr && setter->requested.get() == nullptr)
        setter = setter->previous;
    return setter == nullptr ? Localize::inst().getLocales() : setter->requested;
}

void LocaleSetter::apply() {
    if (requested.get() != nullptr)
        useList();
    else
        inherit();
    libcSetter = std::make_unique<LibcLocaleSetter>(libcLocale.name.get());
}

void LocaleSetter::useList() {
    std::vector<plat::String> locales;
    parseLocaleList(requested.get(), &locales);
    libcLocale = firstSupported(locales, logUnsupported);
    transMap = std::make_unique<TransMap>();
    Localize::inst().setTransMapLocales(locales, transMap.get());
}

void LocaleSetter::inherit() {
    if (previous != nullptr) {
        libcLocale = previous->libcLocale;
        return;
    }
    const std::lock_guard lock(processLocaleMutex);
    libcLocale = processLocale;
}

} // namespace loc
