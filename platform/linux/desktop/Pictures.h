// The window's own pictures, all drawn, so that they are crisp at any size and scale.
#pragma once

#include <QIcon>
#include <QWidget>
#include <cstdint>

namespace korlan {

// Picture of the list's image list by its number, 1 to 8; a null icon for any other. Transparent background, readable
// on the light and the dark base colour.
QIcon ListIcon(std::int32_t image);

QIcon ProgramIcon();

// The wizard's side picture: circuit traces running into a chip that takes in an update.
class SidePicture : public QWidget {
public:
    explicit SidePicture(QWidget* parent = nullptr);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent*) override;
};

} // namespace korlan
