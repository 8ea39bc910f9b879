#pragma once
// Small PDF files made in tests through qpdf: pages of given sizes, their box kept in the page or
// in the page tree, optionally packed into compressed object streams.
#define POINTERHOLDER_TRANSITION 4
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFWriter.hh>

#include <string>
#include <vector>

namespace tv::test_support {

struct PageShape {
  double widthPt = 595, heightPt = 842;
  int rotate = 0;
};

enum class BoxPlace { InPage, InPageTree };

inline void MakePdf(const std::string& path, const std::vector<PageShape>& pages, BoxPlace box = BoxPlace::InPage,
                    bool objectStreams = false) {
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
