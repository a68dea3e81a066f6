#include "plat/Wildcard.h"

#include <cctype>

namespace plat {

namespace {

struct Exactly {
    char operator()(char c) const noexcept { return c; }
};

struct WithoutCase {
    int operator()(char c) const noexcept { return std::tolower(static_cast<unsigned char>(c)); }
};

// Neither of the two below is inlined: what calls nothing shall not save registers for what does.

template <typename Fold>
[[gnu::noinline]] bool areEqual(const char* a, const char* b, Fold fold) noexcept {
    for (; fold(*a) == fold(*b); ++a, ++b) {
        if (*a == '\0')
            return true;
    }
    return false;
}

/// Matches what stands in front of the next star, or of the end, with the bytes of a text.
/// Returns whether it does; both pointers stand where it ends or differs.
template <typename Fold>
bool matchPart(const char** pattern, const char** text, Fold fold) noexcept {
    const char* p = *pattern;
    const char* t = *text;
    while (*p != '*' && *p != '\0' && fold(*p) == fold(*t)) {
        ++p;
        ++t;
    }
    *pattern = p;
    *text = t;
    return *p == '*' || (*p == '\0' && *t == '\0');
}

/// Only the last star needs another try: whatever an earlier one could have taken, the last one can
/// take instead.
template <typename Fold>
[[gnu::noinline]] bool matchStars(const char* pattern, const char* text, Fold fold) noexcept {
    // The front is where most pairs match or differ. Nothing but the end is looked for on the way:
    // a star that meets one in the text stands for it.
    const char* const front = pattern;
#ifdef __clang__  // g++ does not unroll a loop with two ends
#pragma unroll 16 // takes a third off the time of a usual name
#endif
    for (; fold(*pattern) == fold(*text); ++pattern, ++text) {
        if (*pattern == '\0')
            return true;
    }
    // Back to the last star.
    for (; *pattern != '*'; --pattern, --text) {
        if (pattern == front)
            return false;
    }
    while (*pattern == '*') {
        do
            ++pattern;
        while (*pattern == '*');
        if (*pattern == '\0')
            return true;
        const char* const part = pattern;
        const auto first = fold(*part);
        for (const char* start = text;; ++start) {
            while (fold(*start) != first) {
                if (*start++ == '\0')
                    return false;
            }
            pattern = part;
            text = start;
            if (matchPart(&pattern, &text, fold))
                break;
            if (*text == '\0')
                return false; // and there is less text behind a later start
        }
    }
    return true;
}

} // namespace

bool Wildcard::match(const char* pattern, const char* text, bool caseSensitive,
                     unsigned flags) noexcept {
    if ((flags & star) == 0)
        return caseSensitive ? areEqual(pattern, text, Exactly())
                             : areEqual(pattern, text, WithoutCase());
    return caseSensitive ? matchStars(pattern, text, Exactly())
                         : matchStars(pattern, text, WithoutCase());
}

} // namespace plat
