// Shows a ListView record as a table with check boxes. Nothing is copied: every cell is read from the record when it is
// painted, and a row that has changed is the only one painted anew.
#pragma once

#include "platform/Controls.h"

#include <QAbstractTableModel>
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
    void RowChanged(std::int32_t row);
    void Reset(); // rows or columns have been replaced

private:
    ListView& list_;
    int rows_ = 0; // what the view has been told; the record is ahead of it while it tells
    int columns_ = 0;
};

class ListMirror : public QTreeView {
public:
    explicit ListMirror(ListView& list, QWidget* parent = nullptr);
    void Changed(Aspect aspect, std::int32_t row);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

private:
    void ColumnsChanged();
    void ShareWidth(); // the columns fill the list in the proportions of the record until the user sizes one

    ListView& list_;
    ListModel model_;
    bool sharing_ = false;
    bool sizedByUser_ = false;
};

} // namespace korlan
