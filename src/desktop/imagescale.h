// Resampling a search image to another screen scale: once per search, not
// per place, with area averaging when it shrinks and bilinear filtering
// when it grows.
#pragma once

#include "desktop/imagescore.h"

// The scales tried by a search over the common screen scales, in order:
// 100 % first, so that among equal scores the image as captured wins.
extern const int CommonScales[9];

// `in` at `percent` of its size (at least 1 x 1). A pixel of the result is
// skipped when more than half of what it is made from was skipped; its
// colour comes from the pixels that were not.
Needle ScaleNeedle(const Needle& in, int percent);
