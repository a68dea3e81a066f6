#include "lumowatch/PngFile.h"

#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <png.h>
#include <system_error>

namespace lumowatch {
namespace {

constexpr int fastCompression = 1; // the host has a screen to watch meanwhile

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

// The caller says what went wrong, once.
void leaveQuietly(png_structp png, png_const_charp /*text*/) {
    png_longjmp(png, 1);
}
void warnNobody(png_structp /*png*/, png_const_charp /*text*/) {}

/// libpng reports errors by a jump, so nothing that needs destruction may live in here.
bool writeRows(png_structp png, png_infop info, std::FILE* file, const std::uint8_t* pixels,
               std::size_t strideBytes, int width, int height) {
    if (setjmp(png_jmpbuf(png)) != 0)
        return false;
    png_init_io(png, file);
    png_set_compression_level(png, fastCompression);
    png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), 8,
                 PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    png_set_bgr(png);
    png_set_filler(png, 0, PNG_FILLER_AFTER);
    for (int y = 0; y < height; ++y)
        png_write_row(png, pixels + static_cast<std::size_t>(y) * strideBytes);
    png_write_end(png, nullptr);
    return std::fflush(file) == 0;
}

} // namespace

bool writePng(const std::string& path, const std::uint8_t* pixels, std::size_t strideBytes,
              int width, int height, std::string* error) {
    const File file(std::fopen(path.c_str(), "wbe"));
    if (file == nullptr) {
        *error = "cannot write " + path + ": " + std::generic_category().message(errno);
        return false;
    }
    png_structp png =
        png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, leaveQuietly, warnNobody);
    png_infop info = png_create_info_struct(png);
    const bool isWritten = writeRows(png, info, file.get(), pixels, strideBytes, width, height);
    png_destroy_write_struct(&png, &info);
    if (!isWritten) {
        *error = "cannot write " + path + ": " + std::generic_category().message(errno);
        std::error_code ignored;
        if (std::filesystem::is_regular_file(path, ignored))
            std::remove(path.c_str());
    }
    return isWritten;
}

} // namespace lumowatch
