#include "Document.h"

#include <filesystem>

#include "cad/Dxf.h"
#include "files/FileError.h"
#include "files/TextFile.h"

namespace desktop {
namespace {

constexpr const char* kUntitledName = "Drawing1.dxf";

}  // namespace

Document::Document() {
    New();
}

void Document::New() {
    db_ = std::make_unique<cad::Database>();
    path_.clear();
    identity_ = {};
    modified_ = false;
    seenSeed_ = db_->HandleSeed();
}

bool Document::Open(const std::string& path, std::string& error) {
    files::Identity identity;
    try {
        identity = files::Identify(path);
    } catch (const std::exception& e) {
        error = e.what();
        return false;
    }
    if (!identity.exists) {
        error = path + ": no such file";
        return false;
    }
    auto db = cad::TryReadDxfFile(path, error);
    if (!db) {
        return false;
    }
    std::error_code ec;
    const auto absolute = std::filesystem::absolute(path, ec);
    db_ = std::move(db);
    path_ = ec ? path : absolute.lexically_normal().string();
    identity_ = identity;
    modified_ = false;
    seenSeed_ = db_->HandleSeed();
    return true;
}

bool Document::SaveAs(const std::string& path, const std::string& saveFormat, std::string& error,
                      std::string& note) {
    const cad::DxfVersion version = cad::VersionForSaveFormat(saveFormat);
    files::WriteOptions options;
    // Saving over the file it was read from: refused when another program changed it since.
    const bool sameFile = !path_.empty() && files::SameFile(path, path_);
    if (sameFile) {
        options.expected = identity_;
    }
    try {
        cad::WriteDxfFile(*db_, path, version, options);
        identity_ = files::Identify(path);
    } catch (const files::FileError& e) {
        error = e.what();
        return false;
    } catch (const std::exception& e) {
        error = "cannot write " + path + ": " + e.what();
        return false;
    }
    note = cad::VersionChange(*db_, version);
    std::error_code ec;
    const auto absolute = std::filesystem::absolute(path, ec);
    path_ = ec ? path : absolute.lexically_normal().string();
    modified_ = false;
    seenSeed_ = db_->HandleSeed();
    return true;
}

void Document::NoteChanges() {
    if (db_->HandleSeed() != seenSeed_) {
        modified_ = true;
        seenSeed_ = db_->HandleSeed();
    }
}

std::string Document::Title() const {
    const std::string name =
        path_.empty() ? kUntitledName : std::filesystem::path(path_).filename().string();
    return modified_ ? name + "*" : name;
}

std::string Document::Variable(const std::string& name) const {
    const std::string upper = files::UpperAscii(name);
    if (upper == "DWGTITLED") {
        return path_.empty() ? "0" : "1";
    }
    if (upper == "DWGNAME") {
        return path_.empty() ? kUntitledName : std::filesystem::path(path_).filename().string();
    }
    if (upper == "DWGPREFIX") {
        std::error_code ec;
        const std::filesystem::path folder = path_.empty()
                                                 ? std::filesystem::current_path(ec)
                                                 : std::filesystem::path(path_).parent_path();
        std::string text = folder.string();
        if (!text.ends_with('/')) {
            text += '/';
        }
        return text;
    }
    return {};
}

}  // namespace desktop
