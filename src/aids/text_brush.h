#pragma once
// "刷字符内容": the content of one text copied onto other texts, like a format painter for content.
#include <optional>
#include <string>

#include "host/geometry.h"
#include "host/object_id.h"

namespace tv::aids {

// The source's text, held for the time of the command.
struct BrushContent {
  std::string rich;   // as read, "\P" kept: for targets with several lines
  std::string plain;  // one line, blanks at both ends cut: for one-line targets
};
// From the text found and, for another vendor's text, its group 1 as stored (empty otherwise).
BrushContent MakeBrushContent(const std::string& text, const std::string& rawText);

// `old` and `added` joined with a blank, unless `old` is empty or ends in one.
std::string JoinWithBlank(const std::string& old, const std::string& added);
// `old` and `added` joined with "\P", unless `old` is empty or ends in a line-feed.
std::string JoinWithLineBreak(const std::string& old, const std::string& added);

// The first attribute of a reference under the cursor (working coordinates) that shows: not
// invisible, on no frozen or switched-off layer. Null when none lies there.
ObjectId AttributeUnderCursor(ObjectId insertId, const std::optional<Point3d>& cursor);
// The cursor of the last selection in working coordinates.
std::optional<Point3d> SelectionCursor();

// The command body.
void TextBrushCommand();

}  // namespace tv::aids
