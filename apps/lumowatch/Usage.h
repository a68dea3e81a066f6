#pragma once

#include "plat/Configuration.h"

namespace lumowatch {

/// Prints what this program is for and what it can be told, and ends the process with success.
/// UsageXml lists the parameters for programs: name, kind and description of each.
[[noreturn]] void printUsage(plat::Configuration::UsageType type, plat::Configuration* config);

} // namespace lumowatch
