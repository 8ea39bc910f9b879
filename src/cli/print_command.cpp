#include "cli/print_command.h"

#include <cstdio>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "cli/command_line.h"
#include "cli/option_values.h"
#include "cli/plot_command.h"
#include "console/console_editor.h"
#include "console/text_table.h"
#include "host/print_queues.h"
#include "paper/layout_plot_setting.h"

namespace tv::cli {

namespace {

namespace fs = std::filesystem;
using console::OneLine;

constexpr int kExitNotAllPrinted = 5;
constexpr int kExitNoPrinter = 6;

// The queues a paper batch offers: the default first, file and fax devices left out.
std::vector<host::PrintQueue> PaperQueues(std::string& error) {
  std::vector<host::PrintQueue> queues;
  for (host::PrintQueue& q : host::ListPrintQueues(&error))
    if (paper::LayoutPlotSetting::IsPaperDevice(q.name)) queues.push_back(std::move(q));
  return queues;
}

std::string SizeText(double w, double h) {
  char text[64];
  std::snprintf(text, sizeof text, "%.0fx%.0f", w, h);
  return text;
}

std::string StateText(const host::PrintQueue& q) {
  if (!q.accepting) return "拒绝作业";
  if (q.paused) return "已暂停";
  return "就绪";
}

void DefinePrinters(CLI::App& app) {
  Describe(app,
           "用法：tvplot printers [--media]\n"
           "  列出可用于批打到纸张的打印机（打印队列），默认打印机在前并标有 *；\n"
           "  --media 同时列出每台打印机的纸张（名称与毫米尺寸）。\n"
           "  打印服务由 CUPS_SERVER 指定，未指定时为本机的打印服务。\n",
           "  退出码：0 成功，6 打印服务无法连接\n");
  AddFlag(app, "--media", "列出每台打印机的纸张");
}

int RunPrinters(const ParsedArgs& args, CliStreams& io) {
  if (!args.positional.empty()) return args.usage(io, "多余的参数 " + args.positional.front());
  std::string error;
  const std::vector<host::PrintQueue> queues = PaperQueues(error);
  if (!error.empty()) {
    io.err << "tvplot printers: " << error << '\n';
    return kExitNoPrinter;
  }
  if (queues.empty()) {
    io.out << "没有可用于打印到纸张的打印机\n";
    return kExitOk;
  }
  console::TextTable table;
  for (const host::PrintQueue& q : queues) table.addRow({(q.isDefault ? "* " : "  ") + q.name, StateText(q), q.info});
  table.print(io.out, "");
  if (args.has("--media")) {
    for (const host::PrintQueue& q : queues) {
      io.out << '\n' << q.name << " 的纸张：\n";
      std::string why;
      const std::vector<host::PrintMedium> media = host::QueueMedia(q.name, &why);
      if (!why.empty()) io.err << "tvplot printers: " << why << '\n';
      for (const host::PrintMedium& m : media) io.out << "  " << m.name << "  " << SizeText(m.widthMm, m.heightMm)
                  << (m.label.empty() || m.label == m.name ? std::string() : "  " + m.label) << '\n';
    }
  }
  return kExitOk;
}

struct PrintOptions {
  std::string queue;  // empty: the default one
  std::int32_t copies = 1;
  bool collate = false;
  std::string plt;  // set: PLT files of the printer into this folder instead of paper
};

std::optional<std::string> ReadPrintOptions(const ParsedArgs& args, PrintOptions& options) {
  if (auto v = args.value("--printer")) {
    if (v->empty()) return "打印机名称不能为空";
    options.queue = *v;
  }
  if (auto v = args.value("--copies")) {
    const auto n = ParseWhole(*v, 1, 20);
    if (!n) return "打印份数 " + console::Printable(*v) + " 无效，应为 1 到 20 的整数";
    options.copies = *n;
  }
  options.collate = args.has("--collate");
  if (auto v = args.value("--plt")) {
    std::error_code ec;
    if (!fs::is_directory(*v, ec)) return "PLT 文件夹 " + console::Printable(*v) + " 不存在";
    options.plt = fs::absolute(*v, ec).lexically_normal().string();
    while (options.plt.size() > 1 && options.plt.back() == '/') options.plt.pop_back();
  }
  return std::nullopt;
}

// The queue to print on, checked before anything is plotted: there, and taking jobs.
// PLT files need the queue's media only: a queue that refuses jobs will do.
std::optional<host::PrintQueue> ChooseQueue(host::PrintServer& server, const std::string& wanted, bool toPlt, CliStreams& io) {
  std::string error;
  if (!server.connect(error)) {
    io.err << "tvplot print: " << error << "，未打印\n";
    return std::nullopt;
  }
  host::PrintQueue queue;
  if (wanted.empty()) {
    const std::vector<host::PrintQueue> queues = PaperQueues(error);
    if (queues.empty() || !queues.front().isDefault) {
      io.err << "tvplot print: " << (error.empty() ? "没有默认打印机，请用 --printer 选择（tvplot printers 列出打印机）" : error)
             << "，未打印\n";
      return std::nullopt;
    }
    queue = queues.front();
  } else if (!server.queue(wanted, queue, error)) {
    io.err << "tvplot print: " << error << "，未打印\n";
    return std::nullopt;
  }
  if (!paper::LayoutPlotSetting::IsPaperDevice(queue.name)) {
    io.err << "tvplot print: 打印机“" << queue.name << "”不能用于打印到纸张，未打印\n";
    return std::nullopt;
  }
  if (toPlt) return queue;
  if (!queue.accepting) {
    io.err << "tvplot print: 打印机“" << queue.name << "”拒绝接受作业，未打印\n";
    return std::nullopt;
  }
  if (queue.paused) io.err << "tvplot print: 打印机“" << queue.name << "”已暂停，作业将在队列中等待，恢复后才会打印\n";
  return queue;
}

std::string Seconds(double s) {
  char text[32];
  std::snprintf(text, sizeof text, "%.2f", s);
  return text;
}

void DefinePrint(CLI::App& app) {
  Describe(app,
           "用法：tvplot print 图纸.dxf [--printer 打印机] [--copies N] [--collate]\n"
           "                   [--style 黑白|彩色|蓝白|样式表.ctb] [--margin 毫米] [--scale 比例] [--order 1-9]\n"
           "                   [--range 范围] [--signatures yes|no] [--plt 文件夹] [--yes | --no] [--timings] [--verbose]\n"
           "  识别图纸中的全部图框，按批打到纸张（新版，TV_BatchPlot_5）逐张送往打印机：每张图纸用打印机上\n"
           "  与其纸张同样大小的纸张（没有时缩放到能容纳它的最小纸张），每一份作为一个打印作业发送，\n"
           "  并给出作业号、纸张与打印机的答复。\n"
           "  --collate 逐份打印：一整套打完再打下一套；否则每张图纸的各份连在一起。\n"
           "  --plt 输出为PLT：每张图纸一个 PLT 文件（图纸名_N.plt）写到该文件夹，不送往打印机。\n",
           "  打印服务由 CUPS_SERVER 指定；默认打印机与打印服务的配置不会被改变。\n"
           "  退出码：0 全部作业已发送，1 用法错误，2 图纸无法读取，4 未找到图框，\n"
           "          5 有图纸未能打印（已发送的作业照常列出），6 打印机或打印服务无法使用\n");
  AddValue(app, "--printer", "打印机", "打印到该打印队列（默认：默认打印机）");
  AddValue(app, "--copies", "N", "每张图纸打印的份数（1 到 20，默认 1）");
  AddFlag(app, "--collate", "逐份打印");
  AddValue(app, "--plt", "文件夹", "输出为PLT：按打印机的纸张写 PLT 文件到该文件夹，不送往打印机");
  AddValue(app, "--style", "S", "打印样式：黑白、彩色、蓝白，或一个 .ctb 样式表文件");
  AddValue(app, "--margin", "M", "周边留白（毫米，-100 到 100）");
  AddValue(app, "--scale", "S", "所有图框按 1:S 确定纸张（默认按多数图框推断）");
  AddValue(app, "--order", "N", "打印顺序 1 到 9（同 tvplot sheets）");
  AddValue(app, "--range", "R", "model、layouts、all（默认）或 current");
  AddValue(app, "--signatures", "yes|no", "打印签名，默认取图纸的打印设置");
  AddFlag(app, "--yes", "对打印过程中的是/否提问一律回答“是”（默认）");
  AddFlag(app, "--no", "对打印过程中的是/否提问一律回答“否”");
  AddFlag(app, "--timings", "显示各阶段耗时");
  AddFlag(app, "--verbose", "显示命令行的全部过程");
}

std::string Mm(double v) {
  char text[32];
  std::snprintf(text, sizeof text, "%.0f", v);
  return text;
}

// The jobs the run sent, one line each, the refusals, and the count; the exit code.
int PrintSummary(console::ConsoleEditor& editor, int listed, double seconds, const PrintOptions& options,
                 const std::string& queue, CliStreams& io) {
  std::map<std::string, int> copies;  // of each sheet, as its jobs went
  std::size_t sent = 0;
  bool refused = false;
  for (const console::ConsoleEditor::PlotRecord& p : editor.plots()) {
    if (!options.plt.empty()) {
      if (p.ok) {
        io.out << p.path << '\n';
        ++sent;
      } else {
        io.err << "tvplot print: 未输出 " << p.path << "：" << OneLine(p.message) << '\n';
        refused = true;
      }
      continue;
    }
    const int copy = ++copies[p.title];
    if (!p.ok) {
      io.err << "tvplot print: " << p.title << "（第 " << copy << " 份）：" << OneLine(p.message) << "停止打印\n";
      refused = true;
      continue;
    }
    ++sent;
    io.out << p.path << "  " << p.title << "  第 " << copy << " 份  " << Mm(p.widthMm) << "x" << Mm(p.heightMm) << " mm  "
           << p.medium << "  " << p.message << '\n';
  }
  const std::size_t planned =
      options.plt.empty() ? static_cast<std::size_t>(listed) * static_cast<std::size_t>(options.copies) : static_cast<std::size_t>(listed);
  if (!options.plt.empty())
    io.out << "共 " << listed << " 张图纸，已输出 " << sent << " 个 PLT 文件到 " << options.plt << "，用时 " << Seconds(seconds)
           << " 秒\n";
  else
    io.out << "共 " << listed << " 张图纸，已发送 " << sent << " / " << planned << " 个打印作业到打印机 " << queue << "，用时 "
           << Seconds(seconds) << " 秒\n";
  if (sent == planned && !refused) return kExitOk;
  if (editor.plots().empty() || !refused)
    for (const std::string& m : editor.messages()) io.err << "tvplot print: " << OneLine(m) << '\n';
  return kExitNotAllPrinted;
}

int RunPrint(const ParsedArgs& args, CliStreams& io) {
  if (auto error = args.oneDrawingError()) return args.usage(io, *error);
  PrintOptions options;
  if (auto error = ReadPrintOptions(args, options)) return args.usage(io, *error);

  host::PrintServer server;
  const std::optional<host::PrintQueue> queue = ChooseQueue(server, options.queue, !options.plt.empty(), io);
  if (!queue) return kExitNoPrinter;

  // The paper batch as users run it: the printer, the copies and the collation chosen in its
  // list, then its OK.
  FileBatch batch;
  batch.program = "tvplot print";
  batch.command = "TV_BatchPlot_5";
  batch.listAnswers = {"打印机 " + queue->name, "K * " + std::to_string(options.copies),
                       std::string("逐份打印 ") + (options.collate ? "是" : "否"),
                       std::string("输出为PLT ") + (options.plt.empty() ? "否" : "是"), "打开所在文件夹 否"};
  if (!options.plt.empty()) batch.runAnswers = {options.plt};
  const std::string queueName = queue->name;
  batch.summary = [&](console::ConsoleEditor& editor, int listed, double seconds) {
    return PrintSummary(editor, listed, seconds, options, queueName, io);
  };
  return RunFileBatch(args, io, batch);
}

}  // namespace

const Subcommand& PrintersSubcommand() {
  static const Subcommand kPrinters{"printers", "列出可打印到纸张的打印机及其纸张", &DefinePrinters, &RunPrinters};
  return kPrinters;
}

const Subcommand& PrintSubcommand() {
  static const Subcommand kPrint{"print", "识别图框并逐张打印到打印机", &DefinePrint, &RunPrint};
  return kPrint;
}

}  // namespace tv::cli
