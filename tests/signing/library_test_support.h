#pragma once
// An editor that answers the libraries' questions from a list and remembers what it showed, and a
// file of the test's own.
#include <deque>
#include <string>
#include <vector>

#include "../support/fake_editor.h"

namespace tv::signing::test {

class AnsweringEditor : public test_support::FakeEditor {
 public:
  std::deque<host::MessageAnswer> answers;
  std::vector<std::string> shown;  // "[caption] text"

  host::MessageAnswer messageBox(std::string_view text, std::string_view caption, host::MessageButtons) override {
    shown.push_back("[" + std::string(caption) + "] " + std::string(text));
    if (answers.empty()) return host::MessageAnswer::Cancel;
    const host::MessageAnswer a = answers.front();
    answers.pop_front();
    return a;
  }
};

}  // namespace tv::signing::test
