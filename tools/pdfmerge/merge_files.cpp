#include "merge_files.h"

#define POINTERHOLDER_TRANSITION 4  // std::shared_ptr only: no deprecated PointerHolder
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>
#include <qpdf/QPDFOutlineDocumentHelper.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFPageObjectHelper.hh>
#include <qpdf/QPDFWriter.hh>
#include <unistd.h>

#include <charconv>
#include <exception>
#include <filesystem>
#include <map>
#include <memory>
#include <system_error>

namespace tv::pdfmerge {

namespace {

namespace fs = std::filesystem;

// Links the outline items of the merged pages into the document's outline tree.
void WriteOutline(QPDF& out, const std::vector<std::pair<QPDFObjectHandle, std::string>>& marks) {
  QPDFObjectHandle outlines = out.makeIndirectObject(QPDFObjectHandle::newDictionary());
  outlines.replaceKey("/Type", QPDFObjectHandle::newName("/Outlines"));
  std::vector<QPDFObjectHandle> items;
  for (const auto& [page, title] : marks) {
    QPDFObjectHandle item = out.makeIndirectObject(QPDFObjectHandle::newDictionary());
    item.replaceKey("/Title", QPDFObjectHandle::newUnicodeString(title));
    item.replaceKey("/Parent", outlines);
    QPDFObjectHandle dest = QPDFObjectHandle::newArray();
    dest.appendItem(page);
    dest.appendItem(QPDFObjectHandle::newName("/Fit"));
    item.replaceKey("/Dest", dest);
    items.push_back(item);
  }
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (i > 0) items[i].replaceKey("/Prev", items[i - 1]);
    if (i + 1 < items.size()) items[i].replaceKey("/Next", items[i + 1]);
  }
  if (!items.empty()) {
    outlines.replaceKey("/First", items.front());
    outlines.replaceKey("/Last", items.back());
  }
  outlines.replaceKey("/Count", QPDFObjectHandle::newInteger(static_cast<long long>(items.size())));
  QPDFObjectHandle root = out.getRoot();
  root.replaceKey("/Outlines", outlines);
  root.replaceKey("/PageMode", QPDFObjectHandle::newName("/UseOutlines"));
}

std::string WithoutCr(std::string line) {
  if (!line.empty() && line.back() == '\r') line.pop_back();
  return line;
}

}  // namespace

bool MergeFiles(const std::vector<MergeEntry>& entries, const std::string& target, std::string& error,
                std::vector<std::string>* skipped) {
  std::error_code ec;
  fs::remove(target, ec);
  if (fs::exists(target, ec)) {
    error = "无法删除旧的文件 " + target;
    return false;
  }
  const fs::path targetPath(target);
  const std::string temp =
      (targetPath.parent_path() / (".tvmerge-" + std::to_string(::getpid()) + ".part")).string();
  try {
    QPDF out;
    out.emptyPDF();
    QPDFPageDocumentHelper outPages(out);
    // The sources must outlive the write: their pages are copied lazily.
    std::vector<std::unique_ptr<QPDF>> sources;
    std::vector<std::pair<QPDFObjectHandle, std::string>> marks;
    for (const MergeEntry& entry : entries) {
      auto source = std::make_unique<QPDF>();
      try {
        source->processFile(entry.path.c_str());
        // Sizes and rotations a page inherits from its page tree travel with the page.
        source->pushInheritedAttributesToPage();
      } catch (const std::exception&) {
        if (skipped) skipped->push_back(entry.path);
        continue;
      }
      // The source's own entries, by the page they open, when they are to be kept.
      std::map<QPDFObjGen, std::vector<std::string>> outline;
      if (entry.keepOutline) {
        QPDFOutlineDocumentHelper outlines(*source);
        for (QPDFOutlineObjectHelper& item : outlines.getTopLevelOutlines()) {
          QPDFObjectHandle page = item.getDestPage();
          if (page.isDictionary()) outline[page.getObjGen()].push_back(item.getTitle());
        }
      }
      bool first = true;
      for (QPDFPageObjectHelper& page : QPDFPageDocumentHelper(*source).getAllPages()) {
        const QPDFObjGen from = page.getObjectHandle().getObjGen();
        outPages.addPage(page, false);
        const QPDFObjectHandle added = outPages.getAllPages().back().getObjectHandle();
        if (outline.empty()) {
          if (first) marks.emplace_back(added, entry.bookmark);
        } else if (const auto it = outline.find(from); it != outline.end()) {
          for (const std::string& title : it->second) marks.emplace_back(added, title);
        }
        first = false;
      }
      if (first && skipped) skipped->push_back(entry.path);  // a file without pages
      sources.push_back(std::move(source));
    }
    if (marks.empty()) {
      error = "没有可合并的页面";
      return false;
    }
    WriteOutline(out, marks);
    QPDFWriter writer(out, temp.c_str());
    writer.setObjectStreamMode(qpdf_o_generate);
    writer.setCompressStreams(true);
    writer.write();
  } catch (const std::exception& e) {
    fs::remove(temp, ec);
    error = e.what();
    return false;
  }
  fs::rename(temp, target, ec);
  if (ec) {
    fs::remove(temp, ec);
    error = ec.message();
    return false;
  }
  return true;
}

bool ParseMergeList(const std::string& text, std::string& target, std::vector<MergeEntry>& entries) {
  std::vector<std::string> lines;
  std::size_t start = text.rfind("\xEF\xBB\xBF", 0) == 0 ? 3 : 0;
  while (start <= text.size()) {
    const std::size_t end = text.find('\n', start);
    if (end == std::string::npos) {
      if (start < text.size()) lines.push_back(WithoutCr(text.substr(start)));
      break;
    }
    lines.push_back(WithoutCr(text.substr(start, end - start)));
    start = end + 1;
  }
  if (lines.size() < 2 || lines[0].empty()) return false;
  std::size_t count = 0;
  const auto [p, rc] = std::from_chars(lines[1].data(), lines[1].data() + lines[1].size(), count);
  if (rc != std::errc() || p != lines[1].data() + lines[1].size() || lines.size() < 2 + 2 * count) return false;
  target = lines[0];
  entries.clear();
  for (std::size_t i = 0; i < count; ++i) entries.push_back({lines[2 + 2 * i], lines[3 + 2 * i]});
  return true;
}

bool ReadMarkers(const std::string& markerFolder, const std::string& pdfFolder, std::vector<MergeEntry>& entries) {
  std::size_t count = 0;
  bool counted = false;
  std::map<std::size_t, std::string> names;
  std::error_code ec;
  for (const fs::directory_entry& e : fs::directory_iterator(markerFolder, ec)) {
    const std::string name = e.path().filename().string();
    const std::size_t dot = name.rfind(".tmp");
    if (dot == std::string::npos) continue;
    const std::string tail = name.substr(dot + 4);
    if (tail == "num") {
      const auto [p, rc] = std::from_chars(name.data(), name.data() + dot, count);
      counted = rc == std::errc() && p == name.data() + dot;
      continue;
    }
    std::size_t index = 0;
    const auto [p, rc] = std::from_chars(tail.data(), tail.data() + tail.size(), index);
    if (rc == std::errc() && p == tail.data() + tail.size() && !tail.empty()) names[index] = name.substr(0, dot);
  }
  if (!counted) return false;
  entries.clear();
  for (std::size_t i = 1; i <= count; ++i) {
    const auto it = names.find(i);
    entries.push_back({(fs::path(pdfFolder) / (std::to_string(i) + ".pdf")).string(),
                       it == names.end() ? std::to_string(i) : it->second});
  }
  return true;
}

}  // namespace tv::pdfmerge
