#pragma once

#include "plat/Exception.h"

namespace rdr {

/// A string or a line is longer than its reader takes.
class StringTooLongException : public plat::Exception {
public:
    StringTooLongException() noexcept : Exception("String exceeds maximum length") {
        typeName.append("StringTooLongException");
    }
};

} // namespace rdr
