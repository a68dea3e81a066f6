#include "lumowatch/PngFile.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <png.h>
#include <vector>

namespace {

class PngFile : public testing::Test {
protected:
    PngFile() {
        char name[] = "/tmp/PngFileTest.XXXXXX";
        folder = mkdtemp(name);
    }
    ~PngFile() override { std::filesystem::remove_all(folder); }

    std::string folder;
};

TEST_F(PngFile, HoldsThePixelsWithoutAlphaAndPadding) {
    // Two pixels a row, and a row is four pixels long.
    const std::vector<std::uint8_t> pixels{1, 2, 3,  0, 4,  5,  6,  7, 9, 9, 9, 9, 9, 9, 9, 9,
                                           8, 9, 10, 0, 11, 12, 13, 0, 9, 9, 9, 9, 9, 9, 9, 9};
    std::string error;
    const std::string path = folder + "/a.png";
    ASSERT_TRUE(lumowatch::writePng(path, pixels.data(), 16, 2, 2, &error)) << error;

    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    ASSERT_NE(png_image_begin_read_from_file(&image, path.c_str()), 0);
    EXPECT_EQ(image.width, 2U);
    EXPECT_EQ(image.height, 2U);
    image.format = PNG_FORMAT_BGR;
    std::vector<std::uint8_t> read(12);
    ASSERT_NE(png_image_finish_read(&image, nullptr, read.data(), 0, nullptr), 0);
    EXPECT_EQ(read, (std::vector<std::uint8_t>{1, 2, 3, 4, 5, 6, 8, 9, 10, 11, 12, 13}));
}

TEST_F(PngFile, FolderThatIsNotThereIsAnError) {
    const std::uint8_t pixel[4] = {};
    std::string error;
    EXPECT_FALSE(lumowatch::writePng(folder + "/none/a.png", pixel, 4, 1, 1, &error));
    EXPECT_EQ(error, "cannot write " + folder + "/none/a.png: No such file or directory");
}

TEST_F(PngFile, FullDiskIsAnErrorAndLeavesNoFile) {
    const std::vector<std::uint8_t> pixels(std::size_t{1000} * 1000 * 4, 0);
    std::string error;
    EXPECT_FALSE(lumowatch::writePng("/dev/full", pixels.data(), 4000, 1000, 1000, &error));
    EXPECT_NE(error.find("cannot write /dev/full"), std::string::npos);
    EXPECT_TRUE(std::filesystem::exists("/dev/full"));
}

} // namespace
