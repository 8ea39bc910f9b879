#include "render/pdf_pages.h"

#define POINTERHOLDER_TRANSITION 4  // std::shared_ptr only: no deprecated PointerHolder
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFPageObjectHelper.hh>
#include <qpdf/QPDFWriter.hh>
#include <unistd.h>

#include <exception>
#include <filesystem>

namespace tv::render {

namespace fs = std::filesystem;

bool RotatePdfPages(const std::string& path, int degrees, std::string& error) {
  if (degrees % 90 != 0) {
    error = "页面只能按 90 度的整数倍旋转";
    return false;
  }
  const fs::path target(path);
  const std::string temp = (target.parent_path() / (".tvplot-" + std::to_string(::getpid()) + ".rot")).string();
  try {
    QPDF pdf;
    pdf.processFile(path.c_str());
    for (QPDFPageObjectHelper& page : QPDFPageDocumentHelper(pdf).getAllPages()) page.rotatePage(degrees, true);
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

}  // namespace tv::render
