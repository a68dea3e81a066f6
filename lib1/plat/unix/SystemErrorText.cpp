// Two functions are called strerror_r. Only the one of POSIX writes into the array in every case
// and tells whether it knows the number; compilers for Linux choose the other one unless told so
// before the first header.
#undef _GNU_SOURCE
#define _POSIX_C_SOURCE 200809L

#include <string.h>

#include "plat/SystemErrorText.h"

namespace plat {

bool systemErrorText(int err, char* out, std::size_t room) noexcept {
    return ::strerror_r(err, out, room) == 0;
}

} // namespace plat
