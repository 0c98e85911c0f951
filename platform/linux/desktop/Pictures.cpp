#include "platform/linux/desktop/Pictures.h"

#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>
#include <array>

namespace korlan {

namespace {

// Colours with enough contrast on both themes; `light` is used on a dark base.
struct Ink {
    QColor dark;
    QColor light;
};

// The colours one picture is drawn in: its ink, and the ground it stands on.
struct Colours {
    bool selected; // on a selected row everything takes the colour of its text
    QColor Ground() const { return QGuiApplication::palette().color(selected ? QPalette::Highlight : QPalette::Base); }
    QColor On(const Ink& ink) const {
        if (selected) return QGuiApplication::palette().color(QPalette::HighlightedText);
        return Ground().lightness() < 128 ? ink.light : ink.dark;
    }
};

const Ink kGreen{QColor(0x1a, 0x7f, 0x4b), QColor(0x4c, 0xc3, 0x8a)};
const Ink kGrey{QColor(0x6b, 0x72, 0x80), QColor(0x9a, 0xa4, 0xb2)};
const Ink kBlue{QColor(0x1f, 0x6f, 0xb2), QColor(0x5a, 0xb0, 0xf0)};
const Ink kAmber{QColor(0xb4, 0x7a, 0x12), QColor(0xe6, 0xb4, 0x50)};

// Each drawing fills a square of 16 by 16 units; strokes are 1.5 wide, ends round.
QPen Stroke(const QColor& colour, qreal width = 1.5) {
    return QPen(colour, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
}

void DrawDot(QPainter& painter, const QColor& colour) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    painter.drawEllipse(QPointF(8, 8), 3.2, 3.2);
}

// A disc with an arrow into a tray: this file will be fetched.
void DrawFetch(QPainter& painter, const Colours& colours) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(colours.On(kGreen));
    painter.drawEllipse(QPointF(8, 8), 7, 7);
    painter.setPen(Stroke(colours.Ground(), 1.6));
    painter.drawLine(QPointF(8, 4.3), QPointF(8, 9.6));
    painter.drawPolyline(QPolygonF{{5.4, 7.4}, {8, 10}, {10.6, 7.4}});
    painter.drawLine(QPointF(5.2, 12), QPointF(10.8, 12));
}

// An empty ring with a bar: this file stays as it is.
void DrawLeave(QPainter& painter, const Colours& colours) {
    painter.setBrush(Qt::NoBrush);
    painter.setPen(Stroke(colours.On(kGrey)));
    painter.drawEllipse(QPointF(8, 8), 6.2, 6.2);
    painter.drawLine(QPointF(5.2, 8), QPointF(10.8, 8));
}

void DrawFolder(QPainter& painter, const Colours& colours, bool open) {
    const QColor line = colours.On(kAmber);
    QColor fill = line;
    fill.setAlpha(90);
    painter.setPen(Stroke(line, 1.3));
    painter.setBrush(fill);
    painter.drawPolygon(QPolygonF{{1.5, 13}, {1.5, 3.5}, {6, 3.5}, {7.5, 5.2}, {13.5, 5.2}, {13.5, 13}});
    if (open) painter.drawPolygon(QPolygonF{{1.5, 13}, {4, 7.6}, {15.2, 7.6}, {13.5, 13}});
}

void DrawPage(QPainter& painter, const Colours& colours) {
    painter.setPen(Stroke(colours.On(kBlue), 1.3));
    painter.setBrush(Qt::NoBrush);
    painter.drawPolygon(QPolygonF{{3.5, 1.5}, {9.5, 1.5}, {12.5, 4.5}, {12.5, 14.5}, {3.5, 14.5}});
    painter.drawLine(QPointF(6, 7.5), QPointF(10, 7.5));
    painter.drawLine(QPointF(6, 10.5), QPointF(10, 10.5));
}

void DrawPart(QPainter& painter, const Colours& colours) {
    painter.setPen(Stroke(colours.On(kBlue), 1.3));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(4.5, 2.5, 7, 11), 1, 1);
    for (const qreal y : {4.8, 8.0, 11.2}) {
        painter.drawLine(QPointF(1.8, y), QPointF(4.5, y));
        painter.drawLine(QPointF(11.5, y), QPointF(14.2, y));
    }
}

void DrawImage(QPainter& painter, const Colours& colours, std::int32_t image) {
    switch (image) {
    case 1: DrawDot(painter, colours.On(kGrey)); break;
    case 2: DrawPage(painter, colours); break;
    case 3: DrawLeave(painter, colours); break;
    case 4: DrawDot(painter, colours.On(kBlue)); break;
    case 5: DrawFolder(painter, colours, true); break;
    case 6: DrawFolder(painter, colours, false); break;
    case 7: DrawPart(painter, colours); break;
    case 8: DrawFetch(painter, colours); break;
    default: break;
    }
}

void DrawProgram(QPainter& painter) {
    QLinearGradient ground(0, 0, 16, 16);
    ground.setColorAt(0, QColor(0x12, 0x34, 0x5a));
    ground.setColorAt(1, QColor(0x12, 0x83, 0x86));
    painter.setPen(Qt::NoPen);
    painter.setBrush(ground);
    painter.drawRoundedRect(QRectF(0.5, 0.5, 15, 15), 3.2, 3.2);
    painter.setPen(Stroke(Qt::white, 1.7));
    painter.drawLine(QPointF(8, 3.6), QPointF(8, 9.6));
    painter.drawPolyline(QPolygonF{{5, 7}, {8, 10}, {11, 7}});
    painter.drawLine(QPointF(4.4, 12.6), QPointF(11.6, 12.6));
}

