#include "platform/MsgBox.h"

#include "platform/Gestures.h"
#include "platform/Log.h"
#include "platform/linux/desktop/Application.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QFontMetrics>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>
#include <optional>
#include <vector>

namespace korlan {

namespace {

const char* const kProgramTitle = "KlnUpdt";

struct BoxButton {
    QMessageBox::StandardButton button;
    std::int32_t answer;
    const char* name;
};

constexpr BoxButton kOk{QMessageBox::Ok, kAnswerOk, "OK"};
constexpr BoxButton kCancel{QMessageBox::Cancel, kAnswerCancel, "Cancel"};
constexpr BoxButton kAbort{QMessageBox::Abort, 3, "Abort"};
constexpr BoxButton kRetry{QMessageBox::Retry, 4, "Retry"};
constexpr BoxButton kIgnore{QMessageBox::Ignore, 5, "Ignore"};
constexpr BoxButton kYes{QMessageBox::Yes, kAnswerYes, "Yes"};
constexpr BoxButton kNo{QMessageBox::No, kAnswerNo, "No"};

std::vector<BoxButton> ButtonsOf(std::int32_t style) {
    switch (style & 15) {
    case 0: return {kOk};
    case 1: return {kOk, kCancel};
    case 2: return {kAbort, kRetry, kIgnore};
    case 4: return {kYes, kNo};
    case 5: return {kRetry, kCancel};
    default: return {kYes, kNo, kCancel};
    }
}

QMessageBox::Icon IconOf(std::int32_t style) {
    switch (style & 0xF0) {
    case kBoxCritical: return QMessageBox::Critical;
    case kBoxQuestion: return QMessageBox::Question;
    case kBoxExclamation: return QMessageBox::Warning;
    case 64: return QMessageBox::Information;
    default: return QMessageBox::NoIcon;
    }
}

QString TitleOf(const std::string& title) {
    return title.empty() ? QString(kProgramTitle) : ToQString(title);
}

// Lines break at blanks and slashes. A stretch without either that is longer than a line would run out of the box: it
// alone gets blanks without width; every other text stays letter for letter.
QString Breakable(const std::string& text) {
    constexpr int kLineWidth = 480;
    const QFontMetrics metrics(QApplication::font("QMessageBox"));
    QString shown;
    int stretch = 0;
    for (const QChar c : ShownText(text)) {
        const int width = metrics.horizontalAdvance(c);
        stretch = c.isSpace() || c == u'/' ? 0 : stretch + width;
        if (stretch > kLineWidth && !c.isLowSurrogate()) {
            shown += QChar(0x200B);
            stretch = width;
        }
        shown += c;
    }
    return shown;
}

// The pointer is an arrow while a box waits for an answer, whatever work goes on behind it.
class PlainPointer {
public:
    PlainPointer() {
        if (const QCursor* cursor = QGuiApplication::overrideCursor()) {
            saved_ = *cursor;
            QGuiApplication::restoreOverrideCursor();
        }
    }
    PlainPointer(const PlainPointer&) = delete;
    PlainPointer& operator=(const PlainPointer&) = delete;
    ~PlainPointer() {
        if (saved_) QGuiApplication::setOverrideCursor(*saved_);
    }

private:
    std::optional<QCursor> saved_;
};

QWidget* Owner() {
    TheApplication();
    return FormWindow() && FormWindow()->isVisible() ? FormWindow() : nullptr;
}

void Ask(QDialog& dialog) {
    const PlainPointer pointer;
    dialog.exec();
}

} // namespace

bool BoxIsUp() {
    return QApplication::activeModalWidget() != nullptr;
}

std::int32_t ShowMsgBox(const std::string& text, std::int32_t style, const std::string& title) {
    LogLine("box: " + text);
    QMessageBox box(Owner());
    box.setObjectName("MsgBox");
    box.setWindowTitle(TitleOf(title));
    box.setTextFormat(Qt::PlainText); // texts carry names from the server
    box.setText(Breakable(text));
    box.setIcon(IconOf(style));
    box.setWindowModality(Qt::ApplicationModal);
    box.setWindowFlag(Qt::WindowStaysOnTopHint, (style & kBoxSystemModal) != 0);
    const std::vector<BoxButton> buttons = ButtonsOf(style);
    for (const BoxButton& button : buttons) {
        QPushButton* widget = box.addButton(button.button);
        widget->setObjectName(button.name);
        widget->setIcon({}); // as the wizard's own buttons
    }
    const auto chosen = static_cast<std::size_t>((style >> 8) & 15);
    box.setDefaultButton(buttons[chosen < buttons.size() ? chosen : 0].button);
    for (const BoxButton& closing : {kAbort, kOk, kNo, kCancel}) // the last one the box has
        if (box.button(closing.button)) box.setEscapeButton(closing.button);

    Ask(box);
    const QMessageBox::StandardButton pressed = box.standardButton(box.clickedButton());
    for (const BoxButton& button : buttons)
        if (button.button == pressed) return button.answer;
    return buttons.back().answer;
}

std::string ShowInputBox(const std::string& prompt, const std::string& title, bool secret) {
    QDialog dialog(Owner());
    dialog.setObjectName("InputBox");
    dialog.setWindowTitle(TitleOf(title));
    auto* edit = new QLineEdit(&dialog);
    edit->setObjectName("InputText");
    edit->setMinimumWidth(320);
    edit->setAccessibleName(ToQString(prompt));
    if (secret) edit->setEchoMode(QLineEdit::Password);
    auto* label = new QLabel(&dialog);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setText(Breakable(prompt));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
    buttons->button(QDialogButtonBox::Ok)->setObjectName("OK");
    buttons->button(QDialogButtonBox::Cancel)->setObjectName("Cancel");
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(label);
    layout->addWidget(edit);
    layout->addWidget(buttons);
    Ask(dialog);
    return dialog.result() == QDialog::Accepted ? edit->text().toStdString() : std::string();
}

} // namespace korlan
