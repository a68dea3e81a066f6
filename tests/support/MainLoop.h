#pragma once

#include <glib.h>

namespace support {

/// Only a fault takes this long. Units: microseconds.
constexpr gint64 patienceMicros = 20'000'000;

/// Serves what waits in the main loop now.
inline void serveWhatIsThere() {
    while (g_main_context_iteration(nullptr, FALSE)) {
    }
}

/// Serves the main loop until the condition holds; false when it still does not after a long time.
template <typename Condition>
bool serveMainLoopUntil(const Condition& isDone) {
    const gint64 deadline = g_get_monotonic_time() + patienceMicros;
    while (!isDone()) {
        if (g_get_monotonic_time() > deadline)
            return false;
        if (!g_main_context_iteration(nullptr, FALSE))
            g_usleep(200);
    }
    return true;
}

} // namespace support
