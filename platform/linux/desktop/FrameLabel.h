// A label whose text may change ten thousand times a second. Its rectangle is fixed by its font and number of lines and
// it is opaque, so a new text never moves another control. It paints at once when its last paint is a display frame
// old, else at the next frame; the last text is always painted. Texts are plain and "&" stands for itself; one that
// does not fit is wrapped, then cut with an ellipsis and shown whole as a tool tip.
#pragma once

#include <QElapsedTimer>
#include <QLabel>
#include <QTimer>

namespace korlan {

class FrameLabel : public QLabel {
public:
    explicit FrameLabel(int lines, QWidget* parent = nullptr);

    void SetText(const QString& text);
    void Present(); // shows the present text, at once or at the next frame

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent*) override;
    bool event(QEvent* event) override;

private:
    void PresentNow();
    void DrawLines(QPainter& painter);

    int lines_;
    QString text_;
    QString painted_; // the text on the screen
    bool cut_ = false;
    QElapsedTimer sincePaint_;
    QTimer nextFrame_;
};

} // namespace korlan
