#include "plat/BadUtf8.h"

namespace plat {

BadUtf8::BadUtf8(int, const char* format, ...) noexcept {
    va_list args;
    va_start(args, format);
    message.vprf(format, args);
    va_end(args);
}

} // namespace plat
