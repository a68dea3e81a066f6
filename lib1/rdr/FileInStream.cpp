#include "rdr/FileInStream.h"

#include "plat/Assertion.h"
#include "plat/Exception.h"
#include "rdr/EndOfStream.h"

namespace rdr {

FileInStream::FileInStream(const char* name, bool isBinary) {
    rewindable = false;
    if (name != nullptr)
        open(name, isBinary);
}

FileInStream::FileInStream(std::FILE* openFile, bool isOwned) : file(openFile, isOwned) {
    rewindable = false;
}

void FileInStream::open(const char* name, bool isBinary) {
    file.open(name, plat::FilePtr::Mode::Read, isBinary);
    plat::FilePtr::setInheritable(file.get(), false);
}

void FileInStream::setFilePtr(std::FILE* openFile, bool isOwned) noexcept {
    file.replacePtr(openFile, isOwned);
}

int FileInStream::read(void* buf, int len) {
    LUMO_ASSERT_FATAL(file.get());
    const std::size_t count = std::fread(buf, 1, std::size_t(len), file.get());
    if (count > 0)
        return int(count);
    if (std::feof(file.get()) != 0)
        throw EndOfStream();
    throw plat::StdlibException("reading from file failed");
}

} // namespace rdr
