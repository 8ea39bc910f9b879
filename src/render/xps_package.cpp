#include "render/xps_package.h"

#include <zip.h>

#include <cstdlib>
#include <memory>

namespace tv::render {

namespace {

constexpr const char* kXpsNamespace = "http://schemas.microsoft.com/xps/2005/06";

struct ArchiveCloser {
  void operator()(zip_t* z) const { zip_discard(z); }
};
using ArchivePtr = std::unique_ptr<zip_t, ArchiveCloser>;

std::string PagePart(int page) { return "Documents/1/Pages/" + std::to_string(page) + ".fpage"; }
std::string ResourceFolder(int page) { return "Documents/1/Resources/" + std::to_string(page) + "/"; }

std::string Number(double v) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3f", v);
  return text;
}

std::string ContentTypes() {
  return std::string(
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">"
      "<Default Extension=\"rels\" ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/>"
      "<Default Extension=\"xml\" ContentType=\"application/xml\"/>"
      "<Default Extension=\"fdseq\" ContentType=\"application/vnd.ms-package.xps-fixeddocumentsequence+xml\"/>"
      "<Default Extension=\"fdoc\" ContentType=\"application/vnd.ms-package.xps-fixeddocument+xml\"/>"
      "<Default Extension=\"fpage\" ContentType=\"application/vnd.ms-package.xps-fixedpage+xml\"/>"
      "<Default Extension=\"png\" ContentType=\"image/png\"/>"
      "<Default Extension=\"ttf\" ContentType=\"application/vnd.ms-opentype\"/>"
      "<Default Extension=\"otf\" ContentType=\"application/vnd.ms-opentype\"/>"
      "</Types>");
}

std::string RootRelationships() {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
         "<Relationship Id=\"R1\" Type=\"http://schemas.microsoft.com/xps/2005/06/fixedrepresentation\" "
         "Target=\"/FixedDocumentSequence.fdseq\"/></Relationships>";
}

std::string Sequence() {
  return std::string("<FixedDocumentSequence xmlns=\"") + kXpsNamespace +
         "\"><DocumentReference Source=\"/Documents/1/FixedDocument.fdoc\"/></FixedDocumentSequence>";
}

std::string Document(const std::vector<XpsPage>& pages) {
  std::string text = std::string("<FixedDocument xmlns=\"") + kXpsNamespace + "\">";
  for (const XpsPage& p : pages)
    text += "<PageContent Source=\"/" + PagePart(p.number) + "\" Width=\"" + Number(p.widthUnits) + "\" Height=\"" +
            Number(p.heightUnits) + "\"/>";
  return text + "</FixedDocument>";
}

// The pictures and fonts a page needs, so that a reader fetches them with the page.
std::string PageRelationships(const XpsPage& page) {
  std::string text =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">";
  int id = 0;
  for (const XpsResource& r : page.resources)
    text += "<Relationship Id=\"R" + std::to_string(++id) +
            "\" Type=\"http://schemas.microsoft.com/xps/2005/06/required-resource\" Target=\"" +
            XpsResourceUri(page.number, r.name) + "\"/>";
  return text + "</Relationships>";
}

// The value of `name="…"` in the first tag of `xml`, as a number.
double Attribute(const std::string& xml, const std::string& name) {
  const std::size_t end = xml.find('>');
  const std::size_t at = xml.find(" " + name + "=\"");
  if (at == std::string::npos || at > end) return 0;
  return std::strtod(xml.c_str() + at + name.size() + 3, nullptr);
}

bool ReadEntry(zip_t* z, zip_int64_t index, std::string& out) {
  zip_stat_t st;
  if (zip_stat_index(z, static_cast<zip_uint64_t>(index), 0, &st) != 0 || !(st.valid & ZIP_STAT_SIZE)) return false;
  zip_file_t* f = zip_fopen_index(z, static_cast<zip_uint64_t>(index), 0);
  if (!f) return false;
  out.resize(static_cast<std::size_t>(st.size));
  const zip_int64_t got = out.empty() ? 0 : zip_fread(f, out.data(), out.size());
  zip_fclose(f);
  return got == static_cast<zip_int64_t>(out.size());
}

void ReplaceAll(std::string& text, const std::string& from, const std::string& to) {
  if (from == to) return;
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
}

}  // namespace

