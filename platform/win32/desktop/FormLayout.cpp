// Where the form's controls lie. All measures are pixels at 96 dots per inch, scaled to the window's.
#include "platform/win32/desktop/Dpi.h"
#include "platform/win32/desktop/FormView.h"

#include <algorithm>

namespace korlan {
namespace {

constexpr int kMargin = 18;
constexpr int kGap = 8;
constexpr int kPicture = 136;
constexpr int kSmallestButton = 88;
constexpr int kBar = 12;
constexpr int kIndent = 8; // of the options below their heading
constexpr int kMark = 20;  // of an option, before its text
constexpr int kList = 100; // the least height that leaves room for a few rows
constexpr int kHairline = 2;

void MoveTo(HWND window, const RECT& place) {
    SetWindowPos(window, nullptr, place.left, place.top, std::max<LONG>(place.right - place.left, 0),
                 std::max<LONG>(place.bottom - place.top, 0), SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOCOPYBITS);
}

} // namespace

// Of the caption of a button, in one line, or of an option, in lines of at most `width`; of any other control the
// height of one line is what counts.
SIZE FormView::TextSize(const Child& child, int width) const {
    const HDC device = GetDC(window_);
    const HGDIOBJ before = SelectObject(device, child.font);
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(child.window)) + 1, 0);
    text.resize(static_cast<std::size_t>(GetWindowTextW(child.window, text.data(), static_cast<int>(text.size()))));
    const bool isOption = child.control->Kind() == ControlKind::OptionButton;
    if (!isOption && child.control->Kind() != ControlKind::Button) text = L"X";
    RECT size{0, 0, width, 0};
    DrawTextW(device, text.c_str(), -1, &size, DT_CALCRECT | (isOption ? DT_WORDBREAK : DT_SINGLELINE));
    SelectObject(device, before);
    ReleaseDC(window_, device);
    return {size.right, size.bottom};
}

int FormView::HeightOf(const Child& child, int width) const {
    if (child.control->Kind() == ControlKind::ProgressBar) return Scaled(kBar, dpi_);
    const int text = static_cast<int>(TextSize(child, width - Scaled(kIndent + kMark, dpi_)).cy);
    const bool isOption = child.control->Kind() == ControlKind::OptionButton;
    return isOption ? text + Scaled(4, dpi_) : text * child.control->Place().lines + Scaled(2, dpi_);
}

// Nothing moves when the progress bar comes and goes.
bool FormView::HasPlaceIn(const Child& child, Region region) const {
    const Control& control = *child.control;
    return control.Place().region == region && (control.Visible() || control.Kind() == ControlKind::ProgressBar);
}

// 0 when nothing of it is shown.
int FormView::ColumnHeight(Region region, int width) const {
    int height = 0;
    for (const auto& child : children_)
        if (HasPlaceIn(*child, region)) height += HeightOf(*child, width) + Scaled(kGap, dpi_);
    return height;
}

int FormView::PlaceColumn(Region region, RECT room) {
    for (const auto& child : children_) {
        if (!HasPlaceIn(*child, region)) continue;
        RECT place = room;
        if (child->control->Kind() == ControlKind::OptionButton) place.left += Scaled(kIndent, dpi_);
        place.bottom = place.top + HeightOf(*child, static_cast<int>(room.right - room.left));
        MoveTo(child->window, place);
        room.top = place.bottom + Scaled(kGap, dpi_);
    }
    return static_cast<int>(room.top);
}

int FormView::ButtonHeight() const {
    int height = Scaled(24, dpi_);
    for (const auto& child : children_)
        if (child->control->Place().region == Region::Buttons)
            height = std::max(height, static_cast<int>(TextSize(*child).cy) + Scaled(10, dpi_));
    return height;
}

int FormView::ButtonWidth(const Child& button) const {
    return std::max(static_cast<int>(TextSize(button).cx) + Scaled(24, dpi_), Scaled(kSmallestButton, dpi_));
}

