#include "plat/TypedParameter.h"

#include <cstddef>
#include <cstring>
#include <utility>

#include "plat/BinToHex.h"
#include "plat/DPrintf.h"
#include "plat/LogWriter.h"
#include "plat/StringUtil.h"

namespace plat {

namespace {

template <typename T>
bool isSame(const T& a, const T& b) noexcept {
    return a == b;
}

bool isSame(const MBuf<unsigned char>& a, const MBuf<unsigned char>& b) noexcept {
    const auto size = std::size_t(a.length());
    return a.length() == b.length() && (size == 0 || std::memcmp(a.get(), b.get(), size) == 0);
}

template <typename T>
T copyOf(const T& value) {
    return value;
}

MBuf<unsigned char> copyOf(const MBuf<unsigned char>& value) {
    MBuf<unsigned char> copy(value.isSecure());
    if (value.length() > 0) {
        const auto size = std::size_t(value.length());
        copy.replaceBuf(new unsigned char[size], value.length());
        std::memcpy(copy.get(), value.get(), size);
    }
    return copy;
}

} // namespace

template <typename T>
struct TypedParameter<T>::Layout {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof" // both compilers lay out polymorphic types so
    static_assert(offsetof(TypedParameter, values) == sizeof(ConfigParameter));
    static_assert(sizeof(TypedParameter) == sizeof(ConfigParameter) + sizeof(values));
#pragma GCC diagnostic pop
};

template <typename T>
TypedParameter<T>::TypedParameter(const char* name, const char* description,
                                  loc::msgid_t descriptionId, const T& defaultValue, bool hidden,
                                  Configuration* config)
    : ConfigParameter(name, description, descriptionId, hidden, config) {
    static_cast<void>(sizeof(Layout));
    setValue(defaultValue, defaultPriority);
}

template <typename T>
TypedParameter<T>::TypedParameter(const TypedParameter& source, Configuration* into)
    : ConfigParameter(source, into) {
    for (const auto& [priority, stored] : source.values)
        values.emplace_hint(values.end(), priority, copyOf(stored));
}

template <typename T>
bool TypedParameter<T>::setValue(const T& newValue, int priority) {
    const auto found = values.find(priority);
    if (found != values.end() && isSame(found->second, newValue))
        return true;
    values.insert_or_assign(priority, copyOf(newValue));
    if (log().isEnabled(LogWriter::debugLevel)) {
        const String text = String::owning(valueAsString(newValue));
        log().debug("set %s(%s) to %s, priority %d", getName(), getTypeName(), text.str(),
                    priority);
    }
    tellListeners(priority);
    return true;
}

template <typename T>
void TypedParameter<T>::unsetParam(int priority, bool notify) {
    if (priority == defaultPriority || values.erase(priority) == 0)
        return;
    if (notify)
        tellListeners(priority);
}

template <typename T>
char* TypedParameter<T>::getValueStr() const {
    return valueAsString(value());
}

template <typename T>
int TypedParameter<T>::getPriority() const {
    return values.begin()->first;
}

template <typename T>
std::map<int, String> TypedParameter<T>::getStringValues() const {
    std::map<int, String> texts;
    for (const auto& [priority, stored] : values)
        texts.emplace_hint(texts.end(), priority, String::owning(valueAsString(stored)));
    return texts;
}

template <>
char* TypedParameter<bool>::valueAsString(const bool& value) {
    return strDup(value ? "1" : "0");
}

template <>
char* TypedParameter<int>::valueAsString(const int& value) {
    return DPrintf("%d", value).takeBuf();
}

template <>
char* TypedParameter<String>::valueAsString(const String& value) {
    return strDup(value.get());
}

template <>
char* TypedParameter<MBuf<unsigned char>>::valueAsString(const MBuf<unsigned char>& value) {
    return binToHexStr(value.view()).takeBuf();
}

template <>
const char* TypedParameter<bool>::getTypeName() noexcept {
    return "Bool";
}

template <>
const char* TypedParameter<int>::getTypeName() noexcept {
    return "Int";
}

template <>
const char* TypedParameter<String>::getTypeName() noexcept {
    return "String";
}

template <>
const char* TypedParameter<MBuf<unsigned char>>::getTypeName() noexcept {
    return "Binary";
}

template class TypedParameter<bool>;
template class TypedParameter<int>;
template class TypedParameter<String>;
template class TypedParameter<MBuf<unsigned char>>;

} // namespace plat
