#pragma once
// The plot engine: one window of a drawing's space onto one page, written as a file.
#include "cad/database.h"
#include "render/plot_request.h"

namespace tv::render {

// Draws the request's window of the space onto the medium and writes `outputPath` in the
// request's format. The file appears whole or not at all (it is written under a temporary name
// first). Failures come back as `ok == false` with the message to show.
PlotResult PlotWindow(const cad::Database& db, const PlotRequest& request);

// The page of a request, in millimetres: the medium turned as asked, its printable area, and the
// transform from the space's coordinates onto the page.
struct PageLayout {
  double widthMm = 0, heightMm = 0;
  double printLlx = 0, printLly = 0, printUrx = 0, printUry = 0;
  cad::Matrix3d viewToPage;   // from the window's coordinates
  cad::Matrix3d spaceToPage;  // from the space's coordinates: the view twist, then viewToPage
  double scale = 1;  // page mm per drawing unit
};
// nullopt with the message when the medium or the window cannot make a page.
std::optional<PageLayout> LayOutPage(const PlotRequest& request, cad::Point2d windowMin, cad::Point2d windowMax,
                                     std::string& message);

}  // namespace tv::render
