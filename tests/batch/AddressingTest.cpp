// Addresses counted from the project's rules, on their boundaries.
#include <gtest/gtest.h>

#include "BatchTestSupport.h"
#include "batch/Addressing.h"

namespace {

using batch_test::AddressOfRow;
using batch_test::PlanOf;
using batch_test::ProjectFrom;

const char* kHead = "tag,rack,slot,module,channel,signal,address\n";

// `channels` rows 1..n of one module (rows 2..n+1 of the list).
std::string Rows(const std::string& tag, int rack, int slot, const std::string& code, int n,
                 int first = 1) {
    std::string csv;
    for (int i = first; i < first + n; ++i) {
        csv += tag + "," + std::to_string(rack) + "," + std::to_string(slot) + ",M/S/T/" + code +
               "," + std::to_string(i) + ",sig " + std::to_string(i) + ",\n";
    }
    return csv;
}

TEST(BatchAddressing, BitFormWrapsAfterBitSevenAndTheNextModuleStartsAfterAllItsPoints) {
    batch_test::FakeLibrary lib;
    const auto plan = PlanOf(std::string(kHead) + Rows("A1", 0, 1, "DI16", 9) +
                                 Rows("A2", 0, 2, "DI8", 1) + Rows("Q1", 0, 3, "DO16", 1),
                             ProjectFrom(""), lib);
    EXPECT_EQ(AddressOfRow(plan, 9), "I0.7");
    EXPECT_EQ(AddressOfRow(plan, 10), "I1.0");
    // A1 has 16 points: two bytes, though only 9 channels are listed.
    EXPECT_EQ(AddressOfRow(plan, 11), "I2.0");
    // Outputs count by themselves.
    EXPECT_EQ(AddressOfRow(plan, 12), "Q0.0");
}

TEST(BatchAddressing, IecFormAndAnalogWordsOfSixteenBits) {
    batch_test::FakeLibrary lib;
    const auto plan = PlanOf(std::string(kHead) + Rows("A1", 0, 1, "DI8", 2) +
                                 Rows("B1", 0, 2, "AI8", 2) + Rows("B2", 0, 3, "AO4", 1),
                             ProjectFrom("form = iec\nstart.AI = 64\n"), lib);
    EXPECT_EQ(AddressOfRow(plan, 2), "%IX0.0");
    EXPECT_EQ(AddressOfRow(plan, 3), "%IX0.1");
    EXPECT_EQ(AddressOfRow(plan, 4), "%IW64");
    EXPECT_EQ(AddressOfRow(plan, 5), "%IW66");
    EXPECT_EQ(AddressOfRow(plan, 6), "%QW0");
}

TEST(BatchAddressing, AnalogModulesReserveOneWordPerPoint) {
    batch_test::FakeLibrary lib;
    const auto plan =
        PlanOf(std::string(kHead) + Rows("B1", 0, 1, "AI8", 1) + Rows("B2", 0, 2, "AI8", 1),
               ProjectFrom("start.AI = 64\n"), lib);
    EXPECT_EQ(AddressOfRow(plan, 2), "IW64");
    EXPECT_EQ(AddressOfRow(plan, 3), "IW80");
}

TEST(BatchAddressing, OctalCounterRunsFromX007ToX010AndHexFrom0FTo10) {
    batch_test::FakeLibrary lib;
    const auto octal =
        PlanOf(std::string(kHead) + Rows("A1", 0, 1, "DI16", 9) + Rows("A2", 0, 2, "DI8", 1),
               ProjectFrom("form = counter\nbase = 8\n"), lib);
    EXPECT_EQ(AddressOfRow(octal, 2), "X000");
    EXPECT_EQ(AddressOfRow(octal, 9), "X007");
    EXPECT_EQ(AddressOfRow(octal, 10), "X010");
    EXPECT_EQ(AddressOfRow(octal, 11), "X020");  // after A1's 16 points
    const auto hex =
        PlanOf(std::string(kHead) + Rows("A1", 0, 1, "DI16", 16) + Rows("A2", 0, 2, "DI8", 1),
               ProjectFrom("form = counter\nbase = 16\ndigits = 2\n"), lib);
    EXPECT_EQ(AddressOfRow(hex, 17), "X0F");
    EXPECT_EQ(AddressOfRow(hex, 18), "X10");
}

TEST(BatchAddressing, DecimalCounterWithItsOwnPrefixAndStart) {
    batch_test::FakeLibrary lib;
    const auto plan = PlanOf(std::string(kHead) + Rows("A1", 0, 1, "DI8", 2),
                             ProjectFrom("form = counter\nprefix.DI = DI\nstart.DI = 1\n"), lib);
    EXPECT_EQ(AddressOfRow(plan, 2), "DI001");
    EXPECT_EQ(AddressOfRow(plan, 3), "DI002");
}

TEST(BatchAddressing, SpareChannelsKeepTheirPlaceAndGivenAddressesAreKept) {
    batch_test::FakeLibrary lib;
    const auto plan = PlanOf(std::string(kHead) +
                                 "A1,0,1,M/S/T/DI8,1,Pump,\n"
                                 "A1,0,1,M/S/T/DI8,2,备用,\n"
                                 "A1,0,1,M/S/T/DI8,3,,\n"
                                 "A1,0,1,M/S/T/DI8,4,Fan,I9.9\n"
                                 "A1,0,1,M/S/T/DI8,5,Door,\n",
                             ProjectFrom(""), lib);
    EXPECT_EQ(AddressOfRow(plan, 2), "I0.0");
    EXPECT_EQ(AddressOfRow(plan, 3), "I0.1");
    EXPECT_EQ(AddressOfRow(plan, 4), "I0.2");
    EXPECT_EQ(AddressOfRow(plan, 5), "I9.9");
    EXPECT_EQ(AddressOfRow(plan, 6), "I0.4");
    const auto& module = plan.sheets.at(0).modules.at(0);
    // The spare's terminal shows its address and no signal text.
    EXPECT_EQ(module.texts.at("2"), std::make_pair(std::string("I0.1"), std::string()));
    EXPECT_EQ(module.texts.at("1"), std::make_pair(std::string("I0.0"), std::string("Pump")));
}

TEST(BatchAddressing, ModulesAreCountedInRackAndSlotOrderWhateverTheListOrder) {
    batch_test::FakeLibrary lib;
    const auto plan =
        PlanOf(std::string(kHead) + Rows("A2", 1, 0, "DI8", 1) + Rows("A1", 0, 5, "DI8", 1),
               ProjectFrom(""), lib);
    EXPECT_EQ(AddressOfRow(plan, 3), "I0.0");
    EXPECT_EQ(AddressOfRow(plan, 2), "I1.0");
}

TEST(BatchAddressing, ASlotStartSetsItsModuleAndTheCountRunsOnFromThere) {
    batch_test::FakeLibrary lib;
    const auto plan = PlanOf(std::string(kHead) + Rows("A1", 0, 1, "DI8", 1) +
                                 Rows("A2", 1, 2, "DI16", 1) + Rows("A3", 1, 3, "DI8", 1),
                             ProjectFrom("slot.1.2 = 10\n"), lib);
    EXPECT_EQ(AddressOfRow(plan, 2), "I0.0");
    EXPECT_EQ(AddressOfRow(plan, 3), "I10.0");
    EXPECT_EQ(AddressOfRow(plan, 4), "I12.0");
}

TEST(BatchAddressing, ReservingListedChannelsOnlyLeavesNoGapAfterAModule) {
    batch_test::FakeLibrary lib;
    const auto plan =
        PlanOf(std::string(kHead) + Rows("A1", 0, 1, "DI16", 3) + Rows("A2", 0, 2, "DI8", 1),
               ProjectFrom("reserve = listed\n"), lib);
    EXPECT_EQ(AddressOfRow(plan, 5), "I1.0");  // 3 channels take one byte of A1's two
    const auto counter =
        PlanOf(std::string(kHead) + Rows("A1", 0, 1, "DI16", 3) + Rows("A2", 0, 2, "DI8", 1),
               ProjectFrom("reserve = listed\nform = counter\n"), lib);
    EXPECT_EQ(AddressOfRow(counter, 5), "X003");
}

TEST(BatchAddressing, AddressInTheDetailSwapsTheTexts) {
    batch_test::FakeLibrary lib;
    const auto plan = PlanOf(std::string(kHead) + "A1,0,1,M/S/T/DI8,1,Pump,\n",
                             ProjectFrom("address.field = detail\n"), lib);
    EXPECT_EQ(plan.sheets.at(0).modules.at(0).texts.at("1"),
              std::make_pair(std::string("Pump"), std::string("I0.0")));
}

TEST(BatchAddressing, InBaseWritesUpperCaseDigitsPadded) {
    EXPECT_EQ(batch::InBase(255, 16, 3), "0FF");
    EXPECT_EQ(batch::InBase(8, 8, 1), "10");
    EXPECT_EQ(batch::InBase(12345, 10, 3), "12345");
}

}  // namespace
