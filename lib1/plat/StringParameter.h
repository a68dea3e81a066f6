#pragma once

#include "plat/TypedParameter.h"

namespace plat {

/// A text in UTF-8.
class StringParameter : public TypedParameter<String> {
public:
    /// The default is copied, and must not be null: that asserts.
    /// Ownership: keeps the name and the description, which are not copied. A null configuration is
    /// the global one.
    StringParameter(const char* name, const char* description, const char* defaultValue,
                    bool hidden = false, Configuration* config = nullptr);
    StringParameter(const char* name, loc::msgid_t description, const char* defaultValue,
                    bool hidden = false, Configuration* config = nullptr);

    /// Errors: false for null; throws BadUtf8 for what is no UTF-8.
    bool setParam(const char* text, int priority) override;
    bool isString() const override;
    ConfigParameter* clone(Configuration* into) override;

protected:
    StringParameter(const StringParameter& source, Configuration* into);
};

} // namespace plat
