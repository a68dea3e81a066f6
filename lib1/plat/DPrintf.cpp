#include "plat/DPrintf.h"

namespace plat {

DPrintf::DPrintf(const char* format, ...) {
    va_list args;
    va_start(args, format);
    vprf(format, args);
    va_end(args);
}

} // namespace plat
