// A drawing file parsed once and kept with the file's bytes. Drawing a module reads its
// symbol file and the preview file it has just written; parsing them again each time would
// cost more than the drawing itself. The kept drawing is used only while the file holds
// exactly the bytes it was made from, so a file changed by anyone else is read afresh.
#pragma once

#include <memory>
#include <string>

#include "cad/Database.h"

namespace draw {

class DrawingFileCache {
public:
    // The drawing in the file at `path` (read-only, not locked), or null with `error` saying
    // why when the file cannot be read or is not a drawing.
    const cad::Database* Read(const std::string& path, std::string& error);

    // Keeps `drawing` as what `bytes`, just written to `path`, hold.
    void Remember(std::string path, std::string bytes, std::unique_ptr<cad::Database> drawing);
    void Forget();

private:
    std::string path_;
    std::string bytes_;
    std::unique_ptr<cad::Database> drawing_;
};

}  // namespace draw
