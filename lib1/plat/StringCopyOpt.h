#pragma once

#include <cstring>
#include <utility>

namespace plat {

/// A string key that owns a copy of its text or refers to a text owned elsewhere, as a literal is.
/// Copying it copies an owned text and shares the other kind.
class StringCopyOpt {
public:
    /// Null: no text.
    StringCopyOpt() noexcept = default;
    /// With `copy`, the key owns a copy; else the text must outlive the key and its copies. A null
    /// text stays null.
    StringCopyOpt(const char* newText, bool copy);
    StringCopyOpt(const StringCopyOpt& other) : StringCopyOpt(other.text, other.owned) {}
    StringCopyOpt(StringCopyOpt&& other) noexcept
        : text(std::exchange(other.text, nullptr)), owned(std::exchange(other.owned, false)) {}
    StringCopyOpt& operator=(StringCopyOpt other) noexcept {
        std::swap(text, other.text);
        std::swap(owned, other.owned);
        return *this;
    }
    ~StringCopyOpt() {
        if (owned)
            delete[] text;
    }

    /// The text, or null.
    const char* get() const noexcept { return text; }
    bool ownsCopy() const noexcept { return owned; }

private:
    const char* text = nullptr;
    bool owned = false;

    friend struct StringCopyOptLayout;
};

/// Orders by bytes, null first.
inline bool operator<(const StringCopyOpt& a, const StringCopyOpt& b) noexcept {
    if (a.get() == nullptr || b.get() == nullptr)
        return a.get() == nullptr && b.get() != nullptr;
    return std::strcmp(a.get(), b.get()) < 0;
}

} // namespace plat
