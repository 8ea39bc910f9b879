#include "plot/plotter_lock.h"

#include <filesystem>
#include <optional>
#include <system_error>

#include "host/notices.h"
#include "host/run_lock.h"
#include "settings/folders.h"

namespace tv::plot {

namespace {

namespace fs = std::filesystem;

// The lock file lies in the data folder, beside the plotter folders of the host.
constexpr std::string_view kLockName = "T_Plot.lock";

std::optional<host::RunLock>& Held() {
  static std::optional<host::RunLock> lock;
  return lock;
}

}  // namespace

std::string PlotterBusyMessage() { return "\n另一个打印任务正在使用打印设备文件（T_PDF.pc3 等），等待其完成…"; }

void HoldPlotterFiles() {
  const std::string& folder = settings::DataFolder();
  if (folder.empty()) return;
  const std::string path = (fs::path(folder) / kLockName).string();
  std::optional<host::RunLock>& held = Held();
  if (held && held->path() == path) return;
  held.reset();  // a lock of another data folder: this run doesn't share its files any more
  std::error_code ec;
  fs::create_directories(folder, ec);
  held = host::RunLock::Acquire(path, [] { host::Notify(PlotterBusyMessage()); });
}

void ReleasePlotterFiles() { Held().reset(); }

bool PlotterFilesHeld() { return Held().has_value(); }

}  // namespace tv::plot
