#include "console/answer_source.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace tv::console {

AnswerSource::AnswerSource(std::vector<std::string> answers, std::istream* terminal)
    : answers_(std::make_move_iterator(answers.begin()), std::make_move_iterator(answers.end())), terminal_(terminal) {}

std::optional<AnswerLine> AnswerSource::next() {
  if (!answers_.empty()) {
    AnswerLine line{std::move(answers_.front()), false};
    answers_.pop_front();
    return line;
  }
  if (!terminal_) return std::nullopt;
  std::string text;
  if (!std::getline(*terminal_, text)) return std::nullopt;
  std::erase(text, '\r');
  return AnswerLine{std::move(text), true};
}

void AnswerSource::pushFront(const std::vector<std::string>& answers) {
  answers_.insert(answers_.begin(), answers.begin(), answers.end());
}

void AnswerSource::dropFront(std::size_t count) {
  count = std::min(count, answers_.size());
  answers_.erase(answers_.begin(), answers_.begin() + static_cast<std::ptrdiff_t>(count));
}

bool IsCancelAnswer(std::string_view answer) {
  if (answer == "^C") return true;
  if (answer.empty()) return false;
  for (char c : answer)
    if (c != '\x03') return false;
  return true;
}

std::vector<std::string> SplitAnswerLines(std::string_view text) {
  std::vector<std::string> lines;
  std::string current;
  for (char c : text) {
    if (c == '\r') continue;
    if (c == '\n') {
      lines.push_back(std::move(current));
      current.clear();
    } else {
      current.push_back(c);
    }
  }
  if (!current.empty()) lines.push_back(std::move(current));
  return lines;
}

std::optional<std::vector<std::string>> ReadAnswersFile(const std::string& path, std::string& error) {
  std::error_code ec;
  std::ifstream in(path, std::ios::binary);
  if (!in || std::filesystem::is_directory(path, ec)) {
    error = "无法读取应答文件 " + path;
    return std::nullopt;
  }
  std::ostringstream bytes;
  bytes << in.rdbuf();
  if (in.bad()) {
    error = "无法读取应答文件 " + path;
    return std::nullopt;
  }
  std::string text = bytes.str();
  if (text.starts_with("\xEF\xBB\xBF")) text.erase(0, 3);
  return SplitAnswerLines(text);
}

}  // namespace tv::console
