#include "plat/CrashInfo.h"

// The crash reporter finds the text by this name, in every image of the process. The linker must
// not drop it although nothing reads it.
extern "C" {
__attribute__((used, visibility("hidden"))) const char* __crashreporter_info__ = nullptr;
}
asm(".desc ___crashreporter_info__, 0x10");

namespace plat {

void setCrashInfo(const char* text) noexcept {
    __crashreporter_info__ = text;
}

} // namespace plat
