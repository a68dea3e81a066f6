#include "loc/LibcLocale.h"

#include <cstddef>
#include <cstring>
#include <map>
#include <mutex>
#include <string>

#include <langinfo.h>

#include "loc/GlobalLocaleSetter.h"
#include "plat/SString.h"
#include "plat/SplitterInPlace.h"
#include "plat/StringUtil.h"
#include "plat/unix/Mutex.h"

namespace loc {

static_assert(offsetof(LibcLocale, name) == 0);
static_assert(offsetof(LibcLocale, encType) == sizeof(plat::String));

namespace {

/// A name of an encoding, as it stands in names of locales.
struct EncTag {
    const char* codeset;
    int encType;
};

constexpr EncTag utf8Tags[] = {
    {"UTF-8", LibcLocale::utf8Enc},
    {"utf-8", LibcLocale::utf8Enc},
    {"UTF8", LibcLocale::utf8Enc},
    {"utf8", LibcLocale::utf8Enc},
};

constexpr EncTag latin1OrAsciiTags[] = {
    {"ISO-8859-1", LibcLocale::latin1Enc}, {"ISO8859-1", LibcLocale::latin1Enc},
    {"iso88591", LibcLocale::latin1Enc},   {"ISO-8859-15", LibcLocale::latin1Enc},
    {"ISO8859-15", LibcLocale::latin1Enc}, {"US-ASCII", LibcLocale::asciiEnc},
};

// Held while the system is asked, too: two threads that ask would put back each other's locale.
plat::Mutex cacheMutex;

std::map<plat::String, LibcLocale>& cache() {
    static std::map<plat::String, LibcLocale> found;
    return found;
}

template <std::size_t N>
bool findTagged(const EncTag (&tags)[N], const char* base, const char* modifier,
                LibcLocale* result) {
    for (const EncTag& tag : tags) {
        plat::SString<256> name;
        name.prf("%s.%s", base == nullptr ? "" : base, tag.codeset);
        if (plat::strLen(modifier) > 0)
            name.prf("@%s", modifier);
        if (GlobalLocaleSetter(name.get()).accepted() == nullptr)
            continue;
        result->name = plat::String(name.get());
        result->encType = tag.encType;
        return true;
    }
    return false;
}

/// In lower case, without the characters in which spellings differ. By ASCII alone: there are
/// locales in which other letters belong together.
std::string normalised(const char* codeset) {
    std::string plain;
    for (; *codeset != '\0'; ++codeset) {
        const bool isUpper = *codeset >= 'A' && *codeset <= 'Z';
        if (*codeset != '-' && *codeset != '_')
            plain.push_back(isUpper ? char(*codeset - 'A' + 'a') : *codeset);
    }
    return plain;
}

int encTypeOf(const std::string& codeset) {
    if (codeset == "utf8")
        return LibcLocale::utf8Enc;
    if (codeset.starts_with("iso88591"))
        return LibcLocale::latin1Enc;
    if (codeset.find("ascii") != std::string::npos || codeset == "isoir6" || codeset == "646" ||
        codeset.starts_with("iso646") || codeset.starts_with("ansix3.4"))
        return LibcLocale::asciiEnc;
    return LibcLocale::unknownEnc;
}

bool find(const char* name, LibcLocale* result) {
    plat::String base;
    plat::String rest;
    result->name = plat::String(name);
    result->encType = getEncType(name, &base, &rest);
    if (result->encType == LibcLocale::utf8Enc || findUtf8Locale(base.get(), rest.get(), result))
        return true;
    if (result->encType == LibcLocale::latin1Enc || result->encType == LibcLocale::asciiEnc)
        return true;
    return findLatin1OrAsciiLocale(base.get(), rest.get(), result);
}

} // namespace

bool findLibcLocale(const char* name, LibcLocale* result) {
    const plat::String key(name == nullptr ? "" : name);
    const std::lock_guard lock(cacheMutex);
    const auto cached = cache().find(key);
    if (cached != cache().end()) {
        *result = cached->second;
        return true;
    }
    if (!find(key.get(), result))
        return false;
    cache()[key] = *result;
    return true;
}

int getEncType(const char* name, plat::String* base, plat::String* rest) {
    plat::String codeset;
    plat::String whole(name == nullptr ? "" : name);
    bool isKnown = false;
    {
        const GlobalLocaleSetter setter(name);
        isKnown = setter.accepted() != nullptr;
        if (isKnown) {
            whole = plat::String(setter.accepted());
            // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody else sets the locale meanwhile
            codeset = plat::String(::nl_langinfo(CODESET));
        }
    }
    plat::SplitterInPlace splitter(whole.get());
    char separator = '\0';
    *base = plat::String(splitter.nextOneOf(".@", &separator));
    if (isKnown && separator == '.')
        splitter.next('@'); // the system's own word for the encoding counts, not the name's
    *rest = plat::String(splitter.next('\0'));
    return encTypeOf(normalised(codeset.str()));
}

bool findUtf8Locale(const char* base, const char* modifier, LibcLocale* result) {
    return findTagged(utf8Tags, base, modifier, result);
}

bool findLatin1OrAsciiLocale(const char* base, const char* modifier, LibcLocale* result) {
    return findTagged(latin1OrAsciiTags, base, modifier, result);
}

} // namespace loc
