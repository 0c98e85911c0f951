// The window of the form: one child window a control record, laid out by what the records say of their place.
#pragma once

#include "platform/Controls.h"
#include "platform/win32/desktop/ListMirror.h"

#include <windows.h>

#include <chrono>
#include <memory>
#include <unordered_map>

namespace korlan {

class FormView {
public:
    explicit FormView(Form& form);
    FormView(const FormView&) = delete;
    FormView& operator=(const FormView&) = delete;
    ~FormView();

    Form& Record() const { return form_; }
    HWND Handle() const { return window_; }
    void Changed(const Control& control, Aspect aspect, std::int32_t row);
    bool TakesMessage(MSG& message); // keys that belong to the form as a whole

private:
    using Clock = std::chrono::steady_clock;

    struct Child {
        Control* control = nullptr;
        HWND window = nullptr;
        HFONT font = nullptr;
        std::unique_ptr<ListMirror> list;
        std::wstring text, shown; // of a label: what it is to show, and what it does
        Clock::time_point painted{};
    };

    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wide, LPARAM parameter);
    LRESULT Answer(UINT message, WPARAM wide, LPARAM parameter);
    LRESULT Notify(NMHDR& header, UINT message, WPARAM wide, LPARAM parameter);
    void Command(WORD identifier, WORD code);

    void MakeChild(Control& control, int identifier);
    void ChildChanged(Child& child, Aspect aspect, std::int32_t row);
    void SetCaption(Child& child);
    void FormChanged(Aspect aspect);
    void ShowOptions();
    void SetFont(Child& child);
    void DpiChanged();
    void ShowForm();
    void MoveToPlace();
    void LeaveFocus(HWND leaving); // a control that goes or is disabled hands the focus on
    void FocusFirst();

    void Present(Child& child); // at most once a display frame; the last text always
    void PresentNow(Child& child);
    void PresentLate();

    void LayOut();
    int PlaceColumn(Region region, RECT room); // from the top of `room`; returns where it ends
    bool HasPlaceIn(const Child& child, Region region) const;
    int ColumnHeight(Region region, int width) const;
    int HeightOf(const Child& child, int width) const;
    void PlaceButtons(const RECT& row);
    int ButtonHeight() const;
    int ButtonWidth(const Child& button) const;
    SIZE RoomNeeded(int width) const;
    void PaintHairline(HDC target) const;
    SIZE TextSize(const Child& child, int width = 0) const;

    Form& form_;
    HWND window_ = nullptr;
    int dpi_ = 96;
    std::vector<std::unique_ptr<Child>> children_; // in the form's order
    std::unordered_map<const Control*, Child*> childOf_;
    int hairline_ = 0;         // where it runs
    HWND lastFocus_ = nullptr; // while another window is active
    bool mirroring_ = false;   // a record is being followed: what the toolkit reports now is no gesture
    bool moved_ = false;       // the program has said where the window goes
    bool timerRuns_ = false;
};

// While the program works the pointer is the same over every control.
extern bool hourglass;

} // namespace korlan
