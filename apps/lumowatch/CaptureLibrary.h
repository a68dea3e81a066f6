#pragma once

#include "svr/mac/DisplayStreamClient.h"
#include "svr/mac/DisplayStreamSource.h"

#include <memory>
#include <string>

namespace lumowatch {

/// The capture library, loaded at run time. It stays loaded until the process ends: its objects
/// and registries live that long.
class CaptureLibrary {
public:
    /// Loads the library that LUMO_LIBRARY names, or the one beside this program.
    /// Errors: false, with the system's own words in `error`.
    bool load(std::string* error);

    /// Ownership: the caller deletes the source; the client outlives it.
    std::unique_ptr<svr::DisplayStreamSource> newSource(svr::DisplayStreamClient* client,
                                                        unsigned display) const;

private:
    using NewDisplayStreamFn = svr::DisplayStreamSource* (*)(svr::DisplayStreamClient*, unsigned);

    NewDisplayStreamFn newDisplayStream = nullptr;
};

} // namespace lumowatch
