// Pictures of a drawing: the model space, or one block, to a PNG or SVG file.
#pragma once

#include <string>

#include "cad/Database.h"
#include "cad/render/EntityWalk.h"
#include "cad/render/SceneFile.h"

namespace cad::render {

struct RenderOptions {
    PictureOptions picture;
    std::string block;  // draw this block's definition instead of the model space
};

// Writes the picture; the format follows the extension of `path`. False with `error` set
// when the block does not exist or the picture cannot be written. `counts`, when given,
// receives what the walk drew.
bool RenderToFile(const Database& db, const std::string& path, const RenderOptions& options,
                  std::string& error, WalkCounts* counts = nullptr);

}  // namespace cad::render
