#pragma once

#include "plat/BoolParameter.h"
#include "plat/EnumParameter.h"
#include "plat/IntParameter.h"
#include "plat/StringParameter.h"

namespace lumowatch {

// What this program can be told, on its command line and nowhere else. The parameters are in the
// global configuration, beside those of the library: "Log" and "Locale".

extern plat::IntParameter displayParam;       ///< the display's identifier; 0: the main one
extern plat::BoolParameter listDisplaysParam; ///< print the displays, watch none
extern plat::IntParameter secondsParam;       ///< how long to watch; 0: until interrupted
extern plat::IntParameter grabsParam;         ///< how many grabs to stop after; 0: no limit
extern plat::StringParameter pngParam;        ///< an existing folder for pictures; empty: none
extern plat::EnumParameter eventsParam;       ///< how events are printed: an EventFormat
extern plat::StringParameter logDirParam;     ///< where the log destination "file" writes
extern plat::StringParameter logFileParam;

/// The numbers of eventsParam.
enum class EventFormat { Text, Json, None };

} // namespace lumowatch
