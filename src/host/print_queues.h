#pragma once
// The printers of the machine: the print queues of the print server (CUPS_SERVER, else the local
// one), their media, and jobs sent to them. Every call is bounded in time: a server that doesn't
// answer, a printer that is gone or a queue that refuses gives a message, never a wait without end.
#include <string>
#include <vector>

namespace tv::host {

// The output format code of a print queue taken as a plot device (the file formats are 0 to 6).
inline constexpr int kPrintQueueFormat = 16;

struct PrintMedium {
  std::string name;                 // the name the queue takes as "media" ("iso_a4_210x297mm", "A4")
  double widthMm = 0, heightMm = 0;  // as the queue describes it, upright
  // The edges the printer can't reach, in millimetres.
  double leftMm = 0, bottomMm = 0, rightMm = 0, topMm = 0;
  std::string label;  // as users read it ("A3"), from the queue's own wording; empty: the name
};

struct PrintQueue {
  std::string name;
  bool isDefault = false;
  bool accepting = true;  // false: the queue refuses new jobs
  bool paused = false;    // the queue takes jobs but holds them until it is resumed
  std::string info;       // the queue's description, as the server gives it
};

// The queues, the default one first, then the others in the server's order. Empty with the
// reason in `error` when the server can't be reached.
std::vector<PrintQueue> ListPrintQueues(std::string* error = nullptr);

// The media a queue offers (from its PPD or its IPP attributes), in the server's order. Empty with
// the reason in `error` for an unknown queue or a server that can't be reached.
std::vector<PrintMedium> QueueMedia(const std::string& queue, std::string* error = nullptr);


struct PrintDocument {
  std::string path;        // a PDF
  std::string title;       // the job's name
  std::string media;       // a name of QueueMedia, or empty: the queue's own choice
  bool landscape = false;  // the sheet lies across
  int copies = 1;
  bool collate = false;
};

struct PrintJobResult {
  bool ok = false;
  int jobId = 0;
  std::string answer;  // the server's answer: "successful-ok", or its message for a refusal
};

// A session with the print server, kept open over the jobs of one run.
class PrintServer {
 public:
  PrintServer();
  ~PrintServer();
  PrintServer(const PrintServer&) = delete;
  PrintServer& operator=(const PrintServer&) = delete;

  // False with the reason when the server can't be reached.
  bool connect(std::string& error);
  // The queue as the server sees it now; false when it isn't there any more.
  bool queue(const std::string& name, PrintQueue& out, std::string& error);
  // Sends one PDF as one job.
  PrintJobResult submit(const std::string& queue, const PrintDocument& document);

 private:
  struct Impl;
  Impl* impl_;
};

// The name the next job sent to a printer takes (a sheet's name); taken once, then forgotten.
void NameNextPrintJob(std::string name);
std::string TakePrintJobName();

// How long one exchange with the print server may take, in seconds.
inline constexpr double kPrintServerTimeout = 20.0;

}  // namespace tv::host
