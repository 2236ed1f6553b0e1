// Scratch libraries for the tests: a fresh file with the two base tables, filled by Access
// statements run through the engine, and a recording host that sees every message.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "RecordingHost.h"
#include "TestPaths.h"
#include "plclib/Engine.h"
#include "plclib/PlcLib.h"

namespace plclib_test {

class LibraryTest : public ::testing::Test {
protected:
    LibraryTest() : scoped_(host_) {}

    // Creates `name` in the scratch folder and runs `statements` on it.
    std::string MakeLibrary(const std::vector<std::string>& statements,
                            const std::string& name = "QvPLC.db") {
        const std::string path = (dir_ / name).string();
        plcdb::Connection connection;
        std::string error;
        EXPECT_TRUE(connection.Create(path, error)) << error;
        for (const auto& statement : statements) {
            EXPECT_TRUE(connection.Execute(statement, error)) << statement << ": " << error;
        }
        return path;
    }

    // The statements that create the module table and terminal table of `table`.
    static std::vector<std::string> TypeTables(const std::string& table) {
        return {"Create TABLE " + table +
                    "(CODE CHAR(60) NOT NULL,POINTS  CHAR(60),TYPE CHAR(60),DESCRIPTION "
                    "CHAR(60),RATING CHAR(60),primary key(CODE))",
                "Create TABLE " + table +
                    "_data(CODE CHAR(60) NOT NULL,SEQUENCE int NOT NULL,TermValue "
                    "CHAR(60),TERMDESC CHAR(60),DETAILTERMDESC MEMO,primary "
                    "key(CODE,SEQUENCE))"};
    }

    testing_support::TempDir dir_;
    testing_support::RecordingHost host_;
    host::ScopedHost scoped_;
};

}  // namespace plclib_test
