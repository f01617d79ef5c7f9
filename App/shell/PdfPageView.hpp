#pragma once

#include <QColor>
#include <QImage>
#include <QString>
#include <QWidget>

#include <memory>
#include <optional>
#include <vector>

#include "App/actualpay/StubEvidence.hpp"

namespace Poppler {
class Document;
}

namespace tessel {

// One page of a PDF drawn to fit the widget's width, with rectangles marked over it: the evidence of a
// value under review, or the regions of a form. Rectangles are in page-relative units (0 to 1 across and
// down the visible page from its top left), the units the stub reader and the form interpreter use.
class PdfPageView : public QWidget {
    Q_OBJECT
public:
    struct Mark {
        PageRectangle bounds;
        QColor colour;
        bool emphasised = false;  // drawn filled and thicker: the one the user is looking at
        QString label{};          // written small above the rectangle's top left
    };

    explicit PdfPageView(QWidget* parent = nullptr);
    ~PdfPageView() override;

    // Shows the document's first page; false (and an empty view) when the bytes are not a PDF Poppler opens.
    bool setDocument(const QByteArray& pdf);
    int pageCount() const noexcept;
    void showPage(int pageIndex);
    int page() const noexcept { return pageIndex_; }
    void setMarks(std::vector<Mark> marks);
    const std::vector<Mark>& marks() const noexcept { return marks_; }
    // While on, a drag of the mouse draws a rectangle and reports it (in page-relative units) on release.
    void setDrawing(bool on);
    bool isDrawing() const noexcept { return drawing_; }
    // The page-relative rectangle between two points of the widget, clipped to the page.
    PageRectangle onPage(const QPointF& from, const QPointF& to) const;


    QSize sizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

signals:
    void regionDrawn(tessel::PageRectangle region);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void rasterise();
    QRectF onWidget(const PageRectangle& bounds) const;

    std::unique_ptr<Poppler::Document> document_;
    int pageIndex_ = 0;
    QImage image_;      // the page at a fixed resolution, scaled when painted
    QSizeF pageSize_;   // in points
    std::vector<Mark> marks_;
    bool drawing_ = false;
    std::optional<QPointF> dragStart_, dragEnd_;
};

}  // namespace tessel
