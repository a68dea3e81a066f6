#pragma once

#include <map>
#include <vector>

#include "loc/MsgId.h"
#include "plat/String.h"
#include "plat/StringCopyOpt.h"

namespace loc {

class Translation;
struct PluralRule;

/// The texts that win for an ordered list of locales: what one thread, or the process, looks texts
/// up in. `Localize` owns the texts and fills maps with them.
/// Shape: maps of a thread are a stack; a new one is the thread's current map until it is gone.
/// Threads: used on the thread that made it, the process map on all; callers hold the manager's
/// lock.
class TransMap {
public:
    /// Starts empty, as the calling thread's current map.
    TransMap();
    TransMap(const TransMap&) = delete;
    TransMap& operator=(const TransMap&) = delete;
    /// Makes the map before this one the current map again.
    /// Errors: asserts that this is the calling thread's current map, unless it is the process map:
    /// exit destroys that one whatever scope it comes from.
    ~TransMap();

    /// The text of exactly that id, or null.
    const Translation* get(msgid_t msgid) const;

    /// The text of the plural form that fits a count, or null. Only locales count that have all the
    /// forms which counts from min to max need.
    const Translation* getPlural(msgid_t msgid, int count, int min, int max) const;

    /// Whether every form is there that a rule needs for counts from min to max.
    bool checkForAllPluralForms(const PluralRule* rule, msgid_t msgid, int min, int max) const;

    /// The map of the process. The first call makes it, as the calling thread's current map.
    static TransMap* getProcessInst();
    /// The calling thread's current map, else the map of the process.
    static TransMap* getThreadInst();

private:
    friend class Localize; // it fills the map
    friend struct TransMapLayout;

    explicit TransMap(TransMap* previousMap);
    const Translation* find(const char* id) const;

    TransMap* previous;
    std::map<plat::StringCopyOpt, const Translation*> translations;
    std::vector<plat::String> locales; ///< most preferred first
};

} // namespace loc
