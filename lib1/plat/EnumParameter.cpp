#include "plat/EnumParameter.h"

#include <algorithm>
#include <cstddef>
#include <memory>

#include "plat/StrCaseCmp.h"
#include "plat/StringUtil.h"

namespace plat {

struct EnumParameter::Layout {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof" // both compilers lay out polymorphic types so
    static_assert(offsetof(EnumParameter, names) == sizeof(IntParameter));
    static_assert(sizeof(EnumParameter) == sizeof(IntParameter) + sizeof(void*));
#pragma GCC diagnostic pop
};

namespace {

/// The number of names in a list, the first `known` of which need not be looked at.
int countNames(const char* const* names, int known = 0) noexcept {
    if (names == nullptr)
        return 0;
    while (names[known] != nullptr)
        ++known;
    return known;
}

void freeNames(const char* const* names) noexcept {
    for (const char* const* name = names; name != nullptr && *name != nullptr; ++name)
        delete[] *name;
    delete[] names;
}

const char* const* copyNames(const char* const* names) {
    const auto count = std::size_t(countNames(names));
    // Null from the start: a copy that fails half-way is freed up to there.
    std::unique_ptr<const char*[], void (*)(const char* const*)> copy(
        new const char* [count + 1] {}, freeNames);
    for (std::size_t i = 0; i < count; ++i)
        copy[i] = strDup(names[i]);
    return copy.release();
}

} // namespace

EnumParameter::EnumParameter(const char* name, const char* description, const char* defaultValue,
                             const char* const* values, bool hidden, Configuration* config)
    : IntParameter(name, description, 0, hidden, config, 0, countNames(values) - 1), names(values) {
    setDefault(defaultValue);
}

EnumParameter::EnumParameter(const char* name, loc::msgid_t description, const char* defaultValue,
                             const char* const* values, bool hidden, Configuration* config)
    : IntParameter(name, description, 0, hidden, config, 0, countNames(values) - 1), names(values) {
    setDefault(defaultValue);
}

EnumParameter::EnumParameter(const EnumParameter& source, Configuration* into)
    : IntParameter(source, into), names(ownsStrings ? copyNames(source.names) : source.names) {}

EnumParameter::~EnumParameter() {
    if (ownsStrings)
        freeNames(names);
}

void EnumParameter::init(const char* defaultValue) {
    max = countNames(names, std::max(max, 0)) - 1;
    setParam(defaultValue, defaultPriority);
}

bool EnumParameter::setParam(const char* text, int priority) {
    const int index = indexOf(text);
    return index >= 0 && setIntValue(index, priority);
}

char* EnumParameter::getValueStr() const {
    return strDup(nameOf(value()));
}

std::map<int, String> EnumParameter::getStringValues() const {
    std::map<int, String> texts;
    for (const auto& [priority, index] : values)
        texts.emplace_hint(texts.end(), priority, String(nameOf(index)));
    return texts;
}

bool EnumParameter::isEnum() const {
    return true;
}

ConfigParameter* EnumParameter::clone(Configuration* into) {
    return new EnumParameter(*this, into);
}

void EnumParameter::setDefault(const char* defaultValue) {
    const int index = indexOf(defaultValue);
    if (index >= 0)
        setValue(index, defaultPriority);
}

/// The first place of a name in the list, or -1.
int EnumParameter::indexOf(const char* text) const noexcept {
    if (text == nullptr || names == nullptr)
        return -1;
    for (int i = 0; names[i] != nullptr; ++i) {
        if (strCaseCmp(names[i], text) == 0)
            return i;
    }
    return -1;
}

/// Null for what is no index: a number can be stored without asking for the bounds.
const char* EnumParameter::nameOf(int index) const noexcept {
    return index >= 0 && index <= max ? names[index] : nullptr;
}

} // namespace plat
