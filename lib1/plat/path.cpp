#include "plat/path.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>

#include "plat/StringUtil.h"

namespace plat {

namespace {

std::string_view textOf(const char* text) noexcept {
    return text == nullptr ? std::string_view() : std::string_view(text);
}

char* newText(std::string_view text) {
    return strDup(text.data(), int(text.size()));
}

/// Builds the canonical form of a path, component by component. Byte by byte, too: components are
/// so short that calls to find and to copy them take longer.
class CanonicalText {
public:
    explicit CanonicalText(const char* path)
        : text(new char[std::strlen(path) + 4]), end(text.get()), isAbsolute(*path == '/') {
        if (isAbsolute)
            *end++ = '/';
        kept = end;
        while (*path != '\0') {
            path = add(path);
            if (*path == '/')
                ++path;
        }
        if (end == text.get())
            *end++ = '.';
        *end = '\0';
    }

    char* release() noexcept { return text.release(); }

private:
    /// Appends what counts of the first component of a path, and returns the component's end.
    const char* add(const char* path) noexcept {
        char* const before = end;
        if (end != text.get() && end[-1] != '/')
            *end++ = '/';
        const char* const component = end;
        for (; *path != '/' && *path != '\0'; ++path)
            *end++ = *path;
        const std::string_view added(component, std::size_t(end - component));
        if (added.empty() || added == ".")
            end = before;
        else if (added == "..")
            goUp(before);
        return path;
    }

    /// Makes the ".." that has been appended behind `before` count.
    void goUp(char* before) noexcept {
        if (before <= kept && !isAbsolute) {
            kept = end;
            return;
        }
        end = before;
        while (end > kept && end[-1] != '/')
            --end;
        if (end > kept)
            --end;
    }

    std::unique_ptr<char[]> text;
    char* end;            ///< behind the last byte
    char* kept = nullptr; ///< behind what no ".." removes: the root, or the ".." in front
    bool isAbsolute;
};

/// A canonical path, split behind its last '/'.
struct SplitPath {
    std::string_view directory; ///< without a '/' at its end, unless it is the root; may be empty
    std::string_view base;
    bool isAbsolute;

    explicit SplitPath(std::string_view path) noexcept : isAbsolute(path.starts_with('/')) {
        if (path == "." || path == "/") {
            directory = isAbsolute ? path : std::string_view();
            base = path;
            return;
        }
        const std::size_t slash = path.rfind('/');
        const bool hasSlash = slash != std::string_view::npos;
        directory = path.substr(0, hasSlash ? std::max<std::size_t>(slash, isAbsolute) : 0);
        base = path.substr(hasSlash ? slash + 1 : 0);
    }

    /// Whether the path is nothing but "..".
    bool isOnlyParents() const noexcept { return base == ".."; }
};

char* newDirName(std::string_view path) {
    const SplitPath split(path);
    if (path == ".")
        return newText("..");
    if (split.isOnlyParents()) {
        std::unique_ptr<char[]> name(new char[path.size() + sizeof "/.."]);
        std::copy(path.begin(), path.end(), name.get());
        std::memcpy(name.get() + path.size(), "/..", sizeof "/..");
        return name.release();
    }
    return newText(split.directory.empty() ? "." : split.directory);
}

char* newBaseName(std::string_view path, const char* suffix) {
    const SplitPath split(path);
    if (split.isOnlyParents())
        return newText(".");
    std::string_view base = split.base;
    const std::string_view cut = textOf(suffix);
    if (base != "/" && base.size() > cut.size() && base.ends_with(cut))
        base.remove_suffix(cut.size());
    return newText(base);
}

} // namespace

bool isAbsolutePath(const char* path) noexcept {
    return textOf(path).starts_with('/');
}

bool hasParentDir(const char* path) noexcept {
    return textOf(path) != "/";
}

CanonicalName::CanonicalName(const char* path) {
    replaceBuf(CanonicalText(path == nullptr ? "" : path).release());
}

DirName::DirName(const char* path) {
    replaceBuf(newDirName(CanonicalName(path).get()));
}

BaseName::BaseName(const char* path, const char* suffix) {
    replaceBuf(newBaseName(CanonicalName(path).get(), suffix));
}

} // namespace plat
