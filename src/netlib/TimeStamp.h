// The library's version stamp, PLC/QvPLC.tim: one line that changes whenever the library is
// edited. Two copies of the library are the same version when their stamps' first lines are
// equal, letter case aside. The stamp written here is the library's own stamp line followed
// by the identity of the host that wrote it, so that two hosts never write the same stamp.
#pragma once

#include <optional>
#include <string>

namespace netlib {

// The first line of a text file; empty optional when it cannot be opened.
std::optional<std::string> ReadFirstLine(const std::string& path);

// True unless both stamps were read and are equal. With installation style 1 it connects by
// itself and fetches the server's stamp into TempFTP/QvPLC.tim (removed after reading);
// otherwise only a stamp left there could be compared.
bool IsLibraryOutOfDate();

// Writes a new stamp as the whole of `path`; false with `error` set when it cannot.
bool WriteTimeStamp(const std::string& path, std::string* error);

// When the local library was changed after its stamp was written (or has none), writes a new
// local stamp; true when it did. For changes made without the editor, such as a library
// copied over the local one.
bool StampIfLibraryChanged(std::string* error);

}  // namespace netlib

// The system's name for the stamp comparison.
using netlib::IsLibraryOutOfDate;
