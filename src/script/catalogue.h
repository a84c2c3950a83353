// The action catalogue: one literal table of headings and actions that fills
// the actions tree, answers every look-up of an action's name, and gives the
// help its list of topics.
#pragma once

#include <windows.h>

struct CatalogueEntry {
    const char* name;
    int category;  // 2..17 for an action, 100002.. for a heading
    int image;     // index into the shared image list
    // One sentence of what the action does (for a heading, what its
    // category is for): the tree's tooltip and the help's first line.
    const char* summary;
};

enum {
    HEADING_FAVORITES = 100001,
    FAVORITES_PLACEHOLDER = 100000,
    // A heading of the tree shows the image of this number plus its place
    // (201 "Favorites", 202 "Run Program" ...): its category's picture.
    HEADING_IMAGE_BASE = 200,
};

// Every heading (after "Favorites") and action, in the order of the tree.
extern const CatalogueEntry ActionCatalogue[];
extern const int ActionCatalogueCount;

// Fills the tree control, if one is given, with "Favorites" (from the
// registry) and the catalogue, and rebuilds the look-up index from the same
// items. The reader cannot map names to categories before this has run.
void FillActionsTree(HWND tree);
// Returns 1 and the category and image of the first item labelled `name`
// (compared as lstrcmpi does) in the depth-first order of the tree, else 0
// with both set to 0.
int LookupAction(HWND tree, const char* name, int* category, int* image);
// The summary of the first entry named `name` (in any case), or "".
const char* ActionSummary(const char* name);
// The name of a category id (2..17), or "" for any other.
const char* CategoryName(int category);
