// Reading and writing ASCII DXF files. Reading is lenient (it repairs what it can and lists
// the repairs in Database::Repairs()); writing is strict (the database is audited first and
// a file is never half-written).
//
// Text is UTF-8 in the database. Files of R2007 and later are UTF-8; earlier files are in
// the code page named by $DWGCODEPAGE (ANSI_936, i.e. GBK, for new drawings), and a
// character outside it is written as \U+XXXX.
//
// Application names in R14 files: R14 allows at most 31 letters, digits and "$-_". An R14
// save writes every other character of an application name as '_' and cuts the name at 31
// characters, in the APPID table and in every extended-data group alike, so the links the
// data carries survive; "QV_ GROUPPARTXRECT_TEXT" is saved as "QV__GROUPPARTXRECT_TEXT" and
// reads back under that name. Two names that would shorten alike stay two applications: the
// second gets "_2" (then "_3", ...) in place of its last characters. R2000 and later keep
// names as they are. Registering a name later finds the application under its R14 spelling
// (Database::FindApp), so a drawing keeps one application per system.
//
// Written values: every number lies in the range of cad/Limits.h (the audit refuses a drawing
// holding another), $EXTMIN/$EXTMAX are the model space's extents at the time of writing, and
// angles are written in degrees without the last bits the conversion from radians leaves.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "cad/Database.h"
#include "files/AtomicFile.h"

namespace cad {

enum class DxfVersion { R14, R2000, R2004, R2007, R2010 };

const char* AcadVer(DxfVersion v);  // "AC1014" ... "AC1024"
// The version for a "DefaultFormatForSave" setting: 8 R14, 12 R2000, 24 R2004, 36 R2007,
// anything else R2010.
DxfVersion VersionForSaveFormat(std::string_view defaultFormatForSave);

// The version a drawing read from a file was in, when it is not the one about to be written:
// a sentence naming both, for the user; "" for a new drawing or an unchanged version.
std::string VersionChange(const Database& db, DxfVersion written);

// What is wrong with a file, and where: line is 1-based (0 when it does not apply). Errors
// in a binary file name a byte offset instead: Line() is 0, Offset() the offset (otherwise
// -1), and the problem text begins with it ("at byte offset 1234: ...").
class DxfError : public std::runtime_error {
public:
    DxfError(std::string file, long line, std::string problem, std::string text = {});
    static DxfError AtOffset(std::string file, long offset, const std::string& problem,
                             std::string text = {});
    const std::string& File() const { return file_; }
    long Line() const { return line_; }
    long Offset() const { return offset_; }
    const std::string& Problem() const { return problem_; }
    const std::string& Text() const { return text_; }

private:
    std::string file_;
    long line_;
    long offset_ = -1;
    std::string problem_;
    std::string text_;
};

// Reads a DXF file. The file is opened read-only and not locked, so a drawing open elsewhere
// can be read. Throws DxfError.
std::unique_ptr<Database> ReadDxfFile(const std::string& path);
// Reads DXF text; `name` is used in error messages. Throws DxfError.
std::unique_ptr<Database> ReadDxfString(std::string_view data,
                                        const std::string& name = "<memory>");
// As ReadDxfFile, reporting an error through `error` and a null result instead of throwing.
std::unique_ptr<Database> TryReadDxfFile(const std::string& path, std::string& error);

// Receives the tags of a written file. The writer knows nothing of files or encodings beyond
// producing tag values in the file's encoding.
class TagSink {
public:
    virtual ~TagSink() = default;
    virtual void Put(int code, std::string_view value) = 0;
};

// Collects tags (for tests and tools that inspect what would be written).
class TagCollector : public TagSink {
public:
    void Put(int code, std::string_view value) override {
        tags.push_back({code, std::string(value)});
    }
    TagList tags;
};

// Writes the tags of the whole file to `sink`. Throws DxfError when the audit finds an error.
// True when the tags hold the drawing exactly (see WriteDxfString).
bool WriteDxf(const Database& db, DxfVersion version, TagSink& sink);
// The file as text. With `exact`, also tells whether the text reads back with every name,
// text and number as the drawing holds it: false when something had to change to fit the
// file (a control character, a literal "\U+" escape, an application name R14 cannot hold).
// A number outside the range of cad/Limits.h is never written: the audit refuses it.
std::string WriteDxfString(const Database& db, DxfVersion version, bool* exact = nullptr);
// Writes the file through a files::AtomicFile (see its header for the policy). Throws
// DxfError when the drawing cannot be written as a file, files::FileError when the file
// cannot be written.
void WriteDxfFile(const Database& db, const std::string& path, DxfVersion version,
                  const files::WriteOptions& options = {});

}  // namespace cad