// The least size of the window's inside that has room for all that is shown, if it is `width` wide at the time.
SIZE FormView::RoomNeeded(int width) const {
    const int gap = Scaled(kGap, dpi_), margins = 2 * Scaled(kMargin, dpi_);
    int side = margins, buttons = -gap, height = margins + ButtonHeight() + gap + Scaled(kHairline, dpi_);
    for (const auto& child : children_) {
        if (HasPlaceIn(*child, Region::Side)) side += Scaled(kPicture, dpi_);
        if (HasPlaceIn(*child, Region::Buttons)) buttons += ButtonWidth(*child) + gap;
        if (HasPlaceIn(*child, Region::List)) height += Scaled(kList, dpi_);
    }
    const int column = std::max(width - side, buttons);
    for (const Region region : {Region::Heading, Region::Status, Region::Reminder, Region::Message})
        height += ColumnHeight(region, column);
    return {side + buttons, height};
}

// From the right: the last button of the form's order ends the row.
void FormView::PlaceButtons(const RECT& row) {
    RECT place = row;
    for (auto child = children_.rbegin(); child != children_.rend(); ++child) {
        const Control& control = *(*child)->control;
        if (control.Place().region != Region::Buttons || !control.Visible()) continue;
        place.left = place.right - ButtonWidth(**child);
        MoveTo((*child)->window, place);
        place.right = place.left - Scaled(kGap, dpi_);
    }
}

void FormView::LayOut() {
    RECT page{};
    GetClientRect(window_, &page);
    if (IsIconic(window_) || page.right == 0) return;
    if (const SIZE needed = RoomNeeded(static_cast<int>(page.right));
        !IsZoomed(window_) && (page.right < needed.cx || page.bottom < needed.cy)) { // the window grows
        RECT outer{};
        GetWindowRect(window_, &outer);
        SetWindowPos(window_, nullptr, 0, 0, outer.right - outer.left, outer.bottom - outer.top,
                     SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
        GetClientRect(window_, &page);
    }
    const int gap = Scaled(kGap, dpi_);
    for (const auto& child : children_) {
        if (child->control->Place().region != Region::Side || !child->control->Visible()) continue;
        MoveTo(child->window, {page.left, 0, page.left + Scaled(kPicture, dpi_), page.bottom});
        page.left += Scaled(kPicture, dpi_);
    }
    InflateRect(&page, -Scaled(kMargin, dpi_), -Scaled(kMargin, dpi_));
    page.bottom += Scaled(4, dpi_);
    PlaceButtons({page.left, page.bottom - ButtonHeight(), page.right, page.bottom});
    page.bottom -= ButtonHeight() + gap + Scaled(kHairline, dpi_);
    hairline_ = static_cast<int>(page.bottom);
    const int width = static_cast<int>(page.right - page.left);
    page.bottom -= gap + ColumnHeight(Region::Message, width);
    PlaceColumn(Region::Message, {page.left, page.bottom + gap, page.right, 0});
    for (const Region region : {Region::Heading, Region::Status}) page.top = PlaceColumn(region, page);
    const int reminder = ColumnHeight(Region::Reminder, width);
    for (const auto& child : children_) { // the list takes what is left
        if (child->control->Place().region != Region::List || !child->control->Visible()) continue;
        MoveTo(child->window, {page.left, page.top, page.right, page.bottom - reminder});
        if (child->list) child->list->ShareWidth();
        page.top = page.bottom - reminder;
    }
    PlaceColumn(Region::Reminder, page);
    InvalidateRect(window_, nullptr, TRUE);
}

void FormView::PaintHairline(HDC target) const {
    RECT client{};
    GetClientRect(window_, &client);
    const int margin = Scaled(kMargin, dpi_), left = margin + Scaled(kPicture, dpi_);
    const RECT line{left, hairline_, client.right - margin, hairline_ + std::max(1, Scaled(1, dpi_))};
    FillRect(target, &line, GetSysColorBrush(COLOR_3DSHADOW));
}

} // namespace korlan
