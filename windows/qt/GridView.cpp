#include "windows/qt/GridView.h"

#include "forms/Grid.h"

#include <QAbstractTableModel>
#include <QEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QPointer>
#include <QTableView>
#include <QTimer>

#include <set>

namespace tv {

namespace {

class GridModel : public QAbstractTableModel {
  public:
    GridModel(Grid& g, QObject* parent) : QAbstractTableModel(parent), g_(g) {}
    int rowCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : g_.rowCount() + 1;
    }
    int columnCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : g_.columnCount();
    }
    QVariant data(const QModelIndex& i, int role) const override {
        if (role != Qt::DisplayRole && role != Qt::EditRole) return {};
        return g_.cell(i.row(), i.column());
    }
    Qt::ItemFlags flags(const QModelIndex& i) const override {
        return QAbstractTableModel::flags(i) | Qt::ItemIsEditable;
    }
    bool setData(const QModelIndex& i, const QVariant& value, int role) override {
        if (role != Qt::EditRole || !i.isValid()) return false;
        const QString text = value.toString();
        // The model's events may reorder the table: the view redraws after the edit has ended.
        if (i.row() < g_.rowCount()) return g_.editCell(i.row(), i.column(), text);
        if (text.isEmpty()) return false;
        return g_.insertRow(i.column(), text);
    }
    QVariant headerData(int section, Qt::Orientation o, int role) const override {
        if (role != Qt::DisplayRole) return {};
        if (o == Qt::Horizontal) return g_.columnCaption(section);
        return section < g_.rowCount() ? QVariant(section + 1) : QVariant(QStringLiteral("*"));
    }
    void reload() {
        beginResetModel();
        endResetModel();
    }

  private:
    Grid& g_;
};

class DeleteKey : public QObject {
  public:
    DeleteKey(Grid& g, QTableView* v) : QObject(v), g_(g), v_(v) {}
    bool eventFilter(QObject*, QEvent* e) override {
        if (e->type() != QEvent::KeyPress || static_cast<QKeyEvent*>(e)->key() != Qt::Key_Delete)
            return false;
        std::set<int, std::greater<int>> rows;
        for (const QModelIndex& i : v_->selectionModel()->selectedIndexes()) rows.insert(i.row());
        if (rows.empty() && v_->currentIndex().isValid()) rows.insert(v_->currentIndex().row());
        for (int r : rows) g_.deleteRow(r);  // from the bottom, so the numbers stay right
        return true;
    }

  private:
    Grid& g_;
    QTableView* v_;
};

}  // namespace

QWidget* makeGridView(Grid& g, QWidget* parent) {
    auto* view = new QTableView(parent);
    auto* model = new GridModel(g, view);
    view->setModel(model);
    view->setSelectionBehavior(QAbstractItemView::SelectRows);
    view->verticalHeader()->setDefaultSectionSize(view->fontMetrics().height() + 6);
    view->horizontalHeader()->setStretchLastSection(true);
    view->installEventFilter(new DeleteKey(g, view));
    auto pending = std::make_shared<bool>(false);
    QPointer<QTableView> guard(view);
    auto sync = [&g, view, model] {
        model->reload();
        for (int c = 0; c < g.columnCount(); ++c) {
            view->setColumnHidden(c, !g.columnVisible(c));
            if (g.columnWidth(c) > 0) view->setColumnWidth(c, g.columnWidth(c));
        }
        view->setToolTip(g.toolTip());
        view->setEnabled(g.enabled());
        view->setVisible(g.visible() && !view->property("tvUnplaced").toBool());
    };
    // Many changes in a row (a load, a sort) redraw once, when the loop next runs.
    g.viewChanged = [pending, guard, sync] {
        if (*pending) return;
        *pending = true;
        QTimer::singleShot(0, guard.data(), [pending, guard, sync] {
            *pending = false;
            if (guard) sync();
        });
    };
    sync();
    return view;
}

}  // namespace tv
