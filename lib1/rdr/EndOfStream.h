#pragma once

#include "plat/Exception.h"

namespace rdr {

/// A stream has no more data.
class EndOfStream : public plat::Exception {
public:
    EndOfStream() noexcept : Exception("End of stream") { typeName.append("EndOfStream"); }
};

} // namespace rdr
