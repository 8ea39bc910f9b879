#pragma once
// Writes DXF group pairs as ASCII text.
#include <cstdint>
#include <string>
#include <string_view>

#include "cad/geometry.h"
#include "cad/group.h"
#include "cad/object_id.h"

namespace tv::cad {

class DxfOutput {
 public:
  // Text is collected in memory; `take()` hands it over. The writer flushes it to a file in chunks.
  void str(int code, std::string_view value);  // UTF-8 as is; line breaks inside become spaces
  void real(int code, double value);           // shortest text that reads back to the same double
  void integer(int code, std::int64_t value);
  void handle(int code, ObjectId id);          // hex; null written as "0"
  // 10/20/30 style: code, code+10, code+20.
  void point(int code, Point3d p);
  void point2d(int code, Point2d p);
  void vector(int code, Vector3d v) { point(code, Point3d{v.x, v.y, v.z}); }
  void binary(int code, const Bytes& bytes);   // hex, in chunks of at most 127 bytes per group
  void group(const Group& g);                  // by the value's own kind
  void groups(const Groups& gs);
  // A 210 group only when the normal is not the default (0,0,1).
  void normal(int code, Vector3d n);

  std::string& buffer() { return buf_; }
  std::size_t size() const { return buf_.size(); }
  std::string take() { return std::move(buf_); }

 private:
  void code(int c);
  std::string buf_;
};

}  // namespace tv::cad
