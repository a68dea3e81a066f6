#pragma once

namespace plat {

/// Writes bytes to standard error as a dump: 16 a line in groups of four, with their text beside
/// them. The title stands in front of the first line, the prefix in front of each further one.
void hexDump(const char* title, const char* linePrefix, const unsigned char* data, int length);

} // namespace plat
