#pragma once

#include <stdint.h>

typedef int32_t CGError;

enum {
    kCGErrorSuccess = 0,
    kCGErrorFailure = 1000,
    kCGErrorIllegalArgument = 1001,
    kCGErrorInvalidConnection = 1002,
    kCGErrorCannotComplete = 1004,
    kCGErrorNotImplemented = 1006
};
