#include "plat/ParameterAlias.h"

#include <cstddef>

#include "plat/ConfigParameter.h"
#include "plat/Configuration.h"
#include "plat/StringUtil.h"

namespace plat {

struct ParameterAlias::Layout {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof" // both compilers lay out polymorphic types so
    static_assert(offsetof(ParameterAlias, names) == sizeof(void*));
#pragma GCC diagnostic pop
};

// By way of the other constructor, so that the destructor runs if the registration throws.
ParameterAlias::ParameterAlias(const char* aliasName, ConfigParameter* target,
                               Configuration* config)
    : ParameterAlias(target->getName(), static_cast<const char*>(nullptr), nullptr) {
    (config != nullptr ? config : Configuration::global())->addAlias(aliasName, this);
}

ParameterAlias::ParameterAlias(const char* target1, const char* target2, const char* target3) {
    names.reserve(3);
    for (const char* target : {target1, target2, target3}) {
        if (target != nullptr)
            addName(target);
    }
}

ParameterAlias::~ParameterAlias() {
    for (const char* name : names)
        delete[] name;
}

bool ParameterAlias::handleAlias(const char*, const char* value,
                                 std::map<String, String, strcasecmp_t>* targets) {
    for (const char* name : names)
        (*targets)[String(name)] = String(value);
    return true;
}

void ParameterAlias::addName(const char* name) {
    names.push_back(nullptr);
    names.back() = strDup(name);
}

} // namespace plat
