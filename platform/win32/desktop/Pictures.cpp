#include "platform/win32/desktop/Pictures.h"

#include <algorithm>
// The drawing library's own header wants these two names.
namespace Gdiplus {
using std::max;
using std::min;
} // namespace Gdiplus
#include <objidl.h>
// (after objidl.h)
#include <gdiplus.h>

#include <array>
#include <cmath>
#include <initializer_list>

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

const Color kGreen(0x1a, 0x7f, 0x4b), kGrey(0x6b, 0x72, 0x80), kBlue(0x1f, 0x6f, 0xb2), kAmber(0xb4, 0x7a, 0x12);
const Color kWhite(255, 255, 255);

// Each drawing fills a square of 16 by 16 units; strokes are 1.5 wide, ends round.
class Pencil {
public:
    explicit Pencil(Graphics& graphics) : graphics_(graphics) {}
    void Disc(REAL x, REAL y, REAL radius, const Color& colour) {
        const Gdiplus::SolidBrush brush(colour);
        graphics_.FillEllipse(&brush, x - radius, y - radius, 2 * radius, 2 * radius);
    }
    void Ring(REAL x, REAL y, REAL radius, const Color& colour, REAL width) {
        const Gdiplus::Pen pen(colour, width);
        graphics_.DrawEllipse(&pen, x - radius, y - radius, 2 * radius, 2 * radius);
    }
    void Line(std::initializer_list<PointF> points, const Color& colour, REAL width) {
        Gdiplus::Pen pen(colour, width);
        pen.SetLineCap(Gdiplus::LineCapRound, Gdiplus::LineCapRound, Gdiplus::DashCapFlat);
        pen.SetLineJoin(Gdiplus::LineJoinRound);
        graphics_.DrawLines(&pen, points.begin(), static_cast<INT>(points.size()));
    }
    void Shape(std::initializer_list<PointF> points, const Color& colour, BYTE fill) {
        const Gdiplus::SolidBrush brush(Color(fill, colour.GetR(), colour.GetG(), colour.GetB()));
        const Gdiplus::Pen pen(colour, 1.3F);
        graphics_.FillPolygon(&brush, points.begin(), static_cast<INT>(points.size()));
        graphics_.DrawPolygon(&pen, points.begin(), static_cast<INT>(points.size()));
    }
    void RoundedRect(const Gdiplus::RectF& rect, REAL radius, const Gdiplus::Brush& brush, const Gdiplus::Pen* pen) {
        Gdiplus::GraphicsPath path;
        const REAL d = 2 * radius, right = rect.X + rect.Width - d, bottom = rect.Y + rect.Height - d;
        path.AddArc(rect.X, rect.Y, d, d, 180, 90);
        path.AddArc(right, rect.Y, d, d, 270, 90);
        path.AddArc(right, bottom, d, d, 0, 90);
        path.AddArc(rect.X, bottom, d, d, 90, 90);
        path.CloseFigure();
        graphics_.FillPath(&brush, &path);
        if (pen) graphics_.DrawPath(pen, &path);
    }

private:
    Graphics& graphics_;
};

// A disc with an arrow into a tray: this file will be fetched.
void DrawFetch(Pencil& pencil) {
    pencil.Disc(8, 8, 7, kGreen);
    pencil.Line({{8, 4.3F}, {8, 9.6F}}, kWhite, 1.6F);
    pencil.Line({{5.4F, 7.4F}, {8, 10}, {10.6F, 7.4F}}, kWhite, 1.6F);
    pencil.Line({{5.2F, 12}, {10.8F, 12}}, kWhite, 1.6F);
}

// An empty ring with a bar: this file stays as it is.
void DrawLeave(Pencil& pencil) {
    pencil.Ring(8, 8, 6.2F, kGrey, 1.5F);
    pencil.Line({{5.2F, 8}, {10.8F, 8}}, kGrey, 1.5F);
}

void DrawFolder(Pencil& pencil, bool open) {
    pencil.Shape({{1.5F, 13}, {1.5F, 3.5F}, {6, 3.5F}, {7.5F, 5.2F}, {13.5F, 5.2F}, {13.5F, 13}}, kAmber, 90);
    if (open) pencil.Shape({{1.5F, 13}, {4, 7.6F}, {15.2F, 7.6F}, {13.5F, 13}}, kAmber, 90);
}

void DrawPage(Pencil& pencil) {
    pencil.Shape({{3.5F, 1.5F}, {9.5F, 1.5F}, {12.5F, 4.5F}, {12.5F, 14.5F}, {3.5F, 14.5F}}, kBlue, 0);
    for (const REAL y : {7.5F, 10.5F}) pencil.Line({{6, y}, {10, y}}, kBlue, 1.3F);
}

void DrawPart(Pencil& pencil) {
    pencil.Shape({{4.5F, 2.5F}, {11.5F, 2.5F}, {11.5F, 13.5F}, {4.5F, 13.5F}}, kBlue, 0);
    for (const REAL y : {4.8F, 8.0F, 11.2F}) {
        pencil.Line({{1.8F, y}, {4.5F, y}}, kBlue, 1.3F);
        pencil.Line({{11.5F, y}, {14.2F, y}}, kBlue, 1.3F);
    }
}

void DrawProgram(Pencil& pencil) {
    const Gdiplus::LinearGradientBrush ground(PointF(0, 0), PointF(16, 16), Color(0x12, 0x34, 0x5a),
                                              Color(0x12, 0x83, 0x86));
    pencil.RoundedRect({0.5F, 0.5F, 15, 15}, 3.2F, ground, nullptr);
    pencil.Line({{8, 3.6F}, {8, 9.6F}}, kWhite, 1.7F);
    pencil.Line({{5, 7}, {8, 10}, {11, 7}}, kWhite, 1.7F);
    pencil.Line({{4.4F, 12.6F}, {11.6F, 12.6F}}, kWhite, 1.7F);
}

