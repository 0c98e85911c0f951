#include "platform/linux/desktop/FormView.h"

#include "platform/Gestures.h"
#include "platform/linux/desktop/Application.h"
#include "platform/linux/desktop/FrameLabel.h"
#include "platform/linux/desktop/ListMirror.h"
#include "platform/linux/desktop/Widgets.h"

#include <QApplication>
#include <QCloseEvent>
#include <QElapsedTimer>
#include <QProgressBar>
#include <QScreen>
#include <QThread>
#include <QWindow>
#include <utility>

namespace korlan {

namespace {

constexpr float kTwipsPerPixel = 15;
constexpr qint64 kExposeMilliseconds = 500; // how long showing the window waits for the screen

int Pixels(float twips) {
    return qRound(twips / kTwipsPerPixel);
}

void ShowProgress(QProgressBar& bar, const ProgressBar& record) {
    bar.setRange(0, record.Maximum() + (record.Maximum() == 0)); // a range of nothing would show a busy bar
    bar.setValue(record.Value());
}

// The host's own size of a control's font, where its record gives none.
QFont BaseFont(FontRole role) {
    QFont font = QApplication::font();
    if (role == FontRole::Title) {
        font.setPointSizeF(font.pointSizeF() * 1.5);
        font.setBold(true);
    } else if (role == FontRole::Heading) {
        font.setPointSizeF(font.pointSizeF() * 1.1);
    }
    return font;
}

} // namespace

FormView::FormView(Form& form) : form_(form) {
    setObjectName(ToQString(form.Name()));
    setWindowTitle(ToQString(form.Caption()));
    SetRole(*this, QAccessible::Window);
    for (Control* control : form.Controls()) {
        QWidget* widget = MakeWidget(*control);
        if (!widget) continue;
        widget->setObjectName(ToQString(control->Name()));
        widgets_.emplace(control, widget);
    }
    LayOut();
    for (const auto& [control, widget] : widgets_)
        for (const Aspect aspect : {Aspect::Font, Aspect::Caption, Aspect::Enabled, Aspect::Value, Aspect::Visible})
            WidgetChanged(*control, *widget, aspect, 0);
    ShowReminderPage();
    NameForReaders();
    LinkTabOrder();
    resize(Pixels(form.Width()), Pixels(form.Height()));
}

// --- from the records to the window ---

void FormView::Changed(const Control& control, Aspect aspect, std::int32_t row) {
    const bool outer = std::exchange(mirroring_, true);
    if (&control == &form_) {
        FormChanged(aspect);
    } else if (const auto found = widgets_.find(&control); found != widgets_.end()) {
        WidgetChanged(control, *found->second, aspect, row);
    }
    mirroring_ = outer;
}

void FormView::FormChanged(Aspect aspect) {
    switch (aspect) {
    case Aspect::Caption:
        setWindowTitle(ToQString(form_.Caption()));
        NameForReaders();
        break;
    case Aspect::Visible:
        if (form_.Visible())
            ShowForm();
        else
            hide();
        break;
    case Aspect::Enabled: setEnabled(form_.Enabled()); break;
    case Aspect::Font: setFont(ToQFont(form_.Font(), QApplication::font())); break;
    case Aspect::Repaint: repaint(); break;
    case Aspect::Place:
        moved_ = true;
        MoveToPlace();
        break;
    default: break;
    }
}

void FormView::WidgetChanged(const Control& control, QWidget& widget, Aspect aspect, std::int32_t row) {
    switch (aspect) {
    case Aspect::Caption: {
        const auto* captioned = dynamic_cast<const CaptionedControl*>(&control);
        if (!captioned) return;
        const QString text = ShownText(captioned->Caption());
        if (control.Kind() == ControlKind::Label) {
            static_cast<FrameLabel&>(widget).SetText(text);
            if (control.Place().region == Region::Reminder && control.Place().font == FontRole::Heading)
                optionGroup_->setAccessibleName(text);
        } else {
            static_cast<QAbstractButton&>(widget).setText(text);
        }
        return;
    }
    case Aspect::Visible:
        widget.setVisible(control.Visible());
        ShowReminderPage();
        return;
    case Aspect::Font: widget.setFont(ToQFont(control.Font(), BaseFont(control.Place().font))); return;
    case Aspect::Focus: widget.setFocus(Qt::OtherFocusReason); return;
    case Aspect::Repaint:
        if (control.Kind() == ControlKind::Label)
            static_cast<FrameLabel&>(widget).Present();
        else
            widget.repaint();
        return;
    case Aspect::Enabled: widget.setEnabled(control.Enabled()); break;
    default: break;
    }
    if (control.Kind() == ControlKind::ListView)
        static_cast<ListMirror&>(widget).Changed(aspect, row);
    else if (control.Kind() == ControlKind::OptionButton && aspect == Aspect::Value)
        static_cast<QRadioButton&>(widget).setChecked(static_cast<const OptionButton&>(control).Value());
    else if (control.Kind() == ControlKind::ProgressBar && aspect == Aspect::Value)
        ShowProgress(static_cast<QProgressBar&>(widget), static_cast<const ProgressBar&>(control));
}

void FormView::ShowReminderPage() {
    bool shown = false;
    for (const Control* control : form_.Controls())
        shown = shown || (control->Kind() == ControlKind::OptionButton && control->Visible());
    if (reminderPage_->isHidden() == shown) reminderPage_->setVisible(shown); // each time it would be laid out anew
}

// Shows the window and waits until it is on the screen, so that the program's first repaint is seen. What the user does
// meanwhile stays in the queue for the next DoEvents.
void FormView::ShowForm() {
    const QSize room = screen()->availableGeometry().size();
    resize(size().boundedTo(room).expandedTo(minimumSizeHint()));
    MoveToPlace();
    show();
    QElapsedTimer waiting;
    waiting.start();
    while (windowHandle() && !windowHandle()->isExposed() && waiting.elapsed() < kExposeMilliseconds) {
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        QThread::msleep(1);
    }
}

// A window that had to be larger than its record keeps the centre the program has asked for, and stays on the screen.
void FormView::MoveToPlace() {
    if (!moved_) return;
    const QPoint corner(Pixels(form_.Left()) - (width() - Pixels(form_.Width())) / 2,
                        Pixels(form_.Top()) - (height() - Pixels(form_.Height())) / 2);
    QRect place(QGuiApplication::primaryScreen()->geometry().topLeft() + corner, size());
    const QRect room = screen()->availableGeometry();
    place.moveRight(qMin(place.right(), room.right()));
    place.moveBottom(qMin(place.bottom(), room.bottom()));
    place.moveLeft(qMax(place.left(), room.left()));
    place.moveTop(qMax(place.top(), room.top()));
    move(place.topLeft());
}

// --- from the user to the records ---

void FormView::closeEvent(QCloseEvent* event) {
    event->ignore(); // the record decides; it hides the window when the form has been unloaded
    RunGesture([this] { form_.UserClose(); });
}

// Enter presses the button that has the focus, as Space does.
void FormView::keyPressEvent(QKeyEvent* event) {
    auto* button = qobject_cast<QPushButton*>(focusWidget());
    if (button && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter))
        button->click();
    else
        QWidget::keyPressEvent(event);
}

// An option button the keyboard has moved to takes the focus as a control, which selects it.
bool FormView::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusIn && !mirroring_) {
        const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
        if (reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason) {
            for (Control* control : form_.Controls())
                if (const auto found = widgets_.find(control); found != widgets_.end() && found->second == watched)
                    RunGesture([control] { control->SetFocus(); });
        }
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace korlan
