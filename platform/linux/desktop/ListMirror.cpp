#include "platform/linux/desktop/ListMirror.h"

#include "platform/Gestures.h"
#include "platform/linux/desktop/Application.h"
#include "platform/linux/desktop/Pictures.h"
#include "platform/linux/desktop/Theme.h"

#include <QHeaderView>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QStyledItemDelegate>
#include <QToolTip>
#include <numeric>

namespace korlan {

namespace {

constexpr int kRowAir = 5; // pixels added to the height of a row

class RowDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        return QStyledItemDelegate::sizeHint(option, index) + QSize(0, kRowAir);
    }
};

} // namespace

ListModel::ListModel(ListView& list, QObject* parent) : QAbstractTableModel(parent), list_(list) {
    Reset();
}

int ListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : rows_;
}

int ListModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : columns_;
}

QVariant ListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= list_.Count()) return {};
    const ListRow& row = list_.Row(index.row() + 1);
    const bool first = index.column() == 0;
    switch (role) {
    case Qt::DisplayRole: {
        if (first) return ShownText(row.text);
        const auto subItem = static_cast<std::size_t>(index.column() - 1);
        return subItem < row.subItems.size() ? ShownText(row.subItems[subItem]) : QString();
    }
    case Qt::CheckStateRole: return first ? QVariant(row.checked ? Qt::Checked : Qt::Unchecked) : QVariant();
    case Qt::DecorationRole: return first ? QVariant(ListIcon(row.smallIcon)) : QVariant();
    case Qt::FontRole: {
        if (!row.bold) return {};
        QFont font;
        font.setBold(true);
        return font;
    }
    default: return {};
    }
}

QVariant ListModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal) return {};
    if (role == Qt::TextAlignmentRole) return QVariant(Qt::AlignLeft | Qt::AlignVCenter);
    const auto column = static_cast<std::size_t>(section);
    if (role != Qt::DisplayRole || column >= list_.Columns().size()) return {};
    return ToQString(list_.Columns()[column].title);
}

Qt::ItemFlags ListModel::flags(const QModelIndex& index) const {
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    if (index.column() == 0 && !list_.Locked()) flags |= Qt::ItemIsUserCheckable;
    return flags;
}

bool ListModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::CheckStateRole || index.column() != 0 || index.row() >= list_.Count()) return false;
    const std::int32_t row = index.row() + 1;
    const bool wanted = value.toInt() == Qt::Checked;
    if (list_.Row(row).checked != wanted) RunGesture([&] { list_.UserToggle(row); });
    return true;
}

void ListModel::RowAdded(std::int32_t row) {
    beginInsertRows({}, row - 1, row - 1);
    ++rows_;
    endInsertRows();
}

void ListModel::RowChanged(std::int32_t row) {
    if (row >= 1 && row <= rows_ && columns_ > 0) emit dataChanged(index(row - 1, 0), index(row - 1, columns_ - 1));
}

void ListModel::Reset() {
    beginResetModel();
    rows_ = list_.Count();
    columns_ = static_cast<int>(list_.Columns().size());
    endResetModel();
}

ListMirror::ListMirror(ListView& list, QWidget* parent) : QTreeView(parent), list_(list), model_(list) {
    setModel(&model_);
    setItemDelegate(new RowDelegate(this));
    OutlineIndicators(*this);
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setItemsExpandable(false);
    setIconSize({16, 16});
    setVerticalScrollMode(QAbstractItemView::ScrollPerItem);
    setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    setTextElideMode(Qt::ElideMiddle);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    header()->setSectionsMovable(false);
    header()->setStretchLastSection(false);
    connect(header(), &QHeaderView::sectionResized, this, [this] {
        if (!sharing_) sizedByUser_ = true;
    });
    ColumnsChanged();
}

void ListMirror::Changed(Aspect aspect, std::int32_t row) {
    switch (aspect) {
    case Aspect::RowAdded: model_.RowAdded(row); break;
    case Aspect::RowChanged: model_.RowChanged(row); break;
    case Aspect::Cleared: model_.Reset(); break;
    case Aspect::Columns: ColumnsChanged(); break;
    default: viewport()->update(); break;
    }
}

void ListMirror::ColumnsChanged() {
    if (model_.columnCount() != static_cast<int>(list_.Columns().size())) model_.Reset();
    sharing_ = true;
    for (int column = 0; column < model_.columnCount(); ++column)
        header()->setSectionHidden(column, list_.Columns()[static_cast<std::size_t>(column)].width == 0);
    sharing_ = false;
    header()->viewport()->update();
    ShareWidth();
}

void ListMirror::ShareWidth() {
    if (sizedByUser_) return;
    const std::vector<ListColumn>& columns = list_.Columns();
    const std::int64_t all = std::accumulate(columns.begin(), columns.end(), std::int64_t{0},
                                             [](std::int64_t sum, const ListColumn& c) { return sum + c.width; });
    sharing_ = true;
    for (int column = 0; column < model_.columnCount(); ++column) {
        const std::int32_t width = columns[static_cast<std::size_t>(column)].width;
        if (width == 0) continue;
        const auto share = static_cast<int>(viewport()->width() * std::int64_t{width} / all);
        header()->resizeSection(column, qMax(share, header()->sectionSizeHint(column)));
    }
    sharing_ = false;
}

void ListMirror::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Space && event->key() != Qt::Key_Select) {
        QTreeView::keyPressEvent(event);
        return;
    }
    event->accept();
    const QModelIndex box = currentIndex().siblingAtColumn(0);
    if (event->isAutoRepeat() || !(model_.flags(box) & Qt::ItemIsUserCheckable) || !box.isValid()) return;
    const bool checked = box.data(Qt::CheckStateRole).toInt() == Qt::Checked;
    model_.setData(box, checked ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
}

void ListMirror::resizeEvent(QResizeEvent* event) {
    QTreeView::resizeEvent(event);
    ShareWidth();
}

bool ListMirror::viewportEvent(QEvent* event) {
    if (event->type() != QEvent::ToolTip) return QTreeView::viewportEvent(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    const QModelIndex index = indexAt(help->pos());
    if (index.isValid() && sizeHintForIndex(index).width() > columnWidth(index.column()))
        QToolTip::showText(help->globalPos(), "<qt>" + index.data().toString().toHtmlEscaped() + "</qt>", this);
    else
        QToolTip::hideText();
    return true;
}

QSize ListMirror::sizeHint() const {
    return {420, 240};
}

QSize ListMirror::minimumSizeHint() const {
    return {240, header()->sizeHint().height() + fontMetrics().lineSpacing() * 4};
}

} // namespace korlan
