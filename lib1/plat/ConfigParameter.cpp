#include "plat/ConfigParameter.h"

#include <cstddef>

#include "loc/Localize.h"
#include "plat/Configuration.h"
#include "plat/LogWriter.h"
#include "plat/StrCaseCmp.h"

static plat::LogWriter vlog("ConfigParameter");

namespace plat {

struct ConfigParameter::Layout {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof" // both compilers lay out polymorphic types so
    static_assert(offsetof(ConfigParameter, next) == sizeof(void*));
    static_assert(offsetof(ConfigParameter, name) == 2 * sizeof(void*));
    static_assert(offsetof(ConfigParameter, description) == 3 * sizeof(void*));
    static_assert(offsetof(ConfigParameter, descriptionId) == 4 * sizeof(void*));
    static_assert(offsetof(ConfigParameter, hidden) == 5 * sizeof(void*));
    static_assert(offsetof(ConfigParameter, ownsStrings) == 5 * sizeof(void*) + 1);
    // In what would be padding.
    static_assert(offsetof(ConfigParameter, nameHash) == 5 * sizeof(void*) + 2);
    static_assert(offsetof(ConfigParameter, callbacks) == 6 * sizeof(void*));
#pragma GCC diagnostic pop
};

ConfigParameter::ConfigParameter(const char* newName, const char* newDescription,
                                 loc::msgid_t newDescriptionId, bool isHidden,
                                 Configuration* config)
    : name(newName), description(newDescription), descriptionId(newDescriptionId), hidden(isHidden),
      nameHash(strCaseHash(newName)) {
    (config != nullptr ? config : Configuration::global())->add(this);
}

ConfigParameter::ConfigParameter(const ConfigParameter& source, Configuration* into)
    : name(source.name), description(source.description), descriptionId(source.descriptionId),
      hidden(source.hidden), ownsStrings(source.ownsStrings), nameHash(source.nameHash) {
    String ownName;
    String ownDescription;
    if (ownsStrings) {
        ownName = String(name);
        ownDescription = String(description);
    }
    into->add(this);
    if (ownsStrings) {
        name = ownName.takeBuf();
        description = ownDescription.takeBuf();
    }
}

ConfigParameter::~ConfigParameter() {
    if (!ownsStrings)
        return;
    delete[] name;
    delete[] description;
}

bool ConfigParameter::setIntValue(int, int) {
    return false;
}

int ConfigParameter::getIntValue() const {
    return 0;
}

bool ConfigParameter::isBool() const {
    return false;
}

bool ConfigParameter::isInt() const {
    return false;
}

bool ConfigParameter::isString() const {
    return false;
}

bool ConfigParameter::isEnum() const {
    return false;
}

bool ConfigParameter::isBinary() const {
    return false;
}

void ConfigParameter::resetToDefault() {
    unsetParam(preferencePriority, false);
    unsetParam(policyPriority, false);
}

void ConfigParameter::notifyResetToDefault() {
    if (getPriority() == defaultPriority)
        tellListeners(defaultPriority);
}

void ConfigParameter::copyValues(const ConfigParameter& other) {
    if (&other == this)
        return;
    for (const auto& [priority, text] : getStringValues())
        unsetParam(priority, true);
    for (const auto& [priority, text] : other.getStringValues())
        setParam(text.get(), priority);
}

const char* ConfigParameter::getDescription() const {
    if (description != nullptr)
        return description;
    return descriptionId.str() != nullptr ? LUMO_LOCALIZE(descriptionId) : "";
}

void ConfigParameter::tellListeners(int priority) {
    for (ParameterChangedCallback* callback : callbacks)
        callback->parameterChanged(this, priority);
}

const LogWriter& ConfigParameter::log() noexcept {
    return vlog;
}

} // namespace plat
