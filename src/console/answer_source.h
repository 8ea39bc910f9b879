#pragma once
// Where the console's prompts get their answers: first a list given in advance (options, a
// script, the arguments of a queued command line), then, in an interactive session, the terminal.
#include <cstddef>
#include <deque>
#include <istream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tv::console {

struct AnswerLine {
  std::string text;
  bool typed = false;  // read from the terminal rather than taken from the list
};

class AnswerSource {
 public:
  AnswerSource(std::vector<std::string> answers, std::istream* terminal);

  // The next answer; nullopt when the list is used up and there is no terminal or it has ended.
  std::optional<AnswerLine> next();
  // Puts answers in front of those still waiting, in their order.
  void pushFront(const std::vector<std::string>& answers);
  // Drops up to `count` answers from the front of the list.
  void dropFront(std::size_t count);
  // Answers waiting in the list (the terminal not counted).
  std::size_t listed() const { return answers_.size(); }
  bool hasTerminal() const { return terminal_ != nullptr; }
  std::istream* terminal() const { return terminal_; }

 private:
  std::deque<std::string> answers_;
  std::istream* terminal_;
};

// True for the answer that cancels: a line "^C", or one made only of Ctrl+C characters.
bool IsCancelAnswer(std::string_view answer);

// The lines of an answers file (UTF-8, a byte order mark and "\r" dropped), one answer each;
// nullopt with `error` set when the file cannot be read.
std::optional<std::vector<std::string>> ReadAnswersFile(const std::string& path, std::string& error);

// Splits text into lines, dropping "\r"; a final line break ends the last line rather than
// starting an empty one.
std::vector<std::string> SplitAnswerLines(std::string_view text);

}  // namespace tv::console