// Draws at the size and scale asked for, so that no picture is ever stretched.
class DrawnIcon : public QIconEngine {
public:
    explicit DrawnIcon(std::int32_t image) : image_(image) {}
    QIconEngine* clone() const override { return new DrawnIcon(image_); }

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        const int side = qMin(rect.width(), rect.height());
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        if (mode == QIcon::Disabled) painter->setOpacity(0.45);
        painter->translate(rect.x() + (rect.width() - side) / 2.0, rect.y() + (rect.height() - side) / 2.0);
        painter->scale(side / 16.0, side / 16.0);
        if (image_ == kProgram)
            DrawProgram(*painter);
        else
            DrawImage(*painter, {mode == QIcon::Selected}, image_);
        painter->restore();
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixels(size);
        pixels.fill(Qt::transparent);
        QPainter painter(&pixels);
        paint(&painter, QRect(QPoint(0, 0), size), mode, state);
        return pixels;
    }

    static constexpr std::int32_t kProgram = 0;

private:
    std::int32_t image_;
};

// The side picture is laid out on a grid 120 units wide whose height follows the window.
constexpr qreal kGridWidth = 120;
const QColor kTrace(0x6f, 0xd6, 0xc8, 110);
const QColor kTraceBright(0x9f, 0xf0, 0xdc, 230);

void DrawPad(QPainter& painter, QPointF at, const QColor& colour, const QColor& hole) {
    painter.setPen(QPen(colour, 1.6));
    painter.setBrush(hole);
    painter.drawEllipse(at, 2.6, 2.6);
}

// Traces rise from the chip to the upper edge and fall to the lower one, bending at 45 degrees as on a board.
void DrawTraces(QPainter& painter, qreal centre, qreal height) {
    struct Trace {
        qreal pin;    // x of the chip's pin
        qreal lane;   // x where the trace ends
        qreal length; // how far it runs towards the edge, 0 to 1
        bool bright;
    };
    constexpr std::array<Trace, 7> traces{{{36, 12, 0.92, false},
                                           {44, 30, 0.62, false},
                                           {52, 46, 1.05, true},
                                           {60, 60, 0.78, false},
                                           {68, 74, 1.05, true},
                                           {76, 90, 0.55, false},
                                           {84, 108, 0.86, false}}};
    for (const qreal way : {-1.0, 1.0}) {
        const qreal pinEnd = centre + way * 34;
        const qreal room = (way < 0 ? centre : height - centre) - 34;
        for (const Trace& trace : traces) {
            const QColor colour = trace.bright ? kTraceBright : kTrace;
            const qreal shift = qAbs(trace.lane - trace.pin);
            const qreal bend = pinEnd + way * (6 + shift * 0.4);
            const qreal end = pinEnd + way * qMax(room * trace.length, 12 + shift * 1.4);
            painter.setPen(QPen(colour, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
            painter.setBrush(Qt::NoBrush);
            painter.drawPolyline(QPolygonF{{trace.pin, centre + way * 28},
                                           {trace.pin, bend},
                                           {trace.lane, bend + way * shift},
                                           {trace.lane, end}});
            DrawPad(painter, {trace.lane, end}, colour, QColor(0x0d, 0x2b, 0x48));
        }
    }
}

void DrawChip(QPainter& painter, qreal centre) {
    const QRectF body(30, centre - 30, 60, 60);
    QLinearGradient shade(body.topLeft(), body.bottomRight());
    shade.setColorAt(0, QColor(0x1b, 0x4a, 0x6b));
    shade.setColorAt(1, QColor(0x0b, 0x22, 0x3c));
    painter.setPen(QPen(kTraceBright, 1.4));
    painter.setBrush(shade);
    painter.drawRoundedRect(body, 6, 6);
    painter.setPen(Qt::NoPen);
    painter.setBrush(kTrace);
    painter.drawEllipse(body.topLeft() + QPointF(7.5, 7.5), 2, 2); // marks pin 1
    painter.setPen(QPen(Qt::white, 4.2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawLine(QPointF(60, centre - 17), QPointF(60, centre + 7));
    painter.drawPolyline(QPolygonF{{49, centre - 3}, {60, centre + 8}, {71, centre - 3}});
    painter.drawLine(QPointF(46, centre + 18), QPointF(74, centre + 18));
}

} // namespace

QIcon ListIcon(std::int32_t image) {
    if (image < 1 || image > 8) return {};
    return QIcon(new DrawnIcon(image));
}

QIcon ProgramIcon() {
    return QIcon(new DrawnIcon(DrawnIcon::kProgram));
}

SidePicture::SidePicture(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

QSize SidePicture::sizeHint() const {
    return {136, 300};
}

QSize SidePicture::minimumSizeHint() const {
    return {72, 120};
}

void SidePicture::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal scale = width() / kGridWidth;
    const qreal gridHeight = height() / scale;
    QLinearGradient ground(0, 0, width() * 0.6, height());
    ground.setColorAt(0, QColor(0x0c, 0x1f, 0x3a));
    ground.setColorAt(0.55, QColor(0x0f, 0x45, 0x62));
    ground.setColorAt(1, QColor(0x12, 0x7a, 0x7d));
    painter.fillRect(rect(), ground);
    painter.scale(scale, scale);
    const qreal centre = gridHeight * 0.42;
    DrawTraces(painter, centre, gridHeight);
    DrawChip(painter, centre);
}

} // namespace korlan
