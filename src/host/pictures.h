#pragma once
// Opening pictures as bitmaps, for the previews of the stamp forms.
#include <optional>
#include <string>

namespace tv::host {

struct PictureSize {
  int width = 0;
  int height = 0;
};

// The size in pixels of a PNG or JPEG file, decoded whole; nullopt when it is neither, or
// broken.
std::optional<PictureSize> OpenPicture(const std::string& path);

}  // namespace tv::host
