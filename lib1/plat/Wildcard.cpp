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

template <typename Fold>
bool areEqual(const char* a, const char* b, Fold fold) noexcept {
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
/// take instead. Not inlined: that which calls nothing shall not save registers for that which
/// does.
template <typename Fold>
[[gnu::noinline]] bool matchStars(const char* pattern, const char* text, Fold fold) noexcept {
    if (!matchPart(&pattern, &text, fold))
        return false;
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
