#include "FormPagePlacement.hpp"

#include <qpdf/Buffer.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFPageObjectHelper.hh>
#include <qpdf/QPDFWriter.hh>

#include <cmath>
#include <memory>

namespace tessel::form_pages {

BlankPageCheck check(const std::string& blank, double width, double height) {
    QPDF form;
    try {
        form.processMemoryFile("blank form", blank.data(), blank.size());
        auto pages = QPDFPageDocumentHelper(form).getAllPages();
        if (pages.size() != 1) return BlankPageCheck::notOnePage;
        const auto box = pages.front().getMediaBox().getArrayAsRectangle();
        if (std::abs(box.urx - box.llx - width) > 0.5 || std::abs(box.ury - box.lly - height) > 0.5) return BlankPageCheck::otherSize;
    } catch (const std::exception&) {
        return BlankPageCheck::unreadable;
    }
    return BlankPageCheck::fits;
}

std::string placed(const std::string& blank, const std::string& drawn) {
    QPDF form;
    form.processMemoryFile("blank form", blank.data(), blank.size());
    QPDF values;
    values.processMemoryFile("drawn values", drawn.data(), drawn.size());
    auto drawnPages = QPDFPageDocumentHelper(values).getAllPages();
    QPDFPageDocumentHelper formPages(form);
    auto pages = formPages.getAllPages();
    for (std::size_t i = 1; i < drawnPages.size(); ++i) formPages.addPage(pages.front().shallowCopyPage(), false);
    pages = formPages.getAllPages();
    for (std::size_t i = 0; i < pages.size() && i < drawnPages.size(); ++i) {
        QPDFObjectHandle xobject = form.copyForeignObject(drawnPages[i].getFormXObjectForPage());
        QPDFObjectHandle resources = pages[i].getAttribute("/Resources", true).shallowCopy();
        QPDFObjectHandle xobjects = resources.hasKey("/XObject") ? resources.getKey("/XObject").shallowCopy() : QPDFObjectHandle::newDictionary();
        xobjects.replaceKey("/TesselValues", xobject);
        resources.replaceKey("/XObject", xobjects);
        pages[i].getObjectHandle().replaceKey("/Resources", resources);
        // The blank page's own drawing may leave its transformation in force: it is enclosed first.
        pages[i].addPageContents(QPDFObjectHandle::newStream(&form, "q\n"), true);
        pages[i].addPageContents(QPDFObjectHandle::newStream(&form, "Q\nq\n/TesselValues Do\nQ\n"), false);
    }
    QPDFWriter writer(form);
    writer.setOutputMemory();
    writer.setDeterministicID(true);
    writer.write();
    const std::unique_ptr<Buffer> buffer(writer.getBuffer());
    return std::string(reinterpret_cast<const char*>(buffer->getBuffer()), buffer->getSize());
}

}  // namespace tessel::form_pages
