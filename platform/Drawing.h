// The window's own pictures as strokes of a pencil, so that they are the same on every host and crisp at any size.
#pragma once

#include <cstdint>
#include <initializer_list>

namespace korlan {

struct DrawingPoint {
    double x, y;
};

// The first four have enough contrast on a light and on a dark ground. Ground is the colour that a picture stands on.
enum class Ink { Green, Grey, Blue, Amber, Ground, White, Trace, TraceBright, TraceHole };
std::uint32_t ColourOf(Ink ink, bool darkGround); // 0xAARRGGBB

class Pencil { // its lines have round ends
public:
    using Points = std::initializer_list<DrawingPoint>;
    virtual ~Pencil() = default;
    virtual void Disc(DrawingPoint centre, double radius, Ink ink) = 0;
    virtual void Ring(DrawingPoint centre, double radius, Ink ink, double width) = 0;
    virtual void Line(Points points, Ink ink, double width) = 0;
    virtual void Shape(Points points, Ink ink, bool filled) = 0; // filled: thinly, with the colour of its edge
    // Its colours, of the form above, run from corner to corner. edge: the width of a bright edge, 0 = none.
    virtual void Panel(DrawingPoint corner, DrawingPoint size, double radius, std::uint32_t from, std::uint32_t to,
                       double edge) = 0;
};

// On a square of 16 by 16 units: the picture of that number of the image list, from 1, or the program's own, 0.
void DrawImage(Pencil& pencil, std::int32_t image);

// Circuit traces running into a chip that takes in an update, on a grid 120 units wide.
inline constexpr double kSidePictureWidth = 120;
void DrawSidePicture(Pencil& pencil, double height);

} // namespace korlan
