#include "PDFContentScan.hpp"

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFAcroFormDocumentHelper.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFPageObjectHelper.hh>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace tessel::pdf_scan {
namespace {

// The current transformation matrix [a b c d e f]: x' = a x + c y + e, y' = b x + d y + f.
struct Matrix {
    double a = 1, b = 0, c = 0, d = 1, e = 0, f = 0;
    Point apply(double x, double y) const { return {a * x + c * y + e, b * x + d * y + f}; }
    // `m` applied first, then this transform: the cm operator's concatenation.
    Matrix after(const Matrix& m) const {
        return {m.a * a + m.b * c, m.a * b + m.b * d, m.c * a + m.d * c, m.c * b + m.d * d, m.e * a + m.f * c + e, m.e * b + m.f * d + f};
    }
    double scale() const { return std::sqrt(std::fabs(a * d - b * c)); }
};

// A content stream's operators, with their operands, turned into lines and rectangles in page space.
// Saving and restoring the graphics state keeps the transform and the line width; the path is built by
// move-to, line-to, close-path and rectangle, and stroking or filling it records it, ending it drops it.
class VectorState : public QPDFObjectHandle::ParserCallbacks {
public:
    explicit VectorState(PageScan& page) : page_(page) {}

    void handleObject(QPDFObjectHandle object) override {
        if (!object.isOperator()) {
            if (operands_.size() < maximumOperands) operands_.push_back(object);
            return;
        }
        apply(object.getOperatorValue());
        operands_.clear();
    }
    void handleEOF() override {}

private:
    // A malformed stream could pile up operands without end; no operator this scanner reads takes six.
    static constexpr std::size_t maximumOperands = 64;

    struct Subpath {
        std::vector<Point> points;
        bool closed = false;
    };

    bool numbers(std::size_t count, double* values) {
        if (operands_.size() < count) return false;
        const std::size_t first = operands_.size() - count;
        for (std::size_t i = 0; i < count; ++i) {
            if (!operands_[first + i].getValueAsNumber(values[i]) || !std::isfinite(values[i])) return false;
        }
        return true;
    }

    void apply(const std::string& op) {
        double v[6];
        if (op == "q") {
            stack_.emplace_back(transform_, strokeWidth_);
        } else if (op == "Q") {
            if (!stack_.empty()) {
                std::tie(transform_, strokeWidth_) = stack_.back();
                stack_.pop_back();
            }
        } else if (op == "cm" && numbers(6, v)) {
            transform_ = transform_.after({v[0], v[1], v[2], v[3], v[4], v[5]});
        } else if (op == "w" && numbers(1, v)) {
            strokeWidth_ = std::fabs(v[0]);
        } else if (op == "m" && numbers(2, v)) {
            path_.push_back({{transform_.apply(v[0], v[1])}});
        } else if (op == "l" && numbers(2, v)) {
            if (path_.empty()) path_.push_back({});
            path_.back().points.push_back(transform_.apply(v[0], v[1]));
        } else if (op == "h") {
            if (!path_.empty()) path_.back().closed = true;
        } else if (op == "re" && numbers(4, v)) {
            rectangles_.push_back(boundsOf({transform_.apply(v[0], v[1]), transform_.apply(v[0] + v[2], v[1]),
                                            transform_.apply(v[0] + v[2], v[1] + v[3]), transform_.apply(v[0], v[1] + v[3])}));
        } else if (op == "S" || op == "s") {
            finish(true, false, op == "s");
        } else if (op == "f" || op == "F" || op == "f*") {
            finish(false, true, true);
        } else if (op == "B" || op == "B*" || op == "b" || op == "b*") {
            finish(true, true, op[0] == 'b');
        } else if (op == "n") {
            path_.clear();
            rectangles_.clear();
        }
    }

    static Box boundsOf(const std::vector<Point>& corners) {
        Box box{corners.front().x, corners.front().y, corners.front().x, corners.front().y};
        for (const auto& p : corners) {
            box.x0 = std::min(box.x0, p.x), box.y0 = std::min(box.y0, p.y);
            box.x1 = std::max(box.x1, p.x), box.y1 = std::max(box.y1, p.y);
        }
        return box;
    }

    // Stroked straight segments are lines; every rectangle of the path is recorded with how it was painted.
    void finish(bool stroked, bool filled, bool close) {
        const double width = strokeWidth_ * transform_.scale();
        for (const auto& subpath : path_) {
            if (!stroked || subpath.points.size() < 2) continue;
            for (std::size_t i = 1; i < subpath.points.size(); ++i) page_.lines.push_back({subpath.points[i - 1], subpath.points[i], width});
            if ((close || subpath.closed) && subpath.points.size() > 2) page_.lines.push_back({subpath.points.back(), subpath.points.front(), width});
        }
        for (const auto& box : rectangles_) page_.rectangles.push_back({box, stroked, filled});
        path_.clear();
        rectangles_.clear();
    }

    PageScan& page_;
    std::vector<QPDFObjectHandle> operands_;
    Matrix transform_;
    double strokeWidth_ = 1;
    std::vector<std::pair<Matrix, double>> stack_;
    std::vector<Subpath> path_;
    std::vector<Box> rectangles_;
};

std::optional<Box> boxOf(QPDFObjectHandle box) {
    if (!box.isRectangle()) return std::nullopt;
    const auto r = box.getArrayAsRectangle();
    return Box{std::min(r.llx, r.urx), std::min(r.lly, r.ury), std::max(r.llx, r.urx), std::max(r.lly, r.ury)};
}

int imageResources(QPDFPageObjectHelper& page) {
    int count = 0;
    auto resources = page.getAttribute("/Resources", false);
    if (!resources.isDictionary()) return 0;
    auto objects = resources.getKey("/XObject");
    if (!objects.isDictionary()) return 0;
    for (auto& key : objects.getKeys()) {
        auto object = objects.getKey(key);
        if (object.isStream() && object.getDict().getKey("/Subtype").isNameAndEquals("/Image")) ++count;
    }
    return count;
}

std::vector<Widget> widgetsOf(QPDFAcroFormDocumentHelper& forms, QPDFPageObjectHelper& page) {
    std::vector<Widget> widgets;
    for (auto& annotation : forms.getWidgetAnnotationsForPage(page)) {
        auto field = forms.getFieldForAnnotation(annotation);
        const auto rect = annotation.getRect();
        Widget widget{field.getFullyQualifiedName(), annotation.getSubtype(), field.getFieldType(), std::nullopt, (field.getFlags() & 1) != 0,
                      {std::min(rect.llx, rect.urx), std::min(rect.lly, rect.ury), std::max(rect.llx, rect.urx), std::max(rect.lly, rect.ury)}};
        const std::string value = field.getValueAsString();
        if (!value.empty()) widget.value = value;
        widgets.push_back(std::move(widget));
    }
    return widgets;
}

}  // namespace

std::vector<PageScan> scan(const std::string& pdf) {
    QPDF document;
    document.setSuppressWarnings(true);
    document.processMemoryFile("form.pdf", pdf.data(), pdf.size());
    QPDFAcroFormDocumentHelper forms(document);
    std::vector<PageScan> pages;
    for (auto& page : QPDFPageDocumentHelper(document).getAllPages()) {
        PageScan scanned;
        scanned.mediaBox = boxOf(page.getAttribute("/MediaBox", false)).value_or(Box{});
        scanned.cropBox = boxOf(page.getAttribute("/CropBox", false));
        auto rotate = page.getAttribute("/Rotate", false);
        if (rotate.isInteger()) scanned.rotation = static_cast<int>(((rotate.getIntValue() % 360) + 360) % 360);
        scanned.widgets = widgetsOf(forms, page);
        scanned.imageResourceCount = imageResources(page);
        VectorState state(scanned);
        page.parseContents(&state);
        pages.push_back(std::move(scanned));
    }
    return pages;
}

}  // namespace tessel::pdf_scan
