#include "host/notices.h"

#include <utility>

#include "host/editor.h"

namespace tv::host {

namespace {

NoticeSink& Sink() {
  static NoticeSink sink;
  return sink;
}

}  // namespace

void Notify(std::string_view text) {
  if (HasEditor()) CurrentEditor().print(text);
  if (Sink()) Sink()(text);
}

NoticeSinkScope::NoticeSinkScope(NoticeSink sink) : previous_(std::exchange(Sink(), std::move(sink))) {}

NoticeSinkScope::~NoticeSinkScope() { Sink() = std::move(previous_); }

}  // namespace tv::host
