#include "private_cupsd.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <thread>
#include <vector>

namespace tv::test_support {

namespace {

namespace fs = std::filesystem;

constexpr const char* kCupsd = "/usr/sbin/cupsd";
constexpr const char* kSystemServerBin = "/usr/lib/cups";

void Put(const fs::path& path, const std::string& text, fs::perms perms = fs::perms(0644)) {
  std::ofstream(path, std::ios::binary) << text;
  std::error_code ec;
  fs::permissions(path, perms, ec);
}

// A port of 127.0.0.1 that was free a moment ago.
int FreePort() {
  const int s = ::socket(AF_INET, SOCK_STREAM, 0);
  if (s < 0) return -1;
  sockaddr_in a{};
  a.sin_family = AF_INET;
  a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t len = sizeof a;
  int port = -1;
  if (::bind(s, reinterpret_cast<sockaddr*>(&a), sizeof a) == 0 &&
      ::getsockname(s, reinterpret_cast<sockaddr*>(&a), &len) == 0)
    port = ntohs(a.sin_port);
  ::close(s);
  return port;
}

// The last lines of a log, for the reason a server didn't start.
std::string ReadTail(const fs::path& path) {
  std::ifstream in(path);
  std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  if (text.size() > 400) text = text.substr(text.size() - 400);
  return text;
}

bool Listening(int port) {
  const int s = ::socket(AF_INET, SOCK_STREAM, 0);
  if (s < 0) return false;
  sockaddr_in a{};
  a.sin_family = AF_INET;
  a.sin_port = htons(static_cast<std::uint16_t>(port));
  a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const bool ok = ::connect(s, reinterpret_cast<sockaddr*>(&a), sizeof a) == 0;
  ::close(s);
  return ok;
}

// A PostScript-free PPD: the queue takes PDF as it is, on ISO A4 to A0.
std::string Ppd() {
  struct Size {
    const char* name;
    int w, h;
  };
  static constexpr Size kSizes[] = {{"A4", 595, 842}, {"A3", 842, 1191}, {"A2", 1191, 1684}, {"A1", 1684, 2384}, {"A0", 2384, 3370}};
  std::ostringstream p;
  p << "*PPD-Adobe: \"4.3\"\n*FormatVersion: \"4.3\"\n*FileVersion: \"1.0\"\n*LanguageVersion: English\n"
       "*LanguageEncoding: ISOLatin1\n*PCFileName: \"TVPAPER.PPD\"\n*Manufacturer: \"Test\"\n*Product: \"(Test)\"\n"
       "*ModelName: \"Test paper\"\n*ShortNickName: \"Test paper\"\n*NickName: \"Test paper\"\n"
       "*PSVersion: \"(3010.000) 0\"\n*LanguageLevel: \"3\"\n*ColorDevice: True\n*DefaultColorSpace: RGB\n"
       "*FileSystem: False\n*Throughput: \"1\"\n*LandscapeOrientation: Plus90\n*TTRasterizer: Type42\n"
       "*cupsVersion: 2.4\n*cupsFilter: \"application/pdf 0 -\"\n";
  for (const char* ui : {"PageSize", "PageRegion"}) {
    p << "*OpenUI *" << ui << ": PickOne\n*OrderDependency: 10 AnySetup *" << ui << "\n*Default" << ui << ": A4\n";
    for (const Size& s : kSizes)
      p << "*" << ui << " " << s.name << "/" << s.name << ": \"<</PageSize[" << s.w << " " << s.h << "]>>setpagedevice\"\n";
    p << "*CloseUI: *" << ui << "\n";
  }
  p << "*DefaultImageableArea: A4\n";
  // A printer's usual unprintable edge of 12 points (4.23 mm) all round.
  for (const Size& s : kSizes)
    p << "*ImageableArea " << s.name << "/" << s.name << ": \"12 12 " << s.w - 12 << " " << s.h - 12 << "\"\n";
  p << "*DefaultPaperDimension: A4\n";
  for (const Size& s : kSizes) p << "*PaperDimension " << s.name << "/" << s.name << ": \"" << s.w << " " << s.h << "\"\n";
  return p.str();
}

// The backend: each job's document becomes "job-N.pdf" in the folder of the device URI, written
// under another name first so that a file seen is complete.
constexpr const char* kBackend =
    "#!/bin/sh\n"
    "[ $# -eq 0 ] && { echo 'direct tvfile \"Unknown\" \"Test file output\"'; exit 0; }\n"
    "umask 022\n"
    "dir=\"${DEVICE_URI#tvfile:}\"\n"
    "if [ -n \"$6\" ]; then cat \"$6\"; else cat; fi > \"$dir/.job-$1.part\" || exit 1\n"
    "mv \"$dir/.job-$1.part\" \"$dir/job-$1.pdf\"\n";

std::string QueueBlock(const char* tag, const char* name, const fs::path& out, bool accepting, bool stopped,
                       int kLimit = 0) {
  std::ostringstream b;
  b << "<" << tag << " " << name << ">\nInfo Test queue " << name << "\nDeviceURI tvfile:" << (out / name).string()
    << "\nState " << (stopped ? "Stopped" : "Idle") << "\nStateTime 0\nAccepting " << (accepting ? "Yes" : "No")
    << "\nShared No\nJobSheets none none\nQuotaPeriod " << (kLimit ? 86400 : 0) << "\nPageLimit 0\nKLimit " << kLimit
    << "\nOpPolicy default\n"
       "ErrorPolicy abort-job\n</"
    << tag << ">\n";
  return b.str();
}

std::unique_ptr<PrivateCupsd>& Instance() {
  static std::unique_ptr<PrivateCupsd> instance;
  return instance;
}

}  // namespace

PrivateCupsd* PrivateCupsd::Get(std::string& why) {
  static std::string failure;
  static bool tried = false;
  if (!tried) {
    tried = true;
    std::unique_ptr<PrivateCupsd> server(new PrivateCupsd);
    if (server->start(failure)) Instance() = std::move(server);
  }
  why = failure;
  return Instance().get();
}

bool PrivateCupsd::start(std::string& why) {
  std::error_code ec;
  if (!fs::exists(kCupsd, ec)) {
    why = std::string(kCupsd) + " is not installed (Debian package cups-daemon)";
    return false;
  }
  std::string pattern = (fs::temp_directory_path() / "tv_cupsd_XXXXXX").string();
  if (!::mkdtemp(pattern.data())) {
    why = "no temporary folder for cupsd";
    return false;
  }
  root_ = pattern;
  const fs::perms open = fs::perms(0755);
  for (const char* d : {"conf", "conf/ppd", "spool", "spool/tmp", "cache", "state", "log", "bin", "bin/backend", "out"}) {
    fs::create_directories(root_ / d, ec);
    fs::permissions(root_ / d, open, ec);
  }
  fs::permissions(root_, open, ec);
  // The system's filters and helpers, beside a backend of the tests' own.
  for (const char* d : {"filter", "daemon", "cgi-bin", "notifier", "monitor", "driver"})
    fs::create_directory_symlink(fs::path(kSystemServerBin) / d, root_ / "bin" / d, ec);
  Put(root_ / "bin/backend/tvfile", kBackend, fs::perms(0755));

  const int port = FreePort();
  if (port <= 0) {
    why = "no free port on 127.0.0.1";
    return false;
  }
  server_ = "127.0.0.1:" + std::to_string(port);
  const fs::path conf = root_ / "conf";
  Put(conf / "cupsd.conf",
      "LogLevel warn\nListen " + server_ +
          "\nBrowsing Off\nBrowseLocalProtocols none\nDefaultAuthType None\nWebInterface No\n"
          "PreserveJobHistory No\nPreserveJobFiles No\nMaxJobs 0\nJobRetryLimit 0\n"
          "<Location />\n  Order allow,deny\n  Allow all\n</Location>\n"
          "<Policy default>\n  <Limit All>\n    Order deny,allow\n  </Limit>\n</Policy>\n");
  const fs::path log = root_ / "log";
  Put(conf / "cups-files.conf", "ServerRoot " + conf.string() + "\nRequestRoot " + (root_ / "spool").string() +
                                    "\nTempDir " + (root_ / "spool/tmp").string() + "\nCacheDir " +
                                    (root_ / "cache").string() + "\nStateDir " + (root_ / "state").string() +
                                    "\nServerBin " + (root_ / "bin").string() + "\nAccessLog " +
                                    (log / "access_log").string() + "\nErrorLog " + (log / "error_log").string() +
                                    "\nPageLog " + (log / "page_log").string() + "\nFileDevice No\n");
  const fs::path out = root_ / "out";
  std::string printers = QueueBlock("DefaultPrinter", kPaperQueue, out, true, false) +
                         QueueBlock("Printer", kRefusingQueue, out, false, false) +
                         QueueBlock("Printer", kPausedQueue, out, true, true) +
                         QueueBlock("Printer", kFullQueue, out, true, false, 1);
  Put(conf / "printers.conf", printers, fs::perms(0600));
  for (const char* q : {kPaperQueue, kRefusingQueue, kPausedQueue, kFullQueue}) {
    Put(conf / "ppd" / (std::string(q) + ".ppd"), Ppd());
    // The backend runs as the server's user, not as the tests' one.
    fs::create_directories(out / q, ec);
    fs::permissions(out / q, fs::perms(0777), ec);
  }

  const std::string confArg = (conf / "cupsd.conf").string(), filesArg = (conf / "cups-files.conf").string();
  const pid_t pid = ::fork();
  if (pid < 0) {
    why = "fork failed";
    return false;
  }
  if (pid == 0) {
    const int null = ::open("/dev/null", O_RDWR);
    if (null >= 0) {
      ::dup2(null, STDIN_FILENO);
      ::dup2(null, STDOUT_FILENO);
      ::dup2(null, STDERR_FILENO);
    }
    ::execl(kCupsd, kCupsd, "-f", "-c", confArg.c_str(), "-s", filesArg.c_str(), static_cast<char*>(nullptr));
    ::_exit(127);
  }
  pid_ = pid;
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(15);
  while (std::chrono::steady_clock::now() < deadline) {
    int status = 0;
    if (::waitpid(pid_, &status, WNOHANG) == pid_) {
      pid_ = -1;
      std::string tail = ReadTail(log / "error_log");
      why = "cupsd ended at start" + (tail.empty() ? std::string() : ": " + tail);
      return false;
    }
    if (Listening(port)) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  why = "cupsd did not listen on " + server_ + " within 15 s";
  stop();
  return false;
}

void PrivateCupsd::clearOutputs() const {
  std::error_code ec;
  for (const char* q : {kPaperQueue, kRefusingQueue, kPausedQueue, kFullQueue})
    for (const fs::directory_entry& e : fs::directory_iterator(outputOf(q), ec)) fs::remove(e.path(), ec);
}

bool PrivateCupsd::waitForFiles(const std::string& queue, std::size_t count, double seconds) const {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
  while (true) {
    std::size_t n = 0;
    std::error_code ec;
    for (const fs::directory_entry& e : fs::directory_iterator(outputOf(queue), ec))
      if (e.path().extension() == ".pdf") ++n;
    if (n >= count) return n == count;
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
}

void PrivateCupsd::StopShared() {
  if (Instance()) Instance()->stop();
}

void PrivateCupsd::stop() {
  if (pid_ > 0) {
    ::kill(pid_, SIGTERM);
    int status = 0;
    for (int i = 0; i < 100 && ::waitpid(pid_, &status, WNOHANG) == 0; ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    if (::waitpid(pid_, &status, WNOHANG) == 0) {
      ::kill(pid_, SIGKILL);
      ::waitpid(pid_, &status, 0);
    }
    pid_ = -1;
  }
  std::error_code ec;
  if (!root_.empty()) fs::remove_all(root_, ec);
  root_.clear();
}

PrivateCupsd::~PrivateCupsd() { stop(); }

}  // namespace tv::test_support
