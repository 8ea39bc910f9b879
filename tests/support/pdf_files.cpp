// The qpdf side of the tests' PDF helpers, kept in one file: clang refuses qpdf's headers in C++20
// (a vector of a class not yet complete in JSON.hh), so this file alone is built as C++17.
#define POINTERHOLDER_TRANSITION 4
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>
#include <qpdf/QPDFOutlineDocumentHelper.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFPageObjectHelper.hh>
#include <qpdf/QPDFWriter.hh>

#include <exception>

#include "tests/support/pdf_making.h"
#include "tests/support/pdf_reading.h"

namespace tv::test_support {

PdfFacts ReadPdfFacts(const std::string& path) {
  PdfFacts facts;
  try {
    QPDF pdf;
    pdf.processFile(path.c_str());
    std::vector<QPDFPageObjectHelper> pages = QPDFPageDocumentHelper(pdf).getAllPages();
    for (QPDFPageObjectHelper& page : pages) {
      PdfPageFacts f;
      const QPDFObjectHandle::Rectangle box = page.getAttribute("/MediaBox", false).getArrayAsRectangle();
      f.widthMm = (box.urx - box.llx) * 25.4 / 72;
      f.heightMm = (box.ury - box.lly) * 25.4 / 72;
      QPDFObjectHandle rotate = page.getAttribute("/Rotate", false);
      if (rotate.isInteger()) f.rotate = rotate.getIntValueAsInt();
      QPDFObjectHandle resources = page.getAttribute("/Resources", false);
      if (resources.isDictionary() && resources.getKey("/Font").isDictionary()) {
        QPDFObjectHandle fonts = resources.getKey("/Font");
        for (const std::string& key : fonts.getKeys()) {
          ++f.fonts;
          if (fonts.getKey(key).isDictionary() && fonts.getKey(key).hasKey("/ToUnicode")) ++f.fontsWithText;
        }
      }
      facts.pages.push_back(f);
    }
    QPDFOutlineDocumentHelper outlines(pdf);
    for (QPDFOutlineObjectHelper& item : outlines.getTopLevelOutlines()) {
      facts.outline.push_back(item.getTitle());
      const QPDFObjectHandle target = item.getDestPage();
      int at = -1;
      for (std::size_t i = 0; i < pages.size(); ++i)
        if (target.isIndirect() && pages[i].getObjectHandle().getObjGen() == target.getObjGen()) at = static_cast<int>(i);
      facts.outlinePages.push_back(at);
    }
    facts.read = true;
  } catch (const std::exception&) {
    facts.read = false;
  }
  return facts;
}

void MakePdf(const std::string& path, const std::vector<PageShape>& pages, BoxPlace box, bool objectStreams) {
  QPDF pdf;
  pdf.emptyPDF();
  QPDFPageDocumentHelper doc(pdf);
  for (const PageShape& shape : pages) {
    QPDFObjectHandle page = pdf.makeIndirectObject(QPDFObjectHandle::parse("<< /Type /Page /Resources << >> >>"));
    page.replaceKey("/Contents", pdf.newStream("0 0 m 10 10 l S"));
    if (box == BoxPlace::InPage)
      page.replaceKey("/MediaBox", QPDFObjectHandle::newFromRectangle({0, 0, shape.widthPt, shape.heightPt}));
    if (shape.rotate != 0) page.replaceKey("/Rotate", QPDFObjectHandle::newInteger(shape.rotate));
    doc.addPage(QPDFPageObjectHelper(page), false);
  }
  if (box == BoxPlace::InPageTree && !pages.empty())
    pdf.getRoot().getKey("/Pages").replaceKey(
        "/MediaBox", QPDFObjectHandle::newFromRectangle({0, 0, pages.front().widthPt, pages.front().heightPt}));
  QPDFWriter writer(pdf, path.c_str());
  if (objectStreams) writer.setObjectStreamMode(qpdf_o_generate);
  writer.write();
}

}  // namespace tv::test_support
