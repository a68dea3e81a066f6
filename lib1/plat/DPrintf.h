#pragma once

#include "plat/DString.h"

namespace plat {

/// A DString made from a format, of any length.
class DPrintf : public DString {
public:
    [[gnu::format(printf, 2, 3)]]
    explicit DPrintf(const char* format, ...);
};

} // namespace plat
