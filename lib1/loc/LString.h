#pragma once

#include <array>
#include <cstddef>

#include "plat/DString.h"

namespace loc {

/// One argument of a localised format. Only the value that matches the type counts.
/// Ownership: borrows the text and the next element; callers build them on their stack.
struct PrintfArg {
    static constexpr int signedType = 0;
    static constexpr int unsignedType = 1;
    static constexpr int stringType = 2;

    constexpr PrintfArg() noexcept = default;
    // NOLINTBEGIN(google-explicit-constructor): a value is an argument
    constexpr PrintfArg(int value) noexcept : type(signedType), signedValue(value) {}
    constexpr PrintfArg(unsigned value) noexcept : type(unsignedType), unsignedValue(value) {}
    /// Null is read as "".
    constexpr PrintfArg(const char* text) noexcept : type(stringType), stringValue(text) {}
    // NOLINTEND(google-explicit-constructor)

    int type = signedType;
    int signedValue = 0;
    unsigned unsignedValue = 0;
    const char* stringValue = nullptr; ///< UTF-8
    const PrintfArg* next = nullptr;
};

/// The arguments of a localised format: a list of elements that stay the caller's.
struct PrintfArgList {
    constexpr PrintfArgList() noexcept = default;
    constexpr explicit PrintfArgList(const PrintfArg* head) noexcept : first(head) {}

    const PrintfArg* first = nullptr; ///< null for no arguments
};

/// Arguments in an array, for the length of a statement:
/// `text.xprintf(format, loc::PrintfArgs(name, 3))`.
template <std::size_t N>
class PrintfArgs {
public:
    template <typename... Values>
    constexpr explicit PrintfArgs(Values... values) noexcept : elements{PrintfArg(values)...} {
        for (std::size_t i = 1; i < N; ++i)
            elements[i - 1].next = &elements[i];
    }
    PrintfArgs(const PrintfArgs&) = delete; // the elements point to each other
    PrintfArgs& operator=(const PrintfArgs&) = delete;
    ~PrintfArgs() = default;

    // NOLINTNEXTLINE(google-explicit-constructor): the list is all that it is made for
    constexpr operator PrintfArgList() const noexcept {
        return PrintfArgList(N == 0 ? nullptr : elements.data());
    }

private:
    std::array<PrintfArg, N> elements;
};
template <typename... Values>
PrintfArgs(Values...) -> PrintfArgs<sizeof...(Values)>;

/// A growable string that receives a localised text with its arguments put in.
class LString : public plat::DString {
public:
    using DString::DString;

    /// Replaces the content by the format with its directives expanded.
    ///
    /// Directives: "%%" a percent sign; "%D" a signed or unsigned number, "%+D" a signed one with
    /// its sign always; "%X" an unsigned number in lower-case hexadecimal; "%S" a text, "%.3S" as
    /// many of its first 3 bytes as are whole characters. "%2$S" takes the second argument; without
    /// a position, a directive needs a list of exactly one argument.
    /// Errors: a directive that is none, or does not fit its argument, is written out behind two
    /// percent signs, and the format is logged, once; fatal only with loc::abortOnError.
    LString& xprintf(const char* format, const PrintfArgList& args = PrintfArgList());

    /// Wraps the text as DString::wordWrap does, its columns counted in the locale of the thread's
    /// innermost LocaleSetter or else of the process.
    /// Errors: an exception ends the process.
    LString& wordWrap(int width, int indent) noexcept;
};

} // namespace loc
