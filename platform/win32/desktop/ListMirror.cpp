#include "platform/win32/desktop/ListMirror.h"

#include "platform/Gestures.h"
#include "platform/win32/Wide.h"
#include "platform/win32/desktop/Dpi.h"
#include "platform/win32/desktop/Pictures.h"

#include <algorithm>

namespace korlan {
namespace {

constexpr int kIconSide = 16, kMargins = 12; // pixels at 96 dots per inch
constexpr UINT kUnchecked = INDEXTOSTATEIMAGEMASK(1), kChecked = INDEXTOSTATEIMAGEMASK(2);

bool Answers(const NMHDR& header, UINT code) {
    return header.code == code;
}

} // namespace

ListMirror::ListMirror(ListView& list, HWND parent, int identifier)
    : record_(list),
      list_(CreateWindowExW(WS_EX_CLIENTEDGE, WC_LISTVIEWW, L"",
                            WS_CHILD | WS_TABSTOP | LVS_REPORT | LVS_OWNERDATA | LVS_SHOWSELALWAYS | LVS_NOSORTHEADER |
                                LVS_SHAREIMAGELISTS,
                            0, 0, 0, 0, parent, reinterpret_cast<HMENU>(static_cast<std::intptr_t>(identifier)),
                            nullptr, nullptr)) {
    constexpr DWORD kExtended =
        LVS_EX_CHECKBOXES | LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER | LVS_EX_LABELTIP | LVS_EX_INFOTIP;
    ListView_SetExtendedListViewStyle(list_, kExtended);
    ListView_SetCallbackMask(list_, LVIS_STATEIMAGEMASK);
}

ListMirror::~ListMirror() {
    DestroyWindow(list_);
    ImageList_Destroy(icons_);
    DeleteObject(bold_);
}

void ListMirror::Changed(Aspect aspect, std::int32_t row) {
    switch (aspect) {
    case Aspect::RowAdded:
    case Aspect::Cleared:
        ListView_SetItemCountEx(list_, record_.Count(), record_.Count() > 0 ? LVSICF_NOSCROLL : 0);
        InvalidateRect(list_, nullptr, FALSE);
        break;
    case Aspect::RowShown: ListView_EnsureVisible(list_, row - 1, FALSE); break;
    case Aspect::RowChecked:
    case Aspect::RowChanged: ListView_RedrawItems(list_, row - 1, row - 1); break;
    case Aspect::Columns: ColumnsChanged(); break;
    default: InvalidateRect(list_, nullptr, FALSE); break;
    }
}

void ListMirror::SetFont(HFONT font) {
    SendMessageW(list_, WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
    LOGFONTW description{};
    GetObjectW(font, sizeof description, &description);
    description.lfWeight = FW_BOLD;
    DeleteObject(bold_);
    bold_ = CreateFontIndirectW(&description);
}

void ListMirror::SetDpi(int dpi) {
    const HIMAGELIST before = icons_;
    icons_ = MakeListIcons(record_.SmallIcons().Count(), Scaled(kIconSide, dpi));
    ListView_SetImageList(list_, icons_, LVSIL_SMALL);
    ImageList_Destroy(before);
    dpi_ = dpi;
    sizedByUser_ = false;
    ShareWidth();
}

// --- Columns ---------------------------------------------------------------------------------------------------------

void ListMirror::ColumnsChanged() {
    const auto count = static_cast<int>(record_.Columns().size());
    for (int have = Header_GetItemCount(ListView_GetHeader(list_)); have > count; --have)
        ListView_DeleteColumn(list_, have - 1);
    for (int i = 0; i < count; ++i) {
        std::wstring title = Wide(record_.Columns()[static_cast<std::size_t>(i)].title);
        LVCOLUMNW column{};
        column.mask = LVCF_TEXT | LVCF_SUBITEM;
        column.iSubItem = i;
        column.pszText = title.data();
        if (!SendMessageW(list_, LVM_SETCOLUMNW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&column)))
            SendMessageW(list_, LVM_INSERTCOLUMNW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&column));
    }
    ShareWidth();
}

// Wide enough for the title, and for the text that the record wants to fit; 0 for a hidden one.
int ListMirror::NarrowestWidth(const ListColumn& column) const {
    if (column.width == 0) return 0;
    const HDC device = GetDC(list_);
    const HGDIOBJ before = SelectObject(device, bold_);
    LONG text = 0;
    for (const std::string* one : {&column.title, &column.fits}) {
        const std::wstring wide = Wide(*one);
        SIZE size{};
        GetTextExtentPoint32W(device, wide.c_str(), static_cast<int>(wide.size()), &size);
        text = std::max(text, size.cx);
    }
    SelectObject(device, before);
    ReleaseDC(list_, device);
    const bool isFirst = &column == &record_.Columns().front(); // a check box and a picture stand before its text
    return static_cast<int>(text) + Scaled(isFirst ? kMargins + 2 * kIconSide + kMargins / 2 : kMargins, dpi_);
}

