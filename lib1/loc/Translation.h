#pragma once

#include "loc/MsgId.h"

namespace loc {

/// One stored text of one message id in one locale.
/// Ownership: owns its text or refers to a static one. Never copied once it is stored.
/// Threads: the manager's lock guards it.
class Translation {
public:
    /// What the text is read as; the first read decides for good.
    enum State {
        // NOLINTBEGIN(readability-identifier-naming): the established names
        TR_UNUSED,   ///< not read yet
        TR_RAW,      ///< a format, to which the reader adds arguments
        TR_FORMATTED ///< a finished text
        // NOLINTEND(readability-identifier-naming)
    };

    /// Null: no text.
    Translation() noexcept = default;
    Translation(const Translation&) = delete;
    Translation& operator=(const Translation&) = delete;
    ~Translation();

    /// Stores a text that has not been read yet: a copy, or the pointer itself, which must then
    /// live as long. The text stored before is freed if it was owned.
    void set(const char* newText, bool copy);

    /// The text, as a raw format or finished: then its doubled percent signs are single ones.
    /// Ownership: the translation's, until its text is replaced.
    /// Errors: reading one text both raw and finished is a bug of the caller's and asserts; a
    /// directive in a finished text is reported as LString::xprintf does.
    const char* get(bool raw, msgid_t msgid) const;

private:
    void finish() const;

    mutable const char* text = nullptr;
    mutable bool owned = false;
    mutable State state = TR_UNUSED;

    friend struct TranslationLayout;
};

} // namespace loc
