#include "plat/CrashInfo.h"

namespace plat {

// A core file has no place for a text. Standard error and the log have it.
void setCrashInfo(const char* /*text*/) noexcept {}

} // namespace plat
