#include "cad/Dxf.h"

namespace cad {

DxfError::DxfError(std::string file, long line, std::string problem, std::string text)
    : std::runtime_error(file + (line > 0 ? ":" + std::to_string(line) : std::string()) + ": " +
                         problem + (text.empty() ? std::string() : " (\"" + text + "\")")),
      file_(std::move(file)),
      line_(line),
      problem_(std::move(problem)),
      text_(std::move(text)) {}

std::unique_ptr<Database> ReadDxfString(std::string_view data, const std::string& name) {
    throw DxfError(name, 0, "reading is not available yet");
}

std::unique_ptr<Database> ReadDxfFile(const std::string& path) {
    throw DxfError(path, 0, "reading is not available yet");
}

std::unique_ptr<Database> TryReadDxfFile(const std::string& path, std::string& error) {
    try {
        return ReadDxfFile(path);
    } catch (const DxfError& e) {
        error = e.what();
        return nullptr;
    }
}

}  // namespace cad
