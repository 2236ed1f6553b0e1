// The desktop program's pieces without a window: its command line, typed points, its
// settings file and the open drawing.
#include <gtest/gtest.h>

#include "DesktopSettings.h"
#include "Document.h"
#include "Options.h"
#include "PointText.h"
#include "TestPaths.h"
#include "cad/Dxf.h"
#include "cad/Entity.h"

using namespace testing_support;

namespace {

void AddLine(cad::Database& db, cad::Point3d start, cad::Point3d end) {
    auto* line = db.AppendNew<cad::Line>();
    line->start = start;
    line->end = end;
}

std::optional<desktop::Options> Parse(std::vector<std::string> args, std::string& error) {
    return desktop::ParseOptions(args, error);
}

}  // namespace

TEST(DesktopOptions, TakeADrawingAScriptAScreenshotAndQuit) {
    std::string error;
    auto options = Parse({"a.dxf", "--commands", "s.txt", "--screenshot=o.png", "--quit"}, error);
    ASSERT_TRUE(options) << error;
    EXPECT_EQ(options->file, "a.dxf");
    EXPECT_EQ(options->commands, "s.txt");
    EXPECT_EQ(options->screenshot, "o.png");
    EXPECT_TRUE(options->quit);
    EXPECT_FALSE(options->help);
}

TEST(DesktopOptions, RefuseWhatTheyCannotUseAndSayWhat) {
    std::string error;
    EXPECT_FALSE(Parse({"--commands"}, error));
    EXPECT_EQ(error, "--commands needs a file name");
    EXPECT_FALSE(Parse({"--screenshot="}, error));
    EXPECT_EQ(error, "--screenshot needs a file name");
    EXPECT_FALSE(Parse({"--zoom"}, error));
    EXPECT_NE(error.find("'--zoom'"), std::string::npos);
    EXPECT_FALSE(Parse({"a.dxf", "b.dxf"}, error));
    EXPECT_NE(error.find("'a.dxf' and 'b.dxf'"), std::string::npos);
    const std::string help = desktop::HelpText("  dialog select PATH\n");
    EXPECT_NE(help.find("--commands SCRIPT"), std::string::npos);
    EXPECT_NE(help.find("dialog select PATH"), std::string::npos);
}

TEST(TypedPoints, AreTwoOrThreeFiniteNumbers) {
    const auto p = desktop::ParsePointText(" 100.5, -20 ");
    ASSERT_TRUE(p);
    EXPECT_EQ(*p, (cad::Point3d{100.5, -20, 0}));
    EXPECT_EQ(*desktop::ParsePointText("1,2,3"), (cad::Point3d{1, 2, 3}));
    EXPECT_EQ(*desktop::ParsePointText("+1e2,.5"), (cad::Point3d{100, 0.5, 0}));
    for (const char* bad : {"", "1", "1,", ",2", "1,2,3,4", "a,b", "1,2x", "inf,0", "nan,1",
                            "1e999,0", "PLCRENDAL"}) {
        EXPECT_FALSE(desktop::ParsePointText(bad)) << bad;
    }
}

TEST(DesktopSettingsFile, KeepsRecentFilesNewestFirstAndTheSaveFormat) {
    TempDir dir;
    const std::string path = (dir / "conf" / "desktop.conf").string();
    {
        desktop::DesktopSettings settings(path);
        for (int i = 0; i < 10; ++i) {
            settings.AddRecentFile("/d/" + std::to_string(i) + ".dxf");
        }
        settings.AddRecentFile("/d/5.dxf");
        settings.SetEnvironment("DefaultFormatForSave", "24");
        settings.SetEnvironment("Bad\nName", "x");
        std::string error;
        ASSERT_TRUE(settings.Save(error)) << error;
    }
    desktop::DesktopSettings loaded(path);
    std::vector<std::string> warnings;
    loaded.Load(warnings);
    EXPECT_TRUE(warnings.empty());
    ASSERT_EQ(loaded.RecentFiles().size(), desktop::kMaxRecentFiles);
    EXPECT_EQ(loaded.RecentFiles()[0], "/d/5.dxf");
    EXPECT_EQ(loaded.RecentFiles()[1], "/d/9.dxf");
    EXPECT_EQ(loaded.RecentFiles().back(), "/d/2.dxf");
    EXPECT_EQ(loaded.Environment("DefaultFormatForSave"), "24");
    EXPECT_EQ(loaded.Environment("Bad\nName"), "");
}

