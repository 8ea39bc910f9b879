#include <array>
#include <charconv>
#include <cstdio>
#include <string>

#include "cli/info_report.h"
#include "console/text_table.h"

namespace tv::cli {

using console::Printable;
using console::TextTable;

namespace {

constexpr std::size_t kWarningsShown = 5;

std::string Num(double v) {
  char buf[32];
  auto r = std::to_chars(buf, buf + sizeof buf, v == 0 ? 0.0 : v);
  return std::string(buf, r.ptr);
}

std::string PointText(const cad::Point3d& p) {
  std::string s(1, '(');
  s.append(Num(p.x)).append(", ").append(Num(p.y)).append(", ").append(Num(p.z)).append(1, ')');
  return s;
}

std::string ColorText(std::int16_t index, std::int32_t trueColor) {
  if (trueColor >= 0) {
    char buf[16];
    std::snprintf(buf, sizeof buf, "#%06X", static_cast<unsigned>(trueColor) & 0xFFFFFFu);
    return buf;
  }
  static constexpr std::array<const char*, 8> kNames{"", "红", "黄", "绿", "青", "蓝", "洋红", "白"};
  std::string s = std::to_string(index);
  if (index >= 1 && index <= 7) s += std::string(" ") + kNames[static_cast<std::size_t>(index)];
  return s;
}

std::string LineweightText(std::int16_t lw) {
  switch (lw) {
    case -1: return "随层";
    case -2: return "随块";
    case -3: return "默认";
    default: {
      char buf[24];
      std::snprintf(buf, sizeof buf, "%.2f mm", lw / 100.0);
      return buf;
    }
  }
}

const char* YesNo(bool b) { return b ? "是" : "否"; }

std::string CountsText(const SpaceCounts& c) {
  if (c.total == 0) return "无";
  std::string s;
  for (const auto& cc : c.counts) {
    if (!s.empty()) s += ", ";
    s += Printable(cc.name) + " " + std::to_string(cc.count);
  }
  return s + "；共 " + std::to_string(c.total);
}

std::string KindsText(const std::vector<std::pair<std::string, std::size_t>>& kinds) {
  std::string text;
  for (const auto& [name, count] : kinds) {
    if (!text.empty()) text += ", ";
    text += Printable(name) + " " + std::to_string(count);
  }
  return text;
}

// Where a converted drawing came from, and what the conversion repaired or could not carry over.
void WriteSource(const cad::DrawingSource& src, std::ostream& out) {
  out << "来源: " << Printable(src.format) << ' ' << Printable(src.version);
  if (!src.release.empty()) out << " (" << src.release << ')';
  out << "，经 " << Printable(src.converter) << " 转换\n";
  std::string repairs;
  auto add = [&repairs](std::size_t n, const char* what) {
    if (n == 0) return;
    if (!repairs.empty()) repairs += "；";
    repairs += std::to_string(n) + " " + what;
  };
  add(src.layerStatesRepaired, "个图层的开关状态");
  add(src.trueColoursDropped, "个丢失的真彩色改用索引颜色");
  add(src.lineBreaksRepaired, "处值中的换行");
  if (!repairs.empty()) out << "转换修复: " << repairs << '\n';
  if (!src.layerStatesKnown) out << "未能转换: 图层的开关状态（全部按打开）\n";
  if (!src.droppedEntities.empty()) out << "未能转换的实体: " << KindsText(src.droppedEntities) << '\n';
  if (!src.droppedObjects.empty()) out << "未能转换的对象: " << KindsText(src.droppedObjects) << '\n';
  if (!src.stubs.empty()) out << "只转换了空壳: " << KindsText(src.stubs) << '\n';
  if (!src.readProblems.empty()) {
    out << "转换程序读取时报告:";
    for (const auto& p : src.readProblems) out << ' ' << Printable(p);
    out << '\n';
  }
}

void WriteHeader(const DrawingSummary& s, std::ostream& out) {
  out << "文件: " << Printable(s.file) << '\n';
  out << "版本: " << (s.acadver.empty() ? "未注明" : Printable(s.acadver)) << " (" << s.release << ")\n";
  if (s.source) WriteSource(*s.source, out);
  out << "代码页: " << (s.codePage ? Printable(*s.codePage) : "未设置") << '\n';

  std::string units;
  if (!s.insUnits) {
    units = "未设置";
  } else if (auto name = InsUnitsName(*s.insUnits)) {
    units = std::string(name->chinese) + " (" + std::string(name->symbol) + ")";
  } else {
    units = "未知 (" + std::to_string(*s.insUnits) + ")";
  }
  if (s.measurement) units += *s.measurement == 0 ? "，英制" : "，公制";
  out << "单位: " << units << '\n';

  out << "线型比例: LTSCALE " << (s.ltscale ? Num(*s.ltscale) : "未设置") << "，CELTSCALE "
      << (s.celtscale ? Num(*s.celtscale) : "未设置") << '\n';
  out << "TILEMODE: ";
  if (s.tilemode) out << *s.tilemode << (*s.tilemode ? " (模型空间)" : " (布局)") << '\n';
  else out << "未设置\n";

  out << "范围: ";
  if (s.extMin && s.extMax) {
    out << PointText(*s.extMin) << " - " << PointText(*s.extMax);
    if (s.extMin->x > s.extMax->x || s.extMin->y > s.extMax->y) out << " (空)";
    out << '\n';
  } else {
    out << "未设置\n";
  }
}

void WriteEntities(const DrawingSummary& s, std::ostream& out) {
  out << "\n实体:\n";
  for (const auto& space : s.spaces) {
    std::string label = space.modelSpace ? "模型空间" : (space.label.empty() ? space.block : space.label);
    out << "  " << Printable(label) << ": " << CountsText(space) << '\n';
  }
  out << "  块定义 (" << s.blockDefinitions.blockCount << " 个): " << CountsText(s.blockDefinitions) << '\n';
}

void WriteLayers(const DrawingSummary& s, std::ostream& out) {
  out << "\n图层 (" << s.layers.size() << "):\n";
  TextTable t;
  t.addRow({"名称", "开", "冻结", "锁定", "打印", "颜色", "线型", "线宽"});
  for (const auto& l : s.layers)
    t.addRow({Printable(l.name), YesNo(l.on), YesNo(l.frozen), YesNo(l.locked), YesNo(l.plottable),
              ColorText(l.colorIndex, l.trueColor), Printable(l.linetype), LineweightText(l.lineweight)});
  t.print(out);
}

void WriteLayouts(const DrawingSummary& s, std::ostream& out) {
  out << "\n布局 (" << s.layouts.size() << "):\n";
  TextTable t;
  t.addRow({"名称", "标签", "块", "图纸", "尺寸", "打印机", "视口"});
  for (const auto& l : s.layouts) {
    std::string size = l.paperWidth > 0 && l.paperHeight > 0 ? Num(l.paperWidth) + " x " + Num(l.paperHeight) + " mm" : "-";
    t.addRow({Printable(l.name), std::to_string(l.tab), Printable(l.block), l.paperSize.empty() ? "-" : Printable(l.paperSize),
              size, l.plotter.empty() ? "-" : Printable(l.plotter), std::to_string(l.viewports)});
  }
  t.print(out);
}

void WriteBlocks(const DrawingSummary& s, std::ostream& out) {
  out << "\n块 (" << s.blockDefinitions.blockCount << "):\n";
  TextTable t;
  t.addRow({"名称", "标志", "实体"});
  for (const auto& b : s.blocks) {
    std::string flags;
    auto add = [&](std::string_view f) {
      if (!flags.empty()) flags += ",";
      flags += f;
    };
    if (b.anonymous) add("匿名");
    if (b.xref) add("外部参照 " + Printable(b.xrefPath));
    if (b.hasAttributes) add("属性");
    t.addRow({Printable(b.name), flags.empty() ? "-" : flags, std::to_string(b.entities)});
  }
  if (s.blocks.size() + s.anonymousGroups.size() > 0) t.print(out);
  for (const auto& g : s.anonymousGroups)
    out << "  匿名块 " << Printable(g.prefix) << "*: " << g.count << " 个，实体 " << g.entities << '\n';
}

std::string XrefStateText(const XrefSummary& x) {
  if (x.state == "loaded") return Printable(x.resolvedPath);
  if (x.state == "notFound") return "未找到";
  if (x.state == "unreadable") return "无法读取 " + Printable(x.resolvedPath);
  if (x.state == "cycle") return "循环引用，未加载";
  if (x.state == "tooDeep") return "嵌套过深，未加载";
  return "嵌套的覆盖参照，未加载";
}

void WriteXrefs(const DrawingSummary& s, std::ostream& out) {
  if (s.xrefs.empty()) return;
  out << "\n外部参照 (" << s.xrefs.size() << "):\n";
  TextTable t;
  t.addRow({"名称", "类型", "保存的路径", "文件"});
  for (const auto& x : s.xrefs)
    t.addRow({std::string(2 * (x.depth - 1), ' ') + Printable(x.name), x.overlay ? "覆盖" : "附着", Printable(x.savedPath),
              XrefStateText(x)});
  t.print(out);
}

void AddDictionaryRows(const DictionaryNode& n, std::size_t depth, TextTable& t) {
  std::string indent(2 * depth, ' ');
  for (const auto& c : n.children) {
    std::string contents;
    if (c.type == "XRECORD") {
      contents = std::to_string(c.entries) + " 组";
    } else {
      contents = std::to_string(c.entries) + " 项";
      if (c.xrecords) contents += "，Xrecord " + std::to_string(c.xrecords);
    }
    t.addRow({indent + Printable(c.key), Printable(c.type), contents});
    AddDictionaryRows(c, depth + 1, t);
  }
  if (n.omittedChildren) t.addRow({indent + "… 另有 " + std::to_string(n.omittedChildren) + " 项未列出"});
}

void WriteDictionaries(const DrawingSummary& s, std::ostream& out) {
  out << "\n词典:";
  if (!s.dictionaries) {
    out << " 无\n";
    return;
  }
  out << " " << s.dictionaries->entries << " 项";
  if (s.dictionaries->xrecords) out << "，Xrecord " << s.dictionaries->xrecords;
  out << '\n';
  TextTable t;
  AddDictionaryRows(*s.dictionaries, 0, t);
  t.print(out);
}

void WriteWarnings(const DrawingSummary& s, std::ostream& out) {
  out << "\n警告: " << s.warningCount << '\n';
  for (std::size_t i = 0; i < s.firstWarnings.size() && i < kWarningsShown; ++i)
    out << "  " << Printable(s.firstWarnings[i]) << '\n';
  if (s.warningCount > kWarningsShown) out << "  … 另有 " << s.warningCount - kWarningsShown << " 条\n";
}

}  // namespace

void WriteInfoText(const DrawingSummary& s, std::ostream& out) {
  WriteHeader(s, out);
  WriteEntities(s, out);
  WriteLayers(s, out);
  WriteLayouts(s, out);
  WriteBlocks(s, out);
  WriteXrefs(s, out);
  WriteDictionaries(s, out);
  WriteWarnings(s, out);
}

}  // namespace tv::cli
