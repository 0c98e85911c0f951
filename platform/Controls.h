// The control records: the truth about the window. The program reads and writes these; a toolkit mirrors them and
// reports three gestures (clicked, toggled, asked to close). A setter stores the value and tells the form host.
// Rules of behaviour live in Controls.cpp, once: focus on an option button selects it and runs its click; a check mark
// set from code raises no ItemCheck; a hidden or disabled control takes no gesture; a locked list takes no toggle.
// All texts are UTF-8. Rows, columns and images count from 1. A wrong index raises 35600, an unknown key 35601.
#pragma once

#include "platform/Fonts.h"
#include "platform/SharedText.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace korlan {

enum class ControlKind { Form, Label, Button, OptionButton, ListView, ImageList, PictureBox, FileListBox, ProgressBar };

// What of a control has changed; the host re-reads that part of the record.
enum class Aspect {
    Caption,
    Visible,
    Enabled,
    Font,
    Value,
    Focus,
    Columns,
    RowAdded,
    RowChanged,
    RowChecked, // its check mark, and nothing else of it, has changed
    RowShown,   // is to be scrolled into view
    Cleared,
    Repaint,
    Place
};

// Where a control lies and how it is dressed; filled in where the form is made. A back end lays the regions out as the
// form is drawn: the side picture left of everything; right of it, from top to bottom, heading, status, list and
// reminder page (shown while one of its option buttons is), message, and the row of buttons. Controls of one region
// stand in the form's order. Region::None is not laid out.
enum class Region { None, Side, Heading, Status, List, Reminder, Message, Buttons };
enum class FontRole { Body, Heading, Title };

struct Placement {
    Region region = Region::None;
    std::int32_t lines = 1; // lines a label has room for
    FontRole font = FontRole::Body;
};

class Control {
public:
    Control(ControlKind kind, std::string name, std::string tag = {});
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;
    virtual ~Control() = default;

    ControlKind Kind() const { return kind_; }
    const std::string& Name() const { return name_; } // the control's own name, "cmdUpdate"
    const std::string& Tag() const { return tag_; }   // its message identifier in decimal, or empty
    bool Visible() const { return visible_; }
    bool Enabled() const { return enabled_; }
    const FontSpec& Font() const { return font_; }
    const Placement& Place() const { return place_; }
    void SetPlace(const Placement& place) { place_ = place; } // before a host shows the form
    void SetVisible(bool visible);
    void SetEnabled(bool enabled);
    void SetFont(const FontSpec& font);
    virtual void SetFocus(); // a hidden or disabled control takes none
    void Refresh();          // asks the host to paint now (at most once a display frame)

protected:
    void Tell(Aspect aspect, std::int32_t row = 0);

private:
    ControlKind kind_;
    std::string name_;
    std::string tag_;
    bool visible_; // the form starts hidden, its controls visible
    bool enabled_ = true;
    FontSpec font_;
    Placement place_;
};

// A control with a caption. "&" in a caption marks the mnemonic of a button; labels show captions as they stand.
class CaptionedControl : public Control {
public:
    CaptionedControl(ControlKind kind, std::string name, std::string tag, std::string designCaption);
    const std::string& Caption() const { return caption_; }
    const std::string& DesignCaption() const { return designCaption_; } // the English caption it was made with
    void SetCaption(std::string caption);

private:
    std::string designCaption_;
    std::string caption_;
};

class Label : public CaptionedControl {
public:
    explicit Label(std::string name, std::string tag = {}, std::string designCaption = {});
};

class Button : public CaptionedControl {
public:
    Button(std::string name, std::string tag, std::string designCaption);
    std::function<void()> OnClick;
    void UserClick(); // gesture
};

// The option buttons of the form are one group: selecting one clears the others.
class OptionButton : public CaptionedControl {
public:
    OptionButton(std::string name, std::string tag, std::string designCaption);
    bool Value() const { return value_; }
    void SetGroup(std::vector<OptionButton*> group) { group_ = std::move(group); }
    void SetFocus() override; // selects it and runs its click
    std::function<void()> OnClick;
    void UserClick(); // gesture: selects it and runs its click

private:
    void Select();
    bool value_ = false;
    std::vector<OptionButton*> group_;
};

// Pictures by number and key. The host owns the pixels; here are order and keys only.
class ImageList : public Control {
public:
    ImageList(std::string name, std::vector<std::string> keys);
    std::int32_t Count() const { return static_cast<std::int32_t>(keys_.size()); }
    const std::string& Key(std::int32_t image) const;
    std::int32_t IndexOf(const std::string& key) const;

private:
    std::vector<std::string> keys_;
};

