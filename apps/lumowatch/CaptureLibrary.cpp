#include "lumowatch/CaptureLibrary.h"

#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>

namespace lumowatch {
namespace {

constexpr const char* libraryName = "lumoscreenhelper.so";
constexpr const char* functionName = "NewDisplayStream";

std::string libraryPath() {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no thread runs yet that could change the environment
    if (const char* path = std::getenv("LUMO_LIBRARY"); path != nullptr && *path != '\0')
        return path;
    std::error_code ignored;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", ignored);
    return (program.parent_path() / libraryName).string();
}

} // namespace

bool CaptureLibrary::load(std::string* error) {
    const std::string path = libraryPath();
    void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        *error = dlerror(); // NOLINT(concurrency-mt-unsafe): it is kept for each thread
        return false;
    }
    newDisplayStream = reinterpret_cast<NewDisplayStreamFn>(dlsym(handle, functionName));
    if (newDisplayStream == nullptr)
        *error = path + " has no function " + functionName;
    return newDisplayStream != nullptr;
}

std::unique_ptr<svr::DisplayStreamSource>
CaptureLibrary::newSource(svr::DisplayStreamClient* client, unsigned display) const {
    return std::unique_ptr<svr::DisplayStreamSource>(newDisplayStream(client, display));
}

} // namespace lumowatch
