#pragma once
// The editor of the console host. Everything a command asks — prompts, selections, message
// boxes, lists to choose from, file dialogs — is printed on the command line and answered from
// the session's answers or the terminal, so that every command also runs unattended.
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

#include "cad/database.h"
#include "cad/selection_index.h"
#include "console/answer_source.h"
#include "console/host_folders.h"
#include "console/progress_line.h"
#include "console/session.h"
#include "console/system_variables.h"
#include "render/space_index.h"
#include "host/editor.h"

namespace tv::render {
struct PlotterConfig;
struct PlotterMedium;
struct PlotRequest;
}  // namespace tv::render

namespace tv::host {
class PrintServer;
}

namespace tv::console {

class PrintSender;

class EntityFilter;

// A medium of the device by its canonical name, else by the name users see; null when absent.
const render::PlotterMedium* FindPlotMedium(const render::PlotterConfig& config, std::string_view name);

class ConsoleEditor final : public host::Editor {
 public:
  // `db` must outlive the editor; `options.out` is where everything is printed.
  ConsoleEditor(cad::Database& db, std::string path, const SessionOptions& options);
  ~ConsoleEditor() override;
  ConsoleEditor(const ConsoleEditor&) = delete;
  ConsoleEditor& operator=(const ConsoleEditor&) = delete;

  // ---- host::Editor ------------------------------------------------------------------------------
  void print(std::string_view text) override;
  int getString(std::string_view prompt, std::string& answer) override;
  int getInteger(std::string_view prompt, std::int32_t& answer) override;
  int getReal(std::string_view prompt, double& answer) override;
  // "x,y" or "x,y,z"; "@dx,dy[,dz]" is relative to `base` (the origin without one).
  int getPoint(std::string_view prompt, const Point3d* base, Point3d& answer) override;
  int getCorner(std::string_view prompt, const Point3d& base, Point3d& answer) override;
  int getKeyword(std::string_view prompt, std::string_view keywords, std::string& answer) override;
  // `points` of the "F", "W" and "C" modes are in user coordinates, as the prompts' points are.
  int select(std::string_view mode, const std::vector<std::string>& prompts, const std::vector<Point3d>& points,
             const host::SelectionFilter& filter, ObjectIdArray& ids) override;
  std::optional<host::Value> getVar(std::string_view name) override;
  bool setVar(std::string_view name, const host::Value& value) override;
  std::optional<std::string> getEnv(std::string_view name) override;
  void setEnv(std::string_view name, std::string_view value) override;
  // Its plotter, plot style and driver folders (see host_folders.h).
  void prepareUserFolders() override;
  Matrix3d currentUcs() override;
  bool setCurrentUcs(const Matrix3d& ucsToWorld) override;
  host::MessageAnswer messageBox(std::string_view text, std::string_view caption, host::MessageButtons buttons) override;
  std::optional<int> chooseItem(std::string_view title, const std::vector<std::string>& items, int defaultItem) override;
  std::optional<std::string> askOpenPath(std::string_view title, std::string_view extension) override;
  std::optional<std::string> askSavePath(std::string_view title, std::string_view defaultName,
                                         std::string_view extension) override;
  std::optional<std::string> askFolder(std::string_view title, std::string_view initial) override;
  bool shellOpen(std::string_view path) override;
  void showList(std::string_view title, const std::vector<std::string>& columns,
                const std::vector<std::vector<std::string>>& rows) override;
  void addCommand(std::string_view group, std::string_view globalName, std::string_view localName, int flags,
                  host::CommandBody body) override;
  bool removeGroup(std::string_view group) override;
  // Host commands first, then the registered commands; the arguments after the name answer the
  // command's prompts.
  int command(const std::vector<std::string>& args) override;
  void sendStringToExecute(std::string_view text) override;
  std::string documentPath() override;
  void setModified(bool modified) override;
  bool modified() override;
  void regen() override;
  void setView(Point3d centre, double height) override;
  void progressBegin(std::string_view text, int range) override;
  void progressSet(int position) override;
  void progressEnd() override;
  // Renders the page as a PNG fitted to the screen into `scratchFolder` ("preview-N.png").
  bool plotPreview(std::string_view scratchFolder, int index, bool more) override;

  // ---- the console's own -------------------------------------------------------------------------
  // A command the host itself offers (like "-plotstamp"): it gets the whole argument list, its
  // name first, and returns RTNORM, RTERROR or RTCAN. Names compare without regard to case and
  // to a leading "_" or ".".
  using HostCommand = std::function<int(const std::vector<std::string>& args)>;
  void addHostCommand(std::string_view name, HostCommand body);
  bool hasHostCommand(std::string_view name) const;

  struct RegisteredCommand {
    std::string group, globalName, localName;
    int flags = 0;
    host::CommandBody body = nullptr;
  };
  // The command stack in the order the commands were added.
  const std::vector<RegisteredCommand>& commands() const { return commands_; }
  // By global or local name, any case, a leading "_" or "." ignored; nullptr when absent.
  const RegisteredCommand* findCommand(std::string_view name) const;
  // Runs a registered command's body; a failure inside it is reported, never thrown on.
  void runCommandBody(const RegisteredCommand& command);

  // The texts sendStringToExecute queued, oldest first; taking them empties the queue.
  bool hasQueued() const { return !queued_.empty(); }
  std::optional<std::string> takeQueued();
  void clearQueued() { queued_.clear(); }

