#pragma once

#include <map>

#include "plat/Buf.h"
#include "plat/ConfigParameter.h"
#include "plat/String.h"

namespace plat {

/// What parameters have in common that hold values of one type: all but how a text is read.
///
/// There are four: of bool, int, String and MBuf<unsigned char>.
template <typename T>
class TypedParameter : public ConfigParameter {
public:
    /// Stores a copy of a value, logs that, and tells the listeners. A value that is there already
    /// at that priority is neither logged nor told. The result is always true.
    bool setValue(const T& value, int priority);

    /// The value in force. Ownership: the parameter's, valid until its next change.
    const T& value() const noexcept { return values.begin()->second; }

    void unsetParam(int priority, bool notify) override;
    char* getValueStr() const override;
    int getPriority() const override;
    std::map<int, String> getStringValues() const override;

    /// The text of a value. Ownership: the caller frees the array with delete[].
    static char* valueAsString(const T& value);
    /// How the type is called in logs.
    static const char* getTypeName() noexcept;

protected:
    TypedParameter(const char* name, const char* description, loc::msgid_t descriptionId,
                   const T& defaultValue, bool hidden, Configuration* config);
    TypedParameter(const TypedParameter& source, Configuration* into);

    /// By priority; never empty, since the default stays.
    std::map<int, T> values;

private:
    struct Layout;
};

template <>
char* TypedParameter<bool>::valueAsString(const bool& value);
template <>
char* TypedParameter<int>::valueAsString(const int& value);
template <>
char* TypedParameter<String>::valueAsString(const String& value);
template <>
char* TypedParameter<MBuf<unsigned char>>::valueAsString(const MBuf<unsigned char>& value);

template <>
const char* TypedParameter<bool>::getTypeName() noexcept;
template <>
const char* TypedParameter<int>::getTypeName() noexcept;
template <>
const char* TypedParameter<String>::getTypeName() noexcept;
template <>
const char* TypedParameter<MBuf<unsigned char>>::getTypeName() noexcept;

extern template class TypedParameter<bool>;
extern template class TypedParameter<int>;
extern template class TypedParameter<String>;
extern template class TypedParameter<MBuf<unsigned char>>;

} // namespace plat
