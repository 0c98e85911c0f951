#include "platform/linux/desktop/Theme.h"

#include <QPainter>
#include <QProxyStyle>
#include <QStyleOption>
#include <QWidget>

namespace korlan {

namespace {

class OutliningStyle : public QProxyStyle {
public:
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        const bool round = element == PE_IndicatorRadioButton;
        if (!round && element != PE_IndicatorItemViewItemCheck) return;
        if (option->palette.color(QPalette::Base).lightness() >= 128) return;
        QColor colour = option->palette.color(QPalette::Text);
        colour.setAlpha(option->state & State_Enabled ? 150 : 70);
        const qreal side = qMin(option->rect.width(), option->rect.height()) - 1;
        QRectF outline(0, 0, side, side);
        outline.moveCenter(QRectF(option->rect).center());
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(colour);
        painter->setBrush(Qt::NoBrush);
        if (round)
            painter->drawEllipse(outline);
        else
            painter->drawRoundedRect(outline, 2, 2);
        painter->restore();
    }
};

} // namespace

void OutlineIndicators(QWidget& widget) {
    auto* style = new OutliningStyle;
    style->setParent(&widget);
    widget.setStyle(style);
}

} // namespace korlan
