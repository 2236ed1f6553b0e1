#include "BatchTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>

#include "TestPaths.h"
#include "batch/Csv.h"
#include "cad/Entity.h"

namespace batch_test {

FakeLibrary::FakeLibrary() {
    Add("DI16", "DI", 16);
    Add("DI8", "DI", 8);
    Add("DO16", "DO", 16);
    Add("AI8", "AI", 8);
    Add("AO4", "AO", 4);
    Add("DM88", "DI/DO", 16);
}

void FakeLibrary::Add(const std::string& code, const std::string& moduleType, int points) {
    auto module = std::make_unique<batch::LibraryModule>();
    module->manufacturer = "M";
    module->series = "S";
    module->type = "T";
    module->code = code;
    module->points = std::to_string(points);
    module->moduleType = moduleType;
    for (int i = 1; i <= points + 1; ++i) {
        const std::string n = std::to_string(i);
        module->terminals.push_back({n, i <= points ? n : "M", "ch" + n, ""});
    }
    modules_[code] = std::move(module);
}

batch::ModuleLookup FakeLibrary::Lookup() const {
    return [this](const std::string& m, const std::string& s, const std::string& t,
                  const std::string& c) -> const batch::LibraryModule* {
        const auto it = modules_.find(c);
        return m == "M" && s == "S" && t == "T" && it != modules_.end() ? it->second.get()
                                                                        : nullptr;
    };
}

batch::IoList ListFromCsv(const std::string& csv, const std::string& file) {
    const batch::CsvResult parsed = batch::ParseCsv(csv, ',');
    EXPECT_EQ(parsed.error, "");
    std::vector<std::vector<std::string>> cells;
    std::vector<int> rows;
    for (const auto& record : parsed.records) {
        cells.push_back(record.fields);
        rows.push_back(record.line);
    }
    return batch::ListFromCells(file, cells, rows);
}

batch::Project ProjectFrom(const std::string& text) {
    testing_support::TempDir dir;
    testing_support::WriteFile(dir / "project.ini", text);
    std::vector<batch::ListError> errors;
    batch::Project project = batch::ReadProject((dir / "project.ini").string(), errors);
    for (const auto& error : errors) {
        ADD_FAILURE() << error.Text();
    }
    return project;
}

batch::Plan PlanOf(const std::string& csv, const batch::Project& project,
                   const FakeLibrary& library) {
    batch::Plan plan = batch::MakePlan(ListFromCsv(csv), project, library.Lookup());
    for (const auto& error : plan.errors) {
        ADD_FAILURE() << error.Text();
    }
    return plan;
}

std::string AddressOfRow(const batch::Plan& plan, int row) {
    for (const auto& sheet : plan.sheets) {
        for (const auto& module : sheet.modules) {
            for (const auto& channel : module.channels) {
                if (channel.row == row) {
                    return channel.address;
                }
            }
        }
    }
    return "";
}

namespace {

std::string Num(double v) {
    char text[32];
    std::snprintf(text, sizeof text, "%.4f", std::abs(v) < 5e-5 ? 0.0 : v);
    return text;
}

std::string Pt(const cad::Point3d& p, const cad::Point3d& o) {
    return "(" + Num(p.x - o.x) + "," + Num(p.y - o.y) + ")";
}

std::string Geometry(const cad::Database& db, const cad::Entity& e, const cad::Point3d& o) {
    if (const auto* t = cad::Database::Cast<cad::Text>(&e)) {
        return Pt(t->position, o) + Pt(t->alignment, o) + " h" + Num(t->height) + " r" +
               Num(t->rotation) + " w" + Num(t->widthFactor) + " '" + t->text + "' " +
               std::to_string(static_cast<int>(t->horizontal)) +
               std::to_string(static_cast<int>(t->vertical));
    }
    if (const auto* m = cad::Database::Cast<cad::MText>(&e)) {
        return Pt(m->position, o) + " h" + Num(m->height) + " r" + Num(m->rotation) + " a" +
               std::to_string(m->attachment) + " '" + m->contents + "'";
    }
    if (const auto* p = cad::Database::Cast<cad::LwPolyline>(&e)) {
        std::string text = p->closed ? "closed" : "open";
        for (const auto& v : p->vertices) {
            text += Pt({v.x, v.y, 0}, o);
        }
        return text;
    }
    if (const auto* l = cad::Database::Cast<cad::Line>(&e)) {
        return Pt(l->start, o) + Pt(l->end, o);
    }
    if (const auto* r = cad::Database::Cast<cad::BlockReference>(&e)) {
        const auto* block = db.Block(r->block);
        return Pt(r->position, o) + " r" + Num(r->rotation) + " " +
               (block != nullptr ? block->name : std::string("?"));
    }
    return "";
}

}  // namespace

std::vector<std::string> Canonical(const cad::Database& db, const std::vector<cad::Handle>& handles,
                                   const cad::Point3d& origin, const std::string& skipApp) {
    std::vector<std::string> lines;
    auto indexOf = [&](cad::Handle h) {
        const auto it = std::find(handles.begin(), handles.end(), h);
        return it == handles.end() ? std::string("outside")
                                   : "#" + std::to_string(it - handles.begin());
    };
    for (const cad::Handle h : handles) {
        const auto* e = db.Get<cad::Entity>(h);
        if (e == nullptr) {
            lines.push_back("missing");
            continue;
        }
        const auto* layer = db.Layer(e->layer);
        std::string line = e->TypeName() + " " + (layer ? layer->name : "?") + " c" +
                           std::to_string(e->color) + " " + Geometry(db, *e, origin);
        for (const auto& group : e->xdata) {
            const std::string app = db.AppName(group.app);
            if (!skipApp.empty() && app.rfind(skipApp, 0) == 0) {
                continue;
            }
            line += " [" + app;
            for (const auto& item : group.items) {
                line += " " + std::to_string(item.code) + ":" +
                        (item.code == 1005 ? indexOf(item.AsHandle()) : item.value);
            }
            line += "]";
        }
        lines.push_back(line);
    }
    return lines;
}

}  // namespace batch_test
