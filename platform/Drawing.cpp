#include "platform/Drawing.h"

#include <algorithm>
#include <cmath>

namespace korlan {
namespace {

constexpr double kFine = 1.3, kMiddle = 1.5, kBold = 1.6;

// An arrow into a tray. `tip`: where it points; `unit`: how large it is.
void DrawArrow(Pencil& pencil, DrawingPoint tip, double unit, Ink ink, double width) {
    pencil.Line({{tip.x, tip.y - 6 * unit}, {tip.x, tip.y}}, ink, width);
    pencil.Line({{tip.x - 3 * unit, tip.y - 3 * unit}, tip, {tip.x + 3 * unit, tip.y - 3 * unit}}, ink, width);
    pencil.Line({{tip.x - 3.5 * unit, tip.y + 2.5 * unit}, {tip.x + 3.5 * unit, tip.y + 2.5 * unit}}, ink, width);
}

void DrawProgram(Pencil& pencil) {
    pencil.Panel({0.5, 0.5}, {15, 15}, 3.2, 0xFF12345A, 0xFF128386, 0);
    DrawArrow(pencil, {8, 10}, 1, Ink::White, 1.7);
}

void DrawPage(Pencil& pencil) {
    pencil.Shape({{3.5, 1.5}, {9.5, 1.5}, {12.5, 4.5}, {12.5, 14.5}, {3.5, 14.5}}, Ink::Blue, false);
    for (const double y : {7.5, 10.5}) pencil.Line({{6, y}, {10, y}}, Ink::Blue, kFine);
}

// An empty ring with a bar: this file stays as it is.
void DrawLeave(Pencil& pencil) {
    pencil.Ring({8, 8}, 6.2, Ink::Grey, kMiddle);
    pencil.Line({{5.2, 8}, {10.8, 8}}, Ink::Grey, kMiddle);
}

void DrawFolder(Pencil& pencil, bool open) {
    pencil.Shape({{1.5, 13}, {1.5, 3.5}, {6, 3.5}, {7.5, 5.2}, {13.5, 5.2}, {13.5, 13}}, Ink::Amber, true);
    if (open) pencil.Shape({{1.5, 13}, {4, 7.6}, {15.2, 7.6}, {13.5, 13}}, Ink::Amber, true);
}

void DrawPart(Pencil& pencil) {
    pencil.Shape({{4.5, 2.5}, {11.5, 2.5}, {11.5, 13.5}, {4.5, 13.5}}, Ink::Blue, false);
    for (const double y : {4.8, 8.0, 11.2}) {
        pencil.Line({{1.8, y}, {4.5, y}}, Ink::Blue, kFine);
        pencil.Line({{11.5, y}, {14.2, y}}, Ink::Blue, kFine);
    }
}

// This file will be fetched.
void DrawFetch(Pencil& pencil) {
    pencil.Disc({8, 8}, 7, Ink::Green);
    DrawArrow(pencil, {8, 10}, 0.87, Ink::Ground, kBold);
}

// Traces rise from the chip to the upper edge and fall to the lower one, bending at 45 degrees as on a board.
void DrawTraces(Pencil& pencil, double centre, double height) {
    constexpr struct {
        double pin;    // x of the chip's pin
        double lane;   // x where the trace ends
        double length; // how far it runs towards the edge, 0 to 1
        Ink ink;
    } kTraces[] = {{36, 12, 0.92, Ink::Trace}, {44, 30, 0.62, Ink::Trace},       {52, 46, 1.05, Ink::TraceBright},
                   {60, 60, 0.78, Ink::Trace}, {68, 74, 1.05, Ink::TraceBright}, {76, 90, 0.55, Ink::Trace},
                   {84, 108, 0.86, Ink::Trace}};
    for (const double way : {-1.0, 1.0}) {
        const double pinEnd = centre + way * 34, room = (way < 0 ? centre : height - centre) - 34;
        for (const auto& [pin, lane, length, ink] : kTraces) {
            const double shift = std::abs(lane - pin), bend = pinEnd + way * (6 + shift * 0.4);
            const double end = pinEnd + way * std::max(room * length, 12 + shift * 1.4);
            pencil.Line({{pin, centre + way * 28}, {pin, bend}, {lane, bend + way * shift}, {lane, end}}, ink, kBold);
            pencil.Disc({lane, end}, 2.6, Ink::TraceHole);
            pencil.Ring({lane, end}, 2.6, ink, kBold);
        }
    }
}

} // namespace

std::uint32_t ColourOf(Ink ink, bool darkGround) {
    constexpr struct {
        std::uint32_t onLight, onDark;
    } kColours[] = {{0xFF1A7F4B, 0xFF4CC38A}, {0xFF6B7280, 0xFF9AA4B2}, {0xFF1F6FB2, 0xFF5AB0F0},
                    {0xFFB47A12, 0xFFE6B450}, {0xFFFFFFFF, 0xFF000000}, {0xFFFFFFFF, 0xFFFFFFFF},
                    {0x6E6FD6C8, 0x6E6FD6C8}, {0xE69FF0DC, 0xE69FF0DC}, {0xFF0D2B48, 0xFF0D2B48}};
    const auto& colour = kColours[static_cast<std::size_t>(ink)];
    return darkGround ? colour.onDark : colour.onLight;
}

void DrawImage(Pencil& pencil, std::int32_t image) {
    switch (image) {
    case 0: return DrawProgram(pencil);
    case 1: return pencil.Disc({8, 8}, 3.2, Ink::Grey);
    case 2: return DrawPage(pencil);
    case 3: return DrawLeave(pencil);
    case 4: return pencil.Disc({8, 8}, 3.2, Ink::Blue);
    case 5: return DrawFolder(pencil, true);
    case 6: return DrawFolder(pencil, false);
    case 7: return DrawPart(pencil);
    case 8: return DrawFetch(pencil);
    default: return;
    }
}

void DrawSidePicture(Pencil& pencil, double height) {
    const double centre = height * 0.42;
    pencil.Panel({0, 0}, {kSidePictureWidth, height}, 0, 0xFF0C1F3A, 0xFF127A7D, 0);
    DrawTraces(pencil, centre, height);
    pencil.Panel({30, centre - 30}, {60, 60}, 6, 0xFF1B4A6B, 0xFF0B223C, 1.4);
    pencil.Disc({37.5, centre - 22.5}, 2, Ink::Trace); // marks pin 1
    DrawArrow(pencil, {60, centre + 8}, 3.8, Ink::White, 4.2);
}

} // namespace korlan
