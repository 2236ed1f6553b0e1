// The faults a library can hold without any statement refusing them: files written by other
// tools, older programs or hand edits. Reading only: the file is opened read-only and keeps
// every byte.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace plcdb {

struct LibraryFault {
    std::string where;  // MANUFACTURER/SERIES/TYPE/CODE, or the table (and row) concerned
    std::string what;
};

// Every fault of the library at `path`, in the order of its types; nullopt with `error` set
// when the file cannot be opened as a library.
std::optional<std::vector<LibraryFault>> FindLibraryFaults(const std::string& path,
                                                           std::string& error);

}  // namespace plcdb
