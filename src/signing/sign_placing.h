#pragma once
// Placing a library signature into the drawing between two picked corners.
#include <cstdint>
#include <string_view>
#include <vector>

#include "host/geometry.h"
#include "host/object_id.h"
#include "signing/sign_library.h"

namespace tv::signing {

inline constexpr std::string_view kSignCaption = "签名管理";
inline constexpr std::string_view kSignLayer = "TV_Sign";
inline constexpr std::int16_t kSignLayerColor = 118;
inline constexpr std::string_view kSignFirstPrompt = "\n选择第一点:";
inline constexpr std::string_view kSignSecondPrompt = "\n选择第二点 [按Tab键-->改变签名方向] :";

// The outlines of a record as loop sizes (negative for holes) and vertices at Z 0; outlines
// without vertices are left out.
void FlattenSign(const TV_Sign& sign, std::vector<std::int32_t>& loopSizes, std::vector<Point3d>& points);

// Turns the points by SignDirection about `centre` and fits them, proportions kept, between the
// two corners, centred on their middle.
void FitSignPoints(std::vector<Point3d>& points, Point3d corner1, Point3d corner2, double sizeX, double sizeY,
                   Point3d centre);

// Asks for the two corners (Tab, or "TAB" typed, at the second turns the signature) and appends
// the signature on layer "TV_Sign"; null id when the record has no outlines or the user stops.
ObjectId PlaceSign(const TV_Sign& sign);

// The placing command: the choice of an enabled signature of the library, then PlaceSign.
void SignPlacingCommand();

}  // namespace tv::signing
