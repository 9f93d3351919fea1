#pragma once
// The view of a grid control: a table with an empty line at the end for a new row. Typing into a cell
// and leaving it is the operator's edit of the model (which may refuse it); Delete removes the rows of
// the selection.

#include <QWidget>

namespace tv {

class Grid;

QWidget* makeGridView(Grid& grid, QWidget* parent);

}  // namespace tv
