#include "loc/mac/UtilMac.h"

#include <cstring>
#include <string>
#include <vector>

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFLocale.h>
#include <CoreFoundation/CFPreferences.h>
#include <CoreFoundation/CoreFoundation.h>
#import <Foundation/Foundation.h>

#include <gtest/gtest.h>

#include "lib1/loc/TestLocales.h"
#include "loc/OsLocale.h"
#include "os/mac/NSUtil.h"

// The runtime's tables of classes and selectors are never freed, nor is what the C library makes of
// LOCPATH.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libobjc.so\nleak:argz_add_sep\n";
}

// Locks of the two libraries are taken in either order, when they start.
extern "C" const char* __tsan_default_suppressions() {
    return "deadlock:libgnustep-base.so\ndeadlock:libobjc.so\n";
}

// Of the leak checker, in the builds that have it.
extern "C" __attribute__((weak)) void __lsan_disable();
extern "C" __attribute__((weak)) void __lsan_enable();

namespace {

// What the defaults of this system's Foundation allocate as they are first asked for stays, and
// some of it where nothing points to it any more. Everything later is checked.
class DefaultsAreThere : public testing::Environment {
public:
    void SetUp() override {
        if (__lsan_disable != nullptr)
            __lsan_disable();
        NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
        [NSUserDefaults standardUserDefaults];
        [pool release];
        if (__lsan_enable != nullptr)
            __lsan_enable();
    }
};
testing::Environment* const environment = testing::AddGlobalTestEnvironment(new DefaultsAreThere);

// The user's preferences. References that are given out and not yet given back are counted.
struct User {
    NSString* locale = nil;
    NSString* language = nil;
    NSString* country = nil;
    id languages = nil;
    int references = 0;
    std::vector<std::string> canonicalised;
    std::string key;
    CFStringRef application = nullptr;
} user;

constexpr CFTypeID stringType = 1;
constexpr CFTypeID arrayType = 2;
constexpr CFTypeID otherType = 3;

id bridged(CFTypeRef object) {
    return reinterpret_cast<id>(const_cast<void*>(object));
}

template <typename Ref>
Ref given(id object) {
    if (object != nil)
        ++user.references;
    return reinterpret_cast<Ref>([object retain]);
}

template <typename Ref>
Ref key(const char* name) {
    return reinterpret_cast<Ref>(name);
}

} // namespace

// The services behind, made of the objects of this system's Foundation.
const CFAllocatorRef kCFAllocatorDefault = nullptr;
const CFStringRef kCFLocaleLanguageCode = key<CFStringRef>("language");
const CFStringRef kCFLocaleCountryCode = key<CFStringRef>("country");
const CFStringRef kCFPreferencesCurrentApplication = key<CFStringRef>("application");

CFTypeID CFStringGetTypeID() {
    return stringType;
}

CFTypeID CFArrayGetTypeID() {
    return arrayType;
}

CFTypeID CFGetTypeID(CFTypeRef object) {
    if ([bridged(object) isKindOfClass:[NSString class]])
        return stringType;
    return [bridged(object) isKindOfClass:[NSArray class]] ? arrayType : otherType;
}

void CFRelease(CFTypeRef object) {
    --user.references;
    [bridged(object) release];
}

CFIndex CFStringGetLength(CFStringRef string) {
    return static_cast<CFIndex>([bridged(string) length]);
}

Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex bufferSize,
                           CFStringEncoding encoding) {
    EXPECT_EQ(encoding, CFStringEncoding(kCFStringEncodingUTF8));
    return [bridged(string) getCString:buffer
                             maxLength:static_cast<NSUInteger>(bufferSize)
                              encoding:NSUTF8StringEncoding];
}

CFLocaleRef CFLocaleCopyCurrent() {
    return given<CFLocaleRef>([NSArray arrayWithObject:user.locale]);
}

CFStringRef CFLocaleGetIdentifier(CFLocaleRef locale) {
    return reinterpret_cast<CFStringRef>([bridged(locale) objectAtIndex:0]);
}

CFDictionaryRef CFLocaleCreateComponentsFromLocaleIdentifier(CFAllocatorRef,
                                                             CFStringRef identifier) {
    EXPECT_EQ(bridged(identifier), user.locale);
    return given<CFDictionaryRef>([NSMutableArray array]);
}

const void* CFDictionaryGetValue(CFDictionaryRef, const void* key) {
    return key == kCFLocaleLanguageCode ? user.language : user.country;
}

