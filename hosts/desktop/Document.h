// The drawing open in the window: its database, the file it came from, and whether it holds
// work not yet saved.
#pragma once

#include <memory>
#include <string>

#include "cad/Database.h"
#include "files/FileIdentity.h"

namespace desktop {

class Document {
public:
    Document();  // a new, untitled drawing

    // Reads `path`. On failure the current drawing stays as it was and `error` says what
    // was wrong and where.
    bool Open(const std::string& path, std::string& error);
    // Writes the drawing to `path` in the version a DefaultFormatForSave value asks for
    // ("" or an unknown value: the newest). A file changed by someone else since it was
    // read is not overwritten. `note` tells of a version change.
    bool SaveAs(const std::string& path, const std::string& saveFormat, std::string& error,
                std::string& note);
    void New();

    cad::Database& Database() { return *db_; }
    const cad::Database& Database() const { return *db_; }
    const std::string& Path() const { return path_; }
    bool Titled() const { return !path_.empty(); }
    bool Modified() const { return modified_; }
    void SetModified(bool modified) { modified_ = modified; }
    // Marks the drawing modified when objects were added since the last call: what a
    // command that drew something leaves behind.
    void NoteChanges();

    // The file name shown in the title ("Drawing1.dxf" while untitled), with "*" when modified.
    std::string Title() const;
    // Host variables of the drawing: dwgprefix (folder with a trailing /), dwgname,
    // dwgtitled ("1" once it has a file).
    std::string Variable(const std::string& name) const;

private:
    std::unique_ptr<cad::Database> db_;
    std::string path_;
    files::Identity identity_;
    bool modified_ = false;
    cad::Handle seenSeed_ = 0;
};

}  // namespace desktop
