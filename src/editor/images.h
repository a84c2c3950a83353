// The images of the actions tree, the step list and the toolbar.
#pragma once

#include <windows.h>
#include <commctrl.h>

enum {
    IMAGE_BOOKMARK = 226,
    IMAGE_SKIP = 231,
    IMAGE_BREAKPOINT = 232,
    BASE_IMAGES = 240,  // icons of programs are appended after these
};

// Creates SharedImageList (16 by 16) with its drawn images; null on failure.
HIMAGELIST CreateSharedImages();
