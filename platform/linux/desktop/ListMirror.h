// Shows a ListView record as a table with check boxes. Nothing is copied: every cell is read from the record when it is
// painted, and a row that has changed is the only one painted anew. A hidden column is no column of the table, so
// nobody meets it, a screen reader included.
#pragma once

#include "platform/Controls.h"

#include <QAbstractTableModel>
#include <QTimer>
#include <QTreeView>

namespace korlan {

class ListModel : public QAbstractTableModel {
public:
    explicit ListModel(ListView& list, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override; // the user's toggle

    void RowAdded(std::int32_t row);
    void Reset(); // rows or columns have been replaced
    const ListColumn& Column(int column) const { return list_.Columns()[shown_[static_cast<std::size_t>(column)]]; }

private:
    ListView& list_;
    int rows_ = 0;                   // what the view has been told; the record is ahead of it while it tells
    std::vector<std::size_t> shown_; // the record's columns that have a width
};

class ListMirror : public QTreeView {
public:
    explicit ListMirror(ListView& list, QWidget* parent = nullptr);
    void Changed(Aspect aspect, std::int32_t row);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

private:
    void PaintRow(std::int32_t row);
    void TellReaders(std::int32_t row); // that its check mark has changed
    void ToggleChosenRows();
    int NarrowestWidth(int column) const;
    void ShareWidth(); // the columns fill the list in the proportions of the record until the user sizes one

    ListView& list_;
    ListModel model_;
    bool sharing_ = false;
    QTimer show_; // brings toShow_ into view
    std::int32_t toShow_ = 0;
    bool sizedByUser_ = false;
};

} // namespace korlan
