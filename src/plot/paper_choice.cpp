#include "plot/paper_choice.h"

#include <algorithm>
#include <charconv>

#include "paper/new_paper_form.h"
#include "plot/list_command.h"

namespace tv::plot {

namespace {

const std::vector<std::string>& FixedItems() {
  static const std::vector<std::string> items = {"A4",     "A3",     "A2",     "A1",     "A0",
                                                 "A4加长", "A3加长", "A2加长", "A1加长", "A0加长"};
  return items;
}

std::optional<double> Side(std::string_view text) {
  text = TrimAnswer(text);
  double value = 0.0;
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (ec != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

}  // namespace

std::string UnifyPaperTitle(std::size_t selected, std::size_t rows) {
  return rows >= 2 && selected == rows ? "统 一 修 改 纸 张" : "选  择  纸  张";
}

PaperChoiceList PaperChoices(const std::vector<std::string>& rowPapers, const paper::PaperList& papers,
                             const std::string& clickedPaper) {
  PaperChoiceList list;
  list.items = FixedItems();
  std::vector<std::string> customNames;
  for (const std::string& name : rowPapers) {
    if (name.starts_with("TV_A")) continue;
    if (std::find(customNames.begin(), customNames.end(), name) != customNames.end()) continue;
    const paper::MyPaper* p = paper::FindPaperByName(papers, name);
    if (!p) continue;
    customNames.push_back(name);
    list.customPapers.push_back(*p);
    list.items.push_back(paper::PaperDisplayName(*p, false, false));
  }
  list.items.emplace_back(kOtherPaperChoice);
  // The plain A sizes show under their lengthened entry, which holds them too.
  static constexpr std::string_view kFamilies[] = {"TV_A4", "TV_A3", "TV_A2", "TV_A1", "TV_A0"};
  for (int i = 0; i < 5; ++i)
    if (clickedPaper.starts_with(kFamilies[i])) list.preselected = 5 + i;
  const auto custom = std::find(customNames.begin(), customNames.end(), clickedPaper);
  if (custom != customNames.end())
    list.preselected = static_cast<int>(kFixedPaperChoices) + static_cast<int>(custom - customNames.begin());
  return list;
}

std::optional<PaperRequest> ParsePaperText(std::string_view text) {
  std::string t = WithoutBlanks(text);
  for (char& c : t)
    if (c == 'a') c = 'A';
  PaperRequest request;
  for (std::size_t i = 0; i < FixedItems().size(); ++i)
    if (t == FixedItems()[i]) {
      request.choice = static_cast<int>(i);
      return request;
    }
  for (std::string_view times : {"x", "X", "*", "×"}) {
    const std::size_t at = t.find(times);
    if (at == std::string::npos) continue;
    const std::optional<double> a = Side(std::string_view(t).substr(0, at));
    const std::optional<double> b = Side(std::string_view(t).substr(at + times.size()));
    if (!a || !b) return std::nullopt;
    request.sideA = *a;
    request.sideB = *b;
    return request;
  }
  return std::nullopt;
}

std::optional<paper::MyPaper> PaperForRequest(const PaperRequest& request, double drawnX, double drawnY) {
  paper::PaperList scratch;
  bool added = false;
  if (request.choice >= 0) {
    std::int32_t length = 0, width = 0;
    if (!paper::PaperForChoice(request.choice, drawnX, drawnY, length, width)) return std::nullopt;
    return *paper::AddPaper(scratch, length, width, added);
  }
  if (!(request.sideA > 0.0 && request.sideB > 0.0)) return std::nullopt;
  const paper::MyPaper* p = paper::AddPaper(scratch, request.sideA, request.sideB, added);
  if (!p || p->length > 5080 || p->width < 1) return std::nullopt;
  return *p;
}

}  // namespace tv::plot
