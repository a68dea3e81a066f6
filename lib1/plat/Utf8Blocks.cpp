#include "plat/Utf8Blocks.h"

#include "plat/AsciiRun.h"

#if defined(__x86_64__) || defined(__i386__) // decided for each architecture of a universal build

#include "plat/x86/Cpu.h"
#include "plat/x86/Utf8Avx2.h"

namespace plat {

const char* skipValidUtf8(const char* begin, const char* end) noexcept {
    return cpuFeatures().avx2 ? skipValidUtf8Avx2(begin, end) : skipPlain(begin, end);
}

const char* skipPlainBlocks(const char* begin, const char* end) noexcept {
    return cpuFeatures().avx2 ? skipPlainAvx2(begin, end) : skipPlain(begin, end);
}

} // namespace plat

#else

namespace plat {

const char* skipValidUtf8(const char* begin, const char* end) noexcept {
    return skipPlain(begin, end);
}

const char* skipPlainBlocks(const char* begin, const char* end) noexcept {
    return skipPlain(begin, end);
}

} // namespace plat

#endif
