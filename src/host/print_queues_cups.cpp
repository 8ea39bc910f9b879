// The printers through libcups. One connection per run, made with a bounded connect and a timeout
// on every exchange; no password is ever asked for on the terminal, since a run is unattended.
#include <cups/cups.h>
#include <cups/pwg.h>

#include <algorithm>
#include <chrono>
#include <mutex>
#include <optional>
#include <cstring>
#include <string>
#include <utility>

#include "host/print_queues.h"

namespace tv::host {

namespace {

constexpr int kConnectMs = 5000;

// An unattended run can't answer a password prompt: the server's refusal is the answer.
const char* NoPassword(const char*, http_t*, const char*, const char*, void*) { return nullptr; }

// Gives up on the first timeout instead of waiting again.
int StopWaiting(http_t*, void*) { return 0; }

std::string ServerName() { return std::string(cupsServer()) + ":" + std::to_string(ippPort()); }

http_t* Connect(std::string& error) {
  cupsSetPasswordCB2(&NoPassword, nullptr);
  int cancel = 0;
  http_t* http = httpConnect2(cupsServer(), ippPort(), nullptr, AF_UNSPEC, cupsEncryption(), 1, kConnectMs, &cancel);
  if (!http) {
    error = "无法连接打印服务 " + ServerName();
    return nullptr;
  }
  httpSetTimeout(http, kPrintServerTimeout, &StopWaiting, nullptr);
  return http;
}

std::string OptionOf(const cups_dest_t& dest, const char* name) {
  const char* v = cupsGetOption(name, dest.num_options, dest.options);
  return v ? v : "";
}

PrintQueue QueueOf(const cups_dest_t& dest) {
  PrintQueue q;
  q.name = dest.name;
  q.isDefault = dest.is_default != 0;
  q.accepting = OptionOf(dest, "printer-is-accepting-jobs") != "false";
  q.paused = OptionOf(dest, "printer-state") == "5";
  q.info = OptionOf(dest, "printer-info");
  return q;
}

// The server's queues, instances left out.
std::vector<PrintQueue> Queues(http_t* http, std::string& error) {
  cups_dest_t* dests = nullptr;
  const int count = cupsGetDests2(http, &dests);
  std::vector<PrintQueue> queues;
  for (int i = 0; i < count; ++i)
    if (!dests[i].instance) queues.push_back(QueueOf(dests[i]));
  cupsFreeDests(count, dests);
  if (count == 0 && cupsLastError() > IPP_STATUS_OK_EVENTS_COMPLETE && cupsLastError() != IPP_STATUS_ERROR_NOT_FOUND)
    error = "打印服务 " + ServerName() + " 无法列出打印机：" + cupsLastErrorString();
  std::stable_partition(queues.begin(), queues.end(), [](const PrintQueue& q) { return q.isDefault; });
  return queues;
}

// A plot asks for the device list and the queue's media many times over (the layout's settings,
// the medium, the plot itself): what the server said a moment ago is taken again rather than
// asked for, so that a run of many sheets costs one exchange per sheet, not dozens. Refusals are
// never kept.
constexpr auto kFresh = std::chrono::seconds(2);

template <typename T>
struct Answer {
  std::chrono::steady_clock::time_point at;
  std::string key;
  T value;
};

template <typename T>
const T* Recent(const std::optional<Answer<T>>& kept, const std::string& key) {
  if (!kept || kept->key != key || std::chrono::steady_clock::now() - kept->at > kFresh) return nullptr;
  return &kept->value;
}

std::mutex& CacheMutex() {
  static std::mutex mutex;
  return mutex;
}

std::vector<PrintMedium> AskQueueMedia(const std::string& queue, std::string& why);

}  // namespace

std::vector<PrintQueue> ListPrintQueues(std::string* error) {
  static std::optional<Answer<std::vector<PrintQueue>>> kept;
  const std::string key = ServerName();
  {
    const std::lock_guard lock(CacheMutex());
    if (const auto* queues = Recent(kept, key)) {
      if (error) error->clear();
      return *queues;
    }
  }
  std::string why;
  http_t* http = Connect(why);
  std::vector<PrintQueue> queues;
  if (http) {
    queues = Queues(http, why);
    httpClose(http);
  }
  if (why.empty()) {
    const std::lock_guard lock(CacheMutex());
    kept = Answer<std::vector<PrintQueue>>{std::chrono::steady_clock::now(), key, queues};
  }
  if (error) *error = why;
  return queues;
}

std::vector<PrintMedium> QueueMedia(const std::string& queue, std::string* error) {
  static std::optional<Answer<std::vector<PrintMedium>>> kept;
  const std::string key = ServerName() + "/" + queue;
  {
    const std::lock_guard lock(CacheMutex());
    if (const auto* media = Recent(kept, key)) {
      if (error) error->clear();
      return *media;
    }
  }
  std::string why;
  std::vector<PrintMedium> media = AskQueueMedia(queue, why);
  if (why.empty()) {
    const std::lock_guard lock(CacheMutex());
    kept = Answer<std::vector<PrintMedium>>{std::chrono::steady_clock::now(), key, media};
  }
  if (error) *error = why;
  return media;
}

namespace {

std::vector<PrintMedium> AskQueueMedia(const std::string& queue, std::string& why) {
  std::vector<PrintMedium> media;
  if (http_t* http = Connect(why)) {
    cups_dest_t* dests = nullptr;
    const int count = cupsGetDests2(http, &dests);
    cups_dest_t* dest = cupsGetDest(queue.c_str(), nullptr, count, dests);
    if (!dest) {
      why = "打印机“" + queue + "”不存在";
    } else if (cups_dinfo_t* info = cupsCopyDestInfo(http, dest)) {
      const int n = cupsGetDestMediaCount(http, dest, info, CUPS_MEDIA_FLAGS_DEFAULT);
      for (int i = 0; i < n; ++i) {
        cups_size_t size;
        if (!cupsGetDestMediaByIndex(http, dest, info, i, CUPS_MEDIA_FLAGS_DEFAULT, &size)) continue;
        if (size.width <= 0 || size.length <= 0) continue;
        // The short name of a standard size ("A3"), else the queue's own wording.
        const pwg_media_t* known = pwgMediaForPWG(size.media);
        const char* label = known && known->ppd ? known->ppd : cupsLocalizeDestMedia(http, dest, info, CUPS_MEDIA_FLAGS_DEFAULT, &size);
        media.push_back({size.media, size.width / 100.0, size.length / 100.0, size.left / 100.0, size.bottom / 100.0,
                         size.right / 100.0, size.top / 100.0, label ? label : ""});
      }
      cupsFreeDestInfo(info);
    } else {
      why = "打印机“" + queue + "”的纸张无法读取：" + cupsLastErrorString();
    }
    cupsFreeDests(count, dests);
    httpClose(http);
  }
  return media;
}

}  // namespace

struct PrintServer::Impl {
  http_t* http = nullptr;
};

PrintServer::PrintServer() : impl_(new Impl) {}

PrintServer::~PrintServer() {
  if (impl_->http) httpClose(impl_->http);
  delete impl_;
}

bool PrintServer::connect(std::string& error) {
  if (impl_->http) return true;
  impl_->http = Connect(error);
  return impl_->http != nullptr;
}

bool PrintServer::queue(const std::string& name, PrintQueue& out, std::string& error) {
  if (!connect(error)) return false;
  error.clear();
  for (const PrintQueue& q : Queues(impl_->http, error))
    if (q.name == name) {
      out = q;
      return true;
    }
  if (error.empty()) error = "打印机“" + name + "”不存在";
  return false;
}

PrintJobResult PrintServer::submit(const std::string& queue, const PrintDocument& document) {
  PrintJobResult result;
  std::string error;
  if (!connect(error)) {
    result.answer = error;
    return result;
  }
  int n = 0;
  cups_option_t* options = nullptr;
  n = cupsAddOption("copies", std::to_string(std::max(1, document.copies)).c_str(), n, &options);
  n = cupsAddOption("collate", document.collate ? "true" : "false", n, &options);
  // IPP orientation: 3 portrait, 4 landscape.
  n = cupsAddOption("orientation-requested", document.landscape ? "4" : "3", n, &options);
  if (!document.media.empty()) n = cupsAddOption("media", document.media.c_str(), n, &options);
  result.jobId = cupsPrintFile2(impl_->http, queue.c_str(), document.path.c_str(), document.title.c_str(), n, options);
  cupsFreeOptions(n, options);
  result.ok = result.jobId > 0;
  result.answer = result.ok ? ippErrorString(cupsLastError()) : std::string(cupsLastErrorString());
  if (result.answer.empty()) result.answer = ippErrorString(cupsLastError());
  return result;
}

namespace {
std::string& NextJobName() {
  static std::string name;
  return name;
}
}  // namespace

void NameNextPrintJob(std::string name) { NextJobName() = std::move(name); }
std::string TakePrintJobName() { return std::exchange(NextJobName(), {}); }

}  // namespace tv::host
