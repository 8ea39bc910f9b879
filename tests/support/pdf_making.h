#pragma once
// Small PDF files made in tests through qpdf (tests/support/pdf_files.cpp): pages of given sizes,
// their box kept in the page or in the page tree, optionally packed into compressed object streams.
#include <string>
#include <vector>

namespace tv::test_support {

struct PageShape {
  double widthPt = 595, heightPt = 842;
  int rotate = 0;
};

enum class BoxPlace { InPage, InPageTree };

void MakePdf(const std::string& path, const std::vector<PageShape>& pages, BoxPlace box = BoxPlace::InPage,
             bool objectStreams = false);

}  // namespace tv::test_support
