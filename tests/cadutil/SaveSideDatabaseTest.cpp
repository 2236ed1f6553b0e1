// Saving a side database: the file name, the version chosen by the host's setting, the
// setting put back, the preview of the file it replaces kept, and nothing half-written.
#include <gtest/gtest.h>

#include <filesystem>

#include "RecordingHost.h"
#include "TestPaths.h"
#include "cad/Dxf.h"
#include "cadutil/EntityHelpers.h"
#include "cadutil/Thumbnail.h"

using cadutil::SaveSideDatabase;
using cadutil::SaveStatus;
using namespace testing_support;

namespace {

// The $ACADVER the file declares, once the independent reader has accepted it (it loads
// R14 files as 2000, so the version is taken from the file itself).
std::string AcadVer(const std::filesystem::path& file) {
    std::string out;
    const int rc = RunCommand(Python() + " " + (SourceDir() / "tests/cad/check_dxf.py").string() +
                                  " " + file.string() + " 2>&1",
                              &out);
    if (rc != 0) {
        return "rejected: " + out;
    }
    const std::string text = ReadFile(file);
    const auto at = text.find("$ACADVER");
    const auto value = text.find("AC10", at);
    return at == std::string::npos || value == std::string::npos ? "" : text.substr(value, 6);
}

class SaveTest : public ::testing::Test {
protected:
    RecordingHost recording;
    host::ScopedHost scope{recording};
    TempDir dir;
    cad::Database db;

    void SetUp() override {
        auto* line = db.AppendNew<cad::Line>();
        line->end = {10, 0, 0};
    }
};

}  // namespace

TEST_F(SaveTest, VersionFollowsTheSaveFormatSetting) {
    for (const auto& [setting, version] : {std::pair{"8", "AC1014"},
                                           {"12", "AC1015"},
                                           {"24", "AC1018"},
                                           {"36", "AC1021"},
                                           {"48", "AC1024"}}) {
        recording.environment["DefaultFormatForSave"] = setting;
        const auto path = dir / (std::string("v") + setting + ".dxf");
        ASSERT_EQ(SaveSideDatabase(&db, path.string()), SaveStatus::Ok) << setting;
        EXPECT_EQ(AcadVer(path), version) << setting;
    }
}

TEST_F(SaveTest, UnknownSettingSavesTheNewestFormatAndIsPutBack) {
    recording.environment["DefaultFormatForSave"] = "60";
    const auto path = dir / "PlcDraw";  // no extension: ".dxf" is added
    ASSERT_EQ(SaveSideDatabase(&db, path.string()), SaveStatus::Ok);
    EXPECT_EQ(AcadVer(dir / "PlcDraw.dxf"), "AC1024");
    EXPECT_EQ(recording.environment["DefaultFormatForSave"], "60");
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_EQ(cadutil::DrawingFilePath("a.DXF"), "a.DXF");
    EXPECT_EQ(cadutil::DrawingFilePath("a.dwg"), "a.dwg.dxf");
}

TEST_F(SaveTest, ReplacedFileKeepsItsPreview) {
    recording.environment["DefaultFormatForSave"] = "48";
    const auto path = dir / "preview.dxf";
    cad::Database first;
    const cad::TagList preview = {{90, "12"}, {310, "0102030405060708090A0B0C"}};
    first.SetThumbnail(preview);
    cad::WriteDxfFile(first, path.string(), cad::DxfVersion::R2010);
    ASSERT_TRUE(cadutil::ReadThumbnail(path.string()).has_value());

    ASSERT_EQ(SaveSideDatabase(&db, path.string()), SaveStatus::Ok);
    const auto kept = cadutil::ReadThumbnail(path.string());
    ASSERT_TRUE(kept.has_value());
    ASSERT_EQ(kept->size(), 2u);
    EXPECT_EQ((*kept)[1].value, preview[1].value);
    EXPECT_NE(ReadFile(path).find("AcDbLine"), std::string::npos);  // the new drawing
}

TEST_F(SaveTest, NoDatabaseWritesNothing) {
    std::string error;
    EXPECT_EQ(SaveSideDatabase(nullptr, (dir / "none.dxf").string(), &error),
              SaveStatus::NoDatabase);
    EXPECT_FALSE(error.empty());
    EXPECT_TRUE(std::filesystem::is_empty(dir.Path()));
}

TEST_F(SaveTest, FailedWriteLeavesWhatWasThereAndTheSettingAlone) {
    // A folder where the file should go cannot be replaced by a file, not even by root.
    recording.environment["DefaultFormatForSave"] = "99";
    const auto path = dir / "taken.dxf";
    std::filesystem::create_directory(path);
    WriteFile(path / "inside.txt", "old contents");
    std::string error;
    EXPECT_EQ(SaveSideDatabase(&db, path.string(), &error), SaveStatus::WriteFailed);
    EXPECT_NE(error.find("taken.dxf"), std::string::npos) << error;
    EXPECT_EQ(ReadFile(path / "inside.txt"), "old contents");
    EXPECT_EQ(recording.environment["DefaultFormatForSave"], "99");
    // No temporary file is left beside it.
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.Path()),
                            std::filesystem::directory_iterator()),
              1);
}

TEST(Thumbnail, OnlyACompleteSectionCounts) {
    TempDir dir;
    const auto cut = dir / "cut.dxf";
    WriteFile(cut, "0\nSECTION\n2\nTHUMBNAILIMAGE\n90\n4\n310\nABCD\n");
    EXPECT_FALSE(cadutil::ReadThumbnail(cut.string()).has_value());
    const auto whole = dir / "whole.dxf";
    WriteFile(
        whole,
        "  0\r\nSECTION\r\n  2\r\nTHUMBNAILIMAGE\r\n 90\r\n4\r\n310\r\nABCD\r\n  0\r\nENDSEC\r\n"
        "  0\r\nEOF\r\n");
    const auto tags = cadutil::ReadThumbnail(whole.string());
    ASSERT_TRUE(tags.has_value());
    ASSERT_EQ(tags->size(), 2u);
    EXPECT_EQ((*tags)[0].code, 90);
    EXPECT_EQ((*tags)[1].value, "ABCD");
    EXPECT_FALSE(cadutil::ReadThumbnail((dir / "absent.dxf").string()).has_value());
}
