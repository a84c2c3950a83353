// The handler of category 10 ("Files/Folders").
#pragma once

int FileAction(int tab, int step);
