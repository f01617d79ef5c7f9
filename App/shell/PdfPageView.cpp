#include "PdfPageView.hpp"

#include <QPainter>
#include <QMouseEvent>
#include <QPaintEvent>

#include <poppler-qt6.h>

namespace tessel {
namespace {

// Enough for a stub's small print on a laptop screen; the image is scaled, not rendered again, on resize.
constexpr double renderDPI = 144;

}  // namespace

PdfPageView::PdfPageView(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    setMinimumWidth(320);
}

PdfPageView::~PdfPageView() = default;

bool PdfPageView::setDocument(const QByteArray& pdf) {
    document_ = pdf.isEmpty() ? nullptr : Poppler::Document::loadFromData(pdf);
    if (document_ && document_->isLocked()) document_.reset();
    if (document_) {
        document_->setRenderHint(Poppler::Document::Antialiasing);
        document_->setRenderHint(Poppler::Document::TextAntialiasing);
    }
    marks_.clear();
    pageIndex_ = -1;
    showPage(0);
    return document_ != nullptr;
}

int PdfPageView::pageCount() const noexcept { return document_ ? document_->numPages() : 0; }

void PdfPageView::showPage(int pageIndex) {
    if (pageIndex == pageIndex_ && !image_.isNull()) return;
    pageIndex_ = pageIndex;
    rasterise();
    updateGeometry();
    update();
}

void PdfPageView::rasterise() {
    image_ = QImage();
    pageSize_ = QSizeF();
    if (!document_ || pageIndex_ < 0 || pageIndex_ >= document_->numPages()) return;
    const std::unique_ptr<Poppler::Page> page = document_->page(pageIndex_);
    if (!page) return;
    pageSize_ = page->pageSizeF();
    image_ = page->renderToImage(renderDPI, renderDPI);
}

void PdfPageView::setMarks(std::vector<Mark> marks) {
    marks_ = std::move(marks);
    update();
}

QSize PdfPageView::sizeHint() const { return {612, heightForWidth(612)}; }

int PdfPageView::heightForWidth(int width) const {
    if (pageSize_.isEmpty()) return width * 11 / 8;  // a Letter page's shape until one is shown
    return static_cast<int>(width * pageSize_.height() / pageSize_.width());
}

QRectF PdfPageView::onWidget(const PageRectangle& bounds) const {
    const double w = width(), h = heightForWidth(width());
    return {bounds.x * w, bounds.y * h, bounds.width * w, bounds.height * h};
}

void PdfPageView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().window());
    if (image_.isNull()) {
        painter.drawText(rect(), Qt::AlignCenter, tr("The page cannot be shown."));
        return;
    }
    const QRect pageRect(0, 0, width(), heightForWidth(width()));
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(pageRect, image_);
    painter.setPen(QPen(QColor(0xbb, 0xbb, 0xbb), 1));
    painter.drawRect(pageRect.adjusted(0, 0, -1, -1));
    painter.setRenderHint(QPainter::Antialiasing);
    for (const auto& mark : marks_) {
        // A little air around the words, so the mark does not hide their edges.
        const QRectF area = onWidget(mark.bounds).adjusted(-3, -2, 3, 2);
        QColor fill = mark.colour;
        fill.setAlpha(mark.emphasised ? 70 : 25);
        painter.fillRect(area, fill);
        painter.setPen(QPen(mark.colour, mark.emphasised ? 2.5 : 1));
        painter.drawRect(area);
        if (!mark.label.isEmpty()) {
            QFont small = font();
            small.setPointSizeF(7);
            painter.setFont(small);
            painter.drawText(area.topLeft() + QPointF(1, -2), mark.label);
        }
    }
    if (dragStart_ && dragEnd_) {
        painter.setPen(QPen(QColor(0x15, 0x65, 0xc0), 1.5, Qt::DashLine));
        painter.drawRect(QRectF(*dragStart_, *dragEnd_).normalized());
    }
}

void PdfPageView::setDrawing(bool on) {
    drawing_ = on;
    setCursor(on ? Qt::CrossCursor : Qt::ArrowCursor);
    dragStart_.reset();
    dragEnd_.reset();
    update();
}

PageRectangle PdfPageView::onPage(const QPointF& from, const QPointF& to) const {
    const double w = width(), h = heightForWidth(width());
    const QRectF r = QRectF(from, to).normalized().intersected(QRectF(0, 0, w, h));
    return {r.x() / w, r.y() / h, r.width() / w, r.height() / h};
}

void PdfPageView::mousePressEvent(QMouseEvent* event) {
    if (!drawing_ || event->button() != Qt::LeftButton) return QWidget::mousePressEvent(event);
    dragStart_ = dragEnd_ = event->position();
}

void PdfPageView::mouseMoveEvent(QMouseEvent* event) {
    if (!dragStart_) return QWidget::mouseMoveEvent(event);
    dragEnd_ = event->position();
    update();
}

void PdfPageView::mouseReleaseEvent(QMouseEvent* event) {
    if (!dragStart_) return QWidget::mouseReleaseEvent(event);
    const PageRectangle region = onPage(*dragStart_, event->position());
    dragStart_.reset();
    dragEnd_.reset();
    update();
    // A click without a drag is not a region.
    if (region.width * width() >= 3 && region.height * heightForWidth(width()) >= 3) emit regionDrawn(region);
}

}  // namespace tessel
