#include "render/pdf_pages.h"

#define POINTERHOLDER_TRANSITION 4  // std::shared_ptr only: no deprecated PointerHolder
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFPageObjectHelper.hh>
#include <qpdf/QPDFWriter.hh>
#include <unistd.h>

#include <exception>
#include <filesystem>
#include <utility>
#include <vector>

namespace tv::render {

namespace fs = std::filesystem;

namespace {

// Edits the pages of `path` through `edit` and replaces the file with the result.
template <class Edit>
bool RewritePages(const std::string& path, int degrees, std::string& error, Edit edit) {
  if (degrees % 90 != 0) {
    error = "页面只能按 90 度的整数倍旋转";
    return false;
  }
  const fs::path target(path);
  const std::string temp = (target.parent_path() / (".tvplot-" + std::to_string(::getpid()) + ".rot")).string();
  try {
    QPDF pdf;
    pdf.processFile(path.c_str());
    std::vector<QPDFPageObjectHelper> pages = QPDFPageDocumentHelper(pdf).getAllPages();
    if (pages.empty()) {
      error = "文件中没有页面";
      return false;
    }
    edit(pages);
    QPDFWriter writer(pdf, temp.c_str());
    writer.write();
  } catch (const std::exception& e) {
    std::error_code ec;
    fs::remove(temp, ec);
    error = e.what();
    return false;
  }
  std::error_code ec;
  fs::rename(temp, target, ec);
  if (ec) {
    fs::remove(temp, ec);
    error = ec.message();
    return false;
  }
  return true;
}

}  // namespace

bool RotatePdfPages(const std::string& path, int degrees, std::string& error) {
  return RewritePages(path, degrees, error, [degrees](std::vector<QPDFPageObjectHelper>& pages) {
    for (QPDFPageObjectHelper& page : pages) page.rotatePage(degrees, true);
  });
}

bool SetFirstPageRotation(const std::string& path, int degrees, std::string& error) {
  return RewritePages(path, degrees, error, [degrees](std::vector<QPDFPageObjectHelper>& pages) {
    pages.front().rotatePage(degrees, false);
  });
}

bool FirstPageSizeMm(const std::string& path, double& widthMm, double& heightMm) {
  try {
    QPDF pdf;
    pdf.processFile(path.c_str());
    std::vector<QPDFPageObjectHelper> pages = QPDFPageDocumentHelper(pdf).getAllPages();
    if (pages.empty()) return false;
    const QPDFObjectHandle::Rectangle box = pages.front().getAttribute("/MediaBox", false).getArrayAsRectangle();
    widthMm = (box.urx - box.llx) * 25.4 / 72;
    heightMm = (box.ury - box.lly) * 25.4 / 72;
    QPDFObjectHandle rotate = pages.front().getAttribute("/Rotate", false);
    if (rotate.isInteger() && rotate.getIntValueAsInt() % 180 != 0) std::swap(widthMm, heightMm);
    return widthMm > 0 && heightMm > 0;
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace tv::render
