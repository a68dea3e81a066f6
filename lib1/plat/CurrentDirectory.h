#pragma once

#include "plat/String.h"

namespace plat {

/// The absolute path of the current working directory, as it was at construction.
class CurrentDirectory : public String {
public:
    /// Errors: throws SystemException "getcwd".
    CurrentDirectory();
};

} // namespace plat
