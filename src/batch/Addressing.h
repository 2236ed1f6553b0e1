// I/O addresses. Each kind (DI, DO, AI, AO) counts on by itself through the modules in rack
// and slot order. A module takes a block of addresses from its kind's count, and channel i
// of the module (its place among the module's listed channels, in terminal order) gets the
// i-th address of the block:
//
//   bit / iec, digital   PREFIX BYTE.BIT   I0.0 .. I0.7, I1.0; %IX0.0   (block: whole bytes)
//   bit / iec, analog    PREFIX BYTE       IW0, IW2, ... one 16-bit word per channel
//   counter              PREFIX NUMBER     X000 .. X007, X010 in base 8; DI001 in base 10
#pragma once

#include <string>

#include "batch/Project.h"

namespace batch {

// The address of channel `index` of a block starting at `start` (units of the form).
std::string FormatAddress(const Project& project, Kind kind, long long start, long long index);

// The units a block of `channels` channels takes.
long long BlockSize(const Project& project, Kind kind, long long channels);

// `value` in `base` (upper-case digits), zero-padded to `digits`.
std::string InBase(long long value, int base, int digits);

}  // namespace batch
