#include "plat/Configuration.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <list>
#include <map>

#include "loc/loc_plat.h"
#include "plat/ConfigParameter.h"
#include "plat/Exception.h"
#include "plat/LogWriter.h"
#include "plat/ParameterAlias.h"
#include "plat/ParameterIterator.h"
#include "plat/StrCaseCmp.h"
#include "plat/StringUtil.h"

// The order of these is given: titles and usage texts are there before anything can be logged.
static const AddLocStrings_plat platStrings;
static plat::LogWriter vlog("Configuration");

namespace plat {

struct Configuration::Layout {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof" // a list need not have standard layout
    static_assert(offsetof(Configuration, name) == 0);
    static_assert(offsetof(Configuration, description) == sizeof(void*));
    static_assert(offsetof(Configuration, parameters) == 2 * sizeof(void*));
    static_assert(offsetof(Configuration, children) == 3 * sizeof(void*));
    static_assert(offsetof(Configuration, ownsParameters) ==
                  3 * sizeof(void*) + sizeof(std::list<Configuration*>));
    static_assert(offsetof(Configuration, aliases) ==
                  4 * sizeof(void*) + sizeof(std::list<Configuration*>));
    // Behind what is given.
    static_assert(offsetof(Configuration, index) ==
                  offsetof(Configuration, aliases) + sizeof(Aliases));
#pragma GCC diagnostic pop
};

/// An alias that is being set, and those that led to it.
class Configuration::AliasInProgress {
public:
    AliasInProgress(const Aliases::value_type& aliasEntry, const char* aliasValue,
                    const AliasInProgress* outerAlias) noexcept
        : entry(&aliasEntry), value(aliasValue), outer(outerAlias) {}

    /// Whether an alias is being set to a value already, so that doing so again would never end.
    static bool includes(const AliasInProgress* innermost, const Aliases::value_type& aliasEntry,
                         const char* aliasValue) noexcept {
        for (; innermost != nullptr; innermost = innermost->outer) {
            if (innermost->entry == &aliasEntry && isSame(innermost->value, aliasValue))
                return true;
        }
        return false;
    }

private:
    static bool isSame(const char* a, const char* b) noexcept {
        if (a == nullptr || b == nullptr)
            return a == b;
        return std::strcmp(a, b) == 0;
    }

    const Aliases::value_type* entry;
    const char* value;
    const AliasInProgress* outer;
};

namespace {

String valueOf(const ConfigParameter* param) {
    return String::owning(param->getValueStr());
}

bool sortParamsByPriority(const ConfigParameter* a, const ConfigParameter* b) {
    const int priorityA = a->getPriority();
    const int priorityB = b->getPriority();
    if (priorityA != priorityB)
        return priorityA < priorityB;
    return strCaseCmp(a->getName(), b->getName()) < 0;
}

void logValue(const ConfigParameter* param) {
    const std::map<int, String> texts = param->getStringValues();
    const bool isPolicy = texts.contains(ConfigParameter::policyPriority);
    const bool isPreference = texts.contains(ConfigParameter::preferencePriority);
    const char* const name = param->getName();
    const auto inForce = texts.find(param->getPriority());
    const char* const value = inForce != texts.end() ? inForce->second.str() : "";
    const char* const text = param->isBinary() ? "<binary>" : value;
    if (isPolicy && isPreference)
        vlog.info("%s=%s (Policy overriding preference)", name, text);
    else if (isPolicy)
        vlog.info("%s=%s (Policy)", name, text);
    else if (isPreference)
        vlog.info("%s=%s (Preference)", name, text);
    else
        vlog.debug("%s=%s (Default)", name, text);
}

} // namespace

/// Finds parameters of a list by name, one after another: in one pass if they are asked for in the
/// order of the list.
class Configuration::MovingSearch {
public:
    explicit MovingSearch(ConfigParameter* first) noexcept : start(first) {}

