// How wide the columns of a table are.
#pragma once

#include "interface/page/LaidPiece.h"

namespace corvelle {

struct TableCells;

// Of each column what its cells would like to have, and with how little they can be read.
struct ColumnWants
{
    std::vector<double> wanted, least;
};

// By the first few hundred cells, those of tables in them too.
ColumnWants columnWants(const TableCells& cells, const PieceFacts& facts);

// The columns' edges from 0 on. They fill the width; beyond it goes what can't be narrower.
std::vector<double> columnEdges(ColumnWants wants, double width);

// The room beside the words of a cell, less where that would leave them none.
double cellSide(double cellWidth, double zoom);

} // namespace corvelle
