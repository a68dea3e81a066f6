#pragma once

#include "plat/Exception.h"

namespace rdr {

/// A stream has reached its maximum length.
class OutStreamFull : public plat::Exception {
public:
    OutStreamFull() noexcept : Exception("OutStream full") { typeName.append("OutStreamFull"); }
};

} // namespace rdr