    /// Null if there is none behind those that were found.
    ConfigParameter* find(const char* paramName) noexcept {
        const std::uint16_t hash = strCaseHash(paramName);
        const auto hasName = [=](const ConfigParameter* param) {
            return param->nameHash == hash && isSameCaseless(param->name, paramName);
        };
        ConfigParameter* param = start;
        while (param != nullptr && !hasName(param))
            param = param->next;
        if (param != nullptr && param == start)
            start = param->next;
        return param;
    }

private:
    ConfigParameter* start;
};

Configuration::Configuration(const char* newName, loc::msgid_t newDescription)
    : name(newName), description(newDescription) {}

// By way of the other constructor, so that the destructor runs if a clone cannot be made.
Configuration::Configuration(const Configuration& other)
    : Configuration(other.name.get(), other.description) {
    aliases = other.aliases;
    ownsParameters = true;
    for (ParameterIterator it(&other, true); it.param != nullptr; it.next()) {
        ConfigParameter* const cloned = parameters;
        try {
            it.param->clone(this);
        } catch (...) {
            // The one that could not be made is registered, but gone: nobody asks the index now.
            parameters = cloned;
            throw;
        }
    }
}

Configuration::~Configuration() {
    clear();
}

Configuration* Configuration::global() {
    // Made when the first parameter is, in whatever file that stands.
    static Configuration configuration("Global", "plat_configuration_global_params");
    return &configuration;
}

void Configuration::clear() {
    // Parameters that are not owned may be gone already, as they are at exit.
    while (ownsParameters && parameters != nullptr) {
        const ConfigParameter* const first = parameters;
        parameters = first->next;
        delete first;
    }
    parameters = nullptr;
    index.clear();
}

void Configuration::registerChild(Configuration* child, bool add) {
    if (!add)
        children.remove(child);
    else if (std::find(children.begin(), children.end(), child) == children.end())
        children.push_back(child);
}

void Configuration::addAlias(const char* aliasName, ParameterAlias* alias) {
    aliases[String(aliasName)] = alias;
}

bool Configuration::set(const char* paramName, const char* value, int priority) {
    return setByName(paramName, value, priority, nullptr);
}

bool Configuration::set(const char* paramName, int nameLen, const char* value, int priority) {
    const String copy = String::owning(strDup(paramName, nameLen));
    return set(copy.get(), value, priority);
}

bool Configuration::set(const char* arg, int priority) {
    if (arg == nullptr)
        return false;
    const char* const word = arg + (strBegins(arg, "--") ? 2 : strBegins(arg, "-") ? 1 : 0);
    const char* const equals = std::strchr(word, '=');
    if (equals != nullptr)
        return set(word, int(equals - word), equals + 1, priority);
    return word != arg && set(word, nullptr, priority);
}

ConfigParameter* Configuration::get(const char* paramName) const {
    if (ConfigParameter* const own = getOwn(paramName))
        return own;
    for (const Configuration* child : children) {
        if (ConfigParameter* const found = child->get(paramName))
            return found;
    }
    return nullptr;
}

ConfigParameter* Configuration::getOrThrow(const char* paramName) const {
    ConfigParameter* const param = get(paramName);
    if (param == nullptr)
        throw Exception(1, "Parameter %s not found", paramName != nullptr ? paramName : "");
    return param;
}

void Configuration::copyValues(const Configuration* other, bool recurse) {
    copyOwnValues(other);
    if (!recurse)
        return;
    for (Configuration* child : children)
        child->copyOwnValues(other);
}

void Configuration::merge(const Configuration* other) {
    MovingSearch search(parameters);
    for (const ConfigParameter* theirs = other->parameters; theirs != nullptr;
         theirs = theirs->next) {
        if (ConfigParameter* const ours = search.find(theirs->getName()))
            ours->setParam(valueOf(theirs).get(), theirs->getPriority());
    }
}

void Configuration::mergeDiffs(const Configuration* a, const Configuration* b) {
    for (ParameterIterator it(a, true); it.param != nullptr; it.next()) {
        const ConfigParameter* const theirs = b->get(it.param->getName());
        if (theirs == nullptr)
            continue;
        const String value = valueOf(it.param);
        if (!(valueOf(theirs) == value))
            set(it.param->getName(), value.get(), it.param->getPriority());
    }
}

bool Configuration::subset(const Configuration* other) const {
    for (ParameterIterator it(this, true); it.param != nullptr; it.next()) {
        const ConfigParameter* const theirs = other->get(it.param->getName());
        if (theirs == nullptr || !(valueOf(theirs) == valueOf(it.param)))
            return false;
    }
    return true;
}

void Configuration::canonicalize(CanonicalizeCallback* cb) {
    for (const auto& [aliasName, alias] : aliases) {
        String value;
        if (!cb->get(aliasName.str(), &value))
            continue;
        std::map<String, String, strcasecmp_t> targets;
        if (alias->handleAlias(aliasName.str(), value.get(), &targets)) {
            for (const auto& [target, text] : targets) {
                String present;
                if (!cb->get(target.str(), &present))
                    cb->set(target.str(), text.get());
            }
        }
        cb->remove(aliasName.str());
    }
}

void Configuration::logReport() const {
    std::list<const ConfigParameter*> params;
    for (ParameterIterator it(this, true); it.param != nullptr; it.next()) {
        if (!strBegins(it.param->getName(), "_"))
            params.push_back(it.param);
    }
    params.sort(sortParamsByPriority);
    for (const ConfigParameter* param : params)
        logValue(param);
}

void Configuration::add(ConfigParameter* param) {
    index.add(param, param->nameHash);
    param->next = parameters;
    parameters = param;
}

ConfigParameter* Configuration::getOwn(const char* paramName) const noexcept {
    return index.find(paramName);
}

bool Configuration::setByName(const char* paramName, const char* value, int priority,
                              const AliasInProgress* outer) {
    const auto alias = aliases.find(paramName);
    if (alias != aliases.end())
        return setAlias(*alias, paramName, value, priority, outer);
    if (ConfigParameter* const own = getOwn(paramName))
        return own->setParam(value, priority);
    return std::any_of(children.begin(), children.end(), [=](Configuration* child) {
        return child->setByName(paramName, value, priority, outer);
    });
}

bool Configuration::setAlias(const Aliases::value_type& entry, const char* paramName,
                             const char* value, int priority, const AliasInProgress* outer) {
    if (AliasInProgress::includes(outer, entry, value))
        return false;
    std::map<String, String, strcasecmp_t> targets;
    if (!entry.second->handleAlias(paramName, value, &targets))
        return false;
    const AliasInProgress current(entry, value, outer);
    bool isSet = false;
    for (const auto& [target, text] : targets)
        isSet |= setByName(target.get(), text.get(), priority, &current);
    return isSet;
}

void Configuration::copyOwnValues(const Configuration* other) {
    MovingSearch search(parameters);
    for (const ConfigParameter* theirs = other->parameters; theirs != nullptr;
         theirs = theirs->next) {
        if (ConfigParameter* const ours = search.find(theirs->getName()))
            ours->copyValues(*theirs);
    }
}

} // namespace plat