TEST(DesktopSettingsFile, NamesTheLinesItPassesOver) {
    TempDir dir;
    const std::string path = (dir / "desktop.conf").string();
    WriteFile(path, "# comment\nrecent=/a.dxf\nnonsense\nzoom=3\nenv.DefaultFormatForSave=12\n");
    desktop::DesktopSettings settings(path);
    std::vector<std::string> warnings;
    settings.Load(warnings);
    ASSERT_EQ(warnings.size(), 2u);
    EXPECT_EQ(warnings[0], path + " line 3: 'nonsense' is not name=value; passed over");
    EXPECT_EQ(warnings[1], path + " line 4: unknown setting 'zoom'; passed over");
    EXPECT_EQ(settings.RecentFiles(), std::vector<std::string>{"/a.dxf"});
    EXPECT_EQ(settings.Environment("DefaultFormatForSave"), "12");
}

TEST(OpenDrawing, ABadFileLeavesTheCurrentDrawingAsItWas) {
    TempDir dir;
    desktop::Document document;
    AddLine(document.Database(), {0, 0, 0}, {10, 0, 0});
    document.SetModified(true);
    const std::string bad = (dir / "bad.dxf").string();
    WriteFile(bad, "0\nSECTION\n2\nENTITIES\n0\nLINE\n10\nnot a number\n");
    std::string error;
    EXPECT_FALSE(document.Open(bad, error));
    EXPECT_NE(error.find("bad.dxf"), std::string::npos) << error;
    EXPECT_EQ(document.Database().Entities(document.Database().ModelSpace()).size(), 1u);
    EXPECT_TRUE(document.Modified());
    EXPECT_FALSE(document.Titled());
    EXPECT_FALSE(document.Open((dir / "none.dxf").string(), error));
    EXPECT_EQ(error, (dir / "none.dxf").string() + ": no such file");
}

TEST(SaveDrawing, WritesTheVersionOfTheSaveFormatAndReadsBack) {
    TempDir dir;
    desktop::Document document;
    EXPECT_EQ(document.Title(), "Drawing1.dxf");
    EXPECT_EQ(document.Variable("dwgtitled"), "0");
    AddLine(document.Database(), {0, 0, 0}, {10, 5, 0});
    document.NoteChanges();
    EXPECT_EQ(document.Title(), "Drawing1.dxf*");
    const std::string path = (dir / "saved.dxf").string();
    std::string error, note;
    ASSERT_TRUE(document.SaveAs(path, "12", error, note)) << error;
    EXPECT_EQ(document.Title(), "saved.dxf");
    EXPECT_EQ(document.Variable("DWGNAME"), "saved.dxf");
    EXPECT_EQ(document.Variable("dwgprefix"), dir.Path().string() + "/");
    EXPECT_EQ(document.Variable("dwgtitled"), "1");
    EXPECT_NE(ReadFile(path).find("AC1015"), std::string::npos);

    desktop::Document reopened;
    ASSERT_TRUE(reopened.Open(path, error)) << error;
    EXPECT_EQ(reopened.Database().Entities(reopened.Database().ModelSpace()).size(), 1u);
    EXPECT_FALSE(reopened.Modified());
}

TEST(SaveDrawing, RefusesToOverwriteAFileChangedSinceItWasRead) {
    TempDir dir;
    const std::string path = (dir / "shared.dxf").string();
    {
        desktop::Document first;
        std::string error, note;
        ASSERT_TRUE(first.SaveAs(path, "", error, note)) << error;
    }
    desktop::Document document;
    std::string error, note;
    ASSERT_TRUE(document.Open(path, error)) << error;
    // Another program saves the drawing meanwhile.
    const std::string theirs = ReadFile(path) + "\n";
    WriteFile(path, theirs);
    AddLine(document.Database(), {0, 0, 0}, {1, 1, 0});
    EXPECT_FALSE(document.SaveAs(path, "", error, note));
    EXPECT_NE(error.find("shared.dxf"), std::string::npos) << error;
    EXPECT_EQ(ReadFile(path), theirs);
}
