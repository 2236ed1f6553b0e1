#include "batch/Report.h"

#include <unistd.h>
#include <xlsxwriter.h>

#include <filesystem>
#include <map>

#include "batch/Source.h"
#include "draw/ModuleDrawing.h"
#include "draw/SheetDrawing.h"
#include "files/AtomicFile.h"
#include "files/FileError.h"

namespace batch {

namespace {

std::vector<cad::Handle> Links(const cad::Database& db, const cad::Entity& entity,
                               const char* app) {
    std::vector<cad::Handle> handles;
    if (const auto* items = db.GetXData(entity, app)) {
        for (const cad::XDataItem& item : *items) {
            if (item.code == 1005 && item.AsHandle() != cad::kNullHandle) {
                handles.push_back(item.AsHandle());
            }
        }
    }
    return handles;
}

std::string TextOf(const cad::Database& db, cad::Handle h) {
    const auto* e = db.Get<cad::Entity>(h);
    if (e == nullptr || e->erased) {
        return {};
    }
    if (const auto* text = cad::Database::Cast<cad::Text>(e)) {
        return text->text;
    }
    if (const auto* mtext = cad::Database::Cast<cad::MText>(e)) {
        return mtext->contents;
    }
    return {};
}

std::string FirstLinkedText(const cad::Database& db, const cad::Entity& entity, const char* app) {
    const auto links = Links(db, entity, app);
    return links.empty() ? std::string() : TextOf(db, links.front());
}

void ReadChannel(const cad::Database& db, const cad::Entity& symbol, DrawnTerminal& terminal) {
    const auto* items = db.GetXData(symbol, kAppChannel);
    if (items == nullptr) {
        return;
    }
    for (const cad::XDataItem& item : *items) {
        const auto eq = item.value.find('=');
        if (item.code != 1000 || eq == std::string::npos) {
            continue;
        }
        const std::string key = item.value.substr(0, eq), value = item.value.substr(eq + 1);
        std::string* field = key == "address"  ? &terminal.address
                             : key == "signal" ? &terminal.signal
                             : key == "kind"   ? &terminal.kind
                                               : nullptr;
        if (field != nullptr) {
            *field = value;
        }
    }
}

// The parts list's record of the label, key by key.
std::map<std::string, std::string> PartRecord(const cad::Database& db, const std::string& label) {
    std::map<std::string, std::string> fields;
    const cad::Handle dict = db.FindDictionary(draw::kPartsDictionary);
    const cad::XRecord* record = dict ? db.FindXRecord(dict, label) : nullptr;
    if (record == nullptr) {
        return fields;
    }
    std::string key;
    for (const cad::Tag& tag : record->data) {
        if (tag.code == 3) {
            key = tag.value;
        } else if (tag.code == 1 && !key.empty()) {
            fields[key] = tag.value;
            key.clear();
        }
    }
    return fields;
}

std::string LastPart(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

}  // namespace

void WriteChannels(cad::Database& db, cad::Handle label, const PlannedModule& module) {
    const auto* labelEntity = db.Get<cad::Entity>(label);
    if (labelEntity == nullptr || module.module == nullptr) {
        return;
    }
    std::map<std::string, const PlannedChannel*> byValue;
    for (const PlannedChannel& channel : module.channels) {
        byValue.emplace(module.module->terminals[channel.terminal].value, &channel);
    }
    for (const cad::Handle ref : Links(db, *labelEntity, draw::kAppLabel)) {
        auto* symbol = db.Get<cad::Entity>(ref);
        if (symbol == nullptr) {
            continue;
        }
        const auto it = byValue.find(FirstLinkedText(db, *symbol, draw::kAppTermText));
        if (it == byValue.end()) {
            continue;
        }
        db.RemoveXData(*symbol, kAppChannel);
        for (const std::string& item :
             {"address=" + it->second->address, "signal=" + it->second->signal,
              std::string("kind=") + KindName(it->second->kind)}) {
            db.AppendXData(*symbol, kAppChannel, cad::XDataItem::String(item));
        }
    }
}

std::vector<DrawnModuleInfo> ModulesOfDrawing(const cad::Database& db, const std::string& drawing) {
    std::vector<DrawnModuleInfo> modules;
    for (const cad::Entity* entity : db.Entities()) {
        // A device label links its terminal symbols; a symbol links back to the label, and is
        // a block reference.
        if (entity->erased || cad::Database::Cast<cad::BlockReference>(entity) != nullptr ||
            db.GetXData(*entity, draw::kAppLabel) == nullptr) {
            continue;
        }
        DrawnModuleInfo module;
        module.drawing = drawing;
        module.label = TextOf(db, entity->handle);
        const auto part = PartRecord(db, module.label);
        const auto field = [&](const char* key) {
            const auto it = part.find(key);
            return it == part.end() ? std::string() : it->second;
        };
        module.code = field("$CODE");
        module.type = field("$TYPE");
        module.description = field("$DESCRIBE");
        module.location = field("$Location");
        if (const auto source = ReadSource(db, *entity)) {
            module.module = source->module;
            if (module.code.empty()) {
                module.code = LastPart(source->module);
            }
        }
        for (const cad::Handle ref : Links(db, *entity, draw::kAppLabel)) {
            const auto* symbol = db.Get<cad::Entity>(ref);
            if (symbol == nullptr || symbol->erased) {
                continue;
            }
            DrawnTerminal terminal;
            terminal.number = FirstLinkedText(db, *symbol, draw::kAppTermText);
            terminal.description = FirstLinkedText(db, *symbol, draw::kAppTermDescText);
            ReadChannel(db, *symbol, terminal);
            module.terminals.push_back(std::move(terminal));
        }
        modules.push_back(std::move(module));
    }
    return modules;
}

std::optional<ReportKind> ReportKindNamed(const std::string& name) {
    if (name == "terminals") {
        return ReportKind::Terminals;
    }
    if (name == "io") {
        return ReportKind::Io;
    }
    if (name == "bom") {
        return ReportKind::Bom;
    }
    return std::nullopt;
}

ReportTable MakeReport(ReportKind kind, const std::vector<DrawnModuleInfo>& modules) {
    ReportTable table;
    switch (kind) {
        case ReportKind::Terminals:
            table.title = "terminals";
            table.headings = {"drawing", "label", "code", "terminal", "description"};
            for (const auto& m : modules) {
                for (const auto& t : m.terminals) {
                    table.rows.push_back({m.drawing, m.label, m.code, t.number, t.description});
                }
            }
            break;
        case ReportKind::Io:
            table.title = "io";
            table.headings = {"drawing", "tag", "module", "channel", "address", "signal", "kind"};
            for (const auto& m : modules) {
                for (const auto& t : m.terminals) {
                    // A module drawn by hand carries only what its texts show.
                    const std::string address =
                        t.address.empty() && t.signal.empty() ? std::string() : t.address;
                    const std::string signal =
                        t.address.empty() && t.signal.empty() ? t.description : t.signal;
                    table.rows.push_back({m.drawing, m.label, m.module.empty() ? m.code : m.module,
                                          t.number, address, signal, t.kind});
                }
            }
            break;
        case ReportKind::Bom: {
            table.title = "bom";
            table.headings = {"code", "type", "description", "quantity", "labels"};
            std::map<std::string, std::size_t> index;
            for (const auto& m : modules) {
                const std::string key = m.module.empty() ? m.code : m.module;
                auto [it, added] = index.emplace(key, table.rows.size());
                if (added) {
                    table.rows.push_back({m.code, m.type, m.description, "0", ""});
                }
                auto& row = table.rows[it->second];
                row[3] = std::to_string(std::stoul(row[3]) + 1);
                row[4] += (row[4].empty() ? "" : ", ") + m.label;
            }
            break;
        }
    }
    return table;
}

std::string CsvText(const ReportTable& table) {
    std::string out = "\xEF\xBB\xBF";
    const auto line = [&](const std::vector<std::string>& fields) {
        for (std::size_t i = 0; i < fields.size(); ++i) {
            const std::string& f = fields[i];
            if (i > 0) {
                out += ',';
            }
            if (f.find_first_of(",\"\r\n") == std::string::npos) {
                out += f;
                continue;
            }
            out += '"';
            for (const char c : f) {
                out += c == '"' ? std::string("\"\"") : std::string(1, c);
            }
            out += '"';
        }
        out += "\r\n";
    };
    line(table.headings);
    for (const auto& row : table.rows) {
        line(row);
    }
    return out;
}

void WriteCsvReport(const ReportTable& table, const std::string& path) {
    files::WriteFile(path, CsvText(table));
}

bool WriteXlsxReport(const ReportTable& table, const std::string& path, std::string& error) {
    files::CheckWritable(path);
    // The library writes a named file: it is made in a private scratch folder and then
    // copied into place by the atomic writer, so a failure leaves no half workbook.
    char scratchDir[] = "/tmp/qvplc-report-XXXXXX";
    if (mkdtemp(scratchDir) == nullptr) {
        error = "cannot make a scratch folder in /tmp";
        return false;
    }
    const std::string scratch = std::string(scratchDir) + "/report.xlsx";
    lxw_workbook* workbook = workbook_new(scratch.c_str());
    lxw_worksheet* sheet =
        workbook ? workbook_add_worksheet(workbook, table.title.c_str()) : nullptr;
    if (sheet == nullptr) {
        error = "cannot make the workbook";
        std::filesystem::remove_all(scratchDir);
        return false;
    }
    lxw_format* bold = workbook_add_format(workbook);
    format_set_bold(bold);
    for (std::size_t c = 0; c < table.headings.size(); ++c) {
        worksheet_write_string(sheet, 0, static_cast<lxw_col_t>(c), table.headings[c].c_str(),
                               bold);
    }
    for (std::size_t r = 0; r < table.rows.size(); ++r) {
        for (std::size_t c = 0; c < table.rows[r].size(); ++c) {
            const auto row = static_cast<lxw_row_t>(r + 1);
            const auto col = static_cast<lxw_col_t>(c);
            // Counts stay numbers a spreadsheet can sum; every other cell is text as drawn.
            if (table.headings[c] == "quantity") {
                worksheet_write_number(sheet, row, col, std::stod(table.rows[r][c]), nullptr);
            } else {
                worksheet_write_string(sheet, row, col, table.rows[r][c].c_str(), nullptr);
            }
        }
    }
    const lxw_error closed = workbook_close(workbook);
    if (closed != LXW_NO_ERROR) {
        error = std::string("cannot write the workbook: ") + lxw_strerror(closed);
        std::filesystem::remove_all(scratchDir);
        return false;
    }
    try {
        files::CopyInto(path, scratch);
    } catch (...) {
        std::filesystem::remove_all(scratchDir);
        throw;
    }
    std::filesystem::remove_all(scratchDir);
    return true;
}

}  // namespace batch
