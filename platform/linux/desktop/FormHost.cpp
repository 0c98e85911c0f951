#include "platform/FormHost.h"

#include "platform/Gestures.h"
#include "platform/linux/desktop/Application.h"
#include "platform/linux/desktop/FormView.h"

#include <QApplication>
#include <QEventLoop>
#include <QScreen>
#include <utility>

namespace korlan {

namespace {

constexpr float kTwipsPerPixel = 15;
constexpr int kEventsMilliseconds = 20; // one DoEvents ends after this, however much keeps coming

FormView* view = nullptr;
QEventLoop* messageLoop = nullptr; // the innermost RunMessageLoop

} // namespace

QWidget* FormWindow() {
    return view;
}

void OpenFormHost(Form& form) {
    TheApplication();
    CloseFormHost();
    view = new FormView(form);
    if (form.Visible()) form.Show();
}

void CloseFormHost() {
    delete std::exchange(view, nullptr);
}

void ControlChanged(const Control& control, Aspect aspect, std::int32_t row) {
    if (!view) return;
    view->Changed(control, aspect, row);
    if (aspect == Aspect::Visible && messageLoop && !view->Record().Visible()) messageLoop->quit();
}

void DoEvents() {
    if (!QCoreApplication::instance()) return;
    Wait wait;
    QCoreApplication::processEvents(QEventLoop::AllEvents, kEventsMilliseconds);
    wait.Rethrow();
}

void RunMessageLoop() {
    if (!view) return;
    QEventLoop loop;
    Wait wait([&loop] { loop.quit(); });
    wait.Rethrow();
    while (view && view->Record().Visible()) {
        QEventLoop* outer = std::exchange(messageLoop, &loop);
        loop.exec();
        messageLoop = outer;
        wait.Rethrow();
    }
}

float ScreenWidth() {
    TheApplication();
    return static_cast<float>(QGuiApplication::primaryScreen()->geometry().width()) * kTwipsPerPixel;
}

float ScreenHeight() {
    TheApplication();
    return static_cast<float>(QGuiApplication::primaryScreen()->geometry().height()) * kTwipsPerPixel;
}

void SetMousePointer(MousePointer pointer) {
    TheApplication();
    if (QGuiApplication::overrideCursor()) QGuiApplication::restoreOverrideCursor();
    if (pointer == MousePointer::Hourglass) QGuiApplication::setOverrideCursor(Qt::WaitCursor);
}

} // namespace korlan
