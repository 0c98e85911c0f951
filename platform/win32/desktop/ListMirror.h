// The list of the form: a report list that asks the record for everything it shows, so that the record stays the truth.
#pragma once

#include "platform/Controls.h"

#include <windows.h>

#include <commctrl.h>

namespace korlan {

class ListMirror {
public:
    ListMirror(ListView& list, HWND parent, int identifier);
    ListMirror(const ListMirror&) = delete;
    ListMirror& operator=(const ListMirror&) = delete;
    ~ListMirror();

    HWND Handle() const { return list_; }
    void Changed(Aspect aspect, std::int32_t row);
    void SetFont(HFONT font);
    void SetDpi(int dpi);
    void ShareWidth();                               // after a change of the window's size
    LRESULT Notified(NMHDR& header, bool& answered); // what the control tells its parent

private:
    void ColumnsChanged();
    int NarrowestWidth(const ListColumn& column) const;
    void GiveItem(NMLVDISPINFOW& info) const;
    LRESULT Paint(NMLVCUSTOMDRAW& draw) const;
    void Toggle(std::int32_t row);
    void ToggleSelected(); // the focused row, or all that are selected

    ListView& record_;
    HWND list_;
    HIMAGELIST icons_ = nullptr;
    HFONT bold_ = nullptr;
    int dpi_ = 96;
    bool sizedByUser_ = false, sharing_ = false;
};

} // namespace korlan
