#pragma once
// Reads a DWF (DWFx) package back: its parts by libzip, and the pages its fixed document lists.
#include <zip.h>

#include <regex>
#include <string>
#include <utility>
#include <vector>

namespace tv::test_support {

// The names of the package's parts, in the order they are stored; empty when it isn't a zip.
inline std::vector<std::string> ZipEntries(const std::string& path) {
  std::vector<std::string> names;
  int code = 0;
  zip_t* z = zip_open(path.c_str(), ZIP_RDONLY, &code);
  if (!z) return names;
  for (zip_int64_t i = 0; i < zip_get_num_entries(z, 0); ++i) names.emplace_back(zip_get_name(z, static_cast<zip_uint64_t>(i), 0));
  zip_discard(z);
  return names;
}

// One part, inflated; empty when the package or the part is missing.
inline std::string ZipEntry(const std::string& path, const std::string& name) {
  std::string text;
  int code = 0;
  zip_t* z = zip_open(path.c_str(), ZIP_RDONLY, &code);
  if (!z) return text;
  if (zip_file_t* f = zip_fopen(z, name.c_str(), 0)) {
    char buf[65536];
    for (zip_int64_t n; (n = zip_fread(f, buf, sizeof buf)) > 0;) text.append(buf, static_cast<std::size_t>(n));
    zip_fclose(f);
  }
  zip_discard(z);
  return text;
}

// The number in `name="…"` of the first such attribute; -1 when there is none.
inline double XmlNumber(const std::string& xml, const std::string& name) {
  std::smatch m;
  const std::regex re(" " + name + "=\"([0-9.]+)\"");
  return std::regex_search(xml, m, re) ? std::stod(m[1].str()) : -1;
}

// The pages the package's fixed document lists, in order: width and height in millimetres.
inline std::vector<std::pair<double, double>> XpsPagesMm(const std::string& path) {
  const std::string doc = ZipEntry(path, "Documents/1/FixedDocument.fdoc");
  const std::regex page("<PageContent [^>]*Width=\"([0-9.]+)\" Height=\"([0-9.]+)\"");
  std::vector<std::pair<double, double>> pages;
  for (auto it = std::sregex_iterator(doc.begin(), doc.end(), page); it != std::sregex_iterator(); ++it)
    pages.emplace_back(std::stod((*it)[1].str()) * 25.4 / 96, std::stod((*it)[2].str()) * 25.4 / 96);
  return pages;
}

}  // namespace tv::test_support
