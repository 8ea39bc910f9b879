#pragma once
// Drawing files of the frame folder: a selection written out as a file of its own, a file's model
// space as straight segments for the preview, that preview as a picture, and a file's content
// copied into the working drawing.
#include <optional>
#include <string>
#include <vector>

#include "host/geometry.h"
#include "host/object_id.h"

namespace tv::host {

struct FileSegment {
  Point2d start, end;
};

// Writes the entities (of the current space) to a new drawing file at `path`, in this host's
// format, keeping their coordinates; the working drawing is untouched. An existing file is
// replaced only once the new one is complete. False when the file can't be written.
bool WriteEntitiesToDrawingFile(const ObjectIdArray& ids, const std::string& path);

// The model space of a drawing file read into a database of its own (never opened as a
// document): lines, arcs, circles, polylines and block inserts as straight segments in world
// coordinates; other entities, text too, are left out. nullopt when the file can't be read.
std::optional<std::vector<FileSegment>> DrawingFileSegments(const std::string& path);

// The segments fitted into a picture of `width` x `height` pixels with `margin` pixels around,
// keeping proportions, white on black, written as a PNG. False when it can't be written.
bool WriteSegmentPicture(const std::vector<FileSegment>& segments, int width, int height, int margin,
                         const std::string& path);

// Copies the model space of a drawing file into the current space of the working drawing: curves,
// text and solids as they are, block inserts broken into their pieces (visible attributes as
// text); entities that need records of the file beyond layers, linetypes and text styles (hatches,
// dimensions, pictures) are left out. Layers missing in the drawing are added with the file's
// states; missing linetypes become ByLayer, missing text styles "Standard". The new entities' ids;
// nullopt when the file can't be read.
std::optional<ObjectIdArray> CopyDrawingFileEntities(const std::string& path);

}  // namespace tv::host
