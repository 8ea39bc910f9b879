#include "titleblock/tk_set_form.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "host/editor.h"
#include "host/wrappers.h"
#include "paper/new_paper_form.h"
#include "paper/paper.h"
#include "recognition/sheet_geometry.h"
#include "recognition/sheet_traversal.h"
#include "settings/plot_setting.h"
#include "titleblock/frame_paper.h"
#include "titleblock/name_rule.h"

namespace tv::titleblock {

namespace {

constexpr double kMinimumSide = 0.00001;
constexpr std::string_view kCaption = "Tarvex打印";
constexpr const char* kSlotNames[] = {"图框", "图号(A)", "版次(B)", "图名(C)", "日期(D)", "信息1(E)", "信息2(F)",
                                      "注册章位置", "出图章位置", "项目章位置", "竣工章位置", "调整图框打印范围"};
// Short sides of A4 to A0, and their long sides.
constexpr std::int32_t kSeriesWidth[] = {210, 297, 420, 594, 841};
constexpr std::int32_t kSeriesLength[] = {297, 420, 594, 841, 1189};
constexpr const char* kPaperRows[] = {"A4", "A3", "A2", "A1", "A0", "A4加长", "A3加长", "A2加长", "A1加长", "A0加长"};

Extents3d Box(Point3d a, Point3d b) {
  return Extents3d(Point3d{std::min(a.x, b.x), std::min(a.y, b.y), 0}, Point3d{std::max(a.x, b.x), std::max(a.y, b.y), 0});
}

double DefaultScale() {
  const double s = settings::CurrentPlotSetting().default_scale;
  return s > 0.0 ? s : 100.0;
}

// The rule without its escapes, as the marks and the check read it.
std::string LettersOf(std::string rule) {
  for (const char* escape : {"AA", "BB", "CC", "DD", "EE", "FF"})
    for (std::size_t at = rule.find(escape); at != std::string::npos; at = rule.find(escape, at)) rule.erase(at, 2);
  return rule;
}

std::string SidesText(double a, double b) {
  char text[64];
  std::snprintf(text, sizeof text, "%gx%g", a, b);
  return text;
}

// "自定义纸张" with the two sides as its fields on one line, opened on the definition's paper.
// A refused size says why and asks again, as the form keeps focus on the field.
bool AskCustomPaper(const paper::MyPaper& current, paper::MyPaper& result) {
  host::Editor& editor = host::CurrentEditor();
  paper::Dlg_New_Paper form;
  form.length = current.length;
  form.width = current.width;
  while (true) {
    std::string typed;
    if (editor.getString("\n" + std::string(paper::Dlg_New_Paper::kTitle) + " " +
                             std::string(paper::Dlg_New_Paper::kSizeLabel) + " <" + SidesText(form.length, form.width) +
                             ">: ",
                         typed) != host::RTNORM)
      return false;
    if (!typed.empty()) {
      const std::optional<std::pair<double, double>> sides = ParsePaperSides(typed);
      if (!sides) {
        editor.print("\n应输入两个数，如 841x594。");
        continue;
      }
      form.length = sides->first;
      form.width = sides->second;
    }
    std::string message;
    paper::Dlg_New_Paper::Field focus;
    const bool accepted = form.Accept(
        [&](std::string_view question) {
          return editor.messageBox(question, kCaption, host::MessageButtons::YesNo) == host::MessageAnswer::Yes;
        },
        message, focus);
    if (accepted) break;
    if (!message.empty()) editor.messageBox(message, kCaption, host::MessageButtons::Ok);
  }
  result.length = std::max(form.customLength, form.customWidth);
  result.width = std::min(form.customLength, form.customWidth);
  result.standard = false;
  return true;
}

}  // namespace

Extents3d& SetSlotArea(TK_Customization& d, int slot) {
  switch (slot) {
    case 1: return d.area_drawing_no;
    case 2: return d.area_revision;
    case 3: return d.area_title;
    case 4: return d.area_date;
    case 5: return d.area_info1;
    case 6: return d.area_info2;
    case 7: return d.stamp_register;
    case 8: return d.stamp_issue;
    case 9: return d.stamp_project;
    case 10: return d.stamp_completed;
    case kSetSlotPrint: return d.print_extents;
    default: return d.frame_extents;
  }
}

const Extents3d& SetSlotArea(const TK_Customization& d, int slot) {
  return SetSlotArea(const_cast<TK_Customization&>(d), slot);
}

std::string_view SetSlotName(int slot) { return slot >= 0 && slot < kSetSlotCount ? kSlotNames[slot] : ""; }

std::vector<std::string> PaperChoiceRows(const paper::MyPaper& paper, int& preselected) {
  std::vector<std::string> rows(std::begin(kPaperRows), std::end(kPaperRows));
  preselected = -1;
  for (int i = 0; i < 5; ++i) {
    if (paper.width != kSeriesWidth[i]) continue;
    if (paper.length == kSeriesLength[i]) preselected = i;
    else if (paper.length > kSeriesLength[i]) preselected = i + 5;
  }
  if (preselected < 0) {
    rows.push_back(paper::PaperDisplayName(paper, false, false));
    preselected = 10;
  } else {
    rows.emplace_back(paper::Dlg_New_Paper::kTitle);
  }
  return rows;
}

std::optional<std::pair<double, double>> ParsePaperSides(std::string_view text) {
  std::string t(text);
  // Every separator becomes a blank; then exactly two numbers must remain.
  for (std::string_view times : {"×", "x", "X", "*", ",", "，"})
    for (std::size_t at = t.find(times); at != std::string::npos; at = t.find(times, at)) t.replace(at, times.size(), " ");
  std::istringstream in(t);
  double a = 0, b = 0;
  std::string rest;
  if (!(in >> a >> b) || (in >> rest)) return std::nullopt;
  if (!std::isfinite(a) || !std::isfinite(b)) return std::nullopt;
  return std::pair{a, b};
}

bool PaperOfChoice(const TK_Customization& d, int row, paper::MyPaper& result) {
  if (row < 0 || row >= 10) return false;
  const Extents3d& drawn = IsAreaSet(d.print_extents) ? d.print_extents : d.frame_extents;
  std::int32_t length = 0, width = 0;
  if (!paper::PaperForChoice(row, drawn.width(), drawn.height(), length, width)) return false;
  result = paper::MyPaper{length, width, false};
  paper::NormalizePaperSize(result);
  return true;
}

bool ChoosePaper(TK_Customization& d) {
  int preselected = 0;
  const std::vector<std::string> rows = PaperChoiceRows(d.paper, preselected);
  const std::optional<int> row = host::CurrentEditor().chooseItem("选  择  纸  张", rows, preselected);
  if (!row) return false;
  paper::MyPaper chosen;
  if (PaperOfChoice(d, *row, chosen) || (*row >= 10 && AskCustomPaper(d.paper, chosen))) {
    d.paper = chosen;
    return true;
  }
  return false;
}

bool ChooseSortPriority(TK_Customization& d) {
  std::vector<std::string> items;
  for (int i = 1; i <= 9; ++i) items.push_back(std::to_string(i));
  const std::optional<int> row =
      host::CurrentEditor().chooseItem("排序优先级别", items, std::clamp(d.sort_priority, 0, 8));
  if (!row || *row < 0 || *row > 8) return false;
  d.sort_priority = *row;
  return true;
}

bool ChooseSerialDigits(TK_Customization& d) {
  std::vector<std::string> items;
  for (int i = 1; i <= 9; ++i) items.push_back(std::to_string(i));
  const std::optional<int> row =
      host::CurrentEditor().chooseItem("序号位数", items, std::clamp(d.serial_digits - 1, 0, 8));
  if (!row || *row < 0 || *row > 8) return false;
  d.serial_digits = *row + 1;
  return true;
}

bool EditNameRule(TK_Customization& d, TK_Library& library) {
  host::Editor& editor = host::CurrentEditor();
  Dlg_TK_Name form = Dlg_TK_Name::Open(d.name_rule, library);
  editor.print("\n" + std::string(Dlg_TK_Name::kTitle) + "\n" + std::string(Dlg_TK_Name::kLegend) + "\n" + form.sample());
  while (true) {
    std::string typed;
    if (editor.getString("\n文件命名规则 <" + form.rule + ">: ", typed) != host::RTNORM) return false;
    if (!typed.empty()) form.rule = typed;
    std::string result, message;
    if (form.ok(library, result, message)) {
      d.name_rule = result;
      editor.print("\n" + form.sample());
      return true;
    }
    editor.messageBox(message, kCaption, host::MessageButtons::Ok);
    form.rule.clear();
  }
}

Dlg_TK_Set::Dlg_TK_Set(TK_Customization& definition, TK_Library& library, bool drawSlots)
    : definition_(definition), library_(library), drawSlots_(drawSlots) {
  for (int slot = 1; slot <= 10; ++slot) SetSlotArea(definition_, slot) = UnsetArea();
  definition_.print_extents = UnsetArea();
  definition_.name_rule.clear();
  redraw(kSetSlotFrame);
}

Dlg_TK_Set::~Dlg_TK_Set() {
  for (ObjectId& id : slots_)
    if (id) host::EraseEntity(id), id = ObjectId{};
}

void Dlg_TK_Set::redraw(int slot) {
  if (!drawSlots_ || slot == kSetSlotPrint) return;
  if (slots_[slot]) host::EraseEntity(slots_[slot]), slots_[slot] = ObjectId{};
  Extents3d area = SetSlotArea(definition_, slot);
  if (!IsAreaSet(area)) return;
  const Vector3d toDrawing = definition_.pick_centre.asVector();
  area.min = area.min + toDrawing;
  area.max = area.max + toDrawing;
  slots_[slot] = recognition::NewMarker(recognition::MarkerLayer(), area);
}

bool Dlg_TK_Set::storeArea(int slot, Point3d a, Point3d b, std::string& message) {
  const Extents3d box = Box(a, b);
  if (!IsAreaSet(box)) {
    message = kBadRange;
    return false;
  }
  const Vector3d toCentre = definition_.pick_centre.asVector();
  Extents3d& area = SetSlotArea(definition_, slot);
  area.min = box.min - toCentre;
  area.max = box.max - toCentre;
  redraw(slot);
  return true;
}

bool Dlg_TK_Set::storePrintExtents(Point3d a, Point3d b, std::string& message) {
  const Extents3d box = Box(a, b);
  const double w = box.width() / DefaultScale(), h = box.height() / DefaultScale();
  if (!(w > kMinimumSide) || !(h > kMinimumSide)) {
    definition_.print_extents = UnsetArea();
    message = kBadPrintRange;
    return false;
  }
  const Vector3d toCentre = definition_.pick_centre.asVector();
  definition_.print_extents.min = box.min - toCentre;
  definition_.print_extents.max = box.max - toCentre;
  if (!paperByHand) definition_.paper = FramePaperOfSides(w / definition_.scale, h / definition_.scale);
  return true;
}

bool Dlg_TK_Set::pickArea(int slot) {
  host::Editor& editor = host::CurrentEditor();
  Point3d a, b;
  if (editor.getPoint(kFirstPoint, nullptr, a) != host::RTNORM) return false;
  if (editor.getCorner(kSecondPoint, a, b) != host::RTNORM) return false;
  std::string message;
  const bool stored = slot == kSetSlotPrint ? storePrintExtents(a, b, message) : storeArea(slot, a, b, message);
  if (!stored) editor.messageBox(message, slot == kSetSlotPrint ? kCaption : kBadRangeCaption, host::MessageButtons::Ok);
  return stored;
}

bool Dlg_TK_Set::canCopy() const { return !library_.definitions.empty(); }

std::vector<std::string> Dlg_TK_Set::copyChoices() const {
  std::vector<std::string> names;
  for (const auto& d : library_.definitions) names.push_back(d->block_name);
  return names;
}

void Dlg_TK_Set::copyFrom(const TK_Customization& source) {
  definition_.name_rule = source.name_rule;
  definition_.sort_priority = source.sort_priority;
  // The title block sits in the lower right corner of every frame: the areas keep to it.
  const Vector3d shift{definition_.frame_extents.max.x - source.frame_extents.max.x,
                       definition_.frame_extents.min.y - source.frame_extents.min.y, 0};
  for (int slot = 1; slot <= 10; ++slot) {
    Extents3d area = SetSlotArea(source, slot);
    if (IsAreaSet(area)) area.min = area.min + shift, area.max = area.max + shift;
    SetSlotArea(definition_, slot) = area;
    redraw(slot);
  }
}

std::string Dlg_TK_Set::buttonText(int slot) const {
  const bool set = IsAreaSet(SetSlotArea(definition_, slot));
  const std::string name(SetSlotName(slot));
  if (slot == kSetSlotPrint) return name;
  return (slot <= 6 ? "点取" + name + "范围 " : "点取" + name + " ") + (set ? "■" : "□");
}

bool Dlg_TK_Set::marked(int slot) const {
  if (slot < 1 || slot > 6) return false;
  return LettersOf(definition_.name_rule).find(static_cast<char>('A' + slot - 1)) != std::string::npos;
}

std::string Dlg_TK_Set::ruleLabel() const {
  return definition_.name_rule.empty() ? std::string(kUndefined) : definition_.name_rule;
}

bool Dlg_TK_Set::ok(std::string& message) const {
  if (definition_.name_rule.empty()) {
    message = kNoRule;
    return false;
  }
  return CheckNameRule(definition_, message, false);
}

void Dlg_TK_Set::show() const {
  std::string text = "\n" + std::string(kTitle) + "\n图框对应的图块：" + definition_.block_name;
  if (definition_.is_dynamic) text += kDynamicNote;
  text += "\n对应纸张：" + paper::PaperDisplayName(definition_.paper, true, false);
  text += "\n文件命名规则：" + ruleLabel();
  text += "\n排序优先级别：" + std::to_string(definition_.sort_priority + 1);
  text += "\n序号位数：" + std::to_string(definition_.serial_digits);
  for (int slot = 1; slot <= 10; ++slot) {
    text += "\n  " + std::to_string(slot) + " " + buttonText(slot);
    if (marked(slot) && !IsAreaSet(SetSlotArea(definition_, slot))) text += "  ← 命名规则需要";
  }
  text += "\n 11 " + buttonText(kSetSlotPrint) + (IsAreaSet(definition_.print_extents) ? " ■" : " □");
  host::Print(text);
}

bool Dlg_TK_Set::run() {
  host::Editor& editor = host::CurrentEditor();
  show();
  // The buttons of the form by their own texts.
  std::string keywords = "\n范围编号(1-11)/选择对应纸张(Z)/定义文件命名规则(N)/序号位数(W)/排序优先级别(S)";
  if (canCopy()) keywords += "/从已录图框复制信息(Y)";
  const std::string prompt = keywords + "/确定(O)/取消(C) <确定>: ";
  while (true) {
    std::string answer;
    if (editor.getString(prompt, answer) != host::RTNORM) return false;
    const std::string a = answer.empty() ? "O" : answer;
    const char k = static_cast<char>(std::toupper(static_cast<unsigned char>(a[0])));
    if (k == 'O') {
      std::string message;
      if (ok(message)) return true;
      editor.messageBox(message, kCaption, host::MessageButtons::Ok);
      continue;
    }
    if (k == 'C') return false;
    if (std::isdigit(static_cast<unsigned char>(a[0]))) {
      const int slot = std::atoi(a.c_str());
      if (slot < 1 || slot > 11) continue;
      pickArea(slot);
    } else if (k == 'Z') {
      if (ChoosePaper(definition_)) paperByHand = true;
    } else if (k == 'N') {
      EditNameRule(definition_, library_);
    } else if (k == 'W') {
      ChooseSerialDigits(definition_);
    } else if (k == 'S') {
      ChooseSortPriority(definition_);
    } else if (k == 'Y' && canCopy()) {
      const std::optional<int> row = editor.chooseItem(kCopyTitle, copyChoices(), 0);
      if (row && *row >= 0 && static_cast<std::size_t>(*row) < library_.definitions.size())
        copyFrom(*library_.definitions[static_cast<std::size_t>(*row)]);
    } else {
      continue;
    }
    show();
  }
}

}  // namespace tv::titleblock
