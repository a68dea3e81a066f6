#pragma once

#include "plat/IntParameter.h"

namespace plat {

/// One of a list of names; the number is its index in the list.
class EnumParameter : public IntParameter {
public:
    /// A default that is not in the list, in either case, stands for the first name.
    /// Ownership: keeps the name, the description and the list, a null-terminated array of names;
    /// none is copied. A null configuration is the global one.
    EnumParameter(const char* name, const char* description, const char* defaultValue,
                  const char* const* values, bool hidden = false, Configuration* config = nullptr);
    EnumParameter(const char* name, loc::msgid_t description, const char* defaultValue,
                  const char* const* values, bool hidden = false, Configuration* config = nullptr);
    ~EnumParameter() override;

    /// Counts names that were added to the end of the list since it was counted last, and sets the
    /// default.
    void init(const char* defaultValue);

    using IntParameter::setParam;
    /// Takes a name of the list, in either case. Errors: false for other texts.
    bool setParam(const char* text, int priority) override;
    /// The name in force; null if the list has none for the number.
    char* getValueStr() const override;
    std::map<int, String> getStringValues() const override;
    bool isEnum() const override;
    ConfigParameter* clone(Configuration* into) override;

protected:
    EnumParameter(const EnumParameter& source, Configuration* into);

    const char* const* names; ///< an own copy, with own texts, if the parameter owns its strings

private:
    struct Layout;

    void setDefault(const char* defaultValue);
    int indexOf(const char* text) const noexcept;
    const char* nameOf(int index) const noexcept;
};

} // namespace plat