std::string XpsResourceUri(int page, const std::string& name) { return "/" + ResourceFolder(page) + name; }

bool WriteXpsPackage(const std::string& path, std::vector<XpsPage> pages, std::string& error) {
  int code = 0;
  ArchivePtr z(zip_open(path.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &code));
  if (!z) {
    error = "cannot create " + path;
    return false;
  }
  // libzip reads the buffers at close: they live here until then.
  std::vector<std::pair<std::string, std::string>> parts;
  parts.reserve(5 + 3 * pages.size());
  parts.emplace_back("[Content_Types].xml", ContentTypes());
  parts.emplace_back("_rels/.rels", RootRelationships());
  parts.emplace_back("FixedDocumentSequence.fdseq", Sequence());
  parts.emplace_back("Documents/1/FixedDocument.fdoc", Document(pages));
  for (XpsPage& p : pages) {
    if (!p.resources.empty())
      parts.emplace_back("Documents/1/Pages/_rels/" + std::to_string(p.number) + ".fpage.rels", PageRelationships(p));
    parts.emplace_back(PagePart(p.number), std::move(p.markup));
    for (XpsResource& r : p.resources) parts.emplace_back(ResourceFolder(p.number) + r.name, std::move(r.bytes));
  }
  for (const auto& [name, bytes] : parts) {
    zip_source_t* source = zip_source_buffer(z.get(), bytes.data(), bytes.size(), 0);
    if (!source) {
      error = "out of memory";
      return false;
    }
    const zip_int64_t index = zip_file_add(z.get(), name.c_str(), source, ZIP_FL_ENC_UTF_8 | ZIP_FL_OVERWRITE);
    if (index < 0) {
      zip_source_free(source);
      error = zip_strerror(z.get());
      return false;
    }
    // Pictures are compressed already. Markup at the usual level: half the size of the fastest
    // level for the time of the PDF of the same page (the fastest takes two thirds of it).
    const bool png = name.ends_with(".png");
    zip_set_file_compression(z.get(), static_cast<zip_uint64_t>(index), png ? ZIP_CM_STORE : ZIP_CM_DEFLATE, png ? 0 : 6);
  }
  if (zip_close(z.get()) != 0) {
    error = zip_strerror(z.get());
    return false;
  }
  z.release();
  return true;
}

bool ReadXpsPages(const std::string& path, int firstNumber, std::vector<XpsPage>& pages, std::string& error) {
  int code = 0;
  ArchivePtr z(zip_open(path.c_str(), ZIP_RDONLY, &code));
  if (!z) {
    error = "cannot open " + path;
    return false;
  }
  const std::size_t before = pages.size();
  for (int page = 1;; ++page) {
    const zip_int64_t index = zip_name_locate(z.get(), PagePart(page).c_str(), 0);
    if (index < 0) break;
    XpsPage p;
    p.number = firstNumber + page - 1;
    if (!ReadEntry(z.get(), index, p.markup)) {
      error = "damaged page in " + path;
      return false;
    }
    p.widthUnits = Attribute(p.markup, "Width");
    p.heightUnits = Attribute(p.markup, "Height");
    const std::string folder = ResourceFolder(page);
    const zip_int64_t count = zip_get_num_entries(z.get(), 0);
    for (zip_int64_t i = 0; i < count; ++i) {
      const char* name = zip_get_name(z.get(), static_cast<zip_uint64_t>(i), 0);
      if (!name || !std::string_view(name).starts_with(folder)) continue;
      XpsResource r{std::string(name + folder.size()), {}};
      if (!ReadEntry(z.get(), i, r.bytes)) {
        error = "damaged resource in " + path;
        return false;
      }
      p.resources.push_back(std::move(r));
    }
    ReplaceAll(p.markup, "/" + folder, "/" + ResourceFolder(p.number));
    pages.push_back(std::move(p));
  }
  if (pages.size() == before) {
    error = path + " holds no pages";
    return false;
  }
  return true;
}

bool MergeXpsPackages(const std::vector<std::string>& sources, const std::string& target, std::string& error) {
  std::vector<XpsPage> pages;
  for (const std::string& source : sources)
    if (!ReadXpsPages(source, static_cast<int>(pages.size()) + 1, pages, error)) return false;
  return WriteXpsPackage(target, std::move(pages), error);
}

}  // namespace tv::render
