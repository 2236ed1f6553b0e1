#include "DialogTestSupport.h"

#include <gtest/gtest.h>

#include <vector>

#include "draw/DlgPlcRendal.h"
#include "plclib/Engine.h"

namespace dialog_test {

namespace {

struct Module {
    const char* code;
    const char* points;
    const char* description;
    int terminals;
};

struct Type {
    const char* manufacturer;
    const char* series;
    const char* type;
    std::vector<Module> modules;
};

void Run(plcdb::Connection& db, const std::string& sql) {
    std::string error;
    ASSERT_TRUE(db.Execute(sql, error)) << sql << ": " << error;
}

void AddType(plcdb::Connection& db, const Type& type) {
    const std::string table = std::string(type.manufacturer) + "_" + type.series + "_" + type.type;
    Run(db, "INSERT INTO PLC_MANUFACTURER VALUES ('" + std::string(type.manufacturer) + "','" +
                type.series + "','" + type.type + "','" + table + "')");
    Run(db, "Create TABLE " + table +
                "(CODE CHAR(60) NOT NULL,POINTS  CHAR(60),TYPE CHAR(60),DESCRIPTION "
                "CHAR(60),RATING CHAR(60),primary key(CODE))");
    Run(db, "Create TABLE " + table +
                "_data(CODE CHAR(60) NOT NULL,SEQUENCE int NOT NULL,TermValue CHAR(60),TERMDESC "
                "CHAR(60),DETAILTERMDESC MEMO,primary key(CODE,SEQUENCE))");
    for (const Module& m : type.modules) {
        const std::string code = m.code;
        Run(db, "INSERT INTO " + table + " VALUES ('" + code + "','" + m.points + "','" +
                    type.type + "','" + m.description + "','24VDC')");
        for (int seq = 1; seq <= m.terminals; ++seq) {
            const std::string n = std::to_string(seq);
            Run(db, "INSERT INTO " + table + "_data VALUES ('" + code + "'," + n + ",'" +
                        std::to_string(seq + 10) + "','I0." + n + "','通道" + n + "')");
        }
    }
}

}  // namespace

void WriteSampleLibrary(const std::filesystem::path& path) {
    std::filesystem::create_directories(path.parent_path());
    plcdb::Connection db;
    std::string error;
    ASSERT_TRUE(db.Create(path.string(), error)) << error;
    const std::vector<Type> types = {
        {"Alpha", "S1", "DI", {{"DI-16A", "16", "数字量输入", 7}, {"DI-32B", "32", "输入", 3}}},
        {"Alpha", "S1", "DO", {{"DO-08X", "8", "输出", 2}, {"DO-16", "16", "输出", 2}}},
        {"Alpha", "S2", "AI", {{"AI-04X", "4", "模拟量", 2}, {"AI-08", "8", "模拟量", 2}}},
        {"Beta", "B1", "MIX", {{"MX-01X", "1", "混合", 2}}},
    };
    // One transaction: a file synced after every row makes each test wait on the disk.
    Run(db, "BEGIN TRANSACTION");
    for (const Type& type : types) {
        AddType(db, type);
    }
    Run(db, "INSERT INTO PLC_MANUFACTURER VALUES ('Beta','B2','','')");
    Run(db, "INSERT INTO PLC_MANUFACTURER VALUES ('Gamma','','','')");
    Run(db, "INSERT INTO MANUFACTURER_simple VALUES ('Alpha','ALP')");
    Run(db, "COMMIT");
    ASSERT_TRUE(db.Close(error)) << error;
}

DialogEnvironment::DialogEnvironment()
    : local_("ZANDRIX_LOCAL_DIR", (dir_.Path() / "local").string()),
      common_("ZANDRIX_COMMON_DIR", (dir_.Path() / "common").string()),
      style_("ZANDRIX_INSTALL_STYLE", "0"),
      scope_(std::make_unique<host::ScopedHost>(host)) {
    WriteSampleLibrary(LibraryPath());
    std::filesystem::create_directories(SymbolPath().parent_path());
    // The built terminal symbol when there is one, so that drawings can be made; the dialog
    // itself only asks whether the file exists.
    const auto builtSymbol = testing_support::CommonResDir() / "SYMB2LIB" / "SYMB2_S_KTR5.dxf";
    realSymbol = std::filesystem::is_regular_file(builtSymbol);
    if (realSymbol) {
        std::filesystem::copy_file(builtSymbol, SymbolPath());
    } else {
        testing_support::WriteFile(SymbolPath(), "0\nEOF\n");
    }
}

DialogEnvironment::~DialogEnvironment() = default;

std::unique_ptr<CDlgPlcRendal> DialogEnvironment::OpenDialog() {
    auto dlg = std::make_unique<CDlgPlcRendal>();
    EXPECT_TRUE(dlg->Create());
    dlg->Refresh();
    return dlg;
}

}  // namespace dialog_test