CFStringRef CFLocaleCreateCanonicalLanguageIdentifierFromString(CFAllocatorRef,
                                                                CFStringRef identifier) {
    user.canonicalised.emplace_back([bridged(identifier) UTF8String]);
    return given<CFStringRef>([bridged(identifier) stringByReplacingOccurrencesOfString:@"german"
                                                                             withString:@"de"]);
}

CFTypeRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef application) {
    user.key = [bridged(key) UTF8String];
    user.application = application;
    return given<CFTypeRef>(user.languages);
}

namespace {

using Strings = std::vector<std::string>;

Strings textsOf(const std::vector<plat::String>& locales) {
    Strings texts;
    for (const plat::String& locale : locales)
        texts.emplace_back(locale.get());
    return texts;
}

NSString* nsString(const char* text) {
    return os::nsString(text, -1);
}

struct UtilMac : testing::Test {
    UtilMac() : pool([[NSAutoreleasePool alloc] init]) {
        user = User();
        prefer("de_AT", "de", "AT");
    }
    ~UtilMac() override {
        EXPECT_EQ(user.references, 0);
        [pool release];
    }
    UtilMac(const UtilMac&) = delete;
    UtilMac& operator=(const UtilMac&) = delete;

    static void prefer(const char* locale, const char* language, const char* country) {
        user.locale = nsString(locale);
        user.language = nsString(language);
        user.country = nsString(country);
    }

    static void preferLanguages(const Strings& languages) {
        user.languages = [NSMutableArray array];
        for (const std::string& language : languages)
            [user.languages addObject:nsString(language.c_str())];
    }

    static Strings appleLocales() {
        std::vector<plat::String> locales;
        loc::getAppleLocales(&locales);
        return textsOf(locales);
    }

    NSAutoreleasePool* pool;
};

struct Row {
    const char* name;
    Strings languages;
    Strings locales;
    friend void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }
};
class PreferredLanguages : public UtilMac, public testing::WithParamInterface<Row> {};
TEST_P(PreferredLanguages, AreLocales) {
    preferLanguages(GetParam().languages);
    EXPECT_EQ(appleLocales(), GetParam().locales);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, PreferredLanguages,
    testing::Values(Row{"None", {}, {}}, Row{"Country", {"fr-CA"}, {"fr_CA"}},
                    Row{"CurrentLocalesCountry", {"de"}, {"de_AT"}},
                    Row{"UsualCountry", {"fr", "pt"}, {"fr_FR", "pt_BR"}},
                    Row{"UnknownLanguage", {"xx"}, {"xx"}},
                    Row{"ScriptIsTakenForTheCountry", {"zh-Hans"}, {"zh_Hans"}},
                    Row{"ScriptAndCountry", {"zh-Hans_CN"}, {"zh_Hans_CN"}},
                    Row{"EncodingAndModifier", {"en_GB.UTF-8", "fr_BE@euro"}, {"en_GB", "fr_BE"}},
                    Row{"Empty", {"", "fr"}, {"fr_FR"}},
                    Row{"Twice", {"fr-FR", "fr", "de-AT", "de"}, {"fr_FR", "de_AT"}},
                    Row{"CanonicalIdentifier", {"german"}, {"de_AT"}},
                    Row{"FirstFive",
                        {"en", "de", "fr", "es", "it", "nl"},
                        {"en_US", "de_AT", "fr_FR", "es_ES", "it_IT"}},
                    Row{"FiveWithDuplicates", {"en", "en", "en", "en", "en", "nl"}, {"en_US"}}),
    [](const auto& row) { return row.param.name; });

TEST_F(UtilMac, AsksForTheApplicationsPreference) {
    preferLanguages({"en", "de-CH"});
    appleLocales();
    EXPECT_EQ(user.key, "AppleLanguages");
    EXPECT_EQ(user.application, kCFPreferencesCurrentApplication);
    EXPECT_EQ(user.canonicalised, (Strings{"en", "de-CH"}));
}

TEST_F(UtilMac, EntriesThatAreNoStringsCountButAreLeftOut) {
    preferLanguages({"en", "fr", "es", "it", "nl"});
    [user.languages insertObject:[NSMutableArray array] atIndex:0];
    EXPECT_EQ(appleLocales(), (Strings{"en_US", "fr_FR", "es_ES", "it_IT"}));
}

TEST_F(UtilMac, CurrentLocaleStandsForAMissingPreference) {
    EXPECT_EQ(appleLocales(), Strings{"de_AT"});
}

TEST_F(UtilMac, CurrentLocaleStandsForAPreferenceOfAnotherKind) {
    user.languages = @"en";
    EXPECT_EQ(appleLocales(), Strings{"de_AT"});
}

