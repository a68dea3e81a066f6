#include "platform/linux/x11/DisplayScale.h"

#include <cstdlib>

namespace platform::x11 {

int displayScale() noexcept {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): a host that changes its environment does so early
    const char* text = std::getenv("GDK_SCALE");
    const bool isServed = text != nullptr && text[0] >= '1' && text[0] <= '4' && text[1] == '\0';
    return isServed ? text[0] - '0' : 1;
}

} // namespace platform::x11
