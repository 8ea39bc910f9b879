#include "plot/list_command.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace tv::plot {

namespace {

constexpr std::string_view kIdeographicBlank = "\xE3\x80\x80";  // U+3000

std::size_t BlankAt(std::string_view text, std::size_t at) {
  if (at >= text.size()) return 0;
  if (text[at] == ' ' || text[at] == '\t') return 1;
  if (text.substr(at, kIdeographicBlank.size()) == kIdeographicBlank) return kIdeographicBlank.size();
  return 0;
}

std::optional<std::size_t> Number(std::string_view text) {
  text = TrimAnswer(text);
  if (text.empty() || text.size() > 9) return std::nullopt;
  std::size_t n = 0;
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), n);
  if (ec != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return n;
}

// The first word and the rest, trimmed.
std::pair<std::string_view, std::string_view> SplitWord(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size() && BlankAt(text, at) == 0) ++at;
  return {text.substr(0, at), TrimAnswer(text.substr(at))};
}

std::string OutOfRange(std::size_t row, std::size_t rowCount) {
  return "行号 " + std::to_string(row) + " 超出范围（1 到 " + std::to_string(rowCount) + "）。";
}

// How many bytes of `answer` the label takes, blanks in either skipped; 0 when it doesn't lead.
std::size_t LabelLength(std::string_view answer, std::string_view label) {
  const std::string want = WithoutBlanks(label);
  if (want.empty()) return 0;
  std::size_t at = 0, matched = 0;
  while (matched < want.size()) {
    if (at >= answer.size()) return 0;
    if (const std::size_t blank = BlankAt(answer, at)) {
      at += blank;
      continue;
    }
    if (answer[at] != want[matched]) return 0;
    ++at;
    ++matched;
  }
  return at;
}

char Upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

}  // namespace

std::string_view TrimAnswer(std::string_view text) {
  while (const std::size_t n = BlankAt(text, 0)) text.remove_prefix(n);
  while (!text.empty()) {
    if (text.back() == ' ' || text.back() == '\t' || text.back() == '\r' || text.back() == '\n') {
      text.remove_suffix(1);
    } else if (text.ends_with(kIdeographicBlank)) {
      text.remove_suffix(kIdeographicBlank.size());
    } else {
      break;
    }
  }
  return text;
}

std::string WithoutBlanks(std::string_view text) {
  std::string out;
  for (std::size_t at = 0; at < text.size();) {
    if (const std::size_t n = BlankAt(text, at)) {
      at += n;
      continue;
    }
    out += text[at++];
  }
  return out;
}

std::vector<std::size_t> ParseRows(std::string_view text, std::size_t rowCount, std::string& error) {
  error.clear();
  text = TrimAnswer(text);
  if (rowCount == 0) {
    error = "列表中没有图纸。";
    return {};
  }
  if (text == "*") {
    std::vector<std::size_t> all(rowCount);
    for (std::size_t i = 0; i < rowCount; ++i) all[i] = i;
    return all;
  }
  std::vector<std::size_t> rows;
  const auto refuse = [&](std::string message) {
    error = std::move(message);
    return std::vector<std::size_t>{};
  };
  if (text.empty()) return refuse("请指定行号，如 3、2-5、1,4 或 *。");
  // The full-width comma of a Chinese keyboard separates as well.
  std::string list(text);
  for (std::size_t at = 0; (at = list.find("，", at)) != std::string::npos;) list.replace(at, 3, ",");
  const std::string_view all = list;
  for (std::size_t start = 0; start <= all.size();) {
    std::size_t end = all.find(',', start);
    if (end == std::string_view::npos) end = all.size();
    const std::size_t next = end + 1;
    const std::string_view part = TrimAnswer(all.substr(start, end - start));
    const std::size_t dash = part.find('-');
    const std::optional<std::size_t> first = Number(part.substr(0, dash));
    const std::optional<std::size_t> last = dash == std::string_view::npos ? first : Number(part.substr(dash + 1));
    if (!first || !last) return refuse("无效的行号：" + std::string(part) + "（应如 3、2-5、1,4 或 *）。");
    if (*first > *last) return refuse("无效的行号范围：" + std::string(part) + "。");
    if (*first < 1) return refuse(OutOfRange(*first, rowCount));
    if (*last > rowCount) return refuse(OutOfRange(*last, rowCount));
    for (std::size_t r = *first; r <= *last; ++r) rows.push_back(r - 1);
    start = next;
  }
  std::sort(rows.begin(), rows.end());
  rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
  return rows;
}

