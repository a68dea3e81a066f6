#include "lumowatch/FileLogger.h"

#include "lumowatch/Parameters.h"
#include "plat/DPrintf.h"
#include "plat/Exception.h"

#include <cstdio>
#include <ctime>
#include <memory>

namespace lumowatch {
namespace {

using OwnedText = std::unique_ptr<char[]>;

plat::DString logPath() {
    const OwnedText folder(logDirParam.getValueStr());
    const OwnedText name(logFileParam.getValueStr());
    return plat::DPrintf("%s/%s", folder.get(), name.get());
}

/// Local time as in RFC 3339, with milliseconds: "2026-11-21 08:15:30.125".
void printTime(std::FILE* out) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm parts{};
    localtime_r(&now.tv_sec, &parts);
    char date[32];
    std::strftime(date, sizeof date, "%Y-%m-%d %H:%M:%S", &parts);
    std::fprintf(out, "%s.%03ld", date, now.tv_nsec / 1'000'000);
}

} // namespace

bool FileLogger::open() {
    if (file.get() == nullptr && !hasFailed) {
        try {
            file.open(logPath().str(), plat::FilePtr::Append, false);
        } catch (const plat::Exception& failure) {
            hasFailed = true;
            std::fprintf(stderr, "lumowatch: %s\n", failure.message.get());
        }
    }
    return file.get() != nullptr;
}

void FileLogger::write(int /*level*/, const char* writerName, const char* text) {
    if (!open())
        return;
    printTime(file.get());
    std::fprintf(file.get(), " %s: %s\n", writerName, text);
    std::fflush(file.get());
}

void FileLogger::flush() {
    if (file.get() != nullptr)
        std::fflush(file.get());
}

} // namespace lumowatch
