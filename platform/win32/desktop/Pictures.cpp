#include "platform/win32/desktop/Pictures.h"

#include "platform/Drawing.h"

#include <algorithm>
// The drawing library's own header wants these two names.
namespace Gdiplus {
using std::max; // NOLINT(misc-unused-using-decls)
using std::min; // NOLINT(misc-unused-using-decls)
} // namespace Gdiplus
#include <objidl.h>
// (after objidl.h)
#include <gdiplus.h>

#include <vector>

namespace korlan {
namespace {

using Gdiplus::Color;
using Gdiplus::Graphics;
using Gdiplus::PointF;
using Gdiplus::REAL;

void StartDrawing() {
    [[maybe_unused]] static const bool started = [] {
        ULONG_PTR token = 0;
        const Gdiplus::GdiplusStartupInput input;
        return Gdiplus::GdiplusStartup(&token, &input, nullptr) == Gdiplus::Ok;
    }();
}

class GraphicsPencil : public Pencil {
public:
    explicit GraphicsPencil(Graphics& graphics) : graphics_(graphics) {
        graphics_.SetSmoothingMode(Gdiplus::SmoothingModeAntiAlias);
    }
    void Disc(DrawingPoint centre, double radius, Ink ink) override {
        const Gdiplus::SolidBrush brush(On(ink));
        graphics_.FillEllipse(&brush, Around(centre, radius));
    }
    void Ring(DrawingPoint centre, double radius, Ink ink, double width) override {
        const Gdiplus::Pen pen(On(ink), static_cast<REAL>(width));
        graphics_.DrawEllipse(&pen, Around(centre, radius));
    }
    void Line(Points points, Ink ink, double width) override {
        Gdiplus::Pen pen(On(ink), static_cast<REAL>(width));
        pen.SetLineCap(Gdiplus::LineCapRound, Gdiplus::LineCapRound, Gdiplus::DashCapFlat);
        pen.SetLineJoin(Gdiplus::LineJoinRound);
        const auto polygon = Polygon(points);
        graphics_.DrawLines(&pen, polygon.data(), static_cast<INT>(polygon.size()));
    }
    void Shape(Points points, Ink ink, bool filled) override {
        const Color edge = On(ink);
        const Gdiplus::SolidBrush brush(Color(filled ? 90 : 0, edge.GetR(), edge.GetG(), edge.GetB()));
        const Gdiplus::Pen pen(edge, 1.3F);
        const auto polygon = Polygon(points);
        graphics_.FillPolygon(&brush, polygon.data(), static_cast<INT>(polygon.size()));
        graphics_.DrawPolygon(&pen, polygon.data(), static_cast<INT>(polygon.size()));
    }
    void Panel(DrawingPoint corner, DrawingPoint size, double radius, std::uint32_t from, std::uint32_t to,
               double edge) override {
        const PointF begin = Point(corner), end = Point({corner.x + size.x, corner.y + size.y});
        Gdiplus::LinearGradientBrush shade(begin, end, Color(from), Color(to));
        shade.SetWrapMode(Gdiplus::WrapModeTileFlipXY);
        Gdiplus::GraphicsPath path;
        if (const auto d = static_cast<REAL>(2 * radius); d > 0) {
            path.AddArc(begin.X, begin.Y, d, d, 180, 90);
            path.AddArc(end.X - d, begin.Y, d, d, 270, 90);
            path.AddArc(end.X - d, end.Y - d, d, d, 0, 90);
            path.AddArc(begin.X, end.Y - d, d, d, 90, 90);
            path.CloseFigure();
        } else {
            path.AddRectangle(Gdiplus::RectF(begin.X, begin.Y, end.X - begin.X, end.Y - begin.Y));
        }
        graphics_.FillPath(&shade, &path);
        const Gdiplus::Pen pen(On(Ink::TraceBright), static_cast<REAL>(edge));
        if (edge > 0) graphics_.DrawPath(&pen, &path);
    }

private:
    static Color On(Ink ink) { return Color(ColourOf(ink, false)); }
    static PointF Point(DrawingPoint at) { return {static_cast<REAL>(at.x), static_cast<REAL>(at.y)}; }
    static Gdiplus::RectF Around(DrawingPoint centre, double radius) {
        const auto side = static_cast<REAL>(2 * radius);
        return {static_cast<REAL>(centre.x - radius), static_cast<REAL>(centre.y - radius), side, side};
    }
    static std::vector<PointF> Polygon(Points points) {
        std::vector<PointF> polygon(points.size());
        std::ranges::transform(points, polygon.begin(), Point);
        return polygon;
    }

    Graphics& graphics_;
};

HICON MakeIcon(int image, int side) {
    StartDrawing();
    Gdiplus::Bitmap bitmap(side, side, PixelFormat32bppARGB);
    Graphics graphics(&bitmap);
    graphics.ScaleTransform(static_cast<REAL>(side) / 16, static_cast<REAL>(side) / 16);
    GraphicsPencil pencil(graphics);
    DrawImage(pencil, image);
    HICON icon = nullptr;
    bitmap.GetHICON(&icon);
    return icon;
}

} // namespace

HIMAGELIST MakeListIcons(int count, int side) {
    const HIMAGELIST list = ImageList_Create(side, side, ILC_COLOR32, count, 0);
    for (int image = 1; image <= count; ++image) {
        const HICON icon = MakeIcon(image, side);
        ImageList_ReplaceIcon(list, -1, icon);
        DestroyIcon(icon);
    }
    return list;
}

HICON MakeProgramIcon(int side) {
    return MakeIcon(0, side);
}

void PaintSidePicture(HDC target, const RECT& rect) {
    StartDrawing();
    const int width = rect.right - rect.left, height = rect.bottom - rect.top;
    if (width <= 0 || height <= 0) return;
    Gdiplus::Bitmap bitmap(width, height, PixelFormat32bppRGB); // shown at once, without flicker
    Graphics graphics(&bitmap);
    const double scale = width / kSidePictureWidth;
    graphics.ScaleTransform(static_cast<REAL>(scale), static_cast<REAL>(scale));
    GraphicsPencil pencil(graphics);
    DrawSidePicture(pencil, height / scale);
    Graphics(target).DrawImage(&bitmap, static_cast<INT>(rect.left), static_cast<INT>(rect.top));
}

} // namespace korlan
