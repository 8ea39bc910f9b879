#include "cli/sign_drawing_command.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "cli/session_launch.h"
#include "console/answer_parse.h"
#include "console/console_editor.h"
#include "console/session.h"
#include "console/text_table.h"
#include "host/command_prologue.h"
#include "host/module_entry.h"
#include "signing/sign_approval.h"
#include "signing/sign_globals.h"
#include "signing/sign_library.h"
#include "signing/sign_placing.h"

namespace tv::cli {

namespace fs = std::filesystem;
using console::Printable;
using console::OneLine;
using console::Session;

namespace {

constexpr const char* kProgram = "tvplot sign: ";

std::optional<std::int32_t> WholeNumber(const std::string& text, std::int32_t lo, std::int32_t hi) {
  try {
    std::size_t used = 0;
    const long v = std::stol(text, &used);
    if (used != text.size() || v < lo || v > hi) return std::nullopt;
    return static_cast<std::int32_t>(v);
  } catch (...) {
    return std::nullopt;
  }
}

// The drawing and --out: another file than the drawing, never the drawing itself.
std::optional<std::string> CheckedTarget(const ParsedArgs& args, CliStreams& io, int& exitCode) {
  exitCode = kExitUsage;
  if (args.positional.size() < 2) {
    args.usage(io, "缺少图纸文件");
    return std::nullopt;
  }
  if (args.positional.size() > 2) {
    args.usage(io, "多余的参数 " + Printable(args.positional[2]));
    return std::nullopt;
  }
  const std::optional<std::string> out = args.value("--out");
  std::error_code ec;
  if (!out || out->empty() || *out == args.positional[1] || fs::equivalent(*out, args.positional[1], ec)) {
    args.usage(io, "须用 --out 给出另一个图纸文件，不覆盖原图纸");
    return std::nullopt;
  }
  exitCode = kExitOk;
  return out;
}

// What the session said in message boxes, one line each.
void ShowMessages(const console::ConsoleEditor& editor, CliStreams& io) {
  for (const std::string& m : editor.messages()) io.err << kProgram << OneLine(m) << '\n';
}

}  // namespace

int RunSignPlace(const ParsedArgs& args, CliStreams& io) {
  int exitCode = kExitOk;
  const std::optional<std::string> target = CheckedTarget(args, io, exitCode);
  if (!target) return exitCode;
  const std::optional<std::string> name = args.value("--name"), idText = args.value("--id");
  if (name.has_value() == idText.has_value()) return args.usage(io, "须给出 --name 或 --id 之一");
  std::optional<std::int32_t> id;
  if (idText && !(id = WholeNumber(*idText, 0, 2147483647))) return args.usage(io, "人员编号 " + Printable(*idText) + " 无效");
  const std::optional<std::string> at = args.value("--at"), to = args.value("--to");
  if (!at || !to) return args.usage(io, "须用 --at 和 --to 给出签名的两个角点");
  if (!console::ParsePoint(*at)) return args.usage(io, "角点 " + Printable(*at) + " 无效，应为 X,Y");
  if (!console::ParsePoint(*to)) return args.usage(io, "角点 " + Printable(*to) + " 无效，应为 X,Y");
  std::int32_t direction = 0;
  if (auto d = args.value("--direction")) {
    const std::optional<std::int32_t> v = WholeNumber(*d, 0, 2);
    if (!v) return args.usage(io, "方向 " + Printable(*d) + " 无效，应为 0、1 或 2");
    direction = *v;
  }

  const std::string& path = args.positional[1];
  auto db = LoadDrawing(path, io);
  if (!db) return kExitUnreadable;
  std::ostringstream transcript;
  console::SessionOptions options = TranscriptOptions(transcript, io);
  options.answers = {*at, *to};
  Session session(std::move(*db), path, std::move(options));
  const NoticesToErr notices(io);
  host::OnLoad();
  const signing::SignLibrary& library = signing::GlobalSignLibrary();
  const signing::TV_Sign* sign = nullptr;
  for (const auto& s : library.signs)
    if ((id && s->person_id == *id) || (name && s->person_name == *name)) {
      sign = s.get();
      break;
    }
  int result = kExitOk;
  if (!sign) {
    io.err << kProgram << "签名库中没有 " << (name ? Printable(*name) : "人员编号 " + *idText) << " 的签名\n";
    result = kExitUnreadable;
  } else if (sign->enabled == 0) {
    io.err << kProgram << Printable(sign->person_name) << " 的签名已禁用\n";
    result = kExitUnreadable;
  } else {
    host::CommandScope scope;
    signing::SignDirection = direction;
    if (signing::PlaceSign(*sign).isNull()) {
      io.err << kProgram << "签名未放置\n";
      result = kExitUnanswered;
    }
  }
  host::OnUnload();
  if (result != kExitOk) return result;
  if (!SaveDrawingAs(session.database(), *target, io)) return kExitNotSaved;
  io.out << *target << '\n';
  return kExitOk;
}

int RunSignApprove(const ParsedArgs& args, CliStreams& io) {
  int exitCode = kExitOk;
  const std::optional<std::string> target = CheckedTarget(args, io, exitCode);
  if (!target) return exitCode;
  const std::optional<std::string> idText = args.value("--id"), codeText = args.value("--code"),
                                   daysText = args.value("--days");
  if (!idText || !codeText || !daysText) return args.usage(io, "须给出 --id、--code 和 --days");
  const std::optional<std::int32_t> id = WholeNumber(*idText, 0, 2147483647);
  if (!id) return args.usage(io, "人员编号 " + Printable(*idText) + " 无效");
  if (!WholeNumber(*codeText, 0, 999999)) return args.usage(io, "授权码 " + Printable(*codeText) + " 无效，范围 0 - 999999");
  if (!WholeNumber(*daysText, 0, 2000)) return args.usage(io, "授权期限 " + Printable(*daysText) + " 无效，范围 0 - 2000 天");

  const std::string& path = args.positional[1];
  auto db = LoadDrawing(path, io);
  if (!db) return kExitUnreadable;
  std::ostringstream transcript;
  console::SessionOptions options = TranscriptOptions(transcript, io);
  Session session(std::move(*db), path, std::move(options));
  const NoticesToErr notices(io);
  host::OnLoad();
  // The form's row of the person, its code and days, then the form closed; a wrong code is
  // answered once and the form left at the second asking.
  const std::vector<std::int32_t> persons = signing::PersonsNeedingApproval();
  const auto row = std::find(persons.begin(), persons.end(), *id);
  int result = kExitOk;
  if (row == persons.end()) {
    io.err << kProgram << "图纸中没有人员编号 " << *id << " 需要授权的签名\n";
    result = kExitUnreadable;
  } else {
    session.editor().answers().pushFront({std::to_string(row - persons.begin() + 1), *codeText, *daysText, ""});
    const std::size_t before = session.editor().messages().size();
    session.runCommandLine("TV_BatchPlot_8");
    if (session.editor().messages().size() > before) {
      ShowMessages(session.editor(), io);
      if (session.editor().messages()[before].find("授权码有误") != std::string::npos) result = kExitUnanswered;
    }
  }
  host::OnUnload();
  if (result != kExitOk) return result;
  if (!SaveDrawingAs(session.database(), *target, io)) return kExitNotSaved;
  io.out << *target << '\n';
  return kExitOk;
}

}  // namespace tv::cli
