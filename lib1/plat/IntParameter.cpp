#include "plat/IntParameter.h"

#include <cstddef>

#include "plat/StringUtil.h"

namespace plat {

struct IntParameter::Layout {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof" // both compilers lay out polymorphic types so
    static_assert(offsetof(IntParameter, min) == sizeof(TypedParameter<int>));
    static_assert(offsetof(IntParameter, max) == sizeof(TypedParameter<int>) + sizeof(int));
#pragma GCC diagnostic pop
};

IntParameter::IntParameter(const char* name, const char* description, int defaultValue, bool hidden,
                           Configuration* config, int newMin, int newMax)
    : TypedParameter(name, description, nullptr, defaultValue, hidden, config), min(newMin),
      max(newMax) {}

IntParameter::IntParameter(const char* name, loc::msgid_t description, int defaultValue,
                           bool hidden, Configuration* config, int newMin, int newMax)
    : TypedParameter(name, nullptr, description, defaultValue, hidden, config), min(newMin),
      max(newMax) {}

IntParameter::IntParameter(const IntParameter& source, Configuration* into)
    : TypedParameter(source, into), min(source.min), max(source.max) {}

bool IntParameter::setParam(int number, int priority) {
    return setIntValue(number, priority);
}

bool IntParameter::setParam(const char* text, int priority) {
    int number = 0;
    return strToInt(&number, text, 0) && setIntValue(number, priority);
}

bool IntParameter::setIntValue(int number, int priority) {
    return number >= min && number <= max && setValue(number, priority);
}

int IntParameter::getIntValue() const {
    return value();
}

bool IntParameter::isInt() const {
    return true;
}

ConfigParameter* IntParameter::clone(Configuration* into) {
    return new IntParameter(*this, into);
}

} // namespace plat
