#pragma once

#include <CoreGraphics/CGDirectDisplay.h>
#include <CoreGraphics/CGDisplayStream.h>
#include <CoreGraphics/CGError.h>
#include <CoreGraphics/CGGeometry.h>
#include <CoreGraphics/CGImage.h>
