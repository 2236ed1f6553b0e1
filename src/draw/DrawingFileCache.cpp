#include "draw/DrawingFileCache.h"

#include "cad/Dxf.h"
#include "files/TextFile.h"

namespace draw {

const cad::Database* DrawingFileCache::Read(const std::string& path, std::string& error) {
    std::string bytes;
    if (!files::ReadWhole(path, bytes, &error)) {
        Forget();
        return nullptr;
    }
    if (drawing_ && path_ == path && bytes_ == bytes) {
        return drawing_.get();
    }
    std::unique_ptr<cad::Database> drawing;
    try {
        if (bytes.empty()) {
            throw cad::DxfError(path, 0, "the file is empty");
        }
        drawing = cad::ReadDxfString(bytes, path);
    } catch (const cad::DxfError& e) {
        error = e.what();
        Forget();
        return nullptr;
    }
    Remember(path, std::move(bytes), std::move(drawing));
    return drawing_.get();
}

void DrawingFileCache::Remember(std::string path, std::string bytes,
                                std::unique_ptr<cad::Database> drawing) {
    path_ = std::move(path);
    bytes_ = std::move(bytes);
    drawing_ = std::move(drawing);
}

void DrawingFileCache::Forget() {
    Remember({}, {}, nullptr);
}

}  // namespace draw
