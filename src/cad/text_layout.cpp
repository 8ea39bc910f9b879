// Text measuring and layout: the approximate measurer, TEXT boxes, MTEXT lines.
#include <algorithm>
#include <cmath>

#include "cad/codepage.h"
#include "cad/entity_geometry_internal.h"
#include "cad/utf8.h"

namespace tv::cad {

namespace geom_internal {

bool IsWideCodePoint(char32_t cp) {
  return (cp >= 0x1100 && cp <= 0x115F) || (cp >= 0x2E80 && cp <= 0xA4CF) || (cp >= 0xAC00 && cp <= 0xD7A3) ||
         (cp >= 0xF900 && cp <= 0xFAFF) || (cp >= 0xFE30 && cp <= 0xFE4F) || (cp >= 0xFF00 && cp <= 0xFF60) ||
         (cp >= 0xFFE0 && cp <= 0xFFE6) || (cp >= 0x20000 && cp <= 0x3FFFD);
}

std::string ExpandTextCodes(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    if (text[i] != '%' || i + 2 >= text.size() || text[i + 1] != '%') {
      out += text[i++];
      continue;
    }
    const char c = text[i + 2];
    switch (c) {
      case 'd': case 'D': AppendUtf8(out, 0x00B0); i += 3; break;
      case 'p': case 'P': AppendUtf8(out, 0x00B1); i += 3; break;
      case 'c': case 'C': AppendUtf8(out, 0x2300); i += 3; break;
      case '%': out += '%'; i += 3; break;
      case 'u': case 'U': case 'o': case 'O': case 'k': case 'K': i += 3; break;  // underline etc. toggles
      default:
        if (c >= '0' && c <= '9') {
          // %%nnn: a character by its three-digit code.
          std::size_t k = i + 2;
          int code = 0;
          while (k < text.size() && k < i + 5 && text[k] >= '0' && text[k] <= '9') code = code * 10 + (text[k++] - '0');
          AppendUtf8(out, static_cast<char32_t>(code == 0 ? ' ' : code));
          i = k;
        } else {
          out += text[i++];
        }
    }
  }
  return out;
}

const TextStyle* StyleOf(ObjectId style, const Database& db) {
  if (auto* s = db.objectAs<TextStyle>(style)) return s;
  return db.findTextStyle("Standard");
}

namespace {

double HeightOr(double height, const TextStyle* style) {
  if (height > 0 && std::isfinite(height)) return height;
  if (style && style->height > 0) return style->height;
  return 0;
}

// Oblique angles past this are treated as this, so the shear stays finite.
constexpr double kMaxOblique = 85.0 * kPi / 180.0;

}  // namespace

std::optional<std::array<Point3d, 4>> TextBoxOcs(const TextParams& t, const Database& db, const TextMeasurer& m) {
  const std::string plain = ExpandTextCodes(t.text);
  if (plain.empty()) return std::nullopt;
  const TextStyle* style = StyleOf(t.style, db);
  const double h = HeightOr(t.height, style);
  const double wf = t.widthFactor > 0 && std::isfinite(t.widthFactor) ? t.widthFactor : 1.0;
  const double adv = m.advance(plain, style);
  const double w = (std::isfinite(adv) ? std::max(adv, 0.0) : 0.0) * h * wf;

  Point3d ref = t.position;
  double rotation = t.rotation;
  double boxHeight = h, boxWidth = w, x0 = 0, y0 = 0;
  const bool fitted = t.hAlign == TextHAlign::Aligned || t.hAlign == TextHAlign::Fit;
  const Vector2d chord = t.alignPoint.to2d() - t.position.to2d();
  if (fitted && t.hasAlignPoint && chord.length() > 0) {
    // The text fills the line from the first to the second alignment point.
    rotation = std::atan2(chord.y, chord.x);
    boxWidth = chord.length();
    if (t.hAlign == TextHAlign::Aligned && w > 0) boxHeight = h * boxWidth / w;
  } else {
    const bool leftBaseline = t.hAlign == TextHAlign::Left && t.vAlign == TextVAlign::Baseline;
    if (!leftBaseline && t.hasAlignPoint) ref = t.alignPoint;
    switch (t.hAlign) {
      case TextHAlign::Center: case TextHAlign::Middle: x0 = -w / 2; break;
      case TextHAlign::Right: x0 = -w; break;
      default: break;
    }
    if (t.hAlign == TextHAlign::Middle) {
      y0 = -h / 2;
    } else {
      switch (t.vAlign) {
        case TextVAlign::Bottom: y0 = m.descent(style) * h; break;
        case TextVAlign::Middle: y0 = -h / 2; break;
        case TextVAlign::Top: y0 = -h; break;
        default: break;
      }
    }
  }
  const double ob = std::clamp(std::isfinite(t.oblique) ? t.oblique : 0.0, -kMaxOblique, kMaxOblique);
  const double shear = boxHeight * std::tan(ob);
  const Point2d local[4] = {{x0, y0}, {x0 + boxWidth, y0}, {x0 + boxWidth + shear, y0 + boxHeight}, {x0 + shear, y0 + boxHeight}};
  const double mx = (t.generation & Text::kMirrorX) ? -1 : 1;
  const double my = (t.generation & Text::kMirrorY) ? -1 : 1;
  const double c = std::cos(rotation), s = std::sin(rotation);
  std::array<Point3d, 4> out;
  for (int i = 0; i < 4; ++i) {
    const double x = local[i].x * mx, y = local[i].y * my;
    out[i] = {ref.x + c * x - s * y, ref.y + s * x + c * y, ref.z};
  }
  return out;
}

// ---- MTEXT -----------------------------------------------------------------------------------------

std::vector<std::string> MTextPlainParagraphs(std::string_view raw) {
  const std::string text = DecodeDxfEscapes(raw);
  std::vector<std::string> paragraphs(1);
  const auto breakLine = [&] { paragraphs.emplace_back(); };
  for (std::size_t i = 0; i < text.size();) {
    const char c = text[i];
    if (c == '{' || c == '}' || c == '\r') {
      ++i;
      continue;
    }
    if (c == '\n') {
      breakLine();
      ++i;
      continue;
    }
    if (c == '\t') {
      paragraphs.back() += ' ';
      ++i;
      continue;
    }
    if (c != '\\' || i + 1 >= text.size()) {
      paragraphs.back() += c;
      ++i;
      continue;
    }
    const char code = text[i + 1];
    i += 2;
    switch (code) {
      case 'P': case 'X': case 'N': breakLine(); break;
      case '~': paragraphs.back() += ' '; break;
      case '\\': case '{': case '}': paragraphs.back() += code; break;
      case 'L': case 'l': case 'O': case 'o': case 'K': case 'k': break;
      case 'A': case 'H': case 'W': case 'Q': case 'T': case 'C': case 'c': case 'f': case 'F': case 'p': case 'a': {
        // Codes with an argument up to ';'. Without a ';' only the code itself is dropped.
        const std::size_t end = text.find(';', i);
        if (end != std::string::npos) i = end + 1;
        break;
      }
      case 'S': {
        // Stacked text "top^bottom;", "top/bottom;" or "top#bottom;" shown as "top/bottom".
        const std::size_t end = text.find(';', i);
        if (end == std::string::npos) break;
        std::string stacked(text.substr(i, end - i));
        for (char& ch : stacked)
          if (ch == '#') ch = '/';
        if (const auto caret = stacked.find('^'); caret != std::string::npos) {
          std::string top = stacked.substr(0, caret), bottom = stacked.substr(caret + 1);
          while (!bottom.empty() && bottom.front() == ' ') bottom.erase(0, 1);
          stacked = top.empty() || bottom.empty() ? top + bottom : top + "/" + bottom;
        }
        paragraphs.back() += stacked;
        i = end + 1;
        break;
      }
      default: paragraphs.back() += code; break;
    }
  }
  for (auto& p : paragraphs) p = ExpandTextCodes(p);
  while (paragraphs.size() > 1 && paragraphs.back().empty()) paragraphs.pop_back();
  return paragraphs;
}

Vector3d MTextDirection(const MText& mtext) {
  Vector3d n = mtext.normal.normalized();
  if (n.isZero(0)) n = Vector3d::zAxis();
  Vector3d d = mtext.xDirection - n * n.dot(mtext.xDirection);
  if (d.length() > 1e-12 * std::max(1.0, mtext.xDirection.length())) return d.normalized();
  return Matrix3d::planeToWorld(n).transform(Vector3d{std::cos(mtext.rotation), std::sin(mtext.rotation), 0});
}

namespace {

// Splits a paragraph into lines no wider than `limit` (drawing units), breaking after spaces and
// around CJK characters; a word longer than the limit keeps its own line.
std::vector<std::string> WrapParagraph(const std::string& text, double limit, double scale, const TextStyle* style,
                                       const TextMeasurer& m) {
  std::vector<std::string> lines;
  if (!(limit > 0)) return {text};
  std::size_t start = 0, lastBreak = std::string::npos;
  double width = 0;
  for (std::size_t i = start; i < text.size();) {
    const std::size_t at = i;
    const char32_t cp = NextCodePoint(text, i);
    if (IsWideCodePoint(cp) && at > start) lastBreak = at;
    width += m.advance(std::string_view(text).substr(at, i - at), style) * scale;
    if (width > limit && lastBreak != std::string::npos && lastBreak > start) {
      std::string line = text.substr(start, lastBreak - start);
      while (!line.empty() && line.back() == ' ') line.pop_back();
      lines.push_back(std::move(line));
      start = lastBreak;
      while (start < text.size() && text[start] == ' ') ++start;
      lastBreak = std::string::npos;
      width = 0;
      i = start;
      continue;
    }
    if (cp == ' ' || IsWideCodePoint(cp)) lastBreak = i;
  }
  lines.push_back(text.substr(std::min(start, text.size())));
  return lines;
}

}  // namespace

MTextLayout LayoutMText(const MText& mtext, const Database& db, const TextMeasurer& m) {
  MTextLayout layout;
  const TextStyle* style = StyleOf(mtext.style, db);
  layout.height = HeightOr(mtext.height, style);
  layout.widthFactor = style && style->widthFactor > 0 ? style->widthFactor : 1.0;
  const double scale = layout.height * layout.widthFactor;
  const double refWidth = std::isfinite(mtext.referenceWidth) ? mtext.referenceWidth : 0.0;

  double longest = 0;
  for (const std::string& paragraph : MTextPlainParagraphs(mtext.text)) {
    for (std::string& line : WrapParagraph(paragraph, refWidth, scale, style, m)) {
      const double w = std::max(0.0, m.advance(line, style) * scale);
      longest = std::max(longest, w);
      layout.lines.push_back({std::move(line), w, {}});
    }
  }
  const double factor = mtext.lineSpacingFactor > 0 && std::isfinite(mtext.lineSpacingFactor) ? mtext.lineSpacingFactor : 1.0;
  const double pitch = layout.height * 5.0 / 3.0 * factor;
  const double boxHeight = layout.lines.empty() ? 0 : layout.height + pitch * static_cast<double>(layout.lines.size() - 1);
  const double boxWidth = std::max(refWidth, longest);
  const int attachment = std::clamp<int>(mtext.attachment, 1, 9) - 1;
  layout.column = attachment % 3;
  const int row = attachment / 3;
  layout.left = -boxWidth * layout.column / 2.0;
  layout.right = layout.left + boxWidth;
  layout.top = row == 0 ? 0 : row == 1 ? boxHeight / 2 : boxHeight;
  layout.bottom = layout.top - boxHeight;
  for (std::size_t i = 0; i < layout.lines.size(); ++i) {
    auto& line = layout.lines[i];
    const double x = layout.column == 0 ? layout.left
                     : layout.column == 1 ? layout.left + (boxWidth - line.width) / 2
                                          : layout.right - line.width;
    line.baselineStart = {x, layout.top - layout.height - pitch * static_cast<double>(i)};
  }
  Vector3d n = mtext.normal.normalized();
  if (n.isZero(0)) n = Vector3d::zAxis();
  const Vector3d x = MTextDirection(mtext);
  layout.frameToWorld = Matrix3d::alignCoordSys(mtext.position, x, n.cross(x).normalized(), n);
  return layout;
}

void CopyCommonProperties(const Entity& from, Entity& to) {
  to.colorIndex = from.colorIndex;
  to.lineweight = from.lineweight;
  to.flags = static_cast<std::uint8_t>(from.flags & ~Entity::kErased);
  to.layer = from.layer;
  to.linetype = from.linetype;
  to.trueColor = from.trueColor;
  to.linetypeScale = from.linetypeScale;
}

}  // namespace geom_internal

