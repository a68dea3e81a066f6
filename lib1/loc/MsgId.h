#pragma once

namespace loc {

/// The name of a text that a user may see: a short ASCII key such as "plat_bad_argument".
///
/// A value of one pointer, passed by value, made from a string literal; it carries no text of its
/// own. Ids are compared byte by byte. Needs nothing else of this library, so that every header may
/// name an id.
class msgid_t { // NOLINT(readability-identifier-naming): as the other types that are values
public:
    /// `id` must live as long as the process does, as a literal does; null stands for no id.
    // NOLINTNEXTLINE(google-explicit-constructor): a literal is an id
    constexpr msgid_t(const char* id) noexcept : text(id) {}

    /// The id itself, or null; not owned.
    [[nodiscard]] constexpr const char* str() const noexcept { return text; }

private:
    const char* text;
};

} // namespace loc
