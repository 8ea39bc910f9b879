#include "cad/dxf_writer.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <memory>

#include "cad/dxf_writer_internal.h"

namespace tv::cad {

namespace dxf_write {

void WriteObjectHead(WriteContext& ctx, std::string_view dxfName, int handleCode, ObjectId id, const DbObject& o, ObjectId owner) {
  DxfOutput& out = ctx.out;
  out.str(0, dxfName);
  out.handle(handleCode, id);
  if (const ObjectExtras* x = o.extrasIfAny()) {
    out.groups(x->appGroups);
    if (!x->reactors.empty()) {
      out.str(102, "{ACAD_REACTORS");
      for (ObjectId r : x->reactors) out.handle(330, r);
      out.str(102, "}");
    }
    if (!x->extensionDictionary.isNull()) {
      out.str(102, "{ACAD_XDICTIONARY");
      out.handle(360, x->extensionDictionary);
      out.str(102, "}");
    }
  }
  out.handle(330, owner);
}

void WriteObjectTail(WriteContext& ctx, const DbObject& o) {
  const ObjectExtras* x = o.extrasIfAny();
  if (!x) return;
  for (const Group& g : x->unknown)
    if (g.code > 0) ctx.out.group(g);  // a stray 0 group would end the object early
  ctx.out.groups(x->xdata);
}

namespace {

void WriteAll(WriteContext& ctx) {
  PlanWrite(ctx);
  WriteHeaderSection(ctx);
  WriteClassesSection(ctx);
  WriteTablesSection(ctx);
  WriteBlocksSection(ctx);
  WriteEntitiesSection(ctx);
  WriteObjectsSection(ctx);
  ctx.out.str(0, "EOF");
}

DxfVersion OutputVersion(const DxfWriteOptions& options) {
  // Only the two UTF-8 versions with the current object model are offered.
  return options.version == DxfVersion::R2013 ? DxfVersion::R2013 : DxfVersion::R2018;
}

std::string WriteError(const std::string& path, const std::string& reason) { return "无法写入文件 " + path + "：" + reason; }

struct FileCloser {
  void operator()(std::FILE* f) const { std::fclose(f); }
};

}  // namespace
}  // namespace dxf_write

std::string WriteDxfToString(const Database& db, const DxfWriteOptions& options) {
  dxf_write::WriteContext ctx(db, dxf_write::OutputVersion(options));
  dxf_write::WriteAll(ctx);
  return ctx.out.take();
}

Status WriteDxf(const Database& db, const std::string& path, const DxfWriteOptions& options) {
  using dxf_write::WriteError;
  const std::string tmp = path + ".tmp-" + std::to_string(::getpid());
  std::unique_ptr<std::FILE, dxf_write::FileCloser> file(std::fopen(tmp.c_str(), "wb"));
  if (!file) return Status::failure(WriteError(path, std::strerror(errno)));

  int writeErrno = 0;
  auto fail = [&](std::string reason) {
    file.reset();
    std::error_code ignored;
    std::filesystem::remove(tmp, ignored);
    return Status::failure(WriteError(path, reason));
  };
  try {
    dxf_write::WriteContext ctx(db, dxf_write::OutputVersion(options));
    ctx.sink = [&](std::string& text) {
      if (std::fwrite(text.data(), 1, text.size(), file.get()) == text.size()) return true;
      writeErrno = errno;
      return false;
    };
    dxf_write::WriteAll(ctx);
    ctx.flush();
    if (ctx.sinkFailed) return fail(std::strerror(writeErrno ? writeErrno : EIO));
  } catch (const std::exception& e) {
    return fail(e.what());
  }
  if (std::fclose(file.release()) != 0) return fail(std::strerror(errno));

  std::error_code ec;
  std::filesystem::rename(tmp, path, ec);
  if (ec) return fail(ec.message());
  return Status::success();
}

}  // namespace tv::cad
