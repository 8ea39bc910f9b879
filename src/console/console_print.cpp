// "-plot" to a printer: the sheet is plotted as a PDF at its medium into a private temporary file
// and sent to the print queue as one job; the file goes once the server has it. Jobs are sent by
// a thread of their own while the next sheets plot, in the order plotted; their answers (job and
// the queue's answer) are printed and recorded when settled. After a refusal nothing more is sent
// and the next plot to a printer is refused at once, never a wait.
#include <stdlib.h>
#include <unistd.h>

#include <condition_variable>
#include <deque>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "console/console_editor.h"
#include "host/cad_binding.h"
#include "host/print_queues.h"
#include "render/plot_engine.h"

namespace tv::console {

namespace {

namespace fs = std::filesystem;

// A temporary PDF of this process's own, removed with the object.
class SpoolFile {
 public:
  SpoolFile() {
    std::error_code ec;
    std::string pattern = (fs::temp_directory_path(ec) / "tvplot-job-XXXXXX.pdf").string();
    const int fd = ::mkstemps(pattern.data(), 4);
    if (fd >= 0) {
      ::close(fd);
      path_ = pattern;
    }
  }
  ~SpoolFile() {
    std::error_code ec;
    if (!path_.empty()) fs::remove(path_, ec);
  }
  SpoolFile(const SpoolFile&) = delete;
  SpoolFile& operator=(const SpoolFile&) = delete;
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace

class PrintSender {
 public:
  struct Job {
    host::PrintDocument doc;
    ConsoleEditor::PlotRecord record;
    std::unique_ptr<SpoolFile> spool;
  };

  PrintSender() : thread_([this] { work(); }) {}
  ~PrintSender() {
    {
      const std::lock_guard lock(mutex_);
      stopping_ = true;
    }
    wake_.notify_all();
    thread_.join();
  }
  PrintSender(const PrintSender&) = delete;
  PrintSender& operator=(const PrintSender&) = delete;

  void send(Job job) {
    {
      const std::lock_guard lock(mutex_);
      waiting_.push_back(std::move(job));
    }
    wake_.notify_all();
  }
  // A queue refused a job: nothing more goes.
  bool refused() {
    const std::lock_guard lock(mutex_);
    return refused_;
  }
  // The records of the jobs answered, in the order sent; with `wait` once every job is.
  std::vector<ConsoleEditor::PlotRecord> take(bool wait) {
    std::unique_lock lock(mutex_);
    if (wait) wake_.wait(lock, [this] { return waiting_.empty() && !busy_; });
    return std::exchange(answered_, {});
  }

 private:
  void work() {
    host::PrintServer server;
    std::unique_lock lock(mutex_);
    while (true) {
      wake_.wait(lock, [this] { return stopping_ || !waiting_.empty(); });
      if (waiting_.empty()) return;
      Job job = std::move(waiting_.front());
      waiting_.pop_front();
      busy_ = true;
      const bool skip = refused_;
      lock.unlock();
      ConsoleEditor::PlotRecord& record = job.record;
      const std::string& queue = record.queue;
      if (skip) {
        record.message = "打印机“" + queue + "”未接受前面的作业，本作业未发送。";
      } else {
        const host::PrintJobResult result = server.submit(queue, job.doc);
        if (result.ok) {
          record.ok = true;
          record.jobId = result.jobId;
          record.path = queue + "-" + std::to_string(result.jobId);
          record.message = result.answer;
        } else {
          record.message = "打印机“" + queue + "”未接受作业：" + result.answer + "，未打印。";
        }
      }
      job.spool.reset();  // the server has it, or never will
      lock.lock();
      if (!record.ok) refused_ = true;
      answered_.push_back(std::move(record));
      busy_ = false;
      wake_.notify_all();
    }
  }

  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<Job> waiting_;
  std::vector<ConsoleEditor::PlotRecord> answered_;
  bool busy_ = false, refused_ = false, stopping_ = false;
  std::thread thread_;  // last: it starts once the rest is ready
};

std::vector<std::string> ConsoleEditor::settlePrintJobs(bool wait) {
  std::vector<std::string> refused;
  if (!printSender_) return refused;
  for (PlotRecord& record : printSender_->take(wait)) {
    if (record.ok) {
      print("\n已发送到打印机 " + record.queue + "，作业 " + record.path + "（" + record.message + "）");
    } else {
      print("\n" + record.message);
      refused.push_back(record.message);
    }
    plots_.push_back(std::move(record));
  }
  return refused;
}

int ConsoleEditor::printOnQueue(const std::string& queue, const std::string& medium, render::PlotRequest& request) {
  PlotRecord record{"", false, {}, queue, 0, {}, {}, 0, 0};
  record.title = host::TakePrintJobName();
  if (record.title.empty()) record.title = fs::path(path_).stem().string();
  const auto refuse = [&](std::string message) {
    print("\n" + message);
    record.message = std::move(message);
    plots_.push_back(std::move(record));
    return host::RTERROR;
  };
  if (!printSender_) printSender_ = std::make_shared<PrintSender>();
  settlePrintJobs(false);
  if (printSender_->refused()) return refuse("打印机未接受前面的作业，未打印。");
  auto spool = std::make_unique<SpoolFile>();
  if (spool->path().empty()) return refuse("临时文件无法创建，未打印。");
  request.format = render::PlotFormat::Pdf;
  request.outputPath = spool->path();
  const render::PlotResult result = render::PlotWindow(db_, request);
  for (const std::string& note : result.notes) print("\n" + note);
  if (!result.ok) return refuse(result.message);

  host::PrintDocument doc;
  doc.path = spool->path();
  doc.title = record.title;
  doc.media = medium;
  const bool turned = request.medium.turned;
  const double w = turned ? request.medium.heightMm : request.medium.widthMm;
  const double h = turned ? request.medium.widthMm : request.medium.heightMm;
  doc.landscape = w > h;
  record.medium = medium;
  record.widthMm = w;
  record.heightMm = h;
  printSender_->send({std::move(doc), std::move(record), std::move(spool)});
  return host::RTNORM;
}

}  // namespace tv::console
