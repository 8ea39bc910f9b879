#include "signing/library_forms.h"

#include <cstdio>
#include <ctime>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/editor.h"
#include "settings/config.h"
#include "signing/sign_add.h"
#include "signing/sign_library.h"
#include "signing/stamp_form.h"
#include "signing/stamp_library.h"

namespace tv::signing {

namespace {

// What a list form does with its copy of a library; the rows are the library's records.
struct ListForm {
  std::string title;
  std::vector<std::string> columns;
  std::string emptyHint;
  std::function<std::vector<std::vector<std::string>>()> rows;
  std::function<std::size_t()> count;
  std::function<void(std::size_t)> erase;
  std::function<void(std::size_t)> toggle;
  std::function<void()> importFile;
  std::function<void()> exportFile;
  std::function<void()> add;  // null when the form adds nothing here
  std::function<bool()> ok;
};

std::optional<std::size_t> AskRow(std::size_t count) {
  std::int32_t row = 0;
  if (host::CurrentEditor().getInteger("\n行号 (1 - " + std::to_string(count) + "): ", row) != host::RTNORM)
    return std::nullopt;
  if (row < 1 || static_cast<std::size_t>(row) > count) {
    host::Print("\n无效的行号。");
    return std::nullopt;
  }
  return static_cast<std::size_t>(row - 1);
}

void Show(const ListForm& form) {
  if (form.count() == 0) host::Print("\n" + form.title + "\n" + form.emptyHint);
  else host::CurrentEditor().showList(form.title, form.columns, form.rows());
}

void Run(const ListForm& form) {
  host::Editor& editor = host::CurrentEditor();
  Show(form);
  std::string keywords = "删除(D)/状态(S)/导入(I)/导出(E)";
  if (form.add) keywords += "/录入(A)";
  const std::string prompt = "\n" + keywords + "/确定(O)/取消(C) <确定>: ";
  while (true) {
    std::string answer;
    if (editor.getString(prompt, answer) != host::RTNORM) return;
    const std::string a = answer.empty() ? "O" : answer.substr(0, 1);
    if (a == "O" || a == "o") {
      form.ok();
      return;
    }
    if (a == "C" || a == "c") return;
    if ((a == "D" || a == "d" || a == "S" || a == "s") && form.count() > 0) {
      if (const auto row = AskRow(form.count())) (a == "D" || a == "d") ? form.erase(*row) : form.toggle(*row);
    } else if (a == "I" || a == "i") {
      form.importFile();
    } else if (a == "E" || a == "e") {
      form.exportFile();
    } else if ((a == "A" || a == "a") && form.add) {
      form.add();
    } else {
      continue;
    }
    Show(form);
  }
}

const char* State(std::int32_t enabled) { return enabled ? "√ 可用" : "X  禁用"; }
const char* Code(std::int32_t code) { return code == 0 ? "未设置" : "******"; }

std::int32_t TodayNumber() {
  const std::chrono::year_month_day d{LocalToday()};
  return static_cast<int>(d.year()) * 10000 + static_cast<std::int32_t>(static_cast<unsigned>(d.month()) * 100 +
                                                                       static_cast<unsigned>(d.day()));
}

}  // namespace

void SignLibraryCommand() {
  host::Editor& editor = host::CurrentEditor();
  const std::string path = settings::SignLibraryPath();
  SignLibrary copy;
  LoadSignLibrary(copy, path, false);
  ListForm form;
  form.title = "签名库管理";
  form.columns = {"序 号", " 姓 名 ", "授 权 码", " 状 态 "};
  form.emptyHint = "当前签名库文件：" + path + "（空）\n双击空白处录入新签名";
  form.rows = [&] {
    std::vector<std::vector<std::string>> rows;
    char number[16];
    for (const auto& s : copy.signs) {
      std::snprintf(number, sizeof number, "%3d", static_cast<int>(rows.size() + 1));
      rows.push_back({number, s->person_name, Code(s->auth_code), State(s->enabled)});
    }
    return rows;
  };
  form.count = [&] { return copy.signs.size(); };
  form.erase = [&](std::size_t i) { copy.signs.erase(copy.signs.begin() + static_cast<std::ptrdiff_t>(i)); };
  form.toggle = [&](std::size_t i) { copy.signs[i]->enabled = copy.signs[i]->enabled ? 0 : 1; };
  form.importFile = [&] {
    if (const auto file = editor.askOpenPath("请选择签名库文件...", "tvlib1")) LoadSignLibrary(copy, *file, true);
  };
  form.exportFile = [&] {
    if (const auto file = editor.askSavePath("保存签名库文件为...", "签名库文件.tvlib1", "tvlib1"))
      SaveSignLibrary(copy, *file);
  };
  form.add = [&] { AddSignFromDrawing(copy); };
  form.ok = [&] {
    const bool saved = SaveSignLibrary(copy, path);
    LoadSignLibrary(GlobalSignLibrary(), path, false);
    return saved;
  };
  Run(form);
}

void StampLibraryCommand() {
  host::Editor& editor = host::CurrentEditor();
  const std::string path = settings::StampLibraryPath();
  StampLibrary copy;
  LoadStampLibrary(copy, path, false);
  ListForm form;
  form.title = "印章库管理";
  form.columns = {" 序号 ", "  印  章  名  ", "  授  权  码  ", " 印 章 有 效 期 ", " 印 章 尺 寸 (mm) ", "  类  型  ",
                  "  状  态  "};
  form.emptyHint = "当前印章库文件：" + path + "（空）\n双击空白处录入新印章";
  form.rows = [&] {
    std::vector<std::vector<std::string>> rows;
    const std::int32_t today = TodayNumber();
    char number[16], date[64], size[64];
    for (const auto& s : copy.stamps) {
      std::snprintf(number, sizeof number, "%2d", static_cast<int>(rows.size() + 1));
      const std::int32_t d = s->valid_until;
      std::snprintf(date, sizeof date, d < today ? " %d.%d.%d (过期) " : " %d.%d.%d ", d / 10000, d / 100 % 100, d % 100);
      std::snprintf(size, sizeof size, " %.0f x %.0f ", s->width, s->height);
      const bool known = s->stamp_kind >= 0 && s->stamp_kind < 5;
      rows.push_back({number, s->name, Code(s->auth_code), date, size,
                      known ? " " + std::string(kStampKindNames[s->stamp_kind]) + " " : std::to_string(s->stamp_kind),
                      State(s->enabled)});
    }
    return rows;
  };
  form.count = [&] { return copy.stamps.size(); };
  form.erase = [&](std::size_t i) { copy.stamps.erase(copy.stamps.begin() + static_cast<std::ptrdiff_t>(i)); };
  form.toggle = [&](std::size_t i) { copy.stamps[i]->enabled = copy.stamps[i]->enabled ? 0 : 1; };
  form.importFile = [&] {
    if (const auto file = editor.askOpenPath("请选择印章库文件...", "tvlib2")) LoadStampLibrary(copy, *file, true);
  };
  form.exportFile = [&] {
    if (const auto file = editor.askSavePath("保存印章库文件为...", "印章库文件.tvlib2", "tvlib2"))
      SaveStampLibrary(copy, *file);
  };
  form.add = [&] { AddStampFromImage(copy); };
  form.ok = [&] {
    const bool saved = SaveStampLibrary(copy, path);
    LoadStampLibrary(GlobalStampLibrary(), path, false);
    return saved;
  };
  Run(form);
}

}  // namespace tv::signing
