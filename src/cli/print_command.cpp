#include "cli/print_command.h"

#include <stdlib.h>

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "cli/command_line.h"
#include "cli/option_values.h"
#include "cli/plot_command.h"
#include "console/text_table.h"
#include "host/print_queues.h"
#include "paper/layout_plot_setting.h"
#include "plot/paper_work_list.h"
#include "render/pdf_pages.h"

namespace tv::cli {

namespace {

namespace fs = std::filesystem;

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
      for (const host::PrintMedium& m : media) io.out << "  " << m.name << "  " << SizeText(m.widthMm, m.heightMm) << '\n';
    }
  }
  return kExitOk;
}

// A folder of this run's own for the PDFs on their way to the printer; gone with the run.
class SpoolFolder {
 public:
  SpoolFolder() {
    std::error_code ec;
    std::string pattern = (fs::temp_directory_path(ec) / "tvplot-print-XXXXXX").string();
    if (::mkdtemp(pattern.data())) path_ = pattern;
  }
  ~SpoolFolder() {
    std::error_code ec;
    if (!path_.empty()) fs::remove_all(path_, ec);
  }
  SpoolFolder(const SpoolFolder&) = delete;
  SpoolFolder& operator=(const SpoolFolder&) = delete;
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

struct PrintOptions {
  std::string queue;  // empty: the default one
  std::int32_t copies = 1;
  bool collate = false;
};

std::optional<std::string> ReadPrintOptions(const ParsedArgs& args, PrintOptions& options) {
  if (auto v = args.value("--printer")) {
    if (v->empty()) return "打印机名称不能为空";
    options.queue = *v;
  }
  if (auto v = args.value("--copies")) {
    const auto n = ParseWhole(*v, 1, 999);
    if (!n) return "打印份数 " + console::Printable(*v) + " 无效，应为 1 到 999 的整数";
    options.copies = *n;
  }
  options.collate = args.has("--collate");
  return std::nullopt;
}

// The queue to print on, checked before anything is plotted: there, and taking jobs.
std::optional<host::PrintQueue> ChooseQueue(host::PrintServer& server, const std::string& wanted, CliStreams& io) {
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
           "                   [--range 范围] [--signatures yes|no] [--yes | --no] [--timings] [--verbose]\n"
           "  识别图纸中的全部图框，按批打到纸张（新版）逐张送往打印机：每张图纸按其纸张生成 PDF，\n"
           "  每一份作为一个打印作业发送，并给出作业号与打印机的答复。\n"
           "  --collate 逐份打印：一整套打完再打下一套；否则每张图纸的各份连在一起。\n",
           "  打印服务由 CUPS_SERVER 指定；默认打印机与打印服务的配置不会被改变。\n"
           "  退出码：0 全部作业已发送，1 用法错误，2 图纸无法读取，4 未找到图框，\n"
           "          5 有图纸未能打印（已发送的作业照常列出），6 打印机或打印服务无法使用\n");
  AddValue(app, "--printer", "打印机", "打印到该打印队列（默认：默认打印机）");
  AddValue(app, "--copies", "N", "每张图纸打印的份数（1 到 999，默认 1）");
  AddFlag(app, "--collate", "逐份打印");
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

// Sends the sheets while the run plots the next ones: a sheet's jobs go as soon as its PDF is
// written, so that printing costs little more than the PDFs. The jobs keep the order of the work
// list: without collation each sheet's copies as it comes, with it the first set as the sheets
// come and the other sets once all are there. A job the queue refuses stops the sending.
class Sender {
 public:
  Sender(host::PrintServer& server, const host::PrintQueue& queue, std::vector<host::PrintMedium> media,
         const PrintOptions& options)
      : server_(server), queue_(queue), media_(std::move(media)), options_(options), thread_([this] { work(); }) {}
  ~Sender() { finish(); }
  Sender(const Sender&) = delete;
  Sender& operator=(const Sender&) = delete;

  void written(const std::string& path) {
    {
      const std::lock_guard lock(mutex_);
      arrived_.push_back(path);
    }
    wake_.notify_one();
  }
  // No more sheets come; waits until every job is sent or the sending stopped.
  void finish() {
    {
      const std::lock_guard lock(mutex_);
      done_ = true;
    }
    wake_.notify_one();
    if (thread_.joinable()) thread_.join();
  }

  const std::string& report() const { return report_; }
  const std::string& refusal() const { return refusal_; }
  std::size_t sheets() const { return sheets_.size(); }
  std::size_t sent() const { return sent_; }
  std::size_t planned() const { return planned_; }

