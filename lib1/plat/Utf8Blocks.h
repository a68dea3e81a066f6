#pragma once

namespace plat {

/// Finds out how far a text is UTF-8 without a NUL, as far as whole blocks of bytes tell.
/// Returns the end, or the start of a character: from there on, the text has to be decoded
/// character by character for 64 bytes or so. They hold something bad, a NUL, or characters that
/// are rare and next to refused ones.
const char* skipValidUtf8(const char* begin, const char* end) noexcept;

/// Skips the bytes 1 to 127, block by block. What is left begins with another byte, or is short.
const char* skipPlainBlocks(const char* begin, const char* end) noexcept;

} // namespace plat
