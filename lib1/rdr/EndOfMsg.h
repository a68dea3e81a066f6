#pragma once

#include "plat/Exception.h"

namespace rdr {

/// A stream has reached the end of a message.
class EndOfMsg : public plat::Exception {
public:
    EndOfMsg() noexcept : Exception("End of message") { typeName.append("EndOfMsg"); }
};

} // namespace rdr
