#include "platform/linux/desktop/FrameLabel.h"

#include "platform/FormHost.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QTextLayout>
#include <QToolTip>

namespace korlan {

FrameLabel::FrameLabel(int lines, QWidget* parent) : QLabel(parent), lines_(lines) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setAttribute(Qt::WA_OpaquePaintEvent);
    nextFrame_.setSingleShot(true);
    nextFrame_.setTimerType(Qt::PreciseTimer);
    connect(&nextFrame_, &QTimer::timeout, this, [this] { PresentNow(); });
}

void FrameLabel::SetText(const QString& text) {
    if (text == text_) return;
    text_ = text;
    Present();
}

void FrameLabel::Present() {
    if (text_ == painted_ && isVisible()) return;
    const qint64 age = sincePaint_.isValid() ? sincePaint_.elapsed() : kDisplayFrame.count();
    if (age >= kDisplayFrame.count())
        PresentNow();
    else if (!nextFrame_.isActive())
        nextFrame_.start(static_cast<int>(kDisplayFrame.count() - age));
}

void FrameLabel::PresentNow() {
    nextFrame_.stop();
    sincePaint_.start();
    setAccessibleName(text_);
    if (isVisible()) repaint();
}

QSize FrameLabel::sizeHint() const {
    return {fontMetrics().averageCharWidth() * 48, fontMetrics().lineSpacing() * lines_ + 2};
}

QSize FrameLabel::minimumSizeHint() const {
    return {fontMetrics().averageCharWidth() * 24, sizeHint().height()};
}

void FrameLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().window());
    painter.setPen(palette().color(foregroundRole()));
    DrawLines(painter);
    painted_ = text_;
    sincePaint_.start();
}

void FrameLabel::DrawLines(QPainter& painter) {
    QString shown = text_;
    shown.replace(QLatin1Char('\n'), QChar(QChar::LineSeparator));
    QTextLayout layout(shown, font(), this);
    QTextOption option(QStyle::visualAlignment(layoutDirection(), Qt::AlignLeft));
    option.setTextDirection(layoutDirection());
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    int cutFrom = -1; // where the last line begins, when not all of the text fits
    qreal top = 0;
    layout.beginLayout();
    for (int number = 1; number <= lines_; ++number) {
        QTextLine line = layout.createLine();
        if (!line.isValid()) break;
        line.setLineWidth(width());
        line.setPosition(QPointF(0, top));
        top += line.height();
        if (number == lines_ && line.textStart() + line.textLength() < shown.size()) cutFrom = line.textStart();
    }
    layout.endLayout();
    cut_ = cutFrom >= 0;
    for (int number = 0; number < layout.lineCount(); ++number) {
        const QTextLine line = layout.lineAt(number);
        if (cut_ && line.textStart() == cutFrom) {
            const QString rest = shown.mid(cutFrom).replace(QChar(QChar::LineSeparator), QLatin1Char(' '));
            painter.drawText(QRectF(0, line.y(), width(), line.height()),
                             static_cast<int>(option.alignment()) | static_cast<int>(Qt::TextSingleLine),
                             fontMetrics().elidedText(rest, Qt::ElideRight, width()));
        } else {
            line.draw(&painter, QPointF(0, 0));
        }
    }
}

bool FrameLabel::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip) return QLabel::event(event);
    if (cut_)
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), "<qt>" + text_.toHtmlEscaped() + "</qt>",
                           this);
    else
        QToolTip::hideText();
    return true;
}

} // namespace korlan
