#pragma once
// An editor for tests: the platform's editor for its lifetime, answering host variables and
// preferences from plain maps and everything else as with no editor at all. Tests derive from it
// to record what else they look at.
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "host/editor.h"
#include "host/null_editor.h"

namespace tv::test_support {

class FakeEditor : public host::NullEditor {
 public:
  FakeEditor() { host::SetEditor(this); }
  ~FakeEditor() override { host::SetEditor(nullptr); }
  FakeEditor(const FakeEditor&) = delete;
  FakeEditor& operator=(const FakeEditor&) = delete;

  std::map<std::string, host::Value> vars;
  std::map<std::string, std::string> env;

  std::optional<host::Value> getVar(std::string_view name) override { return Find(vars, name); }
  std::optional<std::string> getEnv(std::string_view name) override { return Find(env, name); }

 private:
  template <class T>
  static std::optional<T> Find(const std::map<std::string, T>& values, std::string_view name) {
    const auto it = values.find(std::string(name));
    if (it == values.end()) return std::nullopt;
    return it->second;
  }
};

}  // namespace tv::test_support
