#pragma once

namespace plat {

/// Points the system's crash report at a text, where the system has such a thing.
/// Ownership: keeps the pointer; the last one wins.
void setCrashInfo(const char* text) noexcept;

} // namespace plat
