#pragma once

#include "plat/Exception.h"

namespace rdr {

/// A stream has no data now, and may have some later.
class BlockException : public plat::Exception {
public:
    BlockException() noexcept : Exception("Reading from InStream would block") {
        typeName.append("BlockException");
    }
};

} // namespace rdr
