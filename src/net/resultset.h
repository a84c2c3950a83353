// The dataset of the last query, which the Dataset loop walks. The database
// actions fill it; until a query has run it is empty.
#pragma once

#include <string>
#include <vector>

struct ResultSetData {
    int rows = 0;
    int columns = 0;
    std::vector<std::string> cells;  // row by row, `columns` cells a row
};

extern ResultSetData ResultSet;
