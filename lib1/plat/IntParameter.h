#pragma once

#include <limits>

#include "plat/TypedParameter.h"

namespace plat {

/// A whole number within bounds, which are both inclusive.
class IntParameter : public TypedParameter<int> {
public:
    static constexpr int lowest = std::numeric_limits<int>::min();
    static constexpr int highest = std::numeric_limits<int>::max();

    /// The default need not lie within the bounds.
    /// Ownership: keeps both texts, which are not copied. A null configuration is the global one.
    IntParameter(const char* name, const char* description, int defaultValue, bool hidden = false,
                 Configuration* config = nullptr, int min = lowest, int max = highest);
    IntParameter(const char* name, loc::msgid_t description, int defaultValue, bool hidden = false,
                 Configuration* config = nullptr, int min = lowest, int max = highest);

    /// Errors: false for a number that is out of bounds.
    bool setParam(int number, int priority);
    /// Takes a number as strToInt() reads it with base 0: decimal, "0x" hexadecimal or "0" octal,
    /// with an optional sign. Errors: false for other texts, and for a number out of bounds.
    bool setParam(const char* text, int priority) override;
    bool setIntValue(int number, int priority) override;
    int getIntValue() const override;
    bool isInt() const override;
    ConfigParameter* clone(Configuration* into) override;

protected:
    IntParameter(const IntParameter& source, Configuration* into);

    int min;
    int max;

private:
    struct Layout;
};

} // namespace plat
