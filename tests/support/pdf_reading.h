#pragma once
// What tests check in a written PDF, read through qpdf: its pages (size, rotation, whether their
// fonts can give back text) and its top-level outline.
#define POINTERHOLDER_TRANSITION 4
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFOutlineDocumentHelper.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFPageObjectHelper.hh>

#include <exception>
#include <string>
#include <utility>
#include <vector>

namespace tv::test_support {

struct PdfPageFacts {
  double widthMm = 0, heightMm = 0;
  int rotate = 0;
  int fonts = 0, fontsWithText = 0;  // fonts of the page, those with a /ToUnicode map
};

struct PdfFacts {
  bool read = false;
  std::vector<PdfPageFacts> pages;
  std::vector<std::string> outline;        // the titles of the top-level entries, in order
  std::vector<int> outlinePages;           // the page (from 0) each entry leads to; -1 for none
};

inline PdfFacts ReadPdfFacts(const std::string& path) {
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

// Width and height in millimetres of the first page; zeros when the file is no readable PDF.
inline std::pair<double, double> PageMm(const std::string& path) {
  const PdfFacts facts = ReadPdfFacts(path);
  if (facts.pages.empty()) return {0, 0};
  return {facts.pages[0].widthMm, facts.pages[0].heightMm};
}

}  // namespace tv::test_support
