#include "loc/TransMap.h"

#include <algorithm>
#include <cstddef>

#include "loc/PluralRule.h"
#include "loc/TextCache.h"
#include "plat/Assertion.h"
#include "plat/SString.h"
#include "plat/unix/ThreadLocalPtr.h"

namespace loc {

/// Sees the private members.
struct TransMapLayout {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof" // both compilers lay the containers out so
    static_assert(offsetof(TransMap, previous) == 0);
    static_assert(offsetof(TransMap, translations) == sizeof(void*));
    static_assert(offsetof(TransMap, locales) ==
                  sizeof(void*) + sizeof(std::map<plat::StringCopyOpt, const Translation*>));
#pragma GCC diagnostic pop
};

// The process map; null before it is made.
static constinit const TransMap* processInst = nullptr;

namespace {

// Not at file level: made before the process map is, it outlives that one.
plat::ThreadLocalPtr<TransMap>& currentMap() noexcept {
    static plat::ThreadLocalPtr<TransMap> slot;
    return slot;
}

/// The thread's current map, after the process map was made: made later, that one would come to lie
/// on top of a map in use.
TransMap* currentBesideProcessInst() {
    TransMap::getProcessInst();
    return currentMap().get();
}

} // namespace

TransMap::TransMap() : TransMap(currentBesideProcessInst()) {}

TransMap::TransMap(TransMap* previousMap) : previous(previousMap) {
    currentMap().set(this);
    TextCache::renew(); // there may have been another map here
}

TransMap::~TransMap() {
    TransMap* const thrInst = currentMap().get();
    if (this != processInst)
        LUMO_ASSERT_FATAL(thrInst == this);
    if (thrInst == this)
        currentMap().set(previous);
}

const Translation* TransMap::get(msgid_t msgid) const {
    return find(msgid.str());
}

const Translation* TransMap::getPlural(msgid_t msgid, int count, int min, int max) const {
    for (const plat::String& locale : locales) {
        const PluralRule* const rule = getRuleForLocale(locale.get());
        if (!checkForAllPluralForms(rule, msgid, min, max))
            continue;
        plat::SString<256> id;
        id.prf("%s_%s", msgid.str() == nullptr ? "" : msgid.str(), rule->suffix(count));
        if (const Translation* const translation = find(id.get()))
            return translation;
    }
    return nullptr;
}

bool TransMap::checkForAllPluralForms(const PluralRule* rule, msgid_t msgid, int min,
                                      int max) const {
    std::vector<plat::SString<256>> ids;
    rule->forms(msgid, min, max, &ids);
    return std::all_of(ids.begin(), ids.end(),
                       [this](const auto& id) { return find(id.get()) != nullptr; });
}

TransMap* TransMap::getProcessInst() {
    static TransMap map(currentMap().get());
    [[maybe_unused]] static const bool isKnown = (processInst = &map, true);
    return &map;
}

TransMap* TransMap::getThreadInst() {
    TransMap* const map = currentMap().get();
    return map == nullptr ? getProcessInst() : map;
}

const Translation* TransMap::find(const char* id) const {
    const auto found = translations.find(plat::StringCopyOpt(id, false));
    return found == translations.end() ? nullptr : found->second;
}

} // namespace loc
