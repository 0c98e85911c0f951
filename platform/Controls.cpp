#include "platform/Controls.h"

#include "platform/FileSystem.h"
#include "platform/FormHost.h"
#include "platform/RuntimeError.h"

#include <algorithm>
#include <utility>

namespace korlan {

Control::Control(ControlKind kind, std::string name, std::string tag)
    : kind_(kind), name_(std::move(name)), tag_(std::move(tag)), visible_(kind != ControlKind::Form) {}

void Control::Tell(Aspect aspect, std::int32_t row) {
    ControlChanged(*this, aspect, row);
}

void Control::SetVisible(bool visible) {
    visible_ = visible;
    Tell(Aspect::Visible);
}

void Control::SetEnabled(bool enabled) {
    enabled_ = enabled;
    Tell(Aspect::Enabled);
}

void Control::SetFont(const FontSpec& font) {
    font_ = font;
    Tell(Aspect::Font);
}

void Control::SetFocus() {
    if (visible_ && enabled_) Tell(Aspect::Focus);
}

void Control::Refresh() {
    Tell(Aspect::Repaint);
}

CaptionedControl::CaptionedControl(ControlKind kind, std::string name, std::string tag, std::string designCaption)
    : Control(kind, std::move(name), std::move(tag)), designCaption_(std::move(designCaption)),
      caption_(designCaption_) {}

void CaptionedControl::SetCaption(std::string caption) {
    caption_ = std::move(caption);
    Tell(Aspect::Caption);
}

Label::Label(std::string name, std::string tag, std::string designCaption)
    : CaptionedControl(ControlKind::Label, std::move(name), std::move(tag), std::move(designCaption)) {}

Button::Button(std::string name, std::string tag, std::string designCaption)
    : CaptionedControl(ControlKind::Button, std::move(name), std::move(tag), std::move(designCaption)) {}

void Button::UserClick() {
    if (Visible() && Enabled() && OnClick) OnClick();
}

OptionButton::OptionButton(std::string name, std::string tag, std::string designCaption)
    : CaptionedControl(ControlKind::OptionButton, std::move(name), std::move(tag), std::move(designCaption)) {}

void OptionButton::Select() {
    for (OptionButton* other : group_) {
        if (other != this && other->value_) {
            other->value_ = false;
            other->Tell(Aspect::Value);
        }
    }
    value_ = true;
    Tell(Aspect::Value);
    if (OnClick) OnClick();
}

void OptionButton::SetFocus() {
    Control::SetFocus();
    if (!value_) UserClick();
}

void OptionButton::UserClick() {
    if (Visible() && Enabled()) Select();
}

ImageList::ImageList(std::string name, std::vector<std::string> keys)
    : Control(ControlKind::ImageList, std::move(name)), keys_(std::move(keys)) {}

const std::string& ImageList::Key(std::int32_t image) const {
    if (image < 1 || image > Count()) throw RuntimeError(kErrElementIndex, "Index out of bounds");
    return keys_[static_cast<std::size_t>(image - 1)];
}

std::int32_t ImageList::IndexOf(const std::string& key) const {
    const auto found = std::find(keys_.begin(), keys_.end(), key);
    if (key.empty() || found == keys_.end()) throw RuntimeError(kErrElementNotFound, "Element not found");
    return static_cast<std::int32_t>(found - keys_.begin()) + 1;
}

// One whose share would be too narrow takes what it needs; the others share what is left.
std::vector<int> ColumnWidths(const std::vector<ListColumn>& columns, const std::vector<int>& narrowest, int room) {
    constexpr int kShares = -1;
    std::vector<int> widths(columns.size(), kShares);
    std::int64_t left = room, all = 0;
    for (const ListColumn& column : columns) all += column.width;
    const auto share = [&](std::size_t i) { return all == 0 ? 0 : static_cast<int>(left * columns[i].width / all); };
    for (std::size_t i = 0; i < columns.size();) {
        if (widths[i] != kShares || share(i) >= narrowest[i]) {
            ++i;
            continue;
        }
        widths[i] = narrowest[i];
        left = std::max<std::int64_t>(0, left - narrowest[i]);
        all -= columns[i].width;
        i = 0;
    }
    for (std::size_t i = 0; i < columns.size(); ++i)
        if (widths[i] == kShares) widths[i] = share(i);
    return widths;
}

ListView::ListView(std::string name, const ImageList& smallIcons)
    : Control(ControlKind::ListView, std::move(name)), icons_(&smallIcons) {}

void ListView::ClearColumns() {
    columns_.clear();
    Tell(Aspect::Columns);
}

void ListView::AddColumn(std::string title, std::int32_t widthTwips, std::string fits) {
    columns_.push_back({std::move(title), widthTwips, std::move(fits)});
    Tell(Aspect::Columns);
}

void ListView::SetColumnWidth(std::int32_t column, std::int32_t widthTwips) {
    if (column < 1 || static_cast<std::size_t>(column) > columns_.size())
        throw RuntimeError(kErrElementIndex, "Index out of bounds");
    columns_[static_cast<std::size_t>(column - 1)].width = widthTwips;
    Tell(Aspect::Columns);
}

const ListRow& ListView::Row(std::int32_t row) const {
    return const_cast<ListView*>(this)->At(row);
}

ListRow& ListView::At(std::int32_t row) {
    if (row < 1 || row > Count()) throw RuntimeError(kErrElementIndex, "Index out of bounds");
    return rows_[static_cast<std::size_t>(row - 1)];
}

void ListView::AddRow(std::int32_t position, std::string key, std::string text, const std::string& iconKey) {
    if (position < 1 || position > Count() + 1) throw RuntimeError(kErrElementIndex, "Index out of bounds");
    const std::int32_t icon = icons_->IndexOf(iconKey);
    if (!keys_.insert(std::move(key)).second) throw RuntimeError(kErrKeyNotUnique, "Key is not unique in collection");
    ListRow row;
    row.text = std::move(text);
    row.smallIcon = icon;
    rows_.insert(rows_.begin() + (position - 1), std::move(row));
    Tell(Aspect::RowAdded, position);
}

void ListView::SetSubItem(std::int32_t row, std::int32_t subItem, SharedText text) {
    ListRow& record = At(row);
    if (subItem < 1 || static_cast<std::size_t>(subItem) >= columns_.size())
        throw RuntimeError(kErrElementIndex, "Index out of bounds");
    const auto index = static_cast<std::size_t>(subItem - 1);
    if (record.subItems.size() <= index) record.subItems.resize(columns_.size() - 1);
    record.subItems[index] = text;
    Tell(Aspect::RowChanged, row);
}

void ListView::SetRowTag(std::int32_t row, SharedText tag) {
    At(row).tag = tag;
}

void ListView::SetSmallIcon(std::int32_t row, std::int32_t image) {
    icons_->Key(image);
    At(row).smallIcon = image;
    Tell(Aspect::RowChanged, row);
}

void ListView::SetChecked(std::int32_t row, bool checked) {
    if (std::exchange(At(row).checked, checked) != checked) Tell(Aspect::RowChecked, row);
}

void ListView::SetBold(std::int32_t row, bool bold) {
    At(row).bold = bold;
    Tell(Aspect::RowChanged, row);
}

void ListView::ClearRows() {
    rows_.clear();
    keys_.clear();
    Tell(Aspect::Cleared);
}

void ListView::EnsureVisible(std::int32_t row) {
    At(row);
    Tell(Aspect::RowShown, row);
}

void ListView::SetLocked(bool locked) {
    locked_ = locked;
    Tell(Aspect::Enabled);
}

void ListView::UserToggle(std::int32_t row) {
    if (!Visible() || !Enabled() || locked_) return;
    SetChecked(row, !At(row).checked);
    if (OnItemCheck) OnItemCheck(row);
}

void ListView::UserToggleRows(const std::vector<std::int32_t>& rows) {
    const bool checked = !std::all_of(rows.begin(), rows.end(), [this](std::int32_t row) { return At(row).checked; });
    for (const std::int32_t row : rows)
        if (At(row).checked != checked) UserToggle(row);
}

ProgressBar::ProgressBar(std::string name) : Control(ControlKind::ProgressBar, std::move(name)) {}

void ProgressBar::SetProgress(std::int32_t value, std::int32_t maximum) {
    maximum_ = std::max(maximum, 0);
    value_ = std::clamp(value, 0, maximum_);
    Tell(Aspect::Value);
}

PictureBox::PictureBox(std::string name) : Control(ControlKind::PictureBox, std::move(name)) {}

FileListBox::FileListBox(std::string name) : Control(ControlKind::FileListBox, std::move(name)) {}

void FileListBox::SetPath(const std::string& folder) {
    files_ = ListNormalFiles(folder);
    path_ = folder;
}

const std::string& FileListBox::List(std::int32_t index) const {
    if (index < 0 || index >= ListCount()) throw RuntimeError(kErrElementIndex, "Index out of bounds");
    return files_[static_cast<std::size_t>(index)];
}

Form::Form(std::string name, std::string tag, std::string designCaption, float widthTwips, float heightTwips)
    : CaptionedControl(ControlKind::Form, std::move(name), std::move(tag), std::move(designCaption)),
      width_(widthTwips), height_(heightTwips) {}

void Form::Move(float left, float top) {
    left_ = left;
    top_ = top;
    Tell(Aspect::Place);
}

void Form::Show() {
    SetVisible(true);
}

void Form::Close(std::int32_t mode) {
    std::int16_t cancel = 0;
    if (OnQueryUnload) OnQueryUnload(cancel, mode);
    if (cancel != 0) return;
    if (OnUnload) OnUnload();
    SetVisible(false);
}

void Form::Unload() {
    Close(1);
}

void Form::UserClose() {
    if (Visible()) Close(0);
}

Control* Form::Find(const std::string& name) const {
    const auto found =
        std::find_if(controls_.begin(), controls_.end(), [&](const Control* c) { return c->Name() == name; });
    return found == controls_.end() ? nullptr : *found;
}

} // namespace korlan
