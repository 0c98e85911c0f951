// The small widgets of the window, and what a screen reader is told about widgets that are no kind of control.
#pragma once

#include <QAccessible>
#include <QPushButton>
#include <QRadioButton>

namespace korlan {

// From now on a screen reader meets the widget in that role; to be said before the widget is shown.
void SetRole(QWidget& widget, QAccessible::Role role);

// As wide as its caption, and never narrower than buttons usually are.
class WideButton : public QPushButton {
public:
    using QPushButton::QPushButton;
    QSize sizeHint() const override { return QPushButton::sizeHint().expandedTo({88, 0}); }
    QSize minimumSizeHint() const override { return sizeHint(); }
};

// An option button whose caption wraps. It never selects itself: the record it mirrors decides.
class WrappedOption : public QRadioButton {
public:
    explicit WrappedOption(QWidget* parent);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

protected:
    void nextCheckState() override {}
    bool hitButton(const QPoint& place) const override { return rect().contains(place); }
    void paintEvent(QPaintEvent*) override;

private:
    int CaptionLeft() const;
    QRect CaptionIn(int width) const;
};

// A hairline between the page and its buttons, in the theme's own colours.
class Hairline : public QWidget {
public:
    Hairline() { setFixedHeight(1); }

protected:
    void paintEvent(QPaintEvent*) override;
};

} // namespace korlan
