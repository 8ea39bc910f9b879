#pragma once
// The editor side of the host: command line, prompts, selections, system variables, the UCS,
// message boxes and simple forms, the command stack and the document. The platform installs one
// Editor; the logic reaches it through the functions at the end of this header and through the
// wrappers.
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "host/geometry.h"
#include "host/object_id.h"

namespace tv::host {

// Results of prompts and selections.
inline constexpr int RTNORM = 5100;    // an answer
inline constexpr int RTNONE = 5000;    // Enter at a prompt that allows it
inline constexpr int RTERROR = -5001;  // nothing selected, or Enter at a selection
inline constexpr int RTCAN = -5002;    // cancelled (Esc, or no answer left when unattended)

// Coordinate system codes of Trans.
inline constexpr int kWorld = 0;
inline constexpr int kUser = 1;
inline constexpr int kDisplay = 2;

// A system variable or environment value.
using Value = std::variant<std::int32_t, double, std::string, Point3d>;
std::optional<std::int32_t> AsInt(const std::optional<Value>& v);
std::optional<double> AsReal(const std::optional<Value>& v);
std::optional<std::string> AsText(const std::optional<Value>& v);
std::optional<Point3d> AsPoint(const std::optional<Value>& v);

// A selection filter, as a list of (code, value) items: code 0 an entity type name (wildcards
// "*" and "?", comma-separated alternatives, any case), code 8 a layer name, code 2 a block name,
// code -4 the operators "<or", "or>", "<and", "and>", "<not", "not>".
struct FilterItem {
  int code = 0;
  std::string text;
};
using SelectionFilter = std::vector<FilterItem>;
// The "<or" list of entity type names.
SelectionFilter TypeFilter(const std::vector<std::string>& typeNames);

// Buttons and answers of message boxes.
enum class MessageButtons { Ok, OkCancel, YesNo, YesNoCancel };
enum class MessageAnswer { Ok, Cancel, Yes, No };

// Flags of registered commands.
inline constexpr int ACRX_CMD_MODAL = 0;
inline constexpr int ACRX_CMD_USEPICKSET = 2;

using CommandBody = void (*)();

class Editor {
 public:
  virtual ~Editor() = default;

  // ---- command line ---------------------------------------------------------------------------
  // Prints on the command line, as it stands ("\n" starts a new line).
  virtual void print(std::string_view text) = 0;

  // ---- prompts: RTNORM with the answer, RTNONE on Enter, RTCAN on cancel ------------------------
  // Enter at getString is an empty answer with RTNORM.
  virtual int getString(std::string_view prompt, std::string& answer) = 0;
  virtual int getInteger(std::string_view prompt, std::int32_t& answer) = 0;
  virtual int getReal(std::string_view prompt, double& answer) = 0;
  // A point in user coordinates; `base` draws a rubber band from it where a screen exists.
  virtual int getPoint(std::string_view prompt, const Point3d* base, Point3d& answer) = 0;
  virtual int getCorner(std::string_view prompt, const Point3d& base, Point3d& answer) = 0;
  // One of the keywords, given as "Yes No" or "是(Y) 否(N)"; the answer is the keyword matched.
  virtual int getKeyword(std::string_view prompt, std::string_view keywords, std::string& answer) = 0;

  // ---- selections ------------------------------------------------------------------------------
  // Modes: "_:$" asks with the prompt pair (first for adding, second for removing); "F" takes the
  // fence `points`; "X" takes every entity of the drawing that passes the filter; "W" and "C" take
  // a window or crossing box from the first two `points`. Ids are appended to `ids` in selection
  // order. RTNORM when something was selected, RTERROR when nothing was or on Enter, RTCAN on cancel.
  virtual int select(std::string_view mode, const std::vector<std::string>& prompts,
                     const std::vector<Point3d>& points, const SelectionFilter& filter, ObjectIdArray& ids) = 0;

  // ---- system variables and environment ---------------------------------------------------------
  // Names compare without regard to case. nullopt for an unknown variable.
  virtual std::optional<Value> getVar(std::string_view name) = 0;
  // False when the variable is unknown or read-only or the value has the wrong type.
  virtual bool setVar(std::string_view name, const Value& value) = 0;
  virtual std::optional<std::string> getEnv(std::string_view name) = 0;
  virtual void setEnv(std::string_view name, std::string_view value) = 0;
  // Creates the per-user folders the host's own preferences name (drivers, plotter configurations
  // and descriptions, plot styles) where they are missing, as the host's installation would have.
  // Called at load, before the module checks those preferences. A host whose installer made them
  // does nothing.
  virtual void prepareUserFolders() {}

