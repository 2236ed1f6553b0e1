// Splitting DXF text into group code / value pairs, with the line each came from.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "cad/Dxf.h"

namespace cad::dxfread {

struct RawTag {
    int code = 0;
    std::string_view value;  // bytes of the file, end blanks of numbers not removed
    long line = 0;           // line of the group code, 1-based
};

// Reads tags one at a time. Throws DxfError on a group code that is not a number, a file
// that ends after a group code, a binary DXF, a DWG or an image given as DXF.
class Tokenizer {
public:
    Tokenizer(std::string_view data, std::string fileName);

    // False at the end of the data.
    bool Next(RawTag& tag);
    bool Peek(RawTag& tag);
    // The next tag unless it has group code 0, which then stays for Next or Peek.
    bool NextInRecord(RawTag& tag);
    const std::string& FileName() const { return fileName_; }
    long Line() const { return line_; }
    [[noreturn]] void Fail(long line, const std::string& problem, std::string_view text = {}) const;
    // Called with byte ranges [from, to) of the data that no tag refers to any more, so a
    // mapped file need not stay in memory whole.
    void SetRelease(std::function<void(std::size_t, std::size_t)> release) {
        release_ = std::move(release);
    }
    void ReleaseConsumed();

private:
    bool ReadLine(std::string_view& line);

    std::string_view data_;
    std::size_t pos_ = 0;
    long line_ = 0;
    std::string fileName_;
    bool peeked_ = false;
    RawTag peekTag_;
    std::function<void(std::size_t, std::size_t)> release_;
    std::size_t released_ = 0;
};

// One object of the file: the tags from its group code 0 up to the next one.
struct Record {
    std::string_view type;
    long line = 0;
    std::vector<RawTag> tags;  // without the code 0 tag
};

}  // namespace cad::dxfread
