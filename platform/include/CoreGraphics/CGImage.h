#pragma once

#include <CoreFoundation/CFData.h>
#include <CoreGraphics/CGGeometry.h>

#include <stddef.h>

typedef struct CGImage* CGImageRef;
typedef struct CGDataProvider* CGDataProviderRef;

CG_EXTERN size_t CGImageGetWidth(CGImageRef image);
CG_EXTERN size_t CGImageGetHeight(CGImageRef image);
CG_EXTERN size_t CGImageGetBytesPerRow(CGImageRef image);

/// Ownership: borrowed from the image. Null gives null.
CG_EXTERN CGDataProviderRef CGImageGetDataProvider(CGImageRef image);

/// Gives one reference back; null is accepted.
CG_EXTERN void CGImageRelease(CGImageRef image);

/// A copy of the pixels: rows of 4-byte BGRA. Ownership: the caller releases it. Null gives null.
CG_EXTERN CFDataRef CGDataProviderCopyData(CGDataProviderRef provider);
