#include "lumowatch/Arguments.h"

#include <charconv>
#include <cmath>
#include <cstring>

namespace lumowatch {
namespace {

constexpr double mostSeconds = 1e9;

bool parseSeconds(const char* text, double* seconds) {
    const char* end = text + std::strlen(text);
    const auto result = std::from_chars(text, end, *seconds, std::chars_format::fixed);
    return result.ec == std::errc() && result.ptr == end && *seconds >= 0 &&
           *seconds <= mostSeconds;
}

} // namespace

const char* const usage =
    "usage: lumowatch [SECONDS [PNG-FOLDER]]\n"
    "Watches the main display and prints what changes and moves, one event a line.\n"
    "  SECONDS      how long; 0 or nothing: until interrupted (Ctrl-C)\n"
    "  PNG-FOLDER   an existing folder; each grabbed picture is written there\n"
    "Exit code: 0 fine, 1 bad arguments, 2 no display or no library.\n"
    "Environment: DISPLAY names the X server, LUMO_LIBRARY the capture library.\n";

bool Arguments::parse(int argc, const char* const* argv, std::string* error) {
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--help") == 0 || std::strcmp(argv[i], "-help") == 0 ||
            std::strcmp(argv[i], "-h") == 0)
            isHelp = true;
    }
    if (isHelp)
        return true;
    if (argc > 3) {
        *error = "too many arguments";
        return false;
    }
    if (argc > 1 && !parseSeconds(argv[1], &seconds)) {
        *error = std::string("not a number of seconds: '") + argv[1] + "'";
        return false;
    }
    if (argc > 2)
        pngFolder = argv[2];
    return true;
}

} // namespace lumowatch
