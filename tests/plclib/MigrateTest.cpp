// Migration of a Windows library: the conversion on rows given through the reader
// interface, and the refusals that keep an existing library safe.
#include <filesystem>
#include <map>

#include "LibraryFixture.h"
#include "plclib/Migrate.h"

namespace plclib_test {
namespace {

// Tables held in memory, standing where an Access file's tables would be read.
class TableSet : public plcdb::ITableSource {
public:
    void Add(const std::string& name, std::vector<std::string> columns,
             std::vector<std::vector<std::string>> rows) {
        order_.push_back(name);
        tables_[name] = plcdb::QueryResult{std::move(columns), std::move(rows)};
    }
    std::vector<std::string> TableNames() override { return order_; }
    bool ReadTable(const std::string& name, plcdb::QueryResult& out, std::string& error) override {
        for (const auto& [key, table] : tables_) {
            if (plcdb::EqualsIgnoreCase(key, name)) {
                out = table;
                return true;
            }
        }
        error = "no table " + name;
        return false;
    }

private:
    std::vector<std::string> order_;
    std::map<std::string, plcdb::QueryResult> tables_;
};

TableSet WindowsLibrary() {
    TableSet set;
    set.Add("PLC_MANUFACTURER", {"MANUFACTURER", "SERIES", "TYPE", "TABLE_NAME"},
            {{"Norvik", "NX", "DI", "N_NX_DI"},
             {"Norvik", "NX", "AI", "N_NX_AI"},
             {"Norvik", "NX", "Gone", "N_NX_GONE"},
             {"Bare", "", "", ""}});
    set.Add("MANUFACTURER_Simple", {"MANUFACTURER", "MFG"}, {{"Norvik", "NVK"}, {"Bare", ""}});
    set.Add("n_nx_di", {"CODE", "POINTS", "TYPE", "DESCRIPTION", "RATING"},
            {{"NX-8DI", "8", "DI", "8 inputs", "24VDC"},
             {"NX-16DI", "16", "DI", "16 inputs", "24VDC"},
             {"NX'BAD", "8", "DI", "", ""}});
    set.Add("N_NX_DI_data", {"CODE", "SEQUENCE", "TermValue", "TERMDESC", "DETAILTERMDESC"},
            {{"NX-8DI", "1", "0012", "I0.0", "first"},
             {"NX-8DI", "2", "2", "I0.1", ""},
             {"NX-8DI", "x", "3", "I0.2", ""},
             {"NX-8DI", "3", std::string(61, 'v'), "", ""}});
    set.Add("N_NX_AI", {"CODE", "POINTS", "TYPE", "DESCRIPTION"}, {{"NX-4AI", "4", "AI", ""}});
    set.Add("N_NX_AI_data", {"CODE", "SEQUENCE", "TermValue", "TERMDESC", "DETAILTERMDESC"}, {});
    return set;
}

class MigrateTest : public LibraryTest {
protected:
    std::string Target() const { return (dir_ / "local" / "PLC" / "QvPLC.db").string(); }
};

TEST_F(MigrateTest, ConvertsTheLibraryAndReportsEveryRowItCannot) {
    TableSet source = WindowsLibrary();
    plcdb::MigrationReport report;
    std::vector<size_t> progress;
    plcdb::MigrationOptions options;
    options.progress = [&](size_t done, size_t total) { progress.push_back(done * 10 + total); };
    std::string error;
    // The folder of a library the user names is never made for it.
    EXPECT_FALSE(plcdb::MigrateLibrary(source, Target(), options, report, error));
    EXPECT_NE(error.find("does not exist"), std::string::npos) << error;
    EXPECT_FALSE(std::filesystem::exists(dir_ / "local"));
    std::filesystem::create_directories(dir_ / "local" / "PLC");
    progress.clear();
    ASSERT_TRUE(plcdb::MigrateLibrary(source, Target(), options, report, error)) << error;
    EXPECT_EQ(progress, (std::vector<size_t>{13, 23, 33}));
    EXPECT_EQ(report.typeRows, 4);
    EXPECT_EQ(report.manufacturers, 2);
    EXPECT_EQ(report.tables, 3);
    EXPECT_EQ(report.modules, 3);
    EXPECT_EQ(report.terminals, 2);
    std::string all;
    for (const auto& line : report.problems) {
        all += line + "\n";
    }
    EXPECT_EQ(report.problems.size(), 6u) << all;
    for (const char* expected :
         {"table N_NX_DI, row 3: the value \"NX'BAD\" contains a single quote",
          "table N_NX_DI_data, row 3: SEQUENCE \"x\" is not a whole number",
          "table N_NX_DI_data, row 4: CHECK constraint failed: TermValue: text longer",
          "table N_NX_AI has no column RATING", "names table N_NX_GONE,",
          "names table N_NX_GONE_data,"}) {
        EXPECT_NE(all.find(expected), std::string::npos) << expected << "\n" << all;
    }

    CPlcLib lib;
    ASSERT_TRUE(lib.Open(Target()));
    ASSERT_TRUE(lib.LoadLibrary());
    EXPECT_EQ(lib.Entries().size(), 5u);  // two DI modules, one AI, the empty type, Bare
    EXPECT_EQ(lib.GetShortName("Norvik"), "NVK");
    CPlcPartData entry;
    ASSERT_TRUE(lib.LoadTerminals("Norvik", "NX", "DI", "NX-8DI", entry));
    ASSERT_EQ(entry.terminals.size(), 2u);
    EXPECT_EQ(entry.terminals[0]->termValue, "0012");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir_ / "local" / "PLC"),
                            std::filesystem::directory_iterator()),
              1)
        << "a scratch file was left beside the library";
}

