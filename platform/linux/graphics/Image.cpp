#include "platform/linux/graphics/Image.h"

CGImage::CGImage(int widthPixels, int heightPixels, std::vector<std::uint8_t> pixels)
    : Object(platform::ObjectType::Image), width(static_cast<std::size_t>(widthPixels)),
      height(static_cast<std::size_t>(heightPixels)),
      provider(platform::Ref<CGDataProvider>::adopt(new CGDataProvider(std::move(pixels)))) {}

size_t CGImageGetWidth(CGImageRef image) {
    return image != nullptr ? image->width : 0;
}

size_t CGImageGetHeight(CGImageRef image) {
    return image != nullptr ? image->height : 0;
}

size_t CGImageGetBytesPerRow(CGImageRef image) {
    return image != nullptr ? image->width * 4 : 0;
}

CGDataProviderRef CGImageGetDataProvider(CGImageRef image) {
    return image != nullptr ? image->provider.get() : nullptr;
}

void CGImageRelease(CGImageRef image) {
    if (image != nullptr)
        image->release();
}

CFDataRef CGDataProviderCopyData(CGDataProviderRef provider) {
    // Bytes that never change need no second copy: another reference is as good.
    return provider != nullptr ? platform::Ref<const __CFData>(provider->data).detach() : nullptr;
}
