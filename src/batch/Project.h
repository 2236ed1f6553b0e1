// The project file of a batch drawing: how addresses are formed and where modules go.
// Plain text, one "key = value" a line, '#' starts a comment, keys in any order, every key
// optional (see res/sample/batch/project.ini for a commented example):
//
//   form = bit | iec | counter    I0.0 / %IX0.0 / X000, DI001            (default bit)
//   base = 8 | 10 | 16            digits of the counter form             (default 10)
//   digits = N                    counter form: width, zero-padded       (default 3)
//   start.DI = N                  first address of a kind; DI, DO, AI, AO (default 0)
//   slot.R.S = N                  the module in rack R, slot S starts at N; the kind's
//                                 count runs on from there
//   prefix.DI = TEXT              prefix of a kind (defaults by form: I Q IW QW,
//                                 %IX %QX %IW %QW, X Y AI AO)
//   kind.TYPE = DI                module signal type TYPE counts as this kind (built in:
//                                 DI DO AI AO, RO = DO)
//   reserve = points | listed     a module takes addresses for all its points, or only
//                                 for the channels listed                (default points)
//   spare = TEXT                  a signal text that marks a spare channel (repeatable;
//                                 an empty signal always does)            (default 备用, SPARE)
//   address.field = description | detail   where the address is written; the signal text
//                                 goes to the other                      (default description)
//   sheet.modules = N             modules per sheet when the list names no sheet (default 8)
//   grid.columns = N, grid.dx = X, grid.dy = Y   the module grid on a sheet; dx 0 = the
//                                 widest module of the sheet plus 40     (default 4, 0, 100)
//   frame = FILE.dxf              sheet frame: every sheet starts as a copy of this drawing
//                                 (relative to the project file's folder)
//
// Numbers N in the bit and iec forms count bytes (decimal); in the counter form they are
// written in its base ("start.DO = 20" with base 8 is the 16th address).
#pragma once

#include <map>
#include <string>
#include <vector>

#include "batch/IoList.h"

namespace batch {

enum class AddressForm { Bit, Iec, Counter };
enum class Kind { DI, DO, AI, AO };
inline constexpr int kKindCount = 4;
const char* KindName(Kind kind);
bool ParseKind(std::string_view text, Kind& kind);
inline bool IsAnalog(Kind kind) {
    return kind == Kind::AI || kind == Kind::AO;
}

struct Project {
    std::string file;  // empty: the defaults
    AddressForm form = AddressForm::Bit;
    int base = 10;
    int digits = 3;
    long long start[kKindCount] = {0, 0, 0, 0};
    std::map<std::pair<long long, long long>, long long> slotStart;  // (rack, slot) -> start
    std::string prefix[kKindCount];                                  // empty: the form's default
    std::map<std::string, Kind> kindOfType;  // upper-case module signal type -> kind
    bool reservePoints = true;
    std::vector<std::string> spareTexts = {"备用", "SPARE"};
    bool addressInDetail = false;  // the address goes to the detailed description
    int modulesPerSheet = 8;
    int gridColumns = 4;
    double gridDx = 0;
    double gridDy = 100;
    std::string frame;  // full path, or empty

    // The prefix of a kind: the one set, or the form's default.
    std::string PrefixOf(Kind kind) const;
    // The kind a module signal type counts as, if it names one.
    std::optional<Kind> KindOfType(std::string_view moduleType) const;
    bool IsSpare(std::string_view signal) const;
};

// Reads a project file; its faults (unknown keys, bad values) go to `errors`, each with the
// file, line and key.
Project ReadProject(const std::string& path, std::vector<ListError>& errors);

}  // namespace batch
