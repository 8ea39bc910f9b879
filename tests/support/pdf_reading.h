#pragma once
// What tests check in a written PDF, read through qpdf (tests/support/pdf_files.cpp): its pages
// (size, rotation, whether their fonts can give back text) and its top-level outline.
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

PdfFacts ReadPdfFacts(const std::string& path);

// Width and height in millimetres of the first page; zeros when the file is no readable PDF.
inline std::pair<double, double> PageMm(const std::string& path) {
  const PdfFacts facts = ReadPdfFacts(path);
  if (facts.pages.empty()) return {0, 0};
  return {facts.pages[0].widthMm, facts.pages[0].heightMm};
}

}  // namespace tv::test_support
