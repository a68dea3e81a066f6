#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

/// A folder of the test's own, which is removed with all that is in it.
class TempDir {
public:
    TempDir() : path(testing::TempDir() + "/lumoXXXXXX") {
        if (::mkdtemp(path.data()) == nullptr)
            std::abort();
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }

    const std::string& str() const { return path; }
    const char* get() const { return path.c_str(); }
    /// The path of something in the folder.
    std::string operator/(const std::string& name) const { return path + '/' + name; }

    /// Makes a file in the folder, and returns its path.
    std::string write(const std::string& name, const std::string& content) const {
        std::ofstream(*this / name, std::ios::binary) << content;
        return *this / name;
    }

    /// What a file holds, "(none)" where there is none.
    static std::string read(const std::string& file) {
        std::ifstream in(file, std::ios::binary);
        if (!in)
            return "(none)";
        return {std::istreambuf_iterator<char>(in), {}};
    }

private:
    std::string path;
};
