#pragma once

#include "plat/TypedParameter.h"

namespace plat {

/// A parameter that is on or off.
class BoolParameter : public TypedParameter<bool> {
public:
    /// Ownership: keeps both texts, which are not copied. A null configuration is the global one.
    BoolParameter(const char* name, const char* description, bool defaultValue, bool hidden = false,
                  Configuration* config = nullptr);
    BoolParameter(const char* name, loc::msgid_t description, bool defaultValue,
                  bool hidden = false, Configuration* config = nullptr);

    /// Reads "1", "on", "true", "yes", "0", "off", "false" or "no", the words in either case. No
    /// text means on. Errors: false for anything else, which leaves `*out`.
    static bool parseBool(const char* text, bool* out) noexcept;

    /// Takes what parseBool() does. Errors: false, and a line in the log.
    bool setParam(const char* text, int priority) override;
    /// Any number but 0 is on.
    bool setIntValue(int value, int priority) override;
    int getIntValue() const override;
    bool isBool() const override;
    ConfigParameter* clone(Configuration* into) override;

protected:
    BoolParameter(const BoolParameter& source, Configuration* into);
};

} // namespace plat
