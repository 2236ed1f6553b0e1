// Reports made from drawings, so that they show what was really drawn: the terminal plan of
// each module, the I/O list with addresses and signal texts, and the bill of materials.
// Modules are found by their device labels and the links the module drawing writes; the
// module's code and texts come from the drawing's parts list and, for modules drawn from an
// I/O list, from the record of where they came from.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "batch/Plan.h"
#include "cad/Database.h"

namespace batch {

// Written on each terminal symbol of a module drawn from an I/O list: "address=...",
// "signal=...", "kind=..." string items.
inline constexpr const char* kAppChannel = "QV_BATCH_IO";

// Records on each terminal symbol of the module labelled `label` the address, signal text
// and kind of the list's channel on that terminal (matched by the drawn terminal number).
void WriteChannels(cad::Database& db, cad::Handle label, const PlannedModule& module);

struct DrawnTerminal {
    std::string number;                 // the terminal-number text
    std::string description;            // the description text drawn beside it
    std::string address, signal, kind;  // from the I/O list, when it was drawn from one
};

struct DrawnModuleInfo {
    std::string drawing;  // the file it was read from
    std::string label;    // the device label as drawn
    std::string code, type, description, location;
    std::string module;  // MANUFACTURER/SERIES/TYPE/CODE, when drawn from a list
    std::vector<DrawnTerminal> terminals;
};

// Every module of the drawing's model space, in drawing order.
std::vector<DrawnModuleInfo> ModulesOfDrawing(const cad::Database& db, const std::string& drawing);

enum class ReportKind { Terminals, Io, Bom };
std::optional<ReportKind> ReportKindNamed(const std::string& name);

struct ReportTable {
    std::string title;  // the sheet's name in a workbook
    std::vector<std::string> headings;
    std::vector<std::vector<std::string>> rows;
};

ReportTable MakeReport(ReportKind kind, const std::vector<DrawnModuleInfo>& modules);

// CSV, UTF-8 with a byte-order mark so spreadsheet programs read CJK texts right; fields
// quoted when they hold a separator, quote or line break. Through the atomic writer.
std::string CsvText(const ReportTable& table);
void WriteCsvReport(const ReportTable& table, const std::string& path);
// An XLSX workbook of one sheet; written whole or not at all. False with `error` set when
// the workbook cannot be made.
bool WriteXlsxReport(const ReportTable& table, const std::string& path, std::string& error);

}  // namespace batch
