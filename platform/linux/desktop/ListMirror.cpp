#include "platform/linux/desktop/ListMirror.h"

#include "platform/Gestures.h"
#include "platform/linux/desktop/Application.h"
#include "platform/linux/desktop/Pictures.h"
#include "platform/linux/desktop/Theme.h"

#include <QAccessible>
#include <QHeaderView>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QStyledItemDelegate>
#include <QToolTip>
#include <algorithm>

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
    return parent.isValid() ? 0 : static_cast<int>(shown_.size());
}

QVariant ListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= list_.Count()) return {};
    const ListRow& row = list_.Row(index.row() + 1);
    const std::size_t column = shown_[static_cast<std::size_t>(index.column())];
    const bool first = column == 0;
    switch (role) {
    case Qt::DisplayRole: {
        if (first) return ShownText(row.text);
        return column <= row.subItems.size() ? ShownText(row.subItems[column - 1]) : QString();
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
    if (role != Qt::DisplayRole || section < 0 || section >= columnCount()) return {};
    return ToQString(Column(section).title);
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

void ListModel::Reset() {
    beginResetModel();
    rows_ = list_.Count();
    shown_.clear();
    for (std::size_t column = 0; column < list_.Columns().size(); ++column)
        if (list_.Columns()[column].width > 0) shown_.push_back(column);
    endResetModel();
}

ListMirror::ListMirror(ListView& list, QWidget* parent) : QTreeView(parent), list_(list), model_(list) {
    setModel(&model_);
    show_.setSingleShot(true);
    connect(&show_, &QTimer::timeout, this, [this] { scrollTo(model_.index(toShow_ - 1, 0)); });
    setItemDelegate(new RowDelegate(this));
    OutlineIndicators(*this);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
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
}

void ListMirror::Changed(Aspect aspect, std::int32_t row) {
    switch (aspect) {
    case Aspect::RowAdded:
        if (isVisible()) model_.RowAdded(row); // else all at once, when it is shown
        break;
    case Aspect::RowChanged: PaintRow(row); break;
    case Aspect::RowChecked:
        PaintRow(row);
        TellReaders(row);
        break;
    case Aspect::RowShown: // at the next DoEvents: each time it scrolls, a view asks the screen for the pointer
        toShow_ = row;
        show_.start();
        break;
    case Aspect::Cleared: model_.Reset(); break;
    case Aspect::Columns:
        model_.Reset();
        ShareWidth();
        break;
    default: viewport()->update(); break;
    }
}

// The view keeps nothing of a row, so it need not be told what of it is new.
void ListMirror::PaintRow(std::int32_t row) {
    if (!isVisible()) return;
    const QRect cell = visualRect(model_.index(row - 1, 0));
    viewport()->update(0, cell.top(), viewport()->width(), cell.height());
}

void ListMirror::TellReaders(std::int32_t row) {
    if (!isVisible() || !QAccessible::isActive()) return;
    QAccessible::State changed;
    changed.checked = true;
    QAccessibleStateChangeEvent event(this, changed);
    event.setChild(row * model_.columnCount()); // its first cell: the headers are the row before the first
    QAccessible::updateAccessibility(&event);
}

// Wide enough for its title, and for the text that the record wants to fit.
int ListMirror::NarrowestWidth(int column) const {
    QFont bold = font();
    bold.setBold(true);
    const int text = qCeil(QFontMetricsF(bold).horizontalAdvance(ToQString(model_.Column(column).fits)));
    const int margin = style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, this) + 1;
    const int before =
        column == 0 // check box and picture, each with its margins
            ? style()->pixelMetric(QStyle::PM_IndicatorWidth, nullptr, this) + iconSize().width() + 4 * margin
            : 0;
    return qMax(header()->sectionSizeHint(column), before + text + 2 * margin);
}

void ListMirror::ShareWidth() {
    if (sizedByUser_) return;
    std::vector<ListColumn> columns;
    std::vector<int> narrowest;
    for (int column = 0; column < model_.columnCount(); ++column) {
        columns.push_back(model_.Column(column));
        narrowest.push_back(NarrowestWidth(column));
    }
    sharing_ = true;
    int column = 0;
    for (const int width : ColumnWidths(columns, narrowest, viewport()->width()))
        header()->resizeSection(column++, width);
    sharing_ = false;
}

// Space works on the selected rows; with Ctrl it adds the row to them or takes it out.
void ListMirror::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Space && event->key() != Qt::Key_Select) {
        QTreeView::keyPressEvent(event);
        return;
    }
    event->accept();
    if (event->isAutoRepeat()) return;
    if (event->modifiers() & Qt::ControlModifier)
        selectionModel()->select(currentIndex(), QItemSelectionModel::Toggle | QItemSelectionModel::Rows);
    else
        ToggleChosenRows();
}

void ListMirror::ToggleChosenRows() {
    std::vector<std::int32_t> rows;
    for (const QItemSelectionRange& range : selectionModel()->selection())
        for (int row = range.top(); row <= range.bottom(); ++row) rows.push_back(row + 1);
    if (rows.empty() && currentIndex().isValid()) rows.push_back(currentIndex().row() + 1);
    std::sort(rows.begin(), rows.end());
    RunGesture([&] { list_.UserToggleRows(rows); });
}

void ListMirror::showEvent(QShowEvent* event) {
    if (model_.rowCount() != list_.Count()) model_.Reset();
    QTreeView::showEvent(event);
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
