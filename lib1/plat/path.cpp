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

/// Builds the canonical form of a path, component by component.
class CanonicalText {
public:
    explicit CanonicalText(std::string_view path)
        : text(new char[path.size() + 4]), isAbsolute(path.starts_with('/')) {
        if (isAbsolute)
            text[length++] = '/';
        kept = length;
        while (!path.empty()) {
            const std::size_t end = std::min(path.find('/'), path.size());
            add(path.substr(0, end));
            path.remove_prefix(std::min(end + 1, path.size()));
        }
        if (length == 0)
            text[length++] = '.';
        text[length] = '\0';
    }

    char* release() noexcept { return text.release(); }

private:
    void add(std::string_view component) noexcept {
        if (component.empty() || component == ".")
            return;
        if (component != "..") {
            append(component);
        } else if (length > kept) {
            removeLast();
        } else if (!isAbsolute) {
            append(component);
            kept = length;
        }
    }

    void append(std::string_view component) noexcept {
        if (length != 0 && text[length - 1] != '/')
            text[length++] = '/';
        std::copy(component.begin(), component.end(), text.get() + length);
        length += component.size();
    }

    void removeLast() noexcept {
        while (length > kept && text[length - 1] != '/')
            --length;
        if (length > kept)
            --length;
    }

    std::unique_ptr<char[]> text;
    std::size_t length = 0;
    std::size_t kept = 0; ///< what no ".." removes: the root, or the ".." in front
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
    replaceBuf(CanonicalText(textOf(path)).release());
}

DirName::DirName(const char* path) {
    replaceBuf(newDirName(CanonicalName(path).get()));
}

BaseName::BaseName(const char* path, const char* suffix) {
    replaceBuf(newBaseName(CanonicalName(path).get(), suffix));
}

} // namespace plat
