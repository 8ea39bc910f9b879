#pragma once
// Reads a written .xlsx back as a spreadsheet program would: the package opened by libzip, a cell's
// text, formula and number format looked up through the shared strings and the styles.
#include <zip.h>

#include <cstdint>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace tv::test_support {

class XlsxReader {
 public:
  explicit XlsxReader(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << file.rdbuf();
    zip_ = bytes.str();
    sheet_ = Entry("xl/worksheets/sheet1.xml");
    const std::string strings = Entry("xl/sharedStrings.xml");
    for (std::size_t at = 0; (at = strings.find("<si>", at)) != std::string::npos; ++at)
      strings_.push_back(Unescape(Between(strings, strings.find("<t", at), "</t>")));
    const std::string styles = Entry("xl/styles.xml");
    for (std::size_t at = 0; (at = styles.find("<numFmt ", at)) != std::string::npos; ++at)
      formats_[std::stoi(Attribute(styles, at, "numFmtId"))] = Unescape(Attribute(styles, at, "formatCode"));
    const std::size_t xfs = styles.find("<cellXfs");
    for (std::size_t at = xfs; (at = styles.find("<xf ", at)) != std::string::npos; ++at)
      xfFormats_.push_back(std::stoi(Attribute(styles, at, "numFmtId")));
  }

  bool ok() const { return !sheet_.empty(); }
  const std::string& sheetXml() const { return sheet_; }

  // Text or number as written, the formula without "=", and the number format's code.
  struct Cell {
    std::string value;
    std::string formula;
    std::string format;
  };
  std::optional<Cell> cell(const std::string& ref) const {
    const std::size_t at = sheet_.find("<c r=\"" + ref + "\"");
    if (at == std::string::npos) return std::nullopt;
    const std::size_t tagEnd = sheet_.find('>', at);
    const bool empty = sheet_[tagEnd - 1] == '/';
    const std::string xml = sheet_.substr(at, empty ? tagEnd + 1 - at : sheet_.find("</c>", at) - at);
    Cell c;
    const std::string s = Attribute(xml, 0, "s");
    const int xf = s.empty() ? 0 : std::stoi(s);
    const int id = xf < static_cast<int>(xfFormats_.size()) ? xfFormats_[static_cast<std::size_t>(xf)] : 0;
    static const std::map<int, std::string> kBuiltIn{{0, ""}, {1, "0"}, {2, "0.00"}, {49, "@"}};
    c.format = formats_.count(id) ? formats_.at(id) : kBuiltIn.count(id) ? kBuiltIn.at(id) : std::to_string(id);
    if (xml.find("<f>") != std::string::npos) c.formula = Unescape(Between(xml, xml.find("<f"), "</f>"));
    const std::string v = xml.find("<v") != std::string::npos ? Between(xml, xml.find("<v"), "</v>") : "";
    c.value = Attribute(xml, 0, "t") == "s" && !v.empty() ? strings_.at(std::stoul(v)) : v;
    return c;
  }

  // One entry of the package, inflated by libzip; empty when the package or the entry is missing.
  std::string Entry(const std::string& name) const {
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t* source = zip_source_buffer_create(zip_.data(), zip_.size(), 0, &error);
    zip_t* archive = source ? zip_open_from_source(source, ZIP_RDONLY, &error) : nullptr;
    zip_error_fini(&error);
    if (!archive) {
      if (source) zip_source_free(source);
      return {};
    }
    std::string out;
    zip_stat_t st;
    if (zip_stat(archive, name.c_str(), 0, &st) == 0 && (st.valid & ZIP_STAT_SIZE)) {
      if (zip_file_t* file = zip_fopen(archive, name.c_str(), 0)) {
        out.resize(static_cast<std::size_t>(st.size));
        if (zip_fread(file, out.data(), st.size) != static_cast<zip_int64_t>(st.size)) out.clear();
        zip_fclose(file);
      }
    }
    zip_discard(archive);  // read only: frees the source too
    return out;
  }

 private:
  static std::string Between(const std::string& xml, std::size_t open, const std::string& close) {
    const std::size_t start = xml.find('>', open) + 1;
    return xml.substr(start, xml.find(close, start) - start);
  }
  static std::string Attribute(const std::string& xml, std::size_t at, const std::string& name) {
    const std::size_t tagEnd = xml.find('>', at);
    const std::size_t a = xml.find(" " + name + "=\"", at);
    if (a == std::string::npos || a > tagEnd) return {};
    const std::size_t start = a + name.size() + 3;
    return xml.substr(start, xml.find('"', start) - start);
  }
  static std::string Unescape(std::string s) {
    for (const auto& [from, to] : {std::pair<std::string, std::string>{"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""},
                                   {"&amp;", "&"}})
      for (std::size_t at; (at = s.find(from)) != std::string::npos;) s.replace(at, from.size(), to);
    return s;
  }

  std::string zip_;
  std::string sheet_;
  std::vector<std::string> strings_;
  std::map<int, std::string> formats_;
  std::vector<int> xfFormats_;
};

}  // namespace tv::test_support
