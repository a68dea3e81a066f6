#pragma once

namespace plat {

/// Waits until what was written to a file, or the names in a directory, have reached the disk.
/// Errors: false, with the error in `errno`, where the disk did not take them. A descriptor that
/// the system cannot do this for counts as done.
bool syncFile(int descriptor) noexcept;

} // namespace plat
