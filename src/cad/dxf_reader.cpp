#include "cad/dxf_reader.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <fstream>
#include <utility>

#include "cad/dxf_reader_internal.h"

namespace tv::cad {

namespace dxf_read {

namespace {

constexpr std::uint64_t kProgressStep = std::uint64_t{4} << 20;

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

bool IsSectionEnd(std::string_view name) { return name == "ENDSEC" || name == "SECTION" || name == "EOF"; }

}  // namespace

std::string Format(const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  va_list copy;
  va_copy(copy, args);
  char buf[512];
  int n = std::vsnprintf(buf, sizeof buf, fmt, args);
  va_end(args);
  std::string out;
  if (n >= 0 && static_cast<std::size_t>(n) < sizeof buf) {
    out.assign(buf, static_cast<std::size_t>(n));
  } else if (n >= 0) {
    out.resize(static_cast<std::size_t>(n) + 1);
    std::vsnprintf(out.data(), out.size(), fmt, copy);
    out.resize(static_cast<std::size_t>(n));
  }
  va_end(copy);
  return out;
}

std::string_view TrimBlanks(std::string_view s) {
  while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\r')) s.remove_suffix(1);
  return s;
}

// ---- reader ----------------------------------------------------------------------------------

Reader::Reader(DxfTokenizer& tok, std::string name, const DxfReadOptions& options, LineCounter countLines)
    : tok_(tok), name_(std::move(name)), options_(options), countLines_(std::move(countLines)) {}

bool Reader::fail(std::string message) {
  if (error_.empty()) error_ = std::move(message);
  return false;
}

bool Reader::failTokenizer() { return fail(Format("图纸文件 %s 无法读取：%s", name_.c_str(), tok_.error().c_str())); }

bool Reader::failIncomplete() {
  if (tok_.isBinary()) {
    return fail(Format("图纸文件 %s 不完整：偏移 %llu 处在 %s 段中意外结束", name_.c_str(),
                       static_cast<unsigned long long>(tok_.fileSize()), section_.c_str()));
  }
  std::uint64_t line = countLines_ ? countLines_() : lastLine_ + 1;
  return fail(Format("图纸文件 %s 不完整：第 %llu 行处在 %s 段中意外结束", name_.c_str(),
                     static_cast<unsigned long long>(line), section_.c_str()));
}

bool Reader::next(DxfGroup& g) {
  if (tok_.next(g)) {
    lastLine_ = g.line;
    return true;
  }
  return tok_.error().empty() ? failIncomplete() : failTokenizer();
}

bool Reader::skipToNextEntry() {
  return forEachGroupOfEntry([](const DxfGroup&) { return true; });
}

bool Reader::skipSection() {
  DxfGroup g;
  std::uint64_t count = 0;
  for (;;) {
    if (!next(g)) return false;
    if (g.code == 0) {
      std::string_view v = TrimBlanks(g.text);
      if (v == "ENDSEC") return true;
      if (v == "EOF" || v == "SECTION") {
        warn(Format("%s 段缺少 ENDSEC", section_.c_str()));
        tok_.pushBack();
        return true;
      }
    }
    if (++count % 4096 == 0) tok_.release();
  }
}

void Reader::reportProgress() {
  if (!options_.progress) return;
  std::uint64_t done = tok_.bytesRead();
  if (done < nextProgress_) return;
  nextProgress_ = done + kProgressStep;
  options_.progress(done, tok_.fileSize());
}

// ---- typed groups --------------------------------------------------------------------------

Bytes Reader::bytesOf(const DxfGroup& g) const {
  Bytes out;
  if (tok_.isBinary()) {
    out.assign(g.text.begin(), g.text.end());
    return out;
  }
  std::string_view hex = TrimBlanks(g.text);
  out.reserve(hex.size() / 2);
  for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
    int hi = HexValue(hex[i]), lo = HexValue(hex[i + 1]);
    if (hi < 0 || lo < 0) break;
    out.push_back(static_cast<std::uint8_t>(hi * 16 + lo));
  }
  return out;
}

Group Reader::toGroup(const DxfGroup& g) {
  switch (g.kind) {
    case GroupKind::String:
      if (g.code == 1005) return Group(g.code, ObjectId::fromHandleText(TrimBlanks(g.text)));
      return Group(g.code, text(g.text));
    case GroupKind::Double:
      return Group(g.code, g.real);
    case GroupKind::Handle:
      return Group(g.code, ObjectId(static_cast<std::uint64_t>(g.integer)));
    case GroupKind::Binary:
      return Group(g.code, bytesOf(g));
    default:
      return Group(g.code, g.integer);
  }
}

bool Reader::read102Into(ObjectExtras& x, const DxfGroup& open) {
  std::string_view tag = TrimBlanks(open.text);
  const bool xdict = tag == "{ACAD_XDICTIONARY";
  const bool reactors = tag == "{ACAD_REACTORS";
  if (!xdict && !reactors) x.appGroups.push_back(toGroup(open));
  DxfGroup g;
  for (;;) {
    if (!next(g)) return false;
    if (g.code == 0) {  // an unclosed group: the object ends anyway
      tok_.pushBack();
      return true;
    }
    if (g.code == 102) {
      if (TrimBlanks(g.text) == "}") {
        if (!xdict && !reactors) x.appGroups.push_back(toGroup(g));
        return true;
      }
      // A new group opens without the old one closed: start over with it.
      return read102Into(x, g);
    }
    if (xdict && g.code == 360) x.extensionDictionary = ObjectId(static_cast<std::uint64_t>(g.integer));
    else if (reactors && g.code == 330) x.reactors.emplace_back(static_cast<std::uint64_t>(g.integer));
    else if (!xdict && !reactors) x.appGroups.push_back(toGroup(g));
  }
}

bool Reader::read102(DbObject& o, const DxfGroup& open) { return read102Into(o.extras(), open); }

bool Reader::readXdata(Groups& out, const DxfGroup& first) {
  out.push_back(toGroup(first));
  return forEachGroupOfEntry([&](const DxfGroup& g) {
    out.push_back(toGroup(g));
    return true;
  });
}

bool Reader::readObjectPrefix(DbObject& o, int handleCode) {
  DxfGroup g;
  bool haveOwner = false;
  for (;;) {
    if (!next(g)) return false;
    if (g.code == handleCode || (g.code == 5 && o.id.isNull())) {
      o.id = ObjectId(static_cast<std::uint64_t>(g.integer));
      if (g.kind != GroupKind::Handle) o.id = ObjectId::fromHandleText(TrimBlanks(g.text));
      sawHandle(o.id);
    } else if (g.code == 102) {
      if (!read102(o, g)) return false;
    } else if (g.code == 330 && !haveOwner) {
      o.owner = ObjectId(static_cast<std::uint64_t>(g.integer));
      haveOwner = true;
    } else {
      tok_.pushBack();
      return true;
    }
  }
}

// ---- header ----------------------------------------------------------------------------------

bool Reader::readHeader() {
  DxfGroup g;
  HeaderVariable* current = nullptr;
  std::unordered_set<std::string> seen;
  for (;;) {
    if (!next(g)) return false;
    if (g.code == 0) {
      std::string_view v = TrimBlanks(g.text);
      if (v == "ENDSEC") break;
      warn("HEADER 段缺少 ENDSEC");
      tok_.pushBack();
      break;
    }
    if (g.code == 9) {
      std::string name(TrimBlanks(g.text));
      current = nullptr;
      if (!seen.insert(name).second) continue;  // a repeated variable: the first one counts
      db_.header.variables.push_back({std::move(name), {}});
      current = &db_.header.variables.back();
      continue;
    }
    if (!current) continue;
    // Strings stay raw until the code page is known ($DWGCODEPAGE comes after $ACADVER).
    if (g.kind == GroupKind::String && g.code != 1005) current->values.emplace_back(g.code, std::string(g.text));
    else current->values.push_back(toGroup(g));
  }
  const std::string acadver(TrimBlanks(db_.header.getString("$ACADVER")));
  if (!acadver.empty()) version_ = DxfVersionOf(acadver);
  fileHandSeed_ = db_.header.getHandle("$HANDSEED").value;
  // Handles run up to $HANDSEED, so that many objects at most are coming, and fewer when handles
  // were left unused; the file size bounds a seed far above the objects it holds.
  constexpr std::uint64_t kObjectBytesAtLeast = 96;
  db_.reserveObjects(static_cast<std::size_t>(std::min(fileHandSeed_, tok_.fileSize() / kObjectBytesAtLeast)));
  if (!ensureDecoder()) return false;
  for (auto& var : db_.header.variables)
    for (auto& value : var.values)
      if (auto* s = std::get_if<std::string>(&value.value)) *s = text(*s);
  return true;
}

bool Reader::ensureDecoder() {
  if (decoderChecked_) return decoder_.has_value();
  decoderChecked_ = true;
  if (version_ >= DxfVersion::R2007) {
    decoder_ = CodePageDecoder::utf8();
    textIsUtf8_ = true;
    return true;
  }
  std::string page(TrimBlanks(db_.header.getString("$DWGCODEPAGE")));
  if (page.empty()) page = "ANSI_936";
  decoder_ = CodePageDecoder::create(page);
  if (!decoder_) return fail(Format("图纸文件 %s 的代码页 %s 无法识别", name_.c_str(), page.c_str()));
  textIsUtf8_ = decoder_->name() == "UTF-8";
  return true;
}

// ---- classes ---------------------------------------------------------------------------------

bool Reader::readClasses() {
  DxfGroup g;
  DxfClass* current = nullptr;
  for (;;) {
    if (!next(g)) return false;
    if (g.code == 0) {
      std::string_view v = TrimBlanks(g.text);
      if (v == "CLASS") {
        db_.classes.emplace_back();
        current = &db_.classes.back();
        continue;
      }
      if (v == "ENDSEC") return true;
      if (IsSectionEnd(v)) {
        warn("CLASSES 段缺少 ENDSEC");
        tok_.pushBack();
        return true;
      }
      current = nullptr;
      warnOnce("class:" + std::string(v), Format("CLASSES 段中有未知记录 %s，已忽略", std::string(v).c_str()));
      continue;
    }
    if (!current) continue;
    switch (g.code) {
      case 1: current->dxfName = text(TrimBlanks(g.text)); break;
      case 2: current->cppName = text(TrimBlanks(g.text)); break;
      case 3: current->appName = text(g.text); break;
      case 90: current->proxyFlags = static_cast<std::int32_t>(g.integer); break;
      case 91: current->instanceCount = static_cast<std::int32_t>(g.integer); break;
      case 280: current->wasProxy = g.integer != 0; break;
      case 281: current->isEntity = g.integer != 0; break;
      default: break;
    }
  }
}

// ---- the whole file --------------------------------------------------------------------------

DxfReadResult Reader::run() {
  DxfReadResult result;
  auto done = [&](bool ok) {
    if (droppedWarnings_)
      warnings_.push_back(Format("另有 %zu 条警告未列出", droppedWarnings_));
    result.warnings = std::move(warnings_);
    if (ok) result.db = std::move(db_);
    else result.error = error_.empty() ? Format("图纸文件 %s 无法读取", name_.c_str()) : std::move(error_);
    return std::move(result);
  };

  if (!tok_.error().empty()) {
    fail(Format("无法读取图纸文件 %s：%s", name_.c_str(), tok_.error().c_str()));
    return done(false);
  }
  if (tok_.fileSize() == 0) {
    fail(Format("图纸文件 %s 是空文件", name_.c_str()));
    return done(false);
  }

  // The first group tells whether this is a DXF file at all.
  DxfGroup g;
  bool any = false;
  for (;;) {
    if (!tok_.next(g)) {
      if (tok_.error().empty() && !any) fail(Format("图纸文件 %s 是空文件", name_.c_str()));
      else fail(Format("%s 不是 DXF 文件", name_.c_str()));
      return done(false);
    }
    any = true;
    if (g.code != 999) break;
  }
  if (g.code != 0 || TrimBlanks(g.text) != "SECTION") {
    fail(Format("%s 不是 DXF 文件", name_.c_str()));
    return done(false);
  }
  tok_.pushBack();

  bool sawEof = false;
  for (;;) {
    tok_.release();
    if (!tok_.next(g)) {
      if (!tok_.error().empty()) {
        failTokenizer();
        return done(false);
      }
      break;
    }
    lastLine_ = g.line;
    if (g.code == 999) continue;
    std::string_view v = TrimBlanks(g.text);
    if (g.code == 0 && v == "EOF") {
      sawEof = true;
      break;
    }
    if (g.code != 0 || v != "SECTION") {
      warnOnce("stray", Format("第 %llu 行起有段外的多余数据，已忽略", static_cast<unsigned long long>(g.line)));
      continue;
    }
    section_ = "SECTION";
    if (!next(g)) return done(false);
    if (g.code != 2) {
      warn(Format("第 %llu 行的段没有名称，已跳过", static_cast<unsigned long long>(g.line)));
      tok_.pushBack();
      if (!skipSection()) return done(false);
      continue;
    }
    section_ = TrimBlanks(g.text);
    bool ok = true;
    if (section_ == "HEADER") {
      ok = readHeader();
    } else if (!ensureDecoder()) {
      ok = false;
    } else if (section_ == "CLASSES") {
      ok = readClasses();
    } else if (section_ == "TABLES") {
      ok = readTables();
      resolveLayerLinetypes();
    } else if (section_ == "BLOCKS") {
      ok = readBlocks();
    } else if (section_ == "ENTITIES") {
      ok = readEntities();
    } else if (section_ == "OBJECTS") {
      ok = readObjects();
    } else {
      ok = skipSection();  // THUMBNAILIMAGE, ACDSDATA and sections of other programs
    }
    if (!ok) return done(false);
  }
  if (!ensureDecoder()) return done(false);
  if (!sawEof) warn(Format("图纸文件 %s 缺少 EOF 结束标记", name_.c_str()));
  finish();
  if (options_.progress) options_.progress(tok_.fileSize(), tok_.fileSize());
  return done(true);
}

void Reader::finish() {
  resolveLayerLinetypes();
  registerDeferred();
  for (BlockRecord* b : blocksOnDemand_)
    if (!definedBlocks_.count(b)) warn(Format("块 %s 被引用但没有定义", b->name.c_str()));
  if (!db_.header.find("$ACADVER")) {
    // Files without the variable are R12 or older; say so rather than let the default apply.
    db_.header.variables.insert(db_.header.variables.begin(), HeaderVariable{"$ACADVER", {Group{1, std::string("AC1009")}}});
  }
  db_.ensureStandardObjects();
  // $HANDSEED must stay above every handle in use, whatever the file said: the next free handle
  // is at least the file's seed and above every handle registered.
  ObjectId next = db_.newHandle();
  db_.header.setHandle("$HANDSEED", next);
}

}  // namespace dxf_read

