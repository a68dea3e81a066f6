#include "os/mac/CGUtil.h"

#include <utility>

#include "os/mac/FrameworkPath.h"
#include "os/mac/RectUtil.h"
#include "plat/DynamicFn.h"

namespace os {

static_assert(sizeof(CGImagePtr) == sizeof(CGImageRef), "the reference and nothing else");
static_assert(sizeof(CGImageData) == sizeof(CFDataRef), "the reference and nothing else");

namespace {

constexpr const char* createImageName = "CGDisplayCreateImageForRect";
constexpr const char* copyDataName = "CGDataProviderCopyData";

using CreateImageFn = plat::DynamicFn<CGImage* (*)(unsigned int, CGRect)>;
using CopyDataFn = plat::DynamicFn<__CFData const* (*)(CGDataProvider*)>;

const CreateImageFn& createImageFn() {
    static const CreateImageFn fn(coreGraphicsPath().str(), createImageName, true);
    return fn;
}

const CopyDataFn& copyDataFn() {
    static const CopyDataFn fn(coreGraphicsPath().str(), copyDataName, true);
    return fn;
}

void requireFound(const plat::DynamicFnBase& fn, const char* name) {
    if (!fn.found())
        throw plat::DynamicFnLoadFailed(1, "Function %s not found in %s library", name,
                                        coreGraphicsPath().str());
}

/// The look-up itself may be kept from its end, by a log destination that throws: it is made anew
/// the next time, and what was not found is not there now.
template <typename LookUp>
bool isFound(LookUp lookUp) noexcept {
    try {
        return lookUp().found();
    } catch (...) {
        return false;
    }
}

CGImageRef createImage(unsigned display, const plat::Rect& r) {
    requireFound(createImageFn(), createImageName);
    return createImageFn()(display, cgRectFromRect(r));
}

CFDataRef copyData(CGImage* image) {
    requireFound(copyDataFn(), copyDataName);
    return copyDataFn()(CGImageGetDataProvider(image));
}

} // namespace

CGImagePtr::CGImagePtr(unsigned display, const plat::Rect& r) : image(createImage(display, r)) {}

bool CGImagePtr::canCreateFromDisplay() noexcept {
    return isFound(createImageFn);
}

void CGImagePtr::reset() noexcept {
    if (CGImageRef old = std::exchange(image, nullptr))
        CGImageRelease(old);
}

CGImageData::CGImageData(CGImage* image) : data(copyData(image)) {}

bool CGImageData::isSupported() noexcept {
    return isFound(copyDataFn);
}

unsigned getScaleFactor(unsigned display) {
    const CGImagePtr image(display, plat::Rect{0, 0, 1, 1});
    if (image.get() == nullptr)
        return 1;
    return static_cast<unsigned>(CGImageGetWidth(image.get()));
}

} // namespace os