ListCommand ParseListCommand(std::string_view answer, std::size_t rowCount, const std::vector<std::string>& controls) {
  ListCommand c;
  answer = TrimAnswer(answer);
  const auto refuse = [&](std::string message) {
    c.verb = ListVerb::Refused;
    c.rows.clear();
    c.argument.clear();
    c.error = std::move(message);
    return c;
  };
  if (answer.empty()) {
    c.verb = ListVerb::Plot;
    return c;
  }
  if (answer == "?" || answer == "？") {
    c.verb = ListVerb::Show;
    return c;
  }
  const auto [word, rest] = SplitWord(answer);

  // A control by its number, or by its label (the longest that leads).
  if (const std::optional<std::size_t> n = Number(word)) {
    if (*n < 1 || *n > controls.size())
      return refuse("没有编号为 " + std::to_string(*n) + " 的选项（1 到 " + std::to_string(controls.size()) + "）。");
    c.verb = ListVerb::Control;
    c.control = *n - 1;
    c.argument = rest;
    return c;
  }
  std::size_t best = 0;
  for (std::size_t i = 0; i < controls.size(); ++i) {
    const std::size_t length = LabelLength(answer, controls[i]);
    if (length > best) {
      best = length;
      c.control = i;
    }
  }
  if (best > 0) {
    c.verb = ListVerb::Control;
    c.argument = TrimAnswer(answer.substr(best));
    return c;
  }

  if (word.size() != 1) {
    std::string upper(word);
    for (char& ch : upper) ch = Upper(ch);
    if (rest.empty() && (word == "打印" || upper == "PLOT")) return c.verb = ListVerb::Plot, c;
    if (rest.empty() && (word == "关闭" || upper == "CLOSE")) return c.verb = ListVerb::Close, c;
    if (rest.empty() && upper == "ERASE") return c.verb = ListVerb::Erase, c;
    return refuse("无法识别的命令：" + std::string(answer) + "（输入 ? 显示说明）。");
  }
  switch (Upper(word[0])) {
    case 'P':
    case 'C':
      if (!rest.empty()) return refuse("无法识别的命令：" + std::string(answer) + "。");
      c.verb = Upper(word[0]) == 'P' ? ListVerb::Plot : ListVerb::Close;
      return c;
    case 'F':
      c.verb = ListVerb::Format;
      c.argument = rest;
      return c;
    case 'N': c.verb = ListVerb::Name; break;
    case 'Z': c.verb = ListVerb::Paper; break;
    case 'S': c.verb = ListVerb::Scale; break;
    case 'K': c.verb = ListVerb::Copies; break;
    case 'D': c.verb = ListVerb::Delete; break;
    case 'V': c.verb = ListVerb::Preview; break;
    default: return refuse("无法识别的命令：" + std::string(answer) + "（输入 ? 显示说明）。");
  }
  const auto [rowText, value] = SplitWord(rest);
  std::string error;
  c.rows = ParseRows(rowText, rowCount, error);
  if (!error.empty()) return refuse(error);
  c.allRows = TrimAnswer(rowText) == "*";
  c.argument = value;
  if (c.verb == ListVerb::Name && c.argument.empty()) return refuse("文件名不能为空 !");
  if ((c.verb == ListVerb::Delete || c.verb == ListVerb::Preview) && !c.argument.empty())
    return refuse("无法识别的命令：" + std::string(answer) + "。");
  if (c.verb == ListVerb::Preview && c.rows.size() != 1) return refuse("预览一次只能指定一行。");
  return c;
}

std::optional<std::int32_t> WholeIn(const std::string& text, std::int32_t low, std::int32_t high) {
  try {
    std::size_t used = 0;
    const int v = std::stoi(text, &used);
    if (used != text.size() || v < low || v > high) return std::nullopt;
    return v;
  } catch (...) {
    return std::nullopt;
  }
}

}  // namespace tv::plot
