#include "platform/linux/desktop/Widgets.h"

#include <QAccessibleWidget>
#include <QPainter>
#include <QStyleOptionButton>
#include <QStyleOptionFocusRect>
#include <QStylePainter>

namespace korlan {

namespace {

const char* const kRole = "accessibleRole";
constexpr int kCaptionFlags = Qt::TextWordWrap | Qt::TextShowMnemonic;
constexpr int kCaptionAir = 2;        // around a caption, for the frame that shows the focus
constexpr int kNarrowestCaption = 24; // average characters

QAccessibleInterface* InterfaceByRole(const QString&, QObject* object) {
    const QVariant role = object ? object->property(kRole) : QVariant();
    if (!role.isValid()) return nullptr;
    return new QAccessibleWidget(static_cast<QWidget*>(object), static_cast<QAccessible::Role>(role.toInt()));
}

} // namespace

void SetRole(QWidget& widget, QAccessible::Role role) {
    QAccessible::installFactory(InterfaceByRole); // once, however often it is said
    widget.setProperty(kRole, static_cast<int>(role));
}

WrappedOption::WrappedOption(QWidget* parent) : QRadioButton(parent) {
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

int WrappedOption::CaptionLeft() const {
    return style()->pixelMetric(QStyle::PM_ExclusiveIndicatorWidth, nullptr, this) +
           style()->pixelMetric(QStyle::PM_RadioButtonLabelSpacing, nullptr, this);
}

// The caption as it lies at the left edge of a button of that width, its first line at the top.
QRect WrappedOption::CaptionIn(int width) const {
    const QRect room(CaptionLeft(), kCaptionAir, qMax(1, width - CaptionLeft() - kCaptionAir), QWIDGETSIZE_MAX);
    return fontMetrics().boundingRect(room, kCaptionFlags, text());
}

QSize WrappedOption::sizeHint() const {
    return {QRadioButton::sizeHint().width() + 2 * kCaptionAir, QRadioButton::sizeHint().height()};
}

QSize WrappedOption::minimumSizeHint() const {
    const int narrowest = CaptionLeft() + fontMetrics().averageCharWidth() * kNarrowestCaption;
    const int width = qMin(narrowest, sizeHint().width());
    return {width, heightForWidth(width)};
}

int WrappedOption::heightForWidth(int width) const {
    return qMax(QRadioButton::sizeHint().height(), CaptionIn(width).height() + 2 * kCaptionAir);
}

void WrappedOption::paintEvent(QPaintEvent*) {
    QStylePainter painter(this);
    QStyleOptionButton option;
    initStyleOption(&option);
    option.text.clear();
    option.state &= ~QStyle::State_HasFocus;
    painter.drawControl(QStyle::CE_RadioButton, option);

    QRect caption = CaptionIn(width());
    caption.moveTop((height() - caption.height()) / 2);
    caption = QStyle::visualRect(layoutDirection(), rect(), caption);
    const int alignment = static_cast<int>(QStyle::visualAlignment(layoutDirection(), Qt::AlignLeft));
    painter.drawItemText(caption, kCaptionFlags | alignment, palette(), isEnabled(), text(), foregroundRole());
    if (!hasFocus() || !(option.state & QStyle::State_KeyboardFocusChange)) return;
    QStyleOptionFocusRect frame;
    frame.initFrom(this);
    frame.rect = caption.adjusted(-kCaptionAir, -kCaptionAir, kCaptionAir, kCaptionAir);
    frame.backgroundColor = palette().color(backgroundRole());
    painter.drawPrimitive(QStyle::PE_FrameFocusRect, frame);
}

void Hairline::paintEvent(QPaintEvent*) {
    QColor colour = palette().color(QPalette::WindowText);
    colour.setAlpha(40);
    QPainter(this).fillRect(rect(), colour);
}

} // namespace korlan
