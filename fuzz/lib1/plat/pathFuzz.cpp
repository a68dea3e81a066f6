#include "plat/path.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Require.h"

namespace {

// A path as a list of names.
struct Model {
    bool isAbsolute;
    std::vector<std::string> names;

    explicit Model(const std::string& path) : isAbsolute(!path.empty() && path[0] == '/') {
        std::string name;
        for (const char c : path + '/') {
            if (c != '/') {
                name += c;
                continue;
            }
            enter(name);
            name.clear();
        }
    }

    void enter(const std::string& name) {
        if (name.empty() || name == ".")
            return;
        const bool canGoUp = !names.empty() && names.back() != "..";
        if (name == ".." && canGoUp)
            names.pop_back();
        else if (name != ".." || !isAbsolute)
            names.push_back(name);
    }

    std::string text() const {
        std::string joined;
        for (const std::string& name : names)
            joined += (joined.empty() && !isAbsolute ? "" : "/") + name;
        if (joined.empty())
            return isAbsolute ? "/" : ".";
        return joined;
    }

    bool endsInParent() const { return !names.empty() && names.back() == ".."; }

    std::string directory() const {
        Model parent = *this;
        if (!isAbsolute && names.empty())
            return "..";
        if (endsInParent())
            return text() + "/..";
        if (!names.empty())
            parent.names.pop_back();
        return parent.text();
    }

    std::string base(const std::string& suffix) const {
        if (endsInParent())
            return ".";
        if (names.empty())
            return text();
        const std::string& last = names.back();
        const bool isCut = last.size() > suffix.size() && last.ends_with(suffix);
        return last.substr(0, last.size() - (isCut ? suffix.size() : 0));
    }
};

} // namespace

// The first line is a suffix, the rest a path.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string input(data, data + size);
    const std::size_t split = input.find('\n');
    const std::string suffix = split == std::string::npos ? "" : input.substr(0, split).c_str();
    const std::string path = input.substr(split + 1).c_str();

    const Model model(path);
    REQUIRE(plat::isAbsolutePath(path.c_str()) == model.isAbsolute);
    REQUIRE(plat::hasParentDir(path.c_str()) == (path != "/"));
    const plat::CanonicalName canonical(path.c_str());
    REQUIRE(canonical.get() == model.text());
    REQUIRE(plat::CanonicalName(canonical.get()).get() == model.text());
    REQUIRE(plat::DirName(path.c_str()).get() == model.directory());
    REQUIRE(plat::BaseName(path.c_str(), nullptr).get() == model.base(""));
    REQUIRE(plat::BaseName(path.c_str(), suffix.c_str()).get() == model.base(suffix));
    return 0;
}
