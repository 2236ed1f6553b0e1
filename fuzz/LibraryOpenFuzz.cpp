// Feeds arbitrary bytes to the library as if they were PLC/QvPLC.db: the library is opened,
// its entry list loaded and the terminal rows of its modules read. Every outcome is an
// answer or a reported error; nothing may crash, hang or read out of bounds.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include "plclib/PlcLib.h"

namespace {

std::string ScratchPath() {
    static const std::string path = "/tmp/qv-fuzz-lib-" + std::to_string(getpid()) + ".db";
    return path;
}

bool WriteBytes(const std::string& path, const std::uint8_t* data, std::size_t size) {
    std::remove((path + "-journal").c_str());
    FILE* f = std::fopen(path.c_str(), "wb");
    if (f == nullptr)
        return false;
    const bool ok = std::fwrite(data, 1, size, f) == size;
    return std::fclose(f) == 0 && ok;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string path = ScratchPath();
    if (!WriteBytes(path, data, size))
        return 0;
    CPlcLib lib;
    if (!lib.Open(path))
        return 0;
    lib.LoadLibrary();
    int loaded = 0;
    for (const auto& entry : lib.Entries()) {
        if (entry->code.empty() || ++loaded > 8)
            continue;
        CPlcPartData rows;
        lib.LoadTerminals(entry->manufacturer, entry->series, entry->type, entry->code, rows);
    }
    lib.Close();
    return 0;
}
