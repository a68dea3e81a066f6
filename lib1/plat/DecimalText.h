#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

/// Numbers as decimal text.
namespace plat {

/// The length of the longest number, with its sign.
constexpr int longestDecimal = 20;

namespace decimal {

/// "00" to "99".
constexpr std::array<char, 200> pairs = [] {
    std::array<char, 200> digits{};
    for (std::size_t i = 0; i < 100; ++i) {
        digits[2 * i] = char('0' + i / 10);
        digits[2 * i + 1] = char('0' + i % 10);
    }
    return digits;
}();

constexpr std::uint32_t tenToTheEighth = 100'000'000;

/// A number as a fixed-point fraction whose whole part is its first pair of digits; multiplied by
/// 100, what is left has the next one. That takes one multiplication a pair where dividing takes
/// two. 57 bits are exact enough for five pairs of 32 bits, and leave room for a whole part of 99.
template <int pairCount>
class Fraction {
public:
    explicit Fraction(std::uint32_t value) noexcept : bits(value * one) {}

    unsigned whole() const noexcept { return unsigned(bits >> places); }

    void toNext() noexcept { bits = (bits & ((std::uint64_t(1) << places) - 1)) * 100; }

private:
    static constexpr int places = 57;
    static constexpr std::uint64_t one = [] {
        std::uint64_t last = 1; // what the last pair counts, seen from the first
        for (int i = 1; i < pairCount; ++i)
            last *= 100;
        return (std::uint64_t(1) << places) / last + 1;
    }();

    std::uint64_t bits;
};

template <int pairCount>
inline char* writeNextPairs(char* out, Fraction<pairCount> fraction) noexcept {
    for (int i = 1; i < pairCount; ++i) {
        fraction.toNext();
        std::memcpy(out, &pairs[std::size_t{2} * fraction.whole()], 2);
        out += 2;
    }
    return out;
}

/// Writes a number of that many pairs of digits, the first of which may be a single digit.
template <int pairCount>
inline char* writePairs(char* out, std::uint32_t value) noexcept {
    const Fraction<pairCount> fraction(value);
    const unsigned first = fraction.whole();
    // A single digit is the second one of its pair; the next pair covers the byte behind it.
    const unsigned isSingle = first < 10 ? 1 : 0;
    std::memcpy(out, &pairs[2 * first + isSingle], 2);
    return writeNextPairs(out + 2 - isSingle, fraction);
}

/// Writes eight digits, with leading zeros.
inline char* writeEight(char* out, std::uint32_t value) noexcept {
    const Fraction<4> fraction(value);
    std::memcpy(out, &pairs[std::size_t{2} * fraction.whole()], 2);
    return writeNextPairs(out + 2, fraction);
}

inline char* write(char* out, std::uint32_t value) noexcept {
    if (value < 100)
        return writePairs<1>(out, value);
    if (value < 10000)
        return writePairs<2>(out, value);
    if (value < 1'000'000)
        return writePairs<3>(out, value);
    if (value < tenToTheEighth)
        return writePairs<4>(out, value);
    return writePairs<5>(out, value);
}

/// A number that takes more than 32 bits: up to 20 digits, the last eight of them apart, and once
/// more.
[[gnu::noinline]] inline char* writeLarge(char* out, std::uint64_t value) noexcept {
    const std::uint64_t upper = value / tenToTheEighth;
    if (upper <= 0xFFFFFFFF) {
        out = write(out, std::uint32_t(upper));
    } else {
        out = write(out, std::uint32_t(upper / tenToTheEighth));
        out = writeEight(out, std::uint32_t(upper % tenToTheEighth));
    }
    return writeEight(out, std::uint32_t(value % tenToTheEighth));
}

} // namespace decimal

/// Writes a number and returns the end of its text. Up to `longestDecimal` bytes are written.
inline char* writeDecimal(char* out, std::uint64_t value) noexcept {
    if (value > 0xFFFFFFFF) [[unlikely]]
        return decimal::writeLarge(out, value);
    return decimal::write(out, std::uint32_t(value));
}

/// Writes a number with its sign and returns the end of its text. Up to `longestDecimal` bytes are
/// written.
inline char* writeDecimal(char* out, std::int64_t value) noexcept {
    // Without a branch: in a row of numbers, nobody knows which sign is next.
    const auto isNegative = std::uint64_t(value < 0);
    *out = '-';
    return writeDecimal(out + isNegative, (std::uint64_t(value) ^ (0 - isNegative)) + isNegative);
}

} // namespace plat
