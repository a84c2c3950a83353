// The fields of a step that searches the screen for an image or a colour:
// where (values 2 and 3), how closely (value 1), whether to show the scan
// (any options text), and the image file (the text).
#pragma once

#include <windows.h>

struct SearchFields {
    RECT region;
    int variation;
    int showScan;
    int percent;  // value 4: the share of the image's pixels that must match (empty: 100)
    int scale;    // value 5: the image's scale in percent (empty: 100); 0 for the common screen scales
};

// Value 2 is "x, y" of the upper left corner and value 3 of the lower right
// (negative numbers count as 0; an empty value 3 with a start means the far
// corner of the screen); value 1 is the colour variation. Values 4 and 5, the
// similarity and the screen scale, are empty in every script written before
// they were offered, which gives the whole-image search at 100 %.
SearchFields ReadSearchFields(int tab, int step);
// Values 4 and 5 alone, as ReadSearchFields reads them: for the window
// search by image, whose other values say what to do with the window.
void ReadMatchSettings(int tab, int step, int* percent, int* scale);

// Resolves an image name against the script's folder into `file` (MAX_PATH).
// A missing file gives false with "The file '%s' does not exist" in
// StepFailureText. On the step's first pass the search is logged.
bool FindImageFile(int tab, int step, const char* name, char* file);

// The image that `name` names, searched in the step's region (masked when
// the action's name says "Masked"); when found its point is saved as the
// step's output, "x, y", and given in the optional outputs with the image's
// size. False when the file is missing or not on the screen.
bool FindImageAndSave(int tab, int step, const char* name, int* outX = nullptr, int* outY = nullptr,
                      int* outWidth = nullptr, int* outHeight = nullptr);
