#pragma once

#include "plat/StringParameter.h"

namespace plat {

/// A whole number of 64 bits, kept as the text "int64:" and 16 hexadecimal digits.
///
/// A clone is a StringParameter with the same texts.
class S64Parameter : public StringParameter {
public:
    /// Ownership: keeps the name and the description, which are not copied. A null configuration is
    /// the global one.
    S64Parameter(const char* name, const char* description, long long defaultValue,
                 bool hidden = false, Configuration* config = nullptr);
    S64Parameter(const char* name, loc::msgid_t description, long long defaultValue,
                 bool hidden = false, Configuration* config = nullptr);

    bool setParam(long long number, int priority);
    /// Takes the text that is kept, its digits in lower case, the most significant byte first; or
    /// 16 hexadecimal digits alone, of either case, the least significant byte first.
    /// Errors: false for null and other texts.
    bool setParam(const char* text, int priority) override;

    /// The number in force; 0 if a text that is none was stored by setValue().
    long long getValue() const noexcept;
};

} // namespace plat
