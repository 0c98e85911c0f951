// How the form's controls are made and where they lie.
#include "platform/Gestures.h"
#include "platform/linux/desktop/Application.h"
#include "platform/linux/desktop/FormView.h"
#include "platform/linux/desktop/FrameLabel.h"
#include "platform/linux/desktop/ListMirror.h"
#include "platform/linux/desktop/Pictures.h"
#include "platform/linux/desktop/Theme.h"
#include "platform/linux/desktop/Widgets.h"

#include <QBoxLayout>
#include <QProgressBar>

namespace korlan {

namespace {

constexpr int kMargin = 18;
constexpr int kGap = 8;
constexpr int kBarHeight = 6;

} // namespace

QWidget* FormView::MakeWidget(Control& control) {
    if (control.Place().region == Region::None) return nullptr;
    switch (control.Kind()) {
    case ControlKind::Label: return new FrameLabel(control.Place().lines, this);
    case ControlKind::Button: return MakeButton(static_cast<Button&>(control));
    case ControlKind::OptionButton: return MakeOption(static_cast<OptionButton&>(control));
    case ControlKind::ListView: return new ListMirror(static_cast<ListView&>(control), this);
    case ControlKind::PictureBox: return MakePicture();
    case ControlKind::ProgressBar: return MakeBar();
    case ControlKind::Form:
    case ControlKind::ImageList:
    case ControlKind::FileListBox: break; // never seen
    }
    return nullptr;
}

QWidget* FormView::MakeButton(Button& button) {
    auto* widget = new WideButton(this);
    connect(widget, &QPushButton::clicked, this, [&button] { RunGesture([&button] { button.UserClick(); }); });
    return widget;
}

QWidget* FormView::MakeOption(OptionButton& option) {
    auto* widget = new WrappedOption(this);
    widget->installEventFilter(this);
    OutlineIndicators(*widget);
    connect(widget, &QRadioButton::clicked, this, [&option] { RunGesture([&option] { option.UserClick(); }); });
    return widget;
}

QWidget* FormView::MakePicture() {
    auto* picture = new SidePicture(this);
    SetRole(*picture, QAccessible::Graphic);
    return picture;
}

QWidget* FormView::MakeBar() {
    auto* bar = new QProgressBar(this);
    bar->setTextVisible(false);
    bar->setFixedHeight(kBarHeight);
    QSizePolicy policy = bar->sizePolicy();
    policy.setRetainSizeWhenHidden(true); // nothing moves when it comes and goes
    bar->setSizePolicy(policy);
    return bar;
}

void FormView::Fill(QBoxLayout& layout, Region region, int stretch) {
    for (const Control* control : form_.Controls())
        if (control->Place().region == region) layout.addWidget(widgets_.at(control), stretch);
}

void FormView::LayOut() {
    auto* all = new QHBoxLayout(this);
    all->setContentsMargins(0, 0, 0, 0);
    all->setSpacing(0);
    Fill(*all, Region::Side);

    auto* page = new QVBoxLayout;
    page->setContentsMargins(kMargin, kMargin, kMargin, kMargin - 4);
    page->setSpacing(kGap);
    all->addLayout(page, 1);
    Fill(*page, Region::Heading);
    Fill(*page, Region::Status);
    Fill(*page, Region::List, 1);
    page->addWidget(LayOutReminderPage());
    page->addItem(new QSpacerItem(0, 0, QSizePolicy::Minimum, QSizePolicy::Expanding)); // while the list is hidden
    Fill(*page, Region::Message);
    page->addWidget(new Hairline);
    page->addSpacing(2);

    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(kGap);
    buttons->addStretch(1);
    Fill(*buttons, Region::Buttons);
    page->addLayout(buttons);
}

QWidget* FormView::LayOutReminderPage() {
    reminderPage_ = new QWidget(this);
    auto* page = new QVBoxLayout(reminderPage_);
    page->setContentsMargins(0, 0, 0, 0);
    page->setSpacing(kGap);
    optionGroup_ = new QWidget(reminderPage_); // makes the options one group for the arrow keys
    SetRole(*optionGroup_, QAccessible::Grouping);
    auto* options = new QVBoxLayout(optionGroup_);
    options->setContentsMargins(kGap, 0, 0, 0);
    options->setSpacing(kGap - 2);
    for (const Control* control : form_.Controls()) {
        if (control->Place().region != Region::Reminder) continue;
        const bool isOption = control->Kind() == ControlKind::OptionButton;
        (isOption ? options : page)->addWidget(widgets_.at(control));
        if (isOption && page->indexOf(optionGroup_) < 0) page->addWidget(optionGroup_);
    }
    return reminderPage_;
}

// Tab follows the reading order of the form's controls.
void FormView::LinkTabOrder() {
    QWidget* previous = nullptr;
    for (const Control* control : form_.Controls()) {
        const auto found = widgets_.find(control);
        if (found == widgets_.end() || found->second->focusPolicy() == Qt::NoFocus) continue;
        if (previous) setTabOrder(previous, found->second);
        previous = found->second;
    }
}

// What has no caption of its own is called what the window is called.
void FormView::NameForReaders() {
    for (const auto& [control, widget] : widgets_)
        if (!dynamic_cast<const CaptionedControl*>(control)) widget->setAccessibleName(windowTitle());
}

} // namespace korlan
