#pragma once

#include "plat/FilePtr.h"
#include "plat/Logger.h"

namespace lumowatch {

/// Log lines, with the time before each, in the file that "LogDir" and "LogFile" name. It is opened
/// with the first line, and added to.
/// Errors: a file that cannot be written is told on standard error, once.
class FileLogger final : public plat::Logger {
public:
    FileLogger() : plat::Logger("file") {}

    void write(int level, const char* writerName, const char* text) override;
    void flush() override;

private:
    bool open();

    plat::FilePtr file;
    bool hasFailed = false;
};

} // namespace lumowatch
