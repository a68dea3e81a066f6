#include "lumowatch/Texts.h"

#include <algorithm>
#include <filesystem>
#include <limits>
#include <vector>

namespace lumowatch {

void initTexts() {
    std::error_code ignored;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", ignored);
    const std::string folder = (program.parent_path() / "strings").string();
    loc::Localize::inst().init({plat::String(folder.c_str())});
}

std::string counted(loc::msgid_t stem, std::int64_t count) {
    constexpr int most = std::numeric_limits<int>::max();
    const int form = static_cast<int>(std::min<std::int64_t>(count, most)); // only its form counts
    const std::string digits = std::to_string(count);
    loc::LString result;
    result.xprintf(LUMO_LOCALIZE_PLURAL(stem, form, 0, most), loc::PrintfArgs(digits.c_str()));
    return result.str();
}

} // namespace lumowatch