  // ---- user coordinate system --------------------------------------------------------------------
  // The current UCS as the matrix from UCS to world coordinates.
  virtual Matrix3d currentUcs() = 0;
  virtual bool setCurrentUcs(const Matrix3d& ucsToWorld) = 0;

  // ---- message boxes and forms -----------------------------------------------------------------
  virtual MessageAnswer messageBox(std::string_view text, std::string_view caption, MessageButtons buttons) = 0;
  // A list of items to choose one from; the index, or nullopt on cancel.
  virtual std::optional<int> chooseItem(std::string_view title, const std::vector<std::string>& items, int defaultItem) = 0;
  // A review list: title, column titles and one row of cells per line. A screen shows it as a form
  // that stays open; a command line prints it.
  virtual void showList(std::string_view title, const std::vector<std::string>& columns,
                        const std::vector<std::vector<std::string>>& rows) = 0;
  // File dialogs: a path, or nullopt on cancel. `extension` without the dot ("pdf").
  virtual std::optional<std::string> askOpenPath(std::string_view title, std::string_view extension) = 0;
  virtual std::optional<std::string> askSavePath(std::string_view title, std::string_view defaultName, std::string_view extension) = 0;
  virtual std::optional<std::string> askFolder(std::string_view title, std::string_view initial) = 0;
  // Opens a file with the desktop's program for it (shell verb "open"); false when nothing could.
  virtual bool shellOpen(std::string_view path) = 0;

  // ---- plot preview ------------------------------------------------------------------------------
  // The plot engine's preview of the current layout as its plot settings stand, showing row
  // `index` of a list (`more`: other rows exist). A host without a screen renders the page as an
  // image into `scratchFolder` and prints its path. Returns once the preview is closed; false when
  // nothing could be shown.
  virtual bool plotPreview(std::string_view scratchFolder, int index, bool more) {
    (void)scratchFolder, (void)index, (void)more;
    return false;
  }

  // ---- printers ----------------------------------------------------------------------------------
  // Waits until the printers answered every job the plots of this command handed them, and
  // returns the messages of the jobs they didn't accept, in the order sent. A host that sends
  // each job before its plot returns has nothing to wait for.
  virtual std::vector<std::string> settlePrintJobs() { return {}; }

  // ---- commands --------------------------------------------------------------------------------
  // Adds a command to a group; a command of the same name is replaced.
  virtual void addCommand(std::string_view group, std::string_view globalName, std::string_view localName, int flags, CommandBody body) = 0;
  // Removes every command of a group; false when the group had none.
  virtual bool removeGroup(std::string_view group) = 0;
  // Runs a host command with its answers and returns when it is done (e.g. "-plotstamp", "OFF").
  virtual int command(const std::vector<std::string>& args) = 0;
  // Queues text to run as typed on the command line once the current command is over; "\x03"
  // cancels whatever waits.
  virtual void sendStringToExecute(std::string_view text) = 0;

  // ---- the document ----------------------------------------------------------------------------
  virtual std::string documentPath() = 0;
  // Forgets that the drawing was changed, so closing it asks nothing.
  virtual void setModified(bool modified) = 0;
  virtual bool modified() = 0;
  virtual void regen() = 0;
  // Sets the view of the current space: its centre (user coordinates) and height; VIEWCTR and
  // VIEWSIZE follow.
  virtual void setView(Point3d centre, double height) = 0;

  // ---- progress of long work ---------------------------------------------------------------------
  virtual void progressBegin(std::string_view text, int range) = 0;
  virtual void progressSet(int position) = 0;
  virtual void progressEnd() = 0;
};

// The editor of this process; the platform sets it before any command runs.
void SetEditor(Editor* editor);
Editor& CurrentEditor();
bool HasEditor();

// Shorthands used throughout the logic.
void Print(std::string_view text);
std::optional<Value> GetVar(std::string_view name);
bool SetVar(std::string_view name, const Value& value);
std::int32_t GetIntVar(std::string_view name, std::int32_t fallback = 0);
double GetRealVar(std::string_view name, double fallback = 0);

// Converts a point between world (0), user (1) and display (2) coordinates; with `displacement`
// only the rotation applies.
Point3d Trans(Point3d point, int from, int to, bool displacement = false);

}  // namespace tv::host
