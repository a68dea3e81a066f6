#include "plat/DynamicFn.h"

#include <cstdarg>
#include <cstddef>
#include <cstring>
#include <memory>
#include <mutex>

#include <dlfcn.h>

#include "plat/DPrintf.h"
#include "plat/LogWriter.h"
#include "plat/SplitterInPlace.h"
#include "plat/StringUtil.h"
#include "plat/unix/Mutex.h"

namespace plat {

static LogWriter vlog("DynamicFn");

constinit DynamicFnBase::CheckDllFn DynamicFnBase::checkDllFn = nullptr;

struct DynamicFnBase::Layout {
    static_assert(offsetof(DynamicFnBase, fn) == 0);
    static_assert(offsetof(DynamicFnBase, handle) == sizeof(void*));
    static_assert(sizeof(DynamicFn<void (*)()>) == 2 * sizeof(void*));
};

namespace {

// Whether dlerrorMutex exists: objects that outlive it close their libraries without it, when no
// other thread is left to meet at the loader.
constinit bool dlerrorMutexStands = false;

class DlerrorMutex {
public:
    DlerrorMutex() noexcept { dlerrorMutexStands = true; }
    DlerrorMutex(const DlerrorMutex&) = delete;
    DlerrorMutex& operator=(const DlerrorMutex&) = delete;
    ~DlerrorMutex() { dlerrorMutexStands = false; }

    void lock() noexcept { mutex.lock(); }
    void unlock() noexcept { mutex.unlock(); }

private:
    Mutex mutex;
};

// Not at file level: initialisers of other files look functions up before this file's turn. Whoever
// opened a library has passed here first, and so is destroyed earlier, unless it was made by new.
DlerrorMutex& dlerrorMutex() noexcept {
    static DlerrorMutex mutex;
    return mutex;
}

struct DlClose {
    void operator()(void* handle) const noexcept { dlclose(handle); }
};

} // namespace

DynamicFnLoadFailed::DynamicFnLoadFailed(int, const char* format, ...) noexcept {
    va_list args;
    va_start(args, format);
    message.vprf(format, args);
    va_end(args);
}

DynamicFnBase::DynamicFnBase(const char* libs, const char* fnNames, bool plainPaths)
    : fn(nullptr), handle(nullptr) {
    const std::unique_ptr<char[]> copy(strDup(libs));
    SplitterInPlace candidates(copy.get());
    char end = '\0';
    while (const char* name = candidates.nextOneOf(plainPaths ? "," : ",[", &end)) {
        char* versions = nullptr;
        if (end == '[') {
            versions = candidates.next(']');
            candidates.next(','); // whatever stands between the "]" and the next candidate
        }
        const bool isPath = plainPaths || std::strchr(name, '/') != nullptr;
        if (versions == nullptr || isPath ? checkCandidate(name, isPath, fnNames)
                                          : checkVersions(name, versions, fnNames))
            return;
    }
}

DynamicFnBase::~DynamicFnBase() {
    if (handle == nullptr)
        return;
    if (!dlerrorMutexStands) {
        dlclose(handle);
        return;
    }
    const std::lock_guard lock(dlerrorMutex());
    dlclose(handle);
}

bool DynamicFnBase::checkDll(const char* fileName, const char* fnNames) {
    if (checkDllFn != nullptr)
        return checkDllFn(fileName, fnNames);
    const std::lock_guard lock(dlerrorMutex());
    // Closes what an earlier probe of this object found, and what a log destination's exception
    // leaves behind: out of the constructor, no destructor would.
    fn = nullptr;
    std::unique_ptr<void, DlClose> opened(std::exchange(handle, nullptr));
    opened.reset(dlopen(fileName, RTLD_LAZY | RTLD_GLOBAL));
    if (!opened) {
        vlog.debugplus(" [DynFnOpen(%s) failed]", fileName);
        return false;
    }
    const std::unique_ptr<char[]> copy(strDup(fnNames));
    SplitterInPlace names(copy.get());
    while (const char* name = names.next(',')) {
        void* const symbol = dlsym(opened.get(), name);
        if (symbol != nullptr) {
            vlog.debugplus("found '%s' in '%s'", name, fileName);
            fn = symbol;
            handle = opened.release();
            return true;
        }
        vlog.debugplus("  [DynFnFind(%s) failed]", name);
    }
    return false;
}

bool DynamicFnBase::checkVersions(const char* name, char* versions, const char* fnNames) {
    SplitterInPlace splitter(versions);
    while (const char* version = splitter.next(',')) {
        if (*version != '\0' && checkDll(DPrintf("lib%s.%s.dylib", name, version).str(), fnNames))
            return true;
    }
    return false;
}

bool DynamicFnBase::checkCandidate(const char* name, bool plainPath, const char* fnNames) {
    if (*name == '\0')
        return false; // no name, not the program itself, which dlopen takes "" for
    if (plainPath)
        return checkDll(name, fnNames);
    return checkDll(DPrintf("lib%s.dylib", name).str(), fnNames);
}

} // namespace plat
