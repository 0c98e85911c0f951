// How the form's controls are made and where they lie.
#include "platform/linux/desktop/Application.h"
#include "platform/linux/desktop/FormView.h"
#include "platform/linux/desktop/FrameLabel.h"
#include "platform/Gestures.h"
#include "platform/linux/desktop/ListMirror.h"
#include "platform/linux/desktop/Pictures.h"
#include "platform/linux/desktop/Theme.h"

#include <QBoxLayout>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>
#include <algorithm>

namespace korlan {

namespace {

constexpr int kMargin = 18;
constexpr int kGap = 8;

// Lines a label has room for. Status, message and explanation are sentences that grow when translated.
int LinesOf(const std::string& name) {
    return name == "lblUpdate" || name == "lblMsgline" || name == "LblOptionExplain" ? 2 : 1;
}

// As wide as its caption, and never narrower than buttons usually are.
class WideButton : public QPushButton {
public:
    using QPushButton::QPushButton;
    QSize sizeHint() const override { return QPushButton::sizeHint().expandedTo({88, 0}); }
    QSize minimumSizeHint() const override { return sizeHint(); }
};

// A hairline between the page and its buttons, in the theme's own colours.
class Hairline : public QWidget {
public:
    Hairline() { setFixedHeight(1); }

protected:
    void paintEvent(QPaintEvent*) override {
        QColor colour = palette().color(QPalette::WindowText);
        colour.setAlpha(40);
        QPainter(this).fillRect(rect(), colour);
    }
};

} // namespace

QWidget* FormView::MakeWidget(Control& control) {
    switch (control.Kind()) {
    case ControlKind::Label: return new FrameLabel(LinesOf(control.Name()), this);
    case ControlKind::Button: return MakeButton(static_cast<Button&>(control));
    case ControlKind::OptionButton: return MakeOption(static_cast<OptionButton&>(control));
    case ControlKind::ListView: return new ListMirror(static_cast<ListView&>(control), this);
    case ControlKind::PictureBox: return new SidePicture(this);
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
    auto* widget = new QRadioButton(this);
    widget->installEventFilter(this);
    OutlineIndicators(*widget);
    connect(widget, &QRadioButton::clicked, this, [&option] { RunGesture([&option] { option.UserClick(); }); });
    reminderControls_.push_back(&option);
    return widget;
}

QWidget* FormView::Place(const std::string& name) {
    const auto found = std::find_if(unplaced_.begin(), unplaced_.end(),
                                    [&](const QWidget* widget) { return widget->objectName() == ToQString(name); });
    if (found == unplaced_.end()) return nullptr;
    QWidget* widget = *found;
    unplaced_.erase(found);
    return widget;
}

void FormView::LayOut() {
    auto* all = new QHBoxLayout(this);
    all->setContentsMargins(0, 0, 0, 0);
    all->setSpacing(0);
    if (QWidget* picture = Place("picSteps")) all->addWidget(picture);

    auto* page = new QVBoxLayout;
    page->setContentsMargins(kMargin, kMargin, kMargin, kMargin - 4);
    page->setSpacing(kGap);
    all->addLayout(page, 1);
    const auto add = [&](QWidget* widget, int stretch = 0) {
        if (widget) page->addWidget(widget, stretch);
    };
    add(Place("lblMainHead"));
    add(Place("lblUpdate"));
    add(Place("lvwFilesList"), 1);
    add(LayOutReminderPage());
    auto* rest = new QVBoxLayout; // controls this layout does not know, one below the other
    page->addLayout(rest);
    page->addItem(new QSpacerItem(0, 0, QSizePolicy::Minimum, QSizePolicy::Expanding)); // while the list is hidden
    add(Place("lblMsgline"));
    QBoxLayout* buttons = LayOutButtons();
    for (QWidget* widget : unplaced_) {
        if (qobject_cast<QPushButton*>(widget))
            buttons->addWidget(widget);
        else
            rest->addWidget(widget);
    }
    unplaced_.clear();
    page->addWidget(new Hairline);
    page->addSpacing(2);
    page->addLayout(buttons);
}

QWidget* FormView::LayOutReminderPage() {
    reminderPage_ = new QWidget(this);
    auto* page = new QVBoxLayout(reminderPage_);
    page->setContentsMargins(0, 0, 0, 0);
    page->setSpacing(kGap);
    if (QWidget* heading = Place("LblLive")) {
        reminderControls_.push_back(form_.Find("LblLive"));
        page->addWidget(heading);
    }
    auto* frame = new QWidget(reminderPage_); // makes the options one group for the arrow keys
    auto* options = new QVBoxLayout(frame);
    options->setContentsMargins(kGap, 0, 0, 0);
    options->setSpacing(kGap - 2);
    for (const Control* control : form_.Controls())
        if (control->Kind() == ControlKind::OptionButton) options->addWidget(Place(control->Name()));
    page->addWidget(frame);
    if (QWidget* explanation = Place("LblOptionExplain")) page->addWidget(explanation);
    return reminderPage_;
}

QBoxLayout* FormView::LayOutButtons() {
    auto* row = new QHBoxLayout;
    row->setSpacing(kGap);
    row->addStretch(1);
    for (const char* name : {"cmdUpdate", "CmdRetry", "cmdCancel", "cmdHelp"})
        if (QWidget* button = Place(name)) row->addWidget(button);
    return row;
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

// The list is what the status line above it announces; the picture belongs to the window as a whole. Buttons, options
// and labels are called by their captions.
void FormView::NameForReaders() {
    FrameLabel* status = nullptr;
    if (const Control* control = form_.Find("lblUpdate")) status = dynamic_cast<FrameLabel*>(widgets_.at(control));
    for (const auto& [control, widget] : widgets_) {
        if (control->Kind() == ControlKind::PictureBox) widget->setAccessibleName(windowTitle());
        if (control->Kind() != ControlKind::ListView) continue;
        const auto name = [this, list = widget](const QString& text) {
            list->setAccessibleName(text.isEmpty() ? windowTitle() : text);
        };
        name(status ? status->Text() : QString());
        if (status) status->OnPresent = name;
    }
}

} // namespace korlan
