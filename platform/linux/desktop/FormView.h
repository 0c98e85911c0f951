// The window of the form: one widget a control record, laid out by the controls' places.
#pragma once

#include "platform/Controls.h"

#include <QWidget>
#include <unordered_map>

class QBoxLayout;

namespace korlan {

class FormView : public QWidget {
public:
    explicit FormView(Form& form);
    Form& Record() const { return form_; }
    void Changed(const Control& control, Aspect aspect, std::int32_t row);

protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* MakeWidget(Control& control);
    QWidget* MakeButton(Button& button);
    QWidget* MakeOption(OptionButton& option);
    QWidget* MakePicture();
    QWidget* MakeBar();
    void LayOut();
    QWidget* LayOutReminderPage();
    void Fill(QBoxLayout& layout, Region region, int stretch = 0); // with the controls of that region
    void LinkTabOrder();
    void NameForReaders(); // what a screen reader calls the controls that have no caption

    void FormChanged(Aspect aspect);
    void WidgetChanged(const Control& control, QWidget& widget, Aspect aspect, std::int32_t row);
    void ShowReminderPage(); // shown while any of its options is
    void ShowForm();
    void MoveToPlace();

    Form& form_;
    std::unordered_map<const Control*, QWidget*> widgets_;
    QWidget* reminderPage_ = nullptr;
    QWidget* optionGroup_ = nullptr;
    bool mirroring_ = false; // a record is being followed: what the toolkit reports now is no gesture
    bool moved_ = false;     // the program has said where the window goes
};

} // namespace korlan
