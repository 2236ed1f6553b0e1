// Every kind of bad list row is reported with its file, row and column, and the good rows
// still make their modules.
#include <gtest/gtest.h>

#include "BatchTestSupport.h"

namespace {

std::vector<std::string> Faults(const std::string& csv) {
    batch_test::FakeLibrary lib;
    const auto plan = batch::MakePlan(batch_test::ListFromCsv(csv), batch::Project{}, lib.Lookup());
    std::vector<std::string> texts;
    for (const auto& e : plan.errors) {
        texts.push_back(e.Text());
    }
    return texts;
}

TEST(BatchPlanErrors, EveryBadRowIsReportedWithRowAndColumn) {
    const auto faults = Faults(
        "tag,rack,slot,module,channel,signal,kind\n"
        "A1,0,1,M/S/T/DI8,1,ok,\n"     // 2 good
        ",0,1,M/S/T/DI8,2,x,\n"        // 3 no tag
        "A2,x,2,M/S/T/DI8,1,x,\n"      // 4 bad rack
        "A3,0,-1,M/S/T/DI8,1,x,\n"     // 5 bad slot
        "A4,0,4,M/S/T/NOPE,1,x,\n"     // 6 unknown module
        "A5,0,5,DI8,1,x,\n"            // 7 not a module path
        "A1,0,1,M/S/T/DI8,,x,\n"       // 8 no channel
        "A1,0,1,M/S/T/DI8,12,x,\n"     // 9 channel not in module
        "A1,0,1,M/S/T/DI8,#10,x,\n"    // 10 sequence not in module
        "A1,0,1,M/S/T/DI8,#1,x,\n"     // 11 duplicate (by sequence)
        "A1,0,2,M/S/T/DI8,3,x,\n"      // 12 tag moved to another slot
        "A6,0,1,M/S/T/DI8,1,x,\n"      // 13 slot already taken
        "A7,0,7,M/S/T/DM88,1,x,\n"     // 14 mixed module without kind
        "A8,0,8,M/S/T/DI8,1,x,XX\n");  // 15 bad kind
    EXPECT_EQ(faults,
              (std::vector<std::string>{
                  "io.csv: row 3, column tag: no tag given",
                  "io.csv: row 4, column rack: 'x' is not a rack number (0, 1, 2, ...)",
                  "io.csv: row 5, column slot: '-1' is not a slot number (0, 1, 2, ...)",
                  "io.csv: row 6, column module: the library has no module M/S/T/NOPE",
                  "io.csv: row 7, column module: 'DI8' is not MANUFACTURER/SERIES/TYPE/CODE",
                  "io.csv: row 8, column channel: no channel given",
                  "io.csv: row 9, column channel: module DI8 has no terminal '12'",
                  "io.csv: row 10, column channel: module DI8 has no terminal with sequence 10",
                  "io.csv: row 11, column channel: channel #1 of A1 is listed already in row 2",
                  "io.csv: row 12, column slot: '2' differs from row 2, where tag A1 has '1'",
                  "io.csv: row 13, column slot: rack 0, slot 1 already holds A1 (row 2)",
                  "io.csv: row 14, column kind: module DM88 has the signal type 'DI/DO', which "
                  "is no single kind: give the row's kind (DI, DO, AI or AO) in a kind column, "
                  "or map the type with kind.DI/DO = ... in the project file",
                  "io.csv: row 15, column kind: 'XX' is not one of DI, DO, AI, AO"}));
}

TEST(BatchPlanErrors, GoodRowsStillMakeTheirModulesWhenOthersAreBad) {
    batch_test::FakeLibrary lib;
    const auto plan =
        batch::MakePlan(batch_test::ListFromCsv("tag,rack,slot,module,channel,signal\n"
                                                "A1,0,1,M/S/T/DI8,1,a\n"
                                                "A1,0,1,M/S/T/DI8,99,b\n"
                                                "A2,0,2,M/S/T/DI8,2,c\n"),
                        batch::Project{}, lib.Lookup());
    EXPECT_EQ(plan.errors.size(), 1u);
    ASSERT_EQ(plan.ModuleCount(), 2u);
    EXPECT_EQ(plan.sheets[0].modules[0].channels.size(), 1u);
}

TEST(BatchPlanErrors, HeadingFaultsStopThePlanBeforeAnyRow) {
    const auto faults = Faults("tag,rack,slot,module,signal\nA1,0,1,M/S/T/NOPE,x\n");
    ASSERT_EQ(faults.size(), 1u);
    EXPECT_EQ(faults[0],
              "io.csv: row 1, column channel: the heading row has no such column (required)");
}

TEST(BatchPlanErrors, AKindColumnSettlesAMixedModule) {
    batch_test::FakeLibrary lib;
    const auto plan = batch_test::PlanOf(
        "tag,rack,slot,module,channel,signal,kind\n"
        "A1,0,1,M/S/T/DM88,1,in,DI\n"
        "A1,0,1,M/S/T/DM88,9,out,do\n",
        batch::Project{}, lib);
    EXPECT_EQ(batch_test::AddressOfRow(plan, 2), "I0.0");
    EXPECT_EQ(batch_test::AddressOfRow(plan, 3), "Q0.0");
}

TEST(BatchPlanErrors, SheetsComeFromTheListOrFromModulesPerSheet) {
    batch_test::FakeLibrary lib;
    batch::Project project;
    project.modulesPerSheet = 2;
    std::string csv = "tag,rack,slot,module,channel,signal\n";
    for (int slot = 1; slot <= 5; ++slot) {
        csv += "A" + std::to_string(slot) + ",0," + std::to_string(slot) + ",M/S/T/DI8,1,x\n";
    }
    const auto plan = batch_test::PlanOf(csv, project, lib);
    ASSERT_EQ(plan.sheets.size(), 3u);
    EXPECT_EQ(plan.sheets[2].fileName, "sheet-03.dxf");
    EXPECT_EQ(plan.sheets[2].modules.size(), 1u);
    const auto named = batch_test::PlanOf(
        "tag,rack,slot,module,channel,signal,sheet\n"
        "A1,0,1,M/S/T/DI8,1,x,a/b\n"
        "A2,0,2,M/S/T/DI8,1,x,a:b\n",
        project, lib);
    ASSERT_EQ(named.sheets.size(), 2u);
    EXPECT_EQ(named.sheets[0].fileName, "a_b.dxf");
    EXPECT_EQ(named.sheets[1].fileName, "a_b-2.dxf");
}

}  // namespace

