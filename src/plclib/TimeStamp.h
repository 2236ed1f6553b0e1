// The library's version stamp PLC/QvPLC.tim: one line naming when the library last changed.
// Two copies of the library are the same version when their stamps' first lines are equal
// (without regard to case), so every change to the library writes a new stamp.
#pragma once

#include <string>
#include <string_view>

namespace plcdb {

inline constexpr const char* kTimeStampRelativePath = "PLC/QvPLC.tim";

// local folder + "PLC/QvPLC.tim"
std::string TimeStampPath();

// The stamp line for now: local time to the millisecond, "YYYY-MM-DD HH:MM:SS.mmm".
std::string NewTimeStamp();

// Writes a new stamp line whole: NewTimeStamp(), then a blank and `author` when one is given
// (the network library names the writing host, so that two hosts never write the same
// stamp). False with `error` set when the file cannot be written.
bool WriteTimeStamp(const std::string& path, std::string_view author, std::string* error);

// Writes a new stamp (one line, ended by a line feed) whole. False, with the message shown
// on the host's command line, when the file cannot be written.
bool StampLibraryChange(const std::string& path = TimeStampPath());

}  // namespace plcdb
