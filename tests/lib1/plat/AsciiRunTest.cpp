#include "plat/AsciiRun.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

// The bytes next to the edges of what is plain.
const char others[] = {'\0', '\x80', '\x81', '\xC3', '\xFF'};
const char plains[] = {'\x01', ' ', 'a', '\x7E', '\x7F'};

TEST(SkipPlain, StopsAtTheFirstOtherByte) {
    for (std::size_t size = 0; size < 40; ++size) {
        for (std::size_t at = 0; at < size; ++at) {
            for (const char plain : plains) {
                for (const char other : others) {
                    std::string text(size, plain);
                    text[at] = other;
                    text.back() = at + 1 < size ? '\xFF' : other; // one behind it does not matter
                    const char* const end = text.data() + size;
                    EXPECT_EQ(plat::skipPlain(text.data(), end), text.data() + at);
                    if (size <= 32) {
                        EXPECT_FALSE(plat::isPlainShort(text.data(), size));
                    }
                }
            }
        }
    }
}

TEST(SkipPlain, StopsAtTheEnd) {
    for (std::size_t size = 0; size < 40; ++size) {
        for (const char plain : plains) {
            const std::vector<char> exact(size, plain); // the sanitizer sees what is behind
            const char* const end = exact.data() + size;
            EXPECT_EQ(plat::skipPlain(exact.data(), end), end);
            if (size <= 32) {
                EXPECT_TRUE(plat::isPlainShort(exact.data(), size));
            }
        }
    }
}

} // namespace
