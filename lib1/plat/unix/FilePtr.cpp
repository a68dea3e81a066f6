#include "plat/FilePtr.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <utility>

#include <fcntl.h>

#include "plat/Assertion.h"
#include "plat/Exception.h"
#include "plat/File.h"
#include "plat/LogWriter.h"
#include "plat/SString.h"

static plat::LogWriter vlog("FileStream");

namespace plat {

/// Sees the private members.
struct FilePtrLayout {
    static_assert(offsetof(FilePtr, owned) == 0);
    static_assert(offsetof(FilePtr, file) == sizeof(std::FILE*));
};

namespace {

constexpr int smallestLineSize = 64;

/// The mode of fopen().
struct OpenMode {
    SString<4> text;

    OpenMode(FilePtr::Mode mode, bool isBinary) noexcept {
        static constexpr const char* texts[] = {"r", "w", "a", "a+", "r+", "r+", "w+"};
        static_assert(std::size(texts) == std::size_t(FilePtr::Mode::WriteRead) + 1);
        LUMO_ASSERT_FATAL(std::size_t(mode) < std::size(texts));
        text.append(texts[std::size_t(mode)]).append(isBinary ? "b" : "");
    }
};

/// Standard input or output.
std::FILE* standardFile(FilePtr::Mode mode) {
    switch (mode) {
    case FilePtr::Mode::Read:
        return stdin;
    case FilePtr::Mode::Write:
    case FilePtr::Mode::Append:
        return stdout;
    default:
        throw Exception("Invalid mode for filename \"-\"");
    }
}

std::FILE* openFile(const char* name, FilePtr::Mode mode, bool isBinary) {
    if (mode == FilePtr::Mode::ReadWriteCreate) {
        if (std::FILE* const file = fileOpenNoThrow(name, OpenMode(mode, isBinary).text.get()))
            return file;
        mode = FilePtr::Mode::WriteRead;
    }
    return fileOpen(name, OpenMode(mode, isBinary).text.get());
}

} // namespace

FilePtr::FilePtr(const char* name, Mode mode, bool isBinary) : FilePtr() {
    open(name, mode, isBinary);
}

void FilePtr::open(const char* name, Mode mode, bool isBinary) {
    if (std::strcmp(name, "-") == 0)
        replacePtr(standardFile(mode), false);
    else
        replacePtr(openFile(name, mode, isBinary), true);
}

void FilePtr::replacePtr(std::FILE* newFile, bool isOwned) noexcept {
    close();
    file = newFile;
    owned = isOwned;
}

void FilePtr::close() noexcept {
    const bool wasOwned = std::exchange(owned, true);
    std::FILE* const oldFile = std::exchange(file, nullptr);
    if (!wasOwned || oldFile == nullptr || std::fclose(oldFile) == 0)
        return;
    const StdlibException failure("fclose()");
    try {
        vlog.error("%s", failure.message.get());
    } catch (...) { // NOLINT(bugprone-empty-catch): destructors come here
    }
}

void FilePtr::flush() {
    if (file != nullptr && std::fflush(file) != 0)
        throw StdlibException("fflush()");
}

bool FilePtr::readLine(DString* line) {
    LUMO_ASSERT_FATAL(file);
    line->ensureCapacity(smallestLineSize);
    line->get()[0] = '\0';
    if (std::feof(file) != 0)
        return false;
    std::int64_t length = 0;
    bool isAnyRead = false;
    while (std::fgets(line->get() + length, line->capacity() - int(length), file) != nullptr) {
        isAnyRead = true;
        length += std::int64_t(std::strlen(line->get() + length));
        if (length > 0 && line->get()[length - 1] == '\n') {
            line->get()[length - 1] = '\0';
            return true;
        }
        line->ensureCapacity(
            int(std::min<std::int64_t>(2 * length + 2, std::numeric_limits<int>::max())));
    }
    if (std::feof(file) == 0) {
        line->get()[length] = '\0'; // bytes may stand there, without a NUL
        throw SystemException("Error reading from file", errno);
    }
    return isAnyRead;
}

void FilePtr::setInheritable(std::FILE* file, bool) noexcept {
    if (file == nullptr)
        return;
    const int descriptor = ::fileno(file);
    const int flags = ::fcntl(descriptor, F_GETFD);
    if (flags != -1)
        ::fcntl(descriptor, F_SETFD, flags | FD_CLOEXEC);
}

} // namespace plat
