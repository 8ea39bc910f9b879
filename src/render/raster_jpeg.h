#pragma once
// JPEG files through libjpeg: a cairo image surface written out, a picture read in.
#include <cairo.h>

#include <string>

namespace tv::render {

// Writes an RGB24/ARGB32 image surface as a baseline JPEG; false with a reason on failure.
bool WriteJpeg(cairo_surface_t* image, const std::string& path, int quality, std::string& error);

// Reads a JPEG file into a new RGB24 image surface (the caller destroys it); nullptr when the
// file is missing or not a JPEG libjpeg can read.
cairo_surface_t* ReadJpeg(const std::string& path);

}  // namespace tv::render
