#include "SignaturePad.hpp"

#include <QBuffer>
#include <QMouseEvent>
#include <QPainter>

namespace tessel {
namespace {

constexpr double inkWidth = 2.2;

QPen inkPen(double scale = 1) { return QPen(QColor(0x10, 0x20, 0x50), inkWidth * scale, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin); }

}  // namespace

SignaturePad::SignaturePad(QWidget* parent) : QWidget(parent) {
    setMinimumSize(300, 110);
    setCursor(Qt::CrossCursor);
    setAttribute(Qt::WA_StaticContents);
}

void SignaturePad::clear() {
    strokes_.clear();
    update();
    emit changed();
}

void SignaturePad::addStroke(const std::vector<QPointF>& points) {
    if (points.empty()) return;
    QPainterPath path(points.front());
    for (std::size_t i = 1; i < points.size(); ++i) path.lineTo(points[i]);
    if (points.size() == 1) path.lineTo(points.front() + QPointF(0.1, 0.1));  // a dot
    strokes_.push_back(path);
    update();
    emit changed();
}

void SignaturePad::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), Qt::white);
    painter.setPen(QPen(QColor(0xbb, 0xbb, 0xbb), 1, Qt::DashLine));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
    const int baseline = height() * 3 / 4;
    painter.drawLine(16, baseline, width() - 16, baseline);
    if (strokes_.empty()) {
        painter.setPen(QColor(0x99, 0x99, 0x99));
        painter.drawText(rect().adjusted(0, 0, 0, -height() / 4), Qt::AlignCenter, tr("Draw signature here"));
        return;
    }
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(inkPen());
    for (const auto& stroke : strokes_) painter.drawPath(stroke);
}

void SignaturePad::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    drawing_ = true;
    strokes_.emplace_back(event->position());
    strokes_.back().lineTo(event->position() + QPointF(0.1, 0.1));
    update();
}

void SignaturePad::mouseMoveEvent(QMouseEvent* event) {
    if (!drawing_ || strokes_.empty()) return;
    strokes_.back().lineTo(event->position());
    update();
}

void SignaturePad::mouseReleaseEvent(QMouseEvent* event) {
    if (!drawing_) return;
    drawing_ = false;
    mouseMoveEvent(event);
    emit changed();
}

QImage SignaturePad::image() const {
    if (strokes_.empty()) return {};
    QRectF ink;
    for (const auto& stroke : strokes_) ink = ink.united(stroke.boundingRect());
    const double margin = 8, scale = 2;
    ink.adjust(-margin, -margin, margin, margin);
    QImage image((ink.size() * scale).toSize().expandedTo(QSize(1, 1)), QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(scale, scale);
    painter.translate(-ink.topLeft());
    painter.setPen(inkPen());
    for (const auto& stroke : strokes_) painter.drawPath(stroke);
    return image;
}

std::string SignaturePad::pngBytes() const {
    const QImage drawn = image();
    if (drawn.isNull()) return {};
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    drawn.save(&buffer, "PNG");
    return bytes.toStdString();
}

}  // namespace tessel
