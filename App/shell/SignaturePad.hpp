#pragma once

#include <QImage>
#include <QPainterPath>
#include <QWidget>

#include <string>
#include <vector>

namespace tessel {

// A pad a signature is drawn on with the mouse or a pen: "Draw signature here" until the first stroke.
// The drawing is kept as strokes, so that it is drawn sharp at any size, and given as a PNG cropped to
// the ink, the way an imported signature image is kept.
class SignaturePad : public QWidget {
    Q_OBJECT
public:
    explicit SignaturePad(QWidget* parent = nullptr);

    bool isEmpty() const noexcept { return strokes_.empty(); }
    void clear();
    // A stroke through the points, in the pad's coordinates (what a drag of the mouse draws).
    void addStroke(const std::vector<QPointF>& points);
    // The ink on a white ground, cropped to the strokes with a small margin, at twice the pad's scale.
    QImage image() const;
    // The same as PNG bytes; empty when nothing is drawn.
    std::string pngBytes() const;

    QSize sizeHint() const override { return {420, 140}; }

signals:
    void changed();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    std::vector<QPainterPath> strokes_;
    bool drawing_ = false;
};

}  // namespace tessel
