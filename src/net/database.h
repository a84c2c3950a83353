// The handler of category 12 ("Database"): one statement on an ODBC data
// source, its result kept as the table that the Dataset loop walks.
#pragma once

#include <windows.h>

extern char OdbcErrorText[256];

int DatabaseAction(int tab, int step);
// The data source names for the "Data Source" property; with the
// administrator line appended when asked.
void FillDataSourceList(HWND comboBox, int withAdministrator);