TEST_F(UtilMac, CurrentLocaleWithoutACountryGetsTheUsualOne) {
    prefer("de", "de", nullptr);
    EXPECT_EQ(appleLocales(), Strings{"de_DE"});
    preferLanguages({"de"});
    EXPECT_EQ(appleLocales(), Strings{"de_DE"});
}

TEST_F(UtilMac, CurrentLocaleWithoutALanguageIsNone) {
    prefer("", nullptr, nullptr);
    EXPECT_EQ(appleLocales(), Strings{});
}

TEST_F(UtilMac, AppendsToTheList) {
    std::vector<plat::String> locales{plat::String("de_AT"), plat::String("en_US")};
    loc::getAppleLocales(&locales);
    EXPECT_EQ(textsOf(locales), (Strings{"de_AT", "en_US"}));
}

struct OsRow {
    const char* name;
    Strings languages;
    const char* libcLocale;
    int encType;
    friend void PrintTo(const OsRow& row, std::ostream* out) { *out << row.name; }
};
class OsLocale : public UtilMac, public testing::WithParamInterface<OsRow> {};
TEST_P(OsLocale, IsTheFirstThatTheSystemServes) {
    preferLanguages(GetParam().languages);
    loc::LibcLocale result;
    std::vector<plat::String> locales;
    loc::getOsLibcLocale(&result, &locales);
    EXPECT_EQ(textsOf(locales), appleLocales());
    EXPECT_STREQ(result.name.get(), GetParam().libcLocale);
    EXPECT_EQ(result.encType, GetParam().encType);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, OsLocale,
    testing::Values(OsRow{"None", {}, "C", 0}, OsRow{"Served", {"fr-FR"}, "fr_FR.UTF-8", 1},
                    OsRow{"UsualCountry", {"de-CH"}, "de_DE.UTF-8", 1},
                    OsRow{"Second", {"xx", "yy-ZZ", "es-MX"}, "es_ES.UTF-8", 1},
                    OsRow{"NoneServed", {"xx", "yy-ZZ"}, "C", 0}),
    [](const auto& row) { return row.param.name; });

// What the user interface finds under a key.
id uiSetting(NSString* key) {
    return [[[NSUserDefaults standardUserDefaults] volatileDomainForName:NSArgumentDomain]
        objectForKey:key];
}

TEST_F(UtilMac, UiLocaleIsTheFirstAndItsLanguagesHaveCountries) {
    loc::setUiLocale(
        {plat::String("de"), plat::String("de_DE"), plat::String("xx"), plat::String("en_US")});
    EXPECT_STREQ([uiSetting(@"AppleLocale") UTF8String], "de");
    NSArray* const languages = uiSetting(@"AppleLanguages");
    ASSERT_EQ([languages count], 2U);
    EXPECT_STREQ([[languages objectAtIndex:0] UTF8String], "de_DE");
    EXPECT_STREQ([[languages objectAtIndex:1] UTF8String], "en_US");
}

TEST_F(UtilMac, UiLocaleReplacesTheWholeDomain) {
    NSUserDefaults* const defaults = [NSUserDefaults standardUserDefaults];
    [defaults removeVolatileDomainForName:NSArgumentDomain];
    [defaults setVolatileDomain:[NSDictionary dictionaryWithObject:@"old" forKey:@"Other"]
                        forName:NSArgumentDomain];
    loc::setUiLocale({plat::String("fr_FR")});
    EXPECT_EQ(uiSetting(@"Other"), nil);
    loc::setUiLocale({plat::String("es_ES")});
    EXPECT_STREQ([uiSetting(@"AppleLocale") UTF8String], "es_ES");
    EXPECT_EQ([uiSetting(@"AppleLanguages") count], 1U);
}

TEST_F(UtilMac, UiLocaleWithoutCountriesHasNoLanguages) {
    loc::setUiLocale({plat::String("xx")});
    EXPECT_STREQ([uiSetting(@"AppleLocale") UTF8String], "xx");
    EXPECT_EQ([uiSetting(@"AppleLanguages") count], 0U);
}

TEST_F(UtilMac, EmptyListLeavesTheUiLocale) {
    loc::setUiLocale({plat::String("it_IT")});
    loc::setUiLocale({});
    EXPECT_STREQ([uiSetting(@"AppleLocale") UTF8String], "it_IT");
}

TEST_F(UtilMac, UiLocaleOfBrokenTextIsRepaired) {
    loc::setUiLocale({plat::String("a\xFF_B")});
    EXPECT_STREQ([uiSetting(@"AppleLocale") UTF8String], "a\xEF\xBF\xBD_B");
}

} // namespace
