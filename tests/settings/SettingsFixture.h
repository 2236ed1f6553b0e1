// A scratch installation for the settings tests: a local folder and a common resource folder
// of its own (through the suite's environment variables), and a recording host.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "RecordingHost.h"
#include "TestPaths.h"
#include "host/Host.h"

class SettingsFixture : public ::testing::Test {
protected:
    SettingsFixture()
        : localDir(temp.Path() / "local/"),
          commonDir(temp.Path() / "common/"),
          localEnv("ZANDRIX_LOCAL_DIR", localDir.string()),
          commonEnv("ZANDRIX_COMMON_DIR", commonDir.string()),
          hostGuard(recorder) {
        std::filesystem::create_directories(localDir / "LocalData");
        std::filesystem::create_directories(commonDir / "SYMB2LIB");
    }

    std::filesystem::path SettingFile() const { return localDir / "LocalData/PlcDrawSetting.dat"; }
    std::string Local() const { return localDir.string(); }
    std::string Common() const { return commonDir.string(); }
    void WriteSettings(const std::string& text) const {
        testing_support::WriteFile(SettingFile(), text);
    }
    std::string ReadSettings() const { return testing_support::ReadFile(SettingFile()); }
    // An empty file standing in for a symbol drawing where only its existence matters.
    std::string TouchSymbol(const std::string& name) const {
        const auto path = commonDir / "SYMB2LIB" / (name + ".dxf");
        testing_support::WriteFile(path, "");
        return path.string();
    }

    testing_support::TempDir temp;
    std::filesystem::path localDir;
    std::filesystem::path commonDir;
    testing_support::ScopedEnv localEnv;
    testing_support::ScopedEnv commonEnv;
    testing_support::RecordingHost recorder;
    host::ScopedHost hostGuard;
};

// Writes a small terminal-symbol drawing: a lead from (0,0) to `lead`, a terminal circle at
// its end and, when `withMarker`, the red two-vertex dot at the lead's end. Returns its path.
std::string WriteSymbolDrawing(const std::filesystem::path& path, double leadX, double leadY,
                               bool withMarker = true, int markerColor = 1);
