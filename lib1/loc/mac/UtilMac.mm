// macOS, where the user chooses languages for all applications.

#include "loc/mac/UtilMac.h"

#include <algorithm>
#include <cstring>

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFLocale.h>
#include <CoreFoundation/CFPreferences.h>
#import <Foundation/Foundation.h>

#include "loc/LangCountry.h"
#include "loc/OsLocale.h"
#include "os/mac/CFUtil.h"
#include "os/mac/NSUtil.h"
#include "plat/SplitterInPlace.h"

namespace loc {

namespace {

constexpr NSUInteger mostLanguages = 5;

/// Frees the system's temporary objects at the end of a scope.
class Pool {
public:
    Pool() : pool([[NSAutoreleasePool alloc] init]) {}
    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;
    ~Pool() { [pool drain]; }

private:
    NSAutoreleasePool* pool;
};

/// The two parts of a locale that count; null where there is none.
struct Parts {
    plat::String language;
    plat::String country;
};

NSString* bridged(CFStringRef string) {
    return reinterpret_cast<NSString*>(const_cast<__CFString*>(string));
}

bool isString(id object) {
    return CFGetTypeID(reinterpret_cast<CFTypeRef>(object)) == CFStringGetTypeID();
}

Parts currentParts() {
    const os::CFPtr<CFLocaleRef> locale(CFLocaleCopyCurrent());
    const os::CFDictionaryPtr components(CFLocaleCreateComponentsFromLocaleIdentifier(
        kCFAllocatorDefault, CFLocaleGetIdentifier(locale.get())));
    return {plat::String::owning(components.getStr(kCFLocaleLanguageCode)),
            plat::String::owning(components.getStr(kCFLocaleCountryCode))};
}

Parts partsOf(const char* code) {
    plat::String copy(code);
    plat::SplitterInPlace splitter(copy.get());
    char separator = '\0';
    Parts parts;
    parts.language = plat::String(splitter.nextOneOf("_-.@", &separator));
    if (separator == '_' || separator == '-')
        parts.country = plat::String(splitter.nextOneOf(".@", nullptr));
    return parts;
}

void append(const Parts& parts, const Parts& current, std::vector<plat::String>* locales) {
    const LangCountry code(parts.language.get(), parts.country.get(), current.language.get(),
                           current.country.get(), "_");
    if (!code.isEmpty())
        plat::appendUniq(locales, code.get());
}

void appendLanguage(NSString* language, const Parts& current, std::vector<plat::String>* locales) {
    const os::CFPtr<CFStringRef> canonical(CFLocaleCreateCanonicalLanguageIdentifierFromString(
        kCFAllocatorDefault, reinterpret_cast<CFStringRef>(language)));
    append(partsOf(os::utf8String(bridged(canonical.get()))), current, locales);
}

bool findForLanguage(const char* locale, LibcLocale* result) {
    const LangCountry usual(partsOf(locale).language.get(), nullptr, nullptr, nullptr, "_");
    return findLibcLocale(usual.get(), result);
}

} // namespace

void getAppleLocales(std::vector<plat::String>* locales) {
    const Pool pool;
    const Parts current = currentParts();
    const os::CFPtr<CFTypeRef> preference(
        CFPreferencesCopyAppValue(reinterpret_cast<CFStringRef>(os::nsString("AppleLanguages", -1)),
                                  kCFPreferencesCurrentApplication));
    if (!preference || CFGetTypeID(preference.get()) != CFArrayGetTypeID()) {
        append(current, current, locales);
        return;
    }
    NSArray* const languages = reinterpret_cast<NSArray*>(const_cast<void*>(preference.get()));
    const NSUInteger count = std::min([languages count], mostLanguages);
    for (NSUInteger i = 0; i < count; ++i) {
        const id language = [languages objectAtIndex:i];
        if (isString(language))
            appendLanguage(language, current, locales);
    }
}

void getOsLibcLocale(LibcLocale* result, std::vector<plat::String>* locales) {
    getAppleLocales(locales);
    for (const plat::String& locale : *locales) {
        if (findLibcLocale(locale.get(), result) || findForLanguage(locale.get(), result))
            return;
    }
    *result = LibcLocale{plat::String("C")};
}

void setUiLocale(const std::vector<plat::String>& locales) {
    if (locales.empty())
        return;
    const Pool pool;
    NSMutableArray* const languages = [NSMutableArray array];
    for (const plat::String& locale : locales) {
        if (std::strchr(locale.str(), '_') != nullptr)
            [languages addObject:os::nsString(locale.get(), -1)];
    }
    NSDictionary* const domain = [NSDictionary
        dictionaryWithObjectsAndKeys:os::nsString(locales.front().str(), -1), @"AppleLocale",
                                     languages, @"AppleLanguages", nil];
    NSUserDefaults* const defaults = [NSUserDefaults standardUserDefaults];
    [defaults removeVolatileDomainForName:NSArgumentDomain];
    [defaults setVolatileDomain:domain forName:NSArgumentDomain];
    [defaults synchronize];
}

} // namespace loc
