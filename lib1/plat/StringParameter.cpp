#include "plat/StringParameter.h"

#include "plat/Assertion.h"
#include "plat/BadUtf8.h"
#include "plat/Utf8.h"

namespace plat {

namespace {

String requiredDefault(const char* v, const char* name) {
    LUMO_ASSERT_FATAL_MSG(v, "Default value <null> for %s not allowed", name);
    return String(v);
}

} // namespace

StringParameter::StringParameter(const char* name, const char* description,
                                 const char* defaultValue, bool hidden, Configuration* config)
    : TypedParameter(name, description, nullptr, requiredDefault(defaultValue, name), hidden,
                     config) {}

StringParameter::StringParameter(const char* name, loc::msgid_t description,
                                 const char* defaultValue, bool hidden, Configuration* config)
    : TypedParameter(name, nullptr, description, requiredDefault(defaultValue, name), hidden,
                     config) {}

StringParameter::StringParameter(const StringParameter& source, Configuration* into)
    : TypedParameter(source, into) {}

bool StringParameter::setParam(const char* text, int priority) {
    if (text == nullptr)
        return false;
    if (!isValidUtf8(text))
        throw BadUtf8(1, "Bad UTF-8 string for %s", getName());
    return setValue(String(text), priority);
}

bool StringParameter::isString() const {
    return true;
}

ConfigParameter* StringParameter::clone(Configuration* into) {
    return new StringParameter(*this, into);
}

} // namespace plat
