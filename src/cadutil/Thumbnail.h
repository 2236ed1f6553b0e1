// The preview image stored in a drawing file (its THUMBNAILIMAGE section), read without
// loading the drawing itself.
#pragma once

#include <optional>
#include <string>

#include "cad/Tags.h"

namespace cadutil {

// The tags inside the file's THUMBNAILIMAGE section (between its name and ENDSEC), in the
// form cad::Database::Thumbnail() holds them. Empty when the file cannot be read, is not an
// ASCII DXF file or has no preview.
std::optional<cad::TagList> ReadThumbnail(const std::string& path);

}  // namespace cadutil
