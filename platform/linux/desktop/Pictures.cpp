#include "platform/linux/desktop/Pictures.h"

#include "platform/Drawing.h"

#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>

namespace korlan {

namespace {

class PainterPencil : public Pencil {
public:
    // selected: on a selected row everything takes the colour of its text
    explicit PainterPencil(QPainter& painter, bool selected = false) : painter_(painter), selected_(selected) {}
    void Disc(DrawingPoint centre, double radius, Ink ink) override {
        Take(Qt::NoPen, On(ink));
        painter_.drawEllipse(QPointF(centre.x, centre.y), radius, radius);
    }
    void Ring(DrawingPoint centre, double radius, Ink ink, double width) override {
        Take(QPen(On(ink), width), Qt::NoBrush);
        painter_.drawEllipse(QPointF(centre.x, centre.y), radius, radius);
    }
    void Line(Points points, Ink ink, double width) override {
        Take(Stroke(ink, width), Qt::NoBrush);
        painter_.drawPolyline(Polygon(points));
    }
    void Shape(Points points, Ink ink, bool filled) override {
        QColor fill = On(ink);
        fill.setAlpha(filled ? 90 : 0);
        Take(Stroke(ink, 1.3), fill);
        painter_.drawPolygon(Polygon(points));
    }
    void Panel(DrawingPoint corner, DrawingPoint size, double radius, std::uint32_t from, std::uint32_t to,
               double edge) override {
        const QRectF rect(corner.x, corner.y, size.x, size.y);
        QLinearGradient shade(rect.topLeft(), rect.bottomRight());
        shade.setColorAt(0, QColor::fromRgba(from));
        shade.setColorAt(1, QColor::fromRgba(to));
        Take(edge > 0 ? QPen(On(Ink::TraceBright), edge) : QPen(Qt::NoPen), shade);
        painter_.drawRoundedRect(rect, radius, radius);
    }

private:
    void Take(const QPen& pen, const QBrush& brush) {
        painter_.setPen(pen);
        painter_.setBrush(brush);
    }
    QColor On(Ink ink) const {
        const QPalette palette = QGuiApplication::palette();
        const QColor ground = palette.color(selected_ ? QPalette::Highlight : QPalette::Base);
        if (ink == Ink::Ground) return ground;
        return selected_ ? palette.color(QPalette::HighlightedText)
                         : QColor::fromRgba(ColourOf(ink, ground.lightness() < 128));
    }
    QPen Stroke(Ink ink, double width) const {
        return QPen(On(ink), width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    }
    static QPolygonF Polygon(Points points) {
        QPolygonF polygon;
        for (const auto& [x, y] : points) polygon << QPointF(x, y);
        return polygon;
    }

    QPainter& painter_;
    const bool selected_;
};

// Draws at the size and scale asked for, so that no picture is ever stretched.
class DrawnIcon : public QIconEngine {
public:
    explicit DrawnIcon(std::int32_t image) : image_(image) {}
    QIconEngine* clone() const override { return new DrawnIcon(image_); }
    // As a window manager shows them: without these it is sent, and draws, one of 128 x 128, before the window is seen.
    QList<QSize> availableSizes(QIcon::Mode, QIcon::State) override { return {{16, 16}, {32, 32}, {64, 64}}; }

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        const int side = qMin(rect.width(), rect.height());
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        if (mode == QIcon::Disabled) painter->setOpacity(0.45);
        painter->translate(rect.x() + (rect.width() - side) / 2.0, rect.y() + (rect.height() - side) / 2.0);
        painter->scale(side / 16.0, side / 16.0);
        PainterPencil pencil(*painter, mode == QIcon::Selected);
        DrawImage(pencil, image_);
        painter->restore();
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixels(size);
        pixels.fill(Qt::transparent);
        QPainter painter(&pixels);
        paint(&painter, QRect(QPoint(0, 0), size), mode, state);
        return pixels;
    }

private:
    std::int32_t image_;
};

} // namespace

QIcon ListIcon(std::int32_t image) {
    if (image < 1 || image > 8) return {};
    return QIcon(new DrawnIcon(image));
}

QIcon ProgramIcon() {
    return QIcon(new DrawnIcon(0));
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
    const double scale = width() / kSidePictureWidth;
    painter.scale(scale, scale);
    PainterPencil pencil(painter);
    DrawSidePicture(pencil, height() / scale);
}

} // namespace korlan
