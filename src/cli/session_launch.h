#pragma once
// What `tvplot console` and `tvplot run` share: their options, the drawing and the answers.
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "cad/database.h"
#include "cli/command_line.h"
#include "cli/subcommand.h"
#include "console/session.h"
#include "host/notices.h"
#include "host/object_id.h"

namespace tv::cli {

struct LaunchRequest {
  std::vector<std::string> positional;
  std::vector<std::string> answers;  // --answer values first, then the lines of --answers
  bool timings = false;
  std::string saveAs;  // --save-as: where the drawing is written after the session; empty = not saved
};

// Declares "[--answers FILE] [--answer TEXT]… [--timings] [--save-as FILE]"; `saveAs` tells when
// the drawing is saved.
void DefineLaunchOptions(CLI::App& app, const std::string& saveAs);

// Checks the positional arguments and --save-as, and reads the answers file. On failure the
// message (and for a usage error the help) is printed on io.err and `exitCode` is set.
std::optional<LaunchRequest> ParseLaunch(const ParsedArgs& args, std::size_t positionalCount, CliStreams& io,
                                         int& exitCode);

// The answers that make the range prompt of the batch commands walk the spaces of `range`
// ("model", "layouts", "all", "current"): Enter, then the item of "自动遍历".
std::vector<std::string> RangeAnswers(const std::string& range, bool inLayout);

// A session whose command line is a transcript only (shown with --timings): what the session
// prints goes to `transcript`, its errors and its progress to io.err.
console::SessionOptions TranscriptOptions(std::ostringstream& transcript, CliStreams& io);

// Shows the session's notices (host::Notify) on io.err, one line each, while it lives: the command
// line of a transcript session is read by nobody.
class NoticesToErr {
 public:
  explicit NoticesToErr(CliStreams& io);

 private:
  host::NoticeSinkScope scope_;
};

// The names of the layouts by their block, for the space column of the lists.
std::map<ObjectId, std::string> LayoutNamesByBlock();

// Reads the drawing; nullopt after printing why on io.err.
std::optional<cad::Database> LoadDrawing(const std::string& path, CliStreams& io);

// Writes the drawing of the session to `path`, through a temporary file beside it so that a
// failed write leaves nothing behind. False after printing why on io.err.
bool SaveDrawingAs(const cad::Database& db, const std::string& path, CliStreams& io);

}  // namespace tv::cli
