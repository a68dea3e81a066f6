#pragma once

#include "platform/linux/core/Data.h"
#include "platform/linux/core/Ref.h"

#include <CoreGraphics/CGImage.h>

/// Hands out an image's bytes.
struct CGDataProvider final : platform::Object {
    explicit CGDataProvider(std::vector<std::uint8_t> bytes)
        : Object(platform::ObjectType::DataProvider),
          data(platform::Ref<const __CFData>::adopt(new __CFData(std::move(bytes)))) {}

    const platform::Ref<const __CFData> data;
};

/// A picture that does not change. Shape: rows of 4-byte BGRA pixels without padding.
struct CGImage final : platform::Object {
    /// `pixels` holds width * height * 4 bytes.
    CGImage(int width, int height, std::vector<std::uint8_t> pixels);

    const std::size_t width;
    const std::size_t height;
    const platform::Ref<CGDataProvider> provider;
};
