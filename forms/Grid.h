#pragma once
// A table editor: rows of text cells under captioned columns, which the operator edits a cell at a
// time, adds to at the end and deletes from. The program changes the table without events (and tells
// the view to redraw); the operator's gestures raise the four events the logic relies on.

#include "forms/Controls.h"

#include <QString>

#include <functional>
#include <vector>

namespace tv {

using GridRow = std::vector<QString>;

class Grid : public Control {
  public:
    Grid(Form* form, QString name, int index = -1, int columns = 4);

    // ---- columns ----
    int columnCount() const { return int(columns_.size()); }
    QString columnCaption(int col) const {
        return validColumn(col) ? columns_[size_t(col)].caption : QString();
    }
    void setColumnCaption(int col, const QString& caption);
    bool columnVisible(int col) const { return validColumn(col) && columns_[size_t(col)].visible; }
    void setColumnVisible(int col, bool visible);
    int columnWidth(int col) const { return validColumn(col) ? columns_[size_t(col)].width : 0; }
    void setColumnWidth(int col, int width);

    // ---- the table, as the program sees it (no events) ----
    int rowCount() const { return int(rows_.size()); }
    const std::vector<GridRow>& rows() const { return rows_; }
    std::vector<GridRow>& rows() { return rows_; }
    // "" outside the table.
    QString cell(int row, int col) const;
    // A row of the grid's width, every cell empty.
    GridRow blankRow() const { return GridRow(size_t(columnCount())); }
    void setRows(std::vector<GridRow> rows);
    void appendRow(GridRow row);
    // After the program changed rows() in place: the view redraws.
    void Refresh() { changed(); }

    // ---- the operator's gestures ----
    // Types text into a cell and leaves it: BeforeColUpdate may cancel, and the cell keeps its old
    // value; otherwise the cell takes the text and AfterColUpdate follows. False when cancelled.
    bool editCell(int row, int col, const QString& text);
    // Types text into a cell of the empty line below the last row: a new row at the end, then AfterInsert
    // (BeforeColUpdate first, which may refuse the row). False when refused.
    bool insertRow(int col, const QString& text);
    // Deletes a row, then AfterDelete.
    bool deleteRow(int row);
    // The text being committed, for BeforeColUpdate.
    const QString& editText() const { return editText_; }
    int row() const { return row_; }
    int col() const { return col_; }

    std::function<void(int col, const QString& oldValue, int& cancel)> BeforeColUpdate;
    std::function<void(int col)> AfterColUpdate;
    std::function<void()> AfterDelete, AfterInsert;

  private:
    struct Column {
        QString caption;
        bool visible = true;
        int width = 0;
    };
    bool validColumn(int col) const { return col >= 0 && col < columnCount(); }
    GridRow fitted(GridRow row) const;

    std::vector<Column> columns_;
    std::vector<GridRow> rows_;
    QString editText_;
    int row_ = 0, col_ = 0;
};

}  // namespace tv
