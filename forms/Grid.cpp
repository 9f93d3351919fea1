#include "forms/Grid.h"

namespace tv {

Grid::Grid(Form* form, QString name, int index, int columns)
    : Control(form, std::move(name), index), columns_(size_t(columns > 0 ? columns : 1)) {}

void Grid::setColumnCaption(int col, const QString& caption) {
    if (!validColumn(col) || columns_[size_t(col)].caption == caption) return;
    columns_[size_t(col)].caption = caption;
    changed();
}

void Grid::setColumnVisible(int col, bool visible) {
    if (!validColumn(col) || columns_[size_t(col)].visible == visible) return;
    columns_[size_t(col)].visible = visible;
    changed();
}

void Grid::setColumnWidth(int col, int width) {
    if (!validColumn(col)) return;
    columns_[size_t(col)].width = width;
    changed();
}

QString Grid::cell(int row, int col) const {
    if (row < 0 || row >= rowCount() || !validColumn(col)) return QString();
    return rows_[size_t(row)][size_t(col)];
}

GridRow Grid::fitted(GridRow row) const {
    row.resize(size_t(columnCount()));
    return row;
}

void Grid::setRows(std::vector<GridRow> rows) {
    for (GridRow& r : rows) r = fitted(std::move(r));
    rows_ = std::move(rows);
    if (row_ >= rowCount()) row_ = rowCount() > 0 ? rowCount() - 1 : 0;
    changed();
}

void Grid::appendRow(GridRow row) {
    rows_.push_back(fitted(std::move(row)));
    changed();
}

bool Grid::editCell(int row, int col, const QString& text) {
    if (row < 0 || row >= rowCount() || !validColumn(col)) return false;
    row_ = row;
    col_ = col;
    QString& cellText = rows_[size_t(row)][size_t(col)];
    if (cellText == text) return true;
    editText_ = text;
    int cancel = 0;
    fire(BeforeColUpdate, col, cellText, cancel);
    if (cancel) {
        changed();  // the view shows the old value again
        return false;
    }
    cellText = text;
    changed();
    fire(AfterColUpdate, col);
    return true;
}

bool Grid::insertRow(int col, const QString& text) {
    if (!validColumn(col)) return false;
    row_ = rowCount();
    col_ = col;
    editText_ = text;
    int cancel = 0;
    fire(BeforeColUpdate, col, QString(), cancel);
    if (cancel) {
        changed();
        return false;
    }
    GridRow r = blankRow();
    r[size_t(col)] = text;
    rows_.push_back(std::move(r));
    changed();
    fire(AfterInsert);
    return true;
}

bool Grid::deleteRow(int row) {
    if (row < 0 || row >= rowCount()) return false;
    rows_.erase(rows_.begin() + row);
    row_ = row < rowCount() ? row : (rowCount() > 0 ? rowCount() - 1 : 0);
    changed();
    fire(AfterDelete);
    return true;
}

}  // namespace tv