// ---- the approximate measurer ------------------------------------------------------------------------

namespace {

double ApproximateWidth(char32_t cp) {
  if (geom_internal::IsWideCodePoint(cp)) return 1.0;
  if (cp >= 0x300 && cp <= 0x36F) return 0;  // combining marks
  if (cp == ' ' || cp == 0xA0) return 0.4;
  if (cp >= '0' && cp <= '9') return 0.6;
  switch (cp) {
    case 'i': case 'l': case 'j': case 'I': case '!': case '.': case ',': case ':': case ';': case '|': case '\'': case '`':
      return 0.3;
    case 'f': case 't': case 'r': case '(': case ')': case '[': case ']': case '{': case '}': case '"':
      return 0.4;
    case 'm': case 'w': return 0.85;
    case 'M': case 'W': return 0.9;
    default: break;
  }
  if (cp >= 'A' && cp <= 'Z') return 0.7;
  if (cp >= 'a' && cp <= 'z') return 0.55;
  return 0.6;
}

class Approximate final : public TextMeasurer {
 public:
  double advance(std::string_view utf8, const TextStyle*) const override {
    double w = 0;
    for (std::size_t i = 0; i < utf8.size();) w += ApproximateWidth(NextCodePoint(utf8, i));
    return w;
  }
  double ascent(const TextStyle*) const override { return 1.0; }
  double descent(const TextStyle*) const override { return 1.0 / 3.0; }
};

}  // namespace

const TextMeasurer& ApproximateTextMeasurer() {
  static const Approximate instance;
  return instance;
}

std::string MTextPlainText(std::string_view contents) {
  std::string text;
  bool first = true;
  for (const std::string& paragraph : geom_internal::MTextPlainParagraphs(contents)) {
    if (!first) text += '\n';
    text += paragraph;
    first = false;
  }
  return text;
}

}  // namespace tv::cad