TEST_F(MigrateTest, NeverReplacesALibraryUnlessForcedAndNeverLeavesHalfOne) {
    std::filesystem::create_directories(dir_ / "local" / "PLC");
    testing_support::WriteFile(Target(), "the user's library");
    TableSet source = WindowsLibrary();
    plcdb::MigrationReport report;
    std::string error;
    EXPECT_FALSE(plcdb::MigrateLibrary(source, Target(), {}, report, error));
    EXPECT_NE(error.find("already exists; give --force"), std::string::npos) << error;
    EXPECT_EQ(testing_support::ReadFile(Target()), "the user's library");

    TableSet notALibrary;
    notALibrary.Add("DateTest", {"IDCol"}, {{"1"}});
    plcdb::MigrationOptions force;
    force.force = true;
    EXPECT_FALSE(plcdb::MigrateLibrary(notALibrary, Target(), force, report, error));
    EXPECT_NE(error.find("no table PLC_MANUFACTURER"), std::string::npos) << error;
    EXPECT_EQ(testing_support::ReadFile(Target()), "the user's library");

    // A failure at the end, when the library is written (a folder marked read-only): the
    // user's library is kept and the scratch file is gone.
    const auto folder = dir_ / "local" / "PLC";
    std::filesystem::permissions(folder,
                                 std::filesystem::perms::owner_write |
                                     std::filesystem::perms::group_write |
                                     std::filesystem::perms::others_write,
                                 std::filesystem::perm_options::remove);
    EXPECT_FALSE(plcdb::MigrateLibrary(source, Target(), force, report, error));
    EXPECT_NE(error.find("read-only"), std::string::npos) << error;
    std::filesystem::permissions(folder, std::filesystem::perms::owner_write,
                                 std::filesystem::perm_options::add);
    EXPECT_EQ(testing_support::ReadFile(Target()), "the user's library");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder),
                            std::filesystem::directory_iterator()),
              1);

    ASSERT_TRUE(plcdb::MigrateLibrary(source, Target(), force, report, error)) << error;
    CPlcLib lib;
    ASSERT_TRUE(lib.Open(Target()));
    EXPECT_EQ(lib.GetTableName("Norvik", "NX", "AI"), "N_NX_AI");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir_ / "local" / "PLC"),
                            std::filesystem::directory_iterator()),
              1)
        << "a scratch file was left beside the library";
}

}  // namespace
}  // namespace plclib_test
