#include "cli/xref_loading.h"

#include "console/text_table.h"

namespace tv::cli {

namespace {

const char* StateName(cad::XrefState state) {
  switch (state) {
    case cad::XrefState::Loaded: return "loaded";
    case cad::XrefState::NotFound: return "notFound";
    case cad::XrefState::Unreadable: return "unreadable";
    case cad::XrefState::Cycle: return "cycle";
    case cad::XrefState::TooDeep: return "tooDeep";
    case cad::XrefState::Overlay: return "overlay";
  }
  return "notFound";
}

}  // namespace

cad::XrefLoadResult LoadXrefsOf(cad::Database& db, const std::string& path, CliStreams& io) {
  cad::XrefLoadResult result = cad::LoadXrefs(db, path);
  for (const std::string& notice : result.notices) io.err << console::OneLine(notice) << '\n';
  return result;
}

std::vector<XrefSummary> XrefSummaries(const cad::XrefLoadResult& result) {
  std::vector<XrefSummary> list;
  for (const cad::XrefInfo& x : result.xrefs)
    list.push_back({x.name, x.savedPath, x.resolvedPath, StateName(x.state), x.overlay, x.depth});
  return list;
}

}  // namespace tv::cli
