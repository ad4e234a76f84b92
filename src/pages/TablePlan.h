// Where the cells of a table stand on its grid, once merged cells are counted. A value; any thread.
#pragma once

#include "pages/PageNode.h"

#include <vector>

namespace corvelle {

struct TablePlan
{
    struct Slot
    {
        int row = 0, column = 0;
        int rowSpan = 1, colSpan = 1;   // within the grid
        const PageNode* cell = nullptr; // in the rows that the plan was made of
        bool isHeader = false;
    };

    std::vector<Slot> cells; // row by row
    int rowCount = 0, columnCount = 0;
    int headCount = 0;          // rows at the top that hold header cells alone
    std::vector<double> widths; // points of each column as stored; 0 where none is

    // Columns beyond 1,000 are left out. The rows must outlive the plan.
    static TablePlan of(const PageNodes& rows);
};

} // namespace corvelle
