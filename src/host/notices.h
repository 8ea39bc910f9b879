#pragma once
// Notices: what the user must learn about a run even when nobody reads the command line, such as
// a sheet left out and why, or a wait for another run. They are printed on the command line, and
// a front end that keeps the command line as a transcript takes them as well.
#include <functional>
#include <string_view>

namespace tv::host {

using NoticeSink = std::function<void(std::string_view text)>;

// Prints `text` on the command line (when an editor is installed) and hands it to the sink.
void Notify(std::string_view text);

// Installs a sink for the notices while the object lives; the one before comes back after it.
class NoticeSinkScope {
 public:
  explicit NoticeSinkScope(NoticeSink sink);
  ~NoticeSinkScope();
  NoticeSinkScope(const NoticeSinkScope&) = delete;
  NoticeSinkScope& operator=(const NoticeSinkScope&) = delete;

 private:
  NoticeSink previous_;
};

}  // namespace tv::host