constexpr int kProgram = 0;

void DrawImage(Pencil& pencil, int image) {
    switch (image) {
    case kProgram: DrawProgram(pencil); break;
    case 1: pencil.Disc(8, 8, 3.2F, kGrey); break;
    case 2: DrawPage(pencil); break;
    case 3: DrawLeave(pencil); break;
    case 4: pencil.Disc(8, 8, 3.2F, kBlue); break;
    case 5: DrawFolder(pencil, true); break;
    case 6: DrawFolder(pencil, false); break;
    case 7: DrawPart(pencil); break;
    case 8: DrawFetch(pencil); break;
    default: break;
    }
}

HICON MakeIcon(int image, int side) {
    StartDrawing();
    Gdiplus::Bitmap bitmap(side, side, PixelFormat32bppARGB);
    Graphics graphics(&bitmap);
    graphics.SetSmoothingMode(Gdiplus::SmoothingModeAntiAlias);
    graphics.ScaleTransform(static_cast<REAL>(side) / 16, static_cast<REAL>(side) / 16);
    Pencil pencil(graphics);
    DrawImage(pencil, image);
    HICON icon = nullptr;
    bitmap.GetHICON(&icon);
    return icon;
}

// The side picture is laid out on a grid 120 units wide whose height follows the window.
constexpr REAL kGridWidth = 120;
const Color kTrace(110, 0x6f, 0xd6, 0xc8), kTraceBright(230, 0x9f, 0xf0, 0xdc);

// Traces rise from the chip to the upper edge and fall to the lower one, bending at 45 degrees as on a board.
void DrawTraces(Pencil& pencil, REAL centre, REAL height) {
    struct Trace {
        REAL pin;    // x of the chip's pin
        REAL lane;   // x where the trace ends
        REAL length; // how far it runs towards the edge, 0 to 1
        bool bright;
    };
    constexpr std::array<Trace, 7> traces{{{36, 12, 0.92F, false},
                                           {44, 30, 0.62F, false},
                                           {52, 46, 1.05F, true},
                                           {60, 60, 0.78F, false},
                                           {68, 74, 1.05F, true},
                                           {76, 90, 0.55F, false},
                                           {84, 108, 0.86F, false}}};
    for (const REAL way : {-1.0F, 1.0F}) {
        const REAL pinEnd = centre + way * 34, room = (way < 0 ? centre : height - centre) - 34;
        for (const Trace& trace : traces) {
            const Color& colour = trace.bright ? kTraceBright : kTrace;
            const REAL shift = std::abs(trace.lane - trace.pin), bend = pinEnd + way * (6 + shift * 0.4F);
            const REAL end = pinEnd + way * std::max(room * trace.length, 12 + shift * 1.4F);
            pencil.Line({{trace.pin, centre + way * 28},
                         {trace.pin, bend},
                         {trace.lane, bend + way * shift},
                         {trace.lane, end}},
                        colour, 1.6F);
            pencil.Disc(trace.lane, end, 2.6F, Color(0x0d, 0x2b, 0x48));
            pencil.Ring(trace.lane, end, 2.6F, colour, 1.6F);
        }
    }
}

void DrawChip(Pencil& pencil, REAL centre) {
    const Gdiplus::LinearGradientBrush shade(PointF(30, centre - 30), PointF(90, centre + 30), Color(0x1b, 0x4a, 0x6b),
                                             Color(0x0b, 0x22, 0x3c));
    const Gdiplus::Pen edge(kTraceBright, 1.4F);
    pencil.RoundedRect({30, centre - 30, 60, 60}, 6, shade, &edge);
    pencil.Disc(37.5F, centre - 22.5F, 2, kTrace); // marks pin 1
    pencil.Line({{60, centre - 17}, {60, centre + 7}}, kWhite, 4.2F);
    pencil.Line({{49, centre - 3}, {60, centre + 8}, {71, centre - 3}}, kWhite, 4.2F);
    pencil.Line({{46, centre + 18}, {74, centre + 18}}, kWhite, 4.2F);
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
    return MakeIcon(kProgram, side);
}

void PaintSidePicture(HDC target, const RECT& rect) {
    StartDrawing();
    const int width = rect.right - rect.left, height = rect.bottom - rect.top;
    if (width <= 0 || height <= 0) return;
    Gdiplus::Bitmap bitmap(width, height, PixelFormat32bppRGB); // shown at once, without flicker
    Graphics graphics(&bitmap);
    graphics.SetSmoothingMode(Gdiplus::SmoothingModeAntiAlias);
    const auto right = static_cast<REAL>(width), bottom = static_cast<REAL>(height);
    Gdiplus::LinearGradientBrush ground(PointF(0, 0), PointF(0, bottom), Color(0x0c, 0x1f, 0x3a),
                                        Color(0x12, 0x7a, 0x7d));
    graphics.FillRectangle(&ground, REAL{0}, REAL{0}, right, bottom);
    const REAL scale = right / kGridWidth, gridHeight = bottom / scale, centre = gridHeight * 0.42F;
    graphics.ScaleTransform(scale, scale);
    Pencil pencil(graphics);
    DrawTraces(pencil, centre, gridHeight);
    DrawChip(pencil, centre);
    Graphics(target).DrawImage(&bitmap, static_cast<INT>(rect.left), static_cast<INT>(rect.top));
}

} // namespace korlan