 private:
  void work() {
    std::size_t next = 0;
    for (bool last = false; !last;) {
      {
        std::unique_lock lock(mutex_);
        wake_.wait(lock, [this] { return done_ || !arrived_.empty(); });
        for (std::string& p : arrived_) sheets_.push_back(std::move(p));
        arrived_.clear();
        last = done_;  // nothing comes after the run said so
      }
      // The sheets that came, each with its copies in the stream (one with collation). After a
      // refusal the sheets are only counted.
      for (; next < sheets_.size(); ++next)
        for (int c = 0; c < (options_.collate ? 1 : options_.copies) && refusal_.empty(); ++c) send(next);
    }
    const std::vector<std::int32_t> copies(sheets_.size(), options_.copies);
    const std::vector<std::size_t> work = plot::PaperWorkList(copies, options_.collate, false);
    planned_ = work.size();
    // The rest of the work list: the later sets of a collated run.
    for (std::size_t k = sent_; k < work.size() && refusal_.empty(); ++k) send(work[k]);
  }

  void send(std::size_t sheet) {
    const int copy = static_cast<int>(++copiesSent_[sheet]);
    host::PrintDocument doc;
    doc.path = sheets_[sheet];
    doc.title = fs::path(doc.path).stem().string();
    double w = 0, h = 0;
    std::string paperText = "?";
    if (render::FirstPageSizeMm(doc.path, w, h)) {
      doc.landscape = w > h;
      paperText = SizeText(w, h);
      if (const host::PrintMedium* m = host::MatchMedium(media_, w, h)) doc.media = m->name;
    }
    const host::PrintJobResult result = server_.submit(queue_.name, doc);
    if (!result.ok) {
      refusal_ = "打印机“" + queue_.name + "”未接受 " + doc.title + "（第 " + std::to_string(copy) + " 份）：" + result.answer +
                 "，停止打印";
      return;
    }
    ++sent_;
    report_ += queue_.name + "-" + std::to_string(result.jobId) + "  " + doc.title + "  第 " + std::to_string(copy) +
               " 份  " + paperText + " mm" + (doc.media.empty() ? std::string() : "  " + doc.media) + "  " +
               result.answer + "\n";
  }

  host::PrintServer& server_;
  const host::PrintQueue queue_;
  const std::vector<host::PrintMedium> media_;
  const PrintOptions options_;
  std::mutex mutex_;
  std::condition_variable wake_;
  std::vector<std::string> arrived_;
  bool done_ = false;
  // The sending thread's own.
  std::vector<std::string> sheets_;
  std::map<std::size_t, std::size_t> copiesSent_;
  std::size_t sent_ = 0, planned_ = 0;
  std::string report_, refusal_;
  std::thread thread_;  // last: it starts once the rest is ready
};

int RunPrint(const ParsedArgs& args, CliStreams& io) {
  if (auto error = args.oneDrawingError()) return args.usage(io, *error);
  PrintOptions options;
  if (auto error = ReadPrintOptions(args, options)) return args.usage(io, *error);
  const auto started = std::chrono::steady_clock::now();

  host::PrintServer server;
  const std::optional<host::PrintQueue> queue = ChooseQueue(server, options.queue, io);
  if (!queue) return kExitNoPrinter;
  std::string mediaError;
  std::vector<host::PrintMedium> media = host::QueueMedia(queue->name, &mediaError);

  SpoolFolder spool;
  if (spool.path().empty()) {
    io.err << "tvplot print: 临时文件夹无法创建，未打印\n";
    return kExitNotAllPrinted;
  }
  // The sheets as PDFs at their papers; the summary of the files is this command's own.
  Sender sender(server, *queue, std::move(media), options);
  std::ostringstream plotted;
  CliStreams plotIo{plotted, io.err, io.errIsTerminal};
  FileBatch batch;
  batch.program = "tvplot print";
  batch.command = "TV_BatchPlot_2";
  batch.pdfFolder = spool.path();
  batch.sheetWritten = [&sender](const std::string& path) { sender.written(path); };
  const int plotCode = RunFileBatch(args, plotIo, batch);
  sender.finish();

  io.out << sender.report();
  if (!sender.refusal().empty()) io.err << "tvplot print: " << sender.refusal() << '\n';
  if (sender.sheets() == 0) return plotCode == kExitOk ? kExitNotAllPrinted : plotCode;
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
  io.out << "共 " << sender.sheets() << " 张图纸，已发送 " << sender.sent() << " / " << sender.planned()
         << " 个打印作业到打印机 " << queue->name << "，用时 " << Seconds(seconds) << " 秒\n";
  if (!mediaError.empty()) io.err << "tvplot print: " << mediaError << '\n';
  if (sender.sent() != sender.planned()) return kExitNotAllPrinted;
  return plotCode;
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