// Until the user has drawn one.
void ListMirror::ShareWidth() {
    if (sizedByUser_) return;
    RECT client{};
    GetClientRect(list_, &client);
    const bool hasBar = (GetWindowLongW(list_, GWL_STYLE) & WS_VSCROLL) != 0;
    const int room = static_cast<int>(client.right) - (hasBar ? 0 : GetSystemMetrics(SM_CXVSCROLL));
    std::vector<int> narrowest;
    for (const ListColumn& column : record_.Columns()) narrowest.push_back(NarrowestWidth(column));
    sharing_ = true;
    int column = 0;
    for (const int width : ColumnWidths(record_.Columns(), narrowest, std::max(room, 0)))
        ListView_SetColumnWidth(list_, column++, width);
    sharing_ = false;
}

// --- Rows ------------------------------------------------------------------------------------------------------------

void ListMirror::GiveItem(NMLVDISPINFOW& info) const {
    LVITEMW& item = info.item;
    if (item.iItem < 0 || item.iItem >= record_.Count()) return;
    const ListRow& row = record_.Row(item.iItem + 1);
    if ((item.mask & LVIF_TEXT) != 0 && item.cchTextMax > 0) {
        constexpr std::size_t kLongest = 1000; // nobody reads a longer one
        const auto sub = static_cast<std::size_t>(item.iSubItem);
        const std::string text = sub == 0 ? row.text : sub <= row.subItems.size() ? *row.subItems[sub - 1] : "";
        lstrcpynW(item.pszText, Wide(text.substr(0, kLongest)).c_str(), item.cchTextMax);
    }
    if ((item.mask & LVIF_IMAGE) != 0) item.iImage = row.smallIcon - 1;
    if ((item.mask & LVIF_STATE) != 0) {
        item.stateMask |= LVIS_STATEIMAGEMASK;
        item.state = (item.state & ~static_cast<UINT>(LVIS_STATEIMAGEMASK)) | (row.checked ? kChecked : kUnchecked);
    }
}

LRESULT ListMirror::Paint(NMLVCUSTOMDRAW& draw) const {
    if (draw.nmcd.dwDrawStage == CDDS_PREPAINT) return CDRF_NOTIFYITEMDRAW;
    const auto row = static_cast<std::int32_t>(draw.nmcd.dwItemSpec) + 1;
    if (draw.nmcd.dwDrawStage != CDDS_ITEMPREPAINT || row > record_.Count() || !record_.Row(row).bold)
        return CDRF_DODEFAULT;
    SelectObject(draw.nmcd.hdc, bold_);
    return CDRF_NEWFONT;
}

void ListMirror::Toggle(std::int32_t row) {
    if (row < 1 || row > record_.Count()) return;
    RunGesture([&] { record_.UserToggle(row); });
}

void ListMirror::ToggleSelected() {
    std::vector<std::int32_t> rows;
    for (int item = -1; (item = ListView_GetNextItem(list_, item, LVNI_SELECTED)) >= 0;) rows.push_back(item + 1);
    if (rows.size() > 1)
        RunGesture([&] { record_.UserToggleRows(rows); });
    else
        Toggle(ListView_GetNextItem(list_, -1, LVNI_FOCUSED) + 1);
}

LRESULT ListMirror::Notified(NMHDR& header, bool& answered) {
    answered = true;
    if (header.hwndFrom == ListView_GetHeader(list_)) {
        const auto& change = reinterpret_cast<NMHEADERW&>(header);
        const bool begins = Answers(header, HDN_BEGINTRACKW) || Answers(header, HDN_DIVIDERDBLCLICKW);
        const auto column = static_cast<std::size_t>(change.iItem);
        if (begins && column < record_.Columns().size() && record_.Columns()[column].width == 0)
            return TRUE; // a hidden column stays hidden
        if (begins && !sharing_) sizedByUser_ = true;
    } else if (Answers(header, LVN_GETDISPINFOW)) {
        GiveItem(reinterpret_cast<NMLVDISPINFOW&>(header));
        return 0;
    } else if (Answers(header, NM_CUSTOMDRAW)) {
        return Paint(reinterpret_cast<NMLVCUSTOMDRAW&>(header));
    } else if (Answers(header, NM_CLICK) || Answers(header, NM_DBLCLK)) {
        LVHITTESTINFO hit{};
        hit.pt = reinterpret_cast<NMITEMACTIVATE&>(header).ptAction;
        ListView_HitTest(list_, &hit);
        if ((hit.flags & LVHT_ONITEMSTATEICON) != 0 && (hit.flags & LVHT_ONITEMLABEL) == 0) Toggle(hit.iItem + 1);
        return 0;
    } else if (Answers(header, NM_SETFOCUS) && ListView_GetNextItem(list_, -1, LVNI_FOCUSED) < 0) {
        ListView_SetItemState(list_, 0, LVIS_FOCUSED, LVIS_FOCUSED); // the space bar is for some row
    } else if (Answers(header, LVN_KEYDOWN)) {
        const WORD key = reinterpret_cast<NMLVKEYDOWN&>(header).wVKey;
        const bool withControl = GetKeyState(VK_CONTROL) < 0;
        if (key == VK_SPACE && !withControl) ToggleSelected();
        if (key == 'A' && withControl) ListView_SetItemState(list_, -1, LVIS_SELECTED, LVIS_SELECTED);
        return TRUE;
    }
    answered = false;
    return 0;
}

} // namespace korlan
