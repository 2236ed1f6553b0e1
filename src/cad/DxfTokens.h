// Splitting DXF text into group code / value pairs, with the line each came from.
#pragma once

#include <functional>
#include <memory>
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

// Reads tags one at a time, from ASCII or binary DXF alike; comments (group code 999) are
// skipped. Throws DxfError on a group code that is not a number, a file that ends after a
// group code or inside a binary value, a DWG or an image given as DXF.
//
// Binary DXF: the values are turned into the text an ASCII file would hold (numbers in their
// shortest exact form, binary chunks as hex), so everything above this layer sees one kind of
// tag. There `line` is the byte offset of a tag's value less one, so that `line + 1`, which
// the reader gives for a faulty value, is the value's offset, and errors name byte offsets.
class Tokenizer {
public:
    Tokenizer(std::string_view data, std::string fileName);

    // False at the end of the data.
    bool Next(RawTag& tag);
    bool Peek(RawTag& tag);
    // The next tag unless it has group code 0, which then stays for Next or Peek.
    bool NextInRecord(RawTag& tag);
    const std::string& FileName() const { return fileName_; }
    long Line() const { return binary_ ? static_cast<long>(pos_) : line_; }
    bool Binary() const { return binary_; }
    [[noreturn]] void Fail(long line, const std::string& problem, std::string_view text = {}) const;
    // Called with byte ranges [from, to) of the data that no tag refers to any more, so a
    // mapped file need not stay in memory whole.
    void SetRelease(std::function<void(std::size_t, std::size_t)> release) {
        release_ = std::move(release);
    }
    void ReleaseConsumed();
    // Where the next tag starts in the data.
    std::size_t NextStart() const { return peeked_ ? peekStart_ : pos_; }
    // The highest handle (group code 5 or 105) from `start` on, without moving; 0 when there
    // is none. A fault ends the look; the reading proper reports it.
    Handle HighestHandleFrom(std::size_t start) const;

private:
    bool ReadLine(std::string_view& line);
    bool NextTag(RawTag& tag);
    bool NextBinary(RawTag& tag);
    // Room for one binary value turned into text; lives as long as the tokenizer.
    char* Scratch(std::size_t size);

    std::string_view data_;
    std::size_t pos_ = 0;
    long line_ = 0;
    std::string fileName_;
    bool peeked_ = false;
    RawTag peekTag_;
    std::function<void(std::size_t, std::size_t)> release_;
    std::size_t released_ = 0;
    std::size_t peekStart_ = 0;  // where the tag waiting in `peekTag_` starts in the data
    std::size_t tagStart_ = 0;
    bool binary_ = false;
    bool twoByteCodes_ = true;  // R13 and later; R12 writes one byte (255 then two for more)
    std::vector<std::unique_ptr<char[]>> arena_;
    std::size_t arenaLeft_ = 0;
    char* arenaNext_ = nullptr;
};

// One object of the file: the tags from its group code 0 up to the next one.
struct Record {
    std::string_view type;
    long line = 0;
    std::vector<RawTag> tags;  // without the code 0 tag
};

}  // namespace cad::dxfread