struct ListColumn {
    std::string title;
    std::int32_t width = 1440; // twips; 0 = hidden: neither shown nor told to a screen reader
    std::string fits;          // a text that must fit even when bold, whatever the font; empty: none
};

// Pixels for each: together they fill `room` in the ratio of their own widths, but none is narrower than `narrowest`.
std::vector<int> ColumnWidths(const std::vector<ListColumn>& columns, const std::vector<int>& narrowest, int room);

struct ListRow {
    std::string text;                 // first column
    std::vector<SharedText> subItems; // [0] is sub-item 1
    SharedText tag;
    std::int32_t smallIcon = 0; // image number, 0 = none
    bool checked = false;
    bool bold = false;
};

// A list in report view with check boxes.
class ListView : public Control {
public:
    ListView(std::string name, const ImageList& smallIcons);
    const std::vector<ListColumn>& Columns() const { return columns_; }
    void ClearColumns();
    void AddColumn(std::string title, std::int32_t widthTwips, std::string fits = {});
    void SetColumnWidth(std::int32_t column, std::int32_t widthTwips);

    std::int32_t Count() const { return static_cast<std::int32_t>(rows_.size()); }
    const ListRow& Row(std::int32_t row) const;
    // Inserts before `position` (Count() + 1 = at the end); a key in use raises 35602. No row is found by its key.
    void AddRow(std::int32_t position, std::string key, std::string text, const std::string& iconKey);
    void SetSubItem(std::int32_t row, std::int32_t subItem, SharedText text); // subItem from 1
    void SetRowTag(std::int32_t row, SharedText tag);
    void SetSmallIcon(std::int32_t row, std::int32_t image);
    void SetChecked(std::int32_t row, bool checked); // raises no ItemCheck
    void SetBold(std::int32_t row, bool bold);
    void ClearRows();
    void EnsureVisible(std::int32_t row); // scrolls the list until the row is in view

    bool Locked() const { return locked_; } // a locked list takes no toggle
    void SetLocked(bool locked);
    const ImageList& SmallIcons() const { return *icons_; }

    std::function<void(std::int32_t row)> OnItemCheck; // the new state is already set
    void UserToggle(std::int32_t row);                 // gesture
    // Gesture on several rows at once: all come to one state, unchecked when all were checked and checked otherwise. A
    // row that has that state already, or comes to it by the handler of another, is not toggled.
    void UserToggleRows(const std::vector<std::int32_t>& rows);

private:
    ListRow& At(std::int32_t row);
    const ImageList* icons_;
    std::vector<ListColumn> columns_;
    std::vector<ListRow> rows_;
    std::unordered_set<std::string> keys_;
    bool locked_ = false;
};

// How much of a work is done. It shows no text.
class ProgressBar : public Control {
public:
    explicit ProgressBar(std::string name);
    std::int32_t Value() const { return value_; } // 0 to Maximum()
    std::int32_t Maximum() const { return maximum_; }
    void SetProgress(std::int32_t value, std::int32_t maximum);

private:
    std::int32_t value_ = 0;
    std::int32_t maximum_ = 0;
};

class PictureBox : public Control {
public:
    explicit PictureBox(std::string name);
};

// A list of the normal files of one folder, read when the folder is set. Files count from 0.
class FileListBox : public Control {
public:
    explicit FileListBox(std::string name);
    void SetPath(const std::string& folder); // a folder that cannot be read raises 76
    const std::string& Path() const { return path_; }
    std::int32_t ListCount() const { return static_cast<std::int32_t>(files_.size()); }
    const std::string& List(std::int32_t index) const;

private:
    std::string path_;
    std::vector<std::string> files_;
};

// The window itself. Places and sizes are twips (1/1440 inch).
class Form : public CaptionedControl {
public:
    Form(std::string name, std::string tag, std::string designCaption, float widthTwips, float heightTwips);
    float Left() const { return left_; }
    float Top() const { return top_; }
    float Width() const { return width_; }
    float Height() const { return height_; }
    void Move(float left, float top);
    void Show();
    // Asks OnQueryUnload; unless it sets cancel, runs OnUnload and hides the window.
    void Unload();

    // Every control of the form, in reading (Tab) order.
    const std::vector<Control*>& Controls() const { return controls_; }
    void SetControls(std::vector<Control*> controls) { controls_ = std::move(controls); }
    Control* Find(const std::string& name) const; // null when there is none

    std::function<void(std::int16_t& cancel, std::int32_t mode)> OnQueryUnload; // mode 0: the user's close box, 1: code
    std::function<void()> OnUnload;
    void UserClose(); // gesture

private:
    void Close(std::int32_t mode);
    std::vector<Control*> controls_;
    float left_ = 0, top_ = 0, width_ = 0, height_ = 0;
};

} // namespace korlan
