// "-plot" to a printer: the sheet is plotted as a PDF at its medium into a private temporary file
// and sent to the print queue as one job; the file goes once the server has it. The job and the
// queue's answer are printed and recorded; a queue that refuses gives its answer, never a wait.
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <string>

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
  SpoolFile spool;
  if (spool.path().empty()) return refuse("临时文件无法创建，未打印。");
  request.format = render::PlotFormat::Pdf;
  request.outputPath = spool.path();
  const render::PlotResult result = render::PlotWindow(db_, request);
  for (const std::string& note : result.notes) print("\n" + note);
  if (!result.ok) return refuse(result.message);

  if (!printServer_) printServer_ = std::make_shared<host::PrintServer>();
  host::PrintDocument doc;
  doc.path = spool.path();
  doc.title = record.title;
  doc.media = medium;
  const bool turned = request.medium.turned;
  const double w = turned ? request.medium.heightMm : request.medium.widthMm;
  const double h = turned ? request.medium.widthMm : request.medium.heightMm;
  doc.landscape = w > h;
  record.medium = medium;
  record.widthMm = w;
  record.heightMm = h;
  const host::PrintJobResult job = printServer_->submit(queue, doc);
  if (!job.ok) return refuse("打印机“" + queue + "”未接受作业：" + job.answer + "，未打印。");
  record.ok = true;
  record.jobId = job.jobId;
  record.path = queue + "-" + std::to_string(job.jobId);
  record.message = job.answer;
  print("\n已发送到打印机 " + queue + "，作业 " + record.path + "（" + job.answer + "）");
  plots_.push_back(std::move(record));
  return host::RTNORM;
}

}  // namespace tv::console
