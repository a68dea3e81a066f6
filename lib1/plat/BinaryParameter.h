#pragma once

#include "plat/TypedParameter.h"

namespace plat {

/// A sequence of bytes. Their text is hexadecimal.
class BinaryParameter : public TypedParameter<MBuf<unsigned char>> {
public:
    /// The default is copied; note that the configuration stands before `hidden` here.
    /// Ownership: keeps the name and the description, which are not copied. A null configuration is
    /// the global one.
    BinaryParameter(const char* name, const char* description, CBuf<unsigned char> defaultValue,
                    Configuration* config = nullptr, bool hidden = false);
    BinaryParameter(const char* name, loc::msgid_t description, CBuf<unsigned char> defaultValue,
                    Configuration* config = nullptr, bool hidden = false);

    /// Stores a copy of the bytes.
    void setParam(CBuf<unsigned char> bytes, int priority);
    /// Takes pairs of hexadecimal digits, of either case. Errors: false for null and other texts.
    bool setParam(const char* text, int priority) override;
    bool isBinary() const override;
    ConfigParameter* clone(Configuration* into) override;
    /// Puts a copy of the bytes in force into a buffer, in place of what it held.
    virtual void getData(MBuf<unsigned char>* out) const;

    /// The number of bytes in force.
    int getLength() const noexcept { return value().length(); }

protected:
    BinaryParameter(const BinaryParameter& source, Configuration* into);
};

} // namespace plat
