#pragma once
// An editor with nobody behind it: what the logic talks to when no platform editor is installed
// (a library used without a host), and a base for editors that only care about a few calls.
#include "host/editor.h"

namespace tv::host {

// Prints nothing, knows no variables or environment values, cancels every prompt and selection,
// refuses every request, and keeps the world as its UCS.
class NullEditor : public Editor {
 public:
  void print(std::string_view) override {}
  int getString(std::string_view, std::string&) override { return RTCAN; }
  int getInteger(std::string_view, std::int32_t&) override { return RTCAN; }
  int getReal(std::string_view, double&) override { return RTCAN; }
  int getPoint(std::string_view, const Point3d*, Point3d&) override { return RTCAN; }
  int getCorner(std::string_view, const Point3d&, Point3d&) override { return RTCAN; }
  int getKeyword(std::string_view, std::string_view, std::string&) override { return RTCAN; }
  int select(std::string_view, const std::vector<std::string>&, const std::vector<Point3d>&, const SelectionFilter&,
             ObjectIdArray&) override {
    return RTCAN;
  }
  std::optional<Value> getVar(std::string_view) override { return std::nullopt; }
  bool setVar(std::string_view, const Value&) override { return false; }
  std::optional<std::string> getEnv(std::string_view) override { return std::nullopt; }
  void setEnv(std::string_view, std::string_view) override {}
  Matrix3d currentUcs() override { return Matrix3d::identity(); }
  bool setCurrentUcs(const Matrix3d&) override { return false; }
  MessageAnswer messageBox(std::string_view, std::string_view, MessageButtons) override { return MessageAnswer::Cancel; }
  std::optional<int> chooseItem(std::string_view, const std::vector<std::string>&, int) override { return std::nullopt; }
  std::optional<std::string> askOpenPath(std::string_view, std::string_view) override { return std::nullopt; }
  std::optional<std::string> askSavePath(std::string_view, std::string_view, std::string_view) override { return std::nullopt; }
  std::optional<std::string> askFolder(std::string_view, std::string_view) override { return std::nullopt; }
  bool shellOpen(std::string_view) override { return false; }
  void showList(std::string_view, const std::vector<std::string>&, const std::vector<std::vector<std::string>>&) override {}
  void addCommand(std::string_view, std::string_view, std::string_view, int, CommandBody) override {}
  bool removeGroup(std::string_view) override { return false; }
  int command(const std::vector<std::string>&) override { return RTERROR; }
  void sendStringToExecute(std::string_view) override {}
  std::string documentPath() override { return {}; }
  void setModified(bool) override {}
  bool modified() override { return false; }
  void regen() override {}
  void setView(Point3d, double) override {}
  void progressBegin(std::string_view, int) override {}
  void progressSet(int) override {}
  void progressEnd() override {}
};

}  // namespace tv::host