namespace {

std::string ListDigestOf(const std::string& rows, const batch::Project& project = {}) {
    batch_test::FakeLibrary lib;
    const auto plan =
        batch_test::PlanOf("tag,rack,slot,module,channel,signal,sheet\n" + rows, project, lib);
    return plan.sheets.at(0).modules.at(0).listDigest;
}

TEST(BatchPlanDigests, WhatIsDrawnChangesTheListDigestAndTheRowOrderDoesNot) {
    const std::string a = "A1,0,1,M/S/T/DI8,1,Pump,P1\n", b = "A1,0,1,M/S/T/DI8,2,Fan,P1\n";
    const std::string base = ListDigestOf(a + b);
    EXPECT_EQ(ListDigestOf(b + a), base);
    EXPECT_NE(ListDigestOf(a + "A1,0,1,M/S/T/DI8,2,Fan 2,P1\n"), base);
    EXPECT_NE(ListDigestOf(a + "A1,0,1,M/S/T/DI8,3,Fan,P1\n"), base);
    EXPECT_NE(ListDigestOf("A1,0,1,M/S/T/DI8,1,Pump,P2\nA1,0,1,M/S/T/DI8,2,Fan,P2\n"), base);
    batch::Project later;
    later.start[static_cast<int>(batch::Kind::DI)] = 4;  // the addresses move
    EXPECT_NE(ListDigestOf(a + b, later), base);
}

TEST(BatchPlanDigests, AnyChangeOfTheModulesRowsInTheLibraryChangesItsDigest) {
    batch_test::FakeLibrary lib;
    const std::string base = batch::LibraryDigest(lib.Module("DI8"));
    lib.Module("DI8").terminals[8].value = "COM";
    const std::string changedValue = batch::LibraryDigest(lib.Module("DI8"));
    EXPECT_NE(changedValue, base);
    lib.Module("DI8").terminals[8].detail = "common";
    EXPECT_NE(batch::LibraryDigest(lib.Module("DI8")), changedValue);
    // Fields never run together: "ab" + "c" is not "a" + "bc".
    EXPECT_NE(batch::Digest({"ab", "c"}), batch::Digest({"a", "bc"}));
}

}  // namespace
