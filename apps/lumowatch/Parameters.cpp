#include "lumowatch/Parameters.h"

#include <limits>

namespace lumowatch {
namespace {

constexpr int longestSeconds = std::numeric_limits<int>::max() / 1000; // timers count milliseconds
constexpr int noLimit = std::numeric_limits<int>::max();

const char* const eventFormats[] = {"text", "json", "none", nullptr};

} // namespace

plat::IntParameter displayParam("Display", loc::msgid_t("lumowatch_param_display"), 0, false,
                                nullptr, 0);
plat::BoolParameter listDisplaysParam("ListDisplays", loc::msgid_t("lumowatch_param_listdisplays"),
                                      false);
plat::IntParameter secondsParam("Seconds", loc::msgid_t("lumowatch_param_seconds"), 0, false,
                                nullptr, 0, longestSeconds);
plat::IntParameter grabsParam("Grabs", loc::msgid_t("lumowatch_param_grabs"), 0, false, nullptr, 0,
                              noLimit);
plat::StringParameter pngParam("Png", loc::msgid_t("lumowatch_param_png"), "");
plat::EnumParameter eventsParam("Events", loc::msgid_t("lumowatch_param_events"), "text",
                                eventFormats);
plat::StringParameter logDirParam("LogDir", loc::msgid_t("plat_param_logdir"), ".");
plat::StringParameter logFileParam("LogFile", loc::msgid_t("plat_param_logfile"), "lumowatch.log");

} // namespace lumowatch
