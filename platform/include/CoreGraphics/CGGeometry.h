#pragma once

#include <CoreFoundation/CFBase.h>

#define CG_EXTERN CF_EXPORT

// As wide as the platform's pointers, as on macOS.
#if defined(__LP64__)
typedef double CGFloat;
#else
typedef float CGFloat;
#endif

struct CGPoint {
    CGFloat x;
    CGFloat y;
};

struct CGSize {
    CGFloat width;
    CGFloat height;
};

struct CGRect {
    CGPoint origin;
    CGSize size;
};

inline CGRect CGRectMake(CGFloat x, CGFloat y, CGFloat width, CGFloat height) {
    return CGRect{{x, y}, {width, height}};
}

/// The smallest rectangle that holds both; a null rectangle (infinite origin) adds nothing.
CG_EXTERN CGRect CGRectUnion(CGRect a, CGRect b);
