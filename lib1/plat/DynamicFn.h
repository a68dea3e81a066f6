#pragma once

#include <utility>

#include "plat/Exception.h"

namespace plat {

/// A function that a library should have is missing. Thrown by those who need the function, never
/// by the lookup, with "Function %s not found in %s library".
class DynamicFnLoadFailed : public Exception {
public:
    /// Formats the message. The number only selects this form.
    [[gnu::format(printf, 3, 4)]] DynamicFnLoadFailed(int, const char* format, ...) noexcept;
};

/// Looks a function up at run time: in the first library of a list that has one of a list of names.
/// Ownership: the library stays open as long as the object lives.
/// Threads: every lookup of the process waits for the one before it; the lookup may log, and a log
/// destination may look something up itself.
class DynamicFnBase {
public:
    /// Searches, once. A library or name that is missing is no error: the function is then null.
    /// Shape: both lists are separated by commas and tried in order; empty libraries are skipped.
    /// With `plainPaths` each library is a file as dlopen takes it. Without, that holds only for
    /// one that contains '/'; a bare "name" stands for libname.dylib, and "name[1,2]" for
    /// libname.1.dylib and libname.2.dylib.
    /// Errors: passes on what a log destination throws, with nothing left open.
    DynamicFnBase(const char* libs, const char* fnNames, bool plainPaths);
    DynamicFnBase(const DynamicFnBase&) = delete;
    DynamicFnBase& operator=(const DynamicFnBase&) = delete;
    ~DynamicFnBase();

    /// Looks into one file, which replaces what was found before.
    bool checkDll(const char* fileName, const char* fnNames);

    bool found() const noexcept { return fn != nullptr; }

    /// When set, answers in place of checkDll(), which then opens and finds nothing: with true the
    /// search ends without a function.
    using CheckDllFn = bool (*)(const char* fileName, const char* fnNames);
    static CheckDllFn checkDllFn;

protected:
    void* address() const noexcept { return fn; }

private:
    struct Layout;

    bool checkVersions(const char* name, char* versions, const char* fnNames);
    bool checkCandidate(const char* name, bool plainPath, const char* fnNames);

    void* fn;
    void* handle;
};

/// A function of type T (a pointer to a function), looked up at run time.
template <typename T>
class DynamicFn : public DynamicFnBase {
public:
    using DynamicFnBase::DynamicFnBase;

    T get() const noexcept { return reinterpret_cast<T>(address()); }

    /// Calls the function, which must have been found.
    template <typename... Args>
    decltype(auto) operator()(Args&&... args) const {
        return get()(std::forward<Args>(args)...);
    }
};

} // namespace plat
