#include "plat/BoolParameter.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "plat/LogWriter.h"
#include "plat/StrCaseCmp.h"

namespace plat {

namespace {

bool isOneOf(const char* digit, const char* const (&words)[3], const char* text) noexcept {
    return std::strcmp(text, digit) == 0 ||
           std::any_of(std::begin(words), std::end(words),
                       [text](const char* word) { return strCaseCmp(text, word) == 0; });
}

} // namespace

BoolParameter::BoolParameter(const char* name, const char* description, bool defaultValue,
                             bool hidden, Configuration* config)
    : TypedParameter(name, description, nullptr, defaultValue, hidden, config) {}

BoolParameter::BoolParameter(const char* name, loc::msgid_t description, bool defaultValue,
                             bool hidden, Configuration* config)
    : TypedParameter(name, nullptr, description, defaultValue, hidden, config) {}

BoolParameter::BoolParameter(const BoolParameter& source, Configuration* into)
    : TypedParameter(source, into) {}

bool BoolParameter::parseBool(const char* text, bool* out) noexcept {
    static constexpr const char* on[] = {"on", "true", "yes"};
    static constexpr const char* off[] = {"off", "false", "no"};
    if (text == nullptr || *text == '\0' || isOneOf("1", on, text))
        *out = true;
    else if (isOneOf("0", off, text))
        *out = false;
    else
        return false;
    return true;
}

bool BoolParameter::setParam(const char* text, int priority) {
    bool parsed = false;
    if (!parseBool(text, &parsed)) {
        log().error("Bool parameter %s: invalid value '%s'", getName(), text);
        return false;
    }
    return setValue(parsed, priority);
}

bool BoolParameter::setIntValue(int number, int priority) {
    return setValue(number != 0, priority);
}

int BoolParameter::getIntValue() const {
    return value() ? 1 : 0;
}

bool BoolParameter::isBool() const {
    return true;
}

ConfigParameter* BoolParameter::clone(Configuration* into) {
    return new BoolParameter(*this, into);
}

} // namespace plat
