#include "cad/render/Render.h"

namespace cad::render {

bool RenderToFile(const Database& db, const std::string& path, const RenderOptions& options,
                  std::string& error, WalkCounts* counts) {
    Handle space = db.ModelSpace();
    if (!options.block.empty()) {
        space = db.FindBlock(options.block);
        if (space == kNullHandle) {
            error = "the drawing has no block named '" + options.block + "'";
            return false;
        }
    }
    // Refused before the picture file is touched.
    if (!CheckExpansion(db, space, error)) {
        return false;
    }
    WalkOptions walk;
    walk.background = options.picture.background;
    WalkCounts last;
    const auto draw = [&](Canvas& canvas) { last = DrawSpace(db, canvas, walk, space); };
    if (!WritePicture(draw, path, options.picture, error)) {
        return false;
    }
    if (counts) {
        *counts = last;
    }
    return true;
}

}  // namespace cad::render
