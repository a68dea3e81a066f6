// lumowatch: watches a display through the capture library and prints what it is told.

#include "lumowatch/CaptureLibrary.h"
#include "lumowatch/DisplayChoice.h"
#include "lumowatch/DisplayWatcher.h"
#include "lumowatch/EventPrinter.h"
#include "lumowatch/FileLogger.h"
#include "lumowatch/Parameters.h"
#include "lumowatch/StderrLogger.h"
#include "lumowatch/Texts.h"
#include "lumowatch/Usage.h"
#include "plat/Configuration.h"
#include "plat/Exception.h"
#include "plat/LogWriter.h"

#include <glib-unix.h>

#include <csignal>
#include <filesystem>
#include <memory>
#include <sys/signalfd.h>
#include <unistd.h>

namespace {

using namespace lumowatch;

enum ExitCode { Fine = 0, BadArguments = 1, NoDisplay = 2 };

constexpr const char* errorsOnly = "*:stderr:0";

StderrLogger stderrLogger;
FileLogger fileLogger;

int fail(ExitCode code, const std::string& why) {
    std::fprintf(stderr, "lumowatch: %s\n", why.c_str());
    return code;
}

/// A descriptor that becomes readable when somebody wants this program to end. The signals are
/// blocked in every thread that starts later, too.
int endSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
}

gboolean quit(gpointer loop) {
    g_main_loop_quit(static_cast<GMainLoop*>(loop));
    return G_SOURCE_REMOVE;
}

void quitWhenAsked(GMainLoop* loop, int seconds) {
    const auto onSignal = [](gint, GIOCondition, gpointer mainLoop) { return quit(mainLoop); };
    g_unix_fd_add(endSignals(), G_IO_IN, onSignal, loop);
    if (seconds > 0)
        g_timeout_add(static_cast<guint>(seconds) * 1000, quit, loop);
}

std::string pictureFolder() {
    const std::unique_ptr<char[]> folder(pngParam.getValueStr());
    return folder.get();
}

int watch(const CaptureLibrary& library, CGDirectDisplayID display) {
    const std::unique_ptr<GMainLoop, decltype(&g_main_loop_unref)> loop(
        g_main_loop_new(nullptr, FALSE), g_main_loop_unref);
    quitWhenAsked(loop.get(), secondsParam.getIntValue());
    const auto format = static_cast<EventFormat>(eventsParam.getIntValue());
    const std::unique_ptr<EventPrinter> printer = EventPrinter::make(format, stdout);
    const DisplayWatcher::Setup setup{display, grabsParam.getIntValue(), pictureFolder()};
    DisplayWatcher watcher(library, setup, *printer, loop.get());
    if (!watcher.start())
        return fail(NoDisplay, text("lumowatch_cannot_watch"));
    g_main_loop_run(loop.get());
    printer->summary(watcher.statistics());
    return watcher.isDisplayGone() ? NoDisplay : Fine;
}

int run() {
    if (listDisplaysParam.getIntValue() != 0)
        return listDisplays(stdout) ? Fine : fail(NoDisplay, text("lumowatch_no_display"));
    const std::string folder = pictureFolder();
    if (!folder.empty() && !std::filesystem::is_directory(folder))
        return fail(BadArguments, formatted("lumowatch_no_folder", folder.c_str()));

    CaptureLibrary library;
    std::string error;
    if (!library.load(&error))
        return fail(NoDisplay, formatted("lumowatch_no_library", error.c_str()));
    plat::LogWriter::refreshLogSetting(); // now that the library's writers are there
    const int identifier = displayParam.getIntValue();
    const CGDirectDisplayID display = chooseDisplay(identifier);
    if (display == kCGNullDirectDisplay && identifier != 0)
        return fail(NoDisplay, formatted("lumowatch_no_such_display", identifier));
    if (display == kCGNullDirectDisplay)
        return fail(NoDisplay, text("lumowatch_no_display"));
    return watch(library, display);
}

} // namespace

int main(int argc, char** argv) {
    // Errors are told from here on, those in the files of texts too.
    plat::logParam.setParam(errorsOnly, plat::ConfigParameter::defaultPriority);
    initTexts();
    try {
        if (argc > 0)
            plat::Configuration::global()->processParamArgs(const_cast<const char**>(argv + 1),
                                                            printUsage);
    } catch (const plat::Exception& bad) {
        return fail(BadArguments, bad.message.get());
    }
    return run();
}
