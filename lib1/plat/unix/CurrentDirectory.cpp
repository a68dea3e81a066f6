#include "plat/CurrentDirectory.h"

#include <cerrno>
#include <cstddef>
#include <memory>

#include <unistd.h>

#include "plat/Exception.h"

namespace plat {

namespace {

constexpr std::size_t firstSize = 1024;

} // namespace

CurrentDirectory::CurrentDirectory() {
    for (std::size_t size = firstSize;; size *= 2) {
        std::unique_ptr<char[]> path(new char[size]);
        if (::getcwd(path.get(), size) != nullptr) {
            replaceBuf(path.release());
            return;
        }
        if (errno != ERANGE)
            throw SystemException("getcwd", errno);
    }
}

} // namespace plat
