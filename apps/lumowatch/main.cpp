// lumowatch: watches a display through the capture library and prints what it is told.

#include "lumowatch/Arguments.h"
#include "lumowatch/CaptureLibrary.h"
#include "lumowatch/DisplayWatcher.h"
#include "lumowatch/EventPrinter.h"
#include "lumowatch/StderrLogger.h"
#include "plat/LogWriter.h"

#include <glib-unix.h>

#include <csignal>
#include <filesystem>
#include <memory>
#include <sys/signalfd.h>
#include <unistd.h>

namespace {

enum ExitCode { Fine = 0, BadArguments = 1, NoDisplay = 2 };

constexpr const char* logSetting = "*:stderr:0";

lumowatch::StderrLogger stderrLogger;

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

void quitWhenAsked(GMainLoop* loop, double seconds) {
    const auto onSignal = [](gint, GIOCondition, gpointer mainLoop) { return quit(mainLoop); };
    g_unix_fd_add(endSignals(), G_IO_IN, onSignal, loop);
    if (seconds > 0)
        g_timeout_add(static_cast<guint>(std::min(seconds * 1000, double{G_MAXUINT})), quit, loop);
}

int watch(const lumowatch::Arguments& arguments, const lumowatch::CaptureLibrary& library,
          CGDirectDisplayID display) {
    const std::unique_ptr<GMainLoop, decltype(&g_main_loop_unref)> loop(
        g_main_loop_new(nullptr, FALSE), g_main_loop_unref);
    quitWhenAsked(loop.get(), arguments.seconds);
    const lumowatch::EventPrinter printer(stdout);
    lumowatch::DisplayWatcher watcher(library, display, printer, arguments.pngFolder, loop.get());
    if (!watcher.start())
        return fail(NoDisplay, "the display cannot be watched");
    g_main_loop_run(loop.get());
    printer.summary(watcher.statistics());
    return watcher.isDisplayGone() ? NoDisplay : Fine;
}

} // namespace

int main(int argc, char** argv) {
    lumowatch::Arguments arguments;
    std::string error;
    if (!arguments.parse(argc, argv, &error)) {
        fail(BadArguments, error);
        std::fputs(lumowatch::usage, stderr);
        return BadArguments;
    }
    if (arguments.isHelp) {
        std::fputs(lumowatch::usage, stdout);
        return Fine;
    }
    if (!arguments.pngFolder.empty() && !std::filesystem::is_directory(arguments.pngFolder))
        return fail(BadArguments, "there is no folder '" + arguments.pngFolder + "'");

    lumowatch::CaptureLibrary library;
    if (!library.load(&error))
        return fail(NoDisplay, "the capture library cannot be loaded: " + error);
    plat::LogWriter::applyLogSetting(logSetting); // now that the library's writers are there
    const CGDirectDisplayID display = CGMainDisplayID();
    if (display == kCGNullDirectDisplay)
        return fail(NoDisplay, "there is no display to watch; is DISPLAY set?");
    return watch(arguments, library, display);
}
