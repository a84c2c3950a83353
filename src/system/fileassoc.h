// Registering a file type with its program and verbs.
#pragma once

enum {
    VERB_OPEN = 1,
    VERB_EDIT = 2,
    VERB_RUN = 4,
    VERB_RUN_VISIBLE = 8,
};

void RegisterFileType(const char* extension, const char* program, const char* description, int iconIndex,
                      int verbs);