  AnswerSource& answers() { return answers_; }
  SystemVariables& variables() { return variables_; }
  // The index the selections of the running command use in `space`, brought up to date.
  cad::SelectionIndex& selectionIndex(const cad::BlockRecord& space);
  // The drawing changed under the indexes (see host::WorkingDrawing::onEntityChange).
  void noteEntityChange(const cad::Entity& e);

  // The first prompt an unattended run could not answer.
  const std::optional<std::string>& unansweredPrompt() const { return unanswered_; }
  bool closeRequested() const { return closeRequested_; }
  void requestClose() { closeRequested_ = true; }
  // The last "-plotstamp" setting (off until one is given).
  bool plotStamp() const { return plotStamp_; }

  // One "-plot" that got as far as plotting: the file asked for, and whether it was written.
  struct PlotRecord {
    std::string path;
    bool ok = false;
    std::string message;  // why not
    std::string queue;    // set for a plot sent to a printer: its queue, the job and the answer
    int jobId = 0;
    std::string title;   // the job's name
    std::string medium;  // the queue's medium
    double widthMm = 0, heightMm = 0;  // the page as sent
  };
  // Every plot so far; the jobs still on their way to a printer are waited for first.
  const std::vector<PlotRecord>& plots() {
    settlePrintJobs(true);
    return plots_;
  }
  // The jobs the printers have answered (all of them, waiting, with `wait`) recorded and reported;
  // the messages of those not accepted.
  std::vector<std::string> settlePrintJobs(bool wait);
  std::vector<std::string> settlePrintJobs() override { return settlePrintJobs(true); }
  // A file the system wrote, or failed to write, without a "-plot" (a sheet cut to a drawing file).
  void noteOutputFile(std::string_view path, bool written, std::string_view why) {
    plots_.push_back({std::string(path), written, std::string(why), {}, 0, {}, {}, 0, 0});
  }
  // The texts of the message boxes shown, oldest first.
  const std::vector<std::string>& messages() const { return messages_; }
  // Those of them that only told something (an OK button), without the questions answered.
  const std::vector<std::string>& notices() const { return notices_; }
  // The images the previews wrote, oldest first.
  const std::vector<std::string>& previews() const { return previews_; }
  // Rows of the last review list shown; -1 before any.
  int lastListRows() const { return lastListRows_; }

 private:
  // Prints `prompt` and takes the next answer, echoing it when it did not come from the terminal.
  // nullopt on a cancel answer and when nothing is left to answer with.
  std::optional<std::string> ask(std::string_view prompt);
  int selectInteractively(const std::vector<std::string>& prompts, const EntityFilter& filter, ObjectIdArray& ids,
                          bool filterValid);
  int plotStampCommand(const std::vector<std::string>& args);
  int plotCommand(const std::vector<std::string>& args);
  int eraseCommand(const std::vector<std::string>& args);
  // MENU, MENUBAR and WSCURRENT (console_menu.cpp).
  void addMenuCommands();
  int menuCommand(const std::vector<std::string>& args);
  // What a plot of `layout` with `plot` on `device` and `medium` asks the plot engine, but for the
  // format, the resolution and the output path.
  void fillPlotRequest(const cad::Layout& layout, const cad::PlotSettings& plot, const render::PlotterConfig& device,
                       const render::PlotterMedium& medium, bool turned, render::PlotRequest& request);
  // The plot of `request` as a PDF sent to the print queue as one job (console_print.cpp).
  int printOnQueue(const std::string& queue, const std::string& medium, render::PlotRequest& request);
  void reapViewers();

  cad::Database& db_;
  std::string path_;
  std::ostream* out_;
  std::ostream* err_;
  bool progressEnabled_;
  std::string progressPrefix_;
  bool terminalEchoes_;
  std::optional<bool> yesNoAnswer_;
  AnswerSource answers_;
  SystemVariables variables_;
  HostFolders hostFolders_;
  std::map<std::string, std::string> env_;
  std::vector<RegisteredCommand> commands_;
  std::map<std::string, HostCommand> hostCommands_;  // by normalised name
  std::deque<std::string> queued_;
  std::optional<std::string> unanswered_;
  bool exhausted_ = false;
  bool closeRequested_ = false;
  bool modified_ = false;
  bool plotStamp_ = false;
  std::vector<PlotRecord> plots_;
  // Sends the jobs for the printers while the next sheets plot; its answers are recorded when
  // settled (at the next plot, at the end of the command, or when the plots are read).
  std::shared_ptr<PrintSender> printSender_;
  // Indexes of the spaces plotted by the command running now; a command that plots many windows
  // of one space measures it once. Dropped when the next command starts.
  std::map<ObjectId, std::unique_ptr<render::SpaceIndex>> plotIndexes_;
  // Indexes of the spaces the running command selects in, made at its first selection there and
  // kept up to date through its edits; dropped when the next command starts.
  std::map<ObjectId, std::unique_ptr<cad::SelectionIndex>> selectionIndexes_;
  std::vector<std::string> messages_;
  std::vector<std::string> notices_;
  int lastListRows_ = -1;
  std::vector<std::string> previews_;
  bool selectMarkers_ = false;  // windows of the running selection take the system's markers too
  std::unique_ptr<ProgressLine> progress_;
  int progressRange_ = 0;
  std::vector<pid_t> viewers_;  // xdg-open processes started and not yet reaped
};

}  // namespace tv::console