namespace {

std::uint64_t CountLines(std::string_view bytes) {
  std::uint64_t n = static_cast<std::uint64_t>(std::count(bytes.begin(), bytes.end(), '\n'));
  if (!bytes.empty() && bytes.back() != '\n') ++n;
  return n;
}

std::uint64_t CountFileLines(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::uint64_t n = 0;
  char buf[1 << 16];
  char last = '\n';
  while (in) {
    in.read(buf, sizeof buf);
    std::streamsize got = in.gcount();
    if (got <= 0) break;
    n += static_cast<std::uint64_t>(std::count(buf, buf + got, '\n'));
    last = buf[got - 1];
  }
  return last == '\n' ? n : n + 1;
}

}  // namespace

DxfReadResult ReadDxf(const std::string& path, const DxfReadOptions& options) {
  DxfTokenizer tok(path);
  dxf_read::Reader reader(tok, path, options, [&path] { return CountFileLines(path); });
  return reader.run();
}

DxfReadResult ReadDxfFromBytes(std::string bytes, const std::string& name) {
  // Only needed for the message about an incomplete file; the bytes move into the tokenizer.
  const std::uint64_t lines = CountLines(bytes);
  DxfTokenizer tok = DxfTokenizer::fromBytes(std::move(bytes));
  DxfReadOptions options;
  dxf_read::Reader reader(tok, name, options, [lines] { return lines; });
  return reader.run();
}

}  // namespace tv::cad
