// Lists, projects and a small in-memory library for the batch tests, and a canonical form of
// a drawn module for comparing two drawings of it.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "batch/IoList.h"
#include "batch/Plan.h"
#include "batch/Project.h"
#include "cad/Database.h"

namespace batch_test {

// Modules "M/S/T/CODE" with `points` channels (terminal values and sequences "1".."points")
// followed by a common terminal "M".
class FakeLibrary {
public:
    FakeLibrary();
    void Add(const std::string& code, const std::string& moduleType, int points);
    batch::LibraryModule& Module(const std::string& code) { return *modules_.at(code); }
    batch::ModuleLookup Lookup() const;

private:
    std::map<std::string, std::unique_ptr<batch::LibraryModule>> modules_;
};

// A list from CSV text (comma separated, first line the headings).
batch::IoList ListFromCsv(const std::string& csv, const std::string& file = "io.csv");
// A project from the lines of a project file; fails the test on any fault.
batch::Project ProjectFrom(const std::string& text);

// The plan of `csv`; fails the test when it has faults.
batch::Plan PlanOf(const std::string& csv, const batch::Project& project,
                   const FakeLibrary& library);
// Address of the channel listed in `row` of the plan ("" when not planned).
std::string AddressOfRow(const batch::Plan& plan, int row);

// One line per entity of `handles` (in that order): type, layer name, colour, geometry
// relative to `origin`, texts, and xdata with every handle item written as the index of the
// entity it names within `handles`. Applications whose names begin with `skipApp` are left out.
std::vector<std::string> Canonical(const cad::Database& db, const std::vector<cad::Handle>& handles,
                                   const cad::Point3d& origin, const std::string& skipApp);

}  // namespace batch_test
