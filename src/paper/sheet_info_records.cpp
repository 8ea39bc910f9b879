// The per-sheet choices kept in the drawing: PAPER_INFOR (paper and copies) and SC_INFOR (scale
// and paper), one row per sheet rectangle.
#include <cmath>
#include <cstddef>
#include <optional>

#include "host/xrecords.h"
#include "paper/scale_fitting.h"
#include "paper/sheet_info_items.h"
#include "paper/scale_fitting_internal.h"

namespace tv::paper {

namespace {

constexpr std::int32_t kRecordVersion = 20240329;
constexpr int kIntCode = 90;
constexpr int kRealCode = 40;
constexpr int kTextCode = 1;

enum class Kind { Paper, Scale };

std::string KeyOf(Kind kind) { return std::string(kind == Kind::Paper ? kPaperInforKey : kScInforKey); }

bool SameCorners(const InfoRow& row, const Plot_Drawing1& sheet) {
  const double tol = internal::kPointTolerance;
  return Point2d{row.minX, row.minY}.distanceTo({sheet.minX, sheet.minY}) <= tol &&
         Point2d{row.maxX, row.maxY}.distanceTo({sheet.maxX, sheet.maxY}) <= tol;
}

InfoRow RowOf(const Plot_Drawing1& sheet) {
  InfoRow row;
  row.minX = sheet.minX;
  row.minY = sheet.minY;
  row.maxX = sheet.maxX;
  row.maxY = sheet.maxY;
  row.scale = sheet.scale;
  row.copies = sheet.copies;
  row.fileName = sheet.fileName;
  row.paperName = sheet.paperName;
  return row;
}

// Walks the stored values, taking each only when it has the kind asked for.
class ItemReader {
 public:
  explicit ItemReader(const std::vector<host::XrecordItem>& items) : items_(items) {}
  template <class T>
  std::optional<T> next() {
    if (pos_ >= items_.size()) return std::nullopt;
    const T* v = std::get_if<T>(&items_[pos_].value);
    if (!v) return std::nullopt;
    ++pos_;
    return *v;
  }

 private:
  const std::vector<host::XrecordItem>& items_;
  std::size_t pos_ = 0;
};

bool ReadInfor(Kind kind, std::vector<InfoRow>& info) {
  info.clear();
  const auto items = host::ReadNamedXrecord(KeyOf(kind));
  if (!items) return false;
  ItemReader in(*items);
  const auto count = in.next<std::int32_t>();
  if (!count || !in.next<std::int32_t>()) return true;  // a record without its head holds no rows
  for (std::int32_t i = 0; i < *count; ++i) {
    InfoRow row;
    const auto minX = in.next<double>(), minY = in.next<double>(), maxX = in.next<double>(), maxY = in.next<double>();
    if (!minX || !minY || !maxX || !maxY) break;
    row.minX = *minX;
    row.minY = *minY;
    row.maxX = *maxX;
    row.maxY = *maxY;
    if (kind == Kind::Paper) {
      const auto copies = in.next<std::int32_t>();
      if (!copies) break;
      row.copies = *copies;
    } else {
      const auto scale = in.next<double>();
      if (!scale) break;
      row.scale = *scale;
    }
    const auto name = in.next<std::string>();
    if (!name) break;
    row.paperName = DecodeXrecordText(*name);
    if (!row.paperName.empty()) info.push_back(std::move(row));
  }
  return true;
}

std::vector<host::XrecordItem> ItemsOf(Kind kind, const std::vector<InfoRow>& rows) {
  std::vector<host::XrecordItem> items;
  items.reserve(2 + rows.size() * 6);
  items.push_back({kIntCode, static_cast<std::int32_t>(rows.size())});
  items.push_back({kIntCode, kRecordVersion});
  for (const InfoRow& row : rows) {
    for (double v : {row.minX, row.minY, row.maxX, row.maxY}) items.push_back({kRealCode, v});
    if (kind == Kind::Paper)
      items.push_back({kIntCode, row.copies});
    else
      items.push_back({kRealCode, row.scale});
    items.push_back({kTextCode, EncodeXrecordText(row.paperName)});
  }
  return items;
}

bool WriteInfor(Kind kind, const std::vector<Plot_Drawing1*>& sheets) {
  std::vector<InfoRow> rows;
  for (const Plot_Drawing1* sheet : sheets)
    if (sheet) rows.push_back(RowOf(*sheet));
  // Rows of sheets outside the list stay, after the list's own.
  std::vector<InfoRow> stored;
  ReadInfor(kind, stored);
  for (InfoRow& row : stored) {
    bool inList = false;
    for (const Plot_Drawing1* sheet : sheets)
      if (sheet && SameCorners(row, *sheet)) inList = true;
    if (!inList) rows.push_back(std::move(row));
  }
  return host::WriteNamedXrecord(KeyOf(kind), ItemsOf(kind, rows));
}

}  // namespace

std::vector<host::XrecordItem> PaperInforItems(const std::vector<InfoRow>& rows) { return ItemsOf(Kind::Paper, rows); }
std::vector<host::XrecordItem> ScInforItems(const std::vector<InfoRow>& rows) { return ItemsOf(Kind::Scale, rows); }

std::string EncodeXrecordText(const std::string& text) {
  if (text.empty()) return "<><";
  std::string out;
  for (char c : text) {
    if (c == ' ')
      out += "*?*";
    else
      out += c;
  }
  return out;
}

std::string DecodeXrecordText(const std::string& text) {
  if (text == "<><") return {};
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text.compare(i, 3, "*?*") == 0) {
      out += ' ';
      i += 2;
    } else {
      out += text[i];
    }
  }
  return out;
}

int FindInfoRow(const std::vector<InfoRow>& info, const Plot_Drawing1& sheet) {
  for (std::size_t i = 0; i < info.size(); ++i)
    if (SameCorners(info[i], sheet)) return static_cast<int>(i);
  return -1;
}

bool ReadPaperInfor(std::vector<InfoRow>& info) { return ReadInfor(Kind::Paper, info); }
bool ReadScInfor(std::vector<InfoRow>& info) { return ReadInfor(Kind::Scale, info); }
bool WritePaperInfor(const std::vector<Plot_Drawing1*>& sheets) { return WriteInfor(Kind::Paper, sheets); }
bool WriteScInfor(const std::vector<Plot_Drawing1*>& sheets) { return WriteInfor(Kind::Scale, sheets); }

int ApplyStoredChoices(const std::vector<Plot_Drawing1*>& sheets, const std::vector<InfoRow>& info, PaperList& papers,
                       bool& added) {
  int changed = 0;
  for (Plot_Drawing1* sheet : sheets) {
    if (!sheet) continue;
    const int i = FindInfoRow(info, *sheet);
    if (i < 0) continue;
    const InfoRow& row = info[static_cast<std::size_t>(i)];
    if (const MyPaper* known = FindPaperByName(papers, row.paperName)) {
      ApplyPaperToSheet(*sheet, *known);
      ++changed;
    } else if (row.scale > 0.0) {
      bool addedNow = false;
      const MyPaper* paper = AddPaper(papers, internal::TruncateSide(sheet->sizeX / row.scale),
                                      internal::TruncateSide(sheet->sizeY / row.scale), addedNow);
      if (!paper) continue;
      added = added || addedNow;
      ApplyPaperToSheet(*sheet, *paper);
      ++changed;
    }
  }
  return changed;
}

}  // namespace tv::paper
