// qvplc dxf info / convert / render, run as a user runs them.
#include <gtest/gtest.h>

#include <filesystem>

#include "PixelImage.h"
#include "TestPaths.h"

using namespace testing_support;
using render_test::IsRed;
using render_test::PixelImage;

namespace {

std::string Qvplc() {
    return (BinaryDir() / "bin" / "qvplc").string();
}

std::string Symbol(const std::string& name) {
    return (CommonResDir() / "SYMB2LIB" / (name + ".dxf")).string();
}

int Qv(const std::string& args, std::string* output) {
    return RunCommand(Qvplc() + " " + args + " 2>&1", output);
}

std::string Check(const std::filesystem::path& file) {
    std::string out;
    const int rc = RunCommand(Python() + " " + (SourceDir() / "tests/cad/check_dxf.py").string() +
                                  " " + file.string() + " 2>&1",
                              &out);
    return rc == 0 ? std::string() : out;
}

}  // namespace

TEST(DxfInfo, ReportsVersionCodePageKindsLayersAndBlocks) {
    std::string out;
    ASSERT_EQ(Qv("dxf info " + Symbol("SYMB2_S_KTR5"), &out), 0) << out;
    EXPECT_NE(out.find("version: AC1015"), std::string::npos) << out;
    EXPECT_NE(out.find("code page: ANSI_936"), std::string::npos);
    EXPECT_NE(out.find("LWPOLYLINE"), std::string::npos);
    EXPECT_NE(out.find("CIRCLE"), std::string::npos);
    EXPECT_NE(out.find("QV_TERM_TEXT_POINT (off)"), std::string::npos);
}

TEST(DxfConvert, WritesEachVersionAsAStrictReaderAcceptsIt) {
    TempDir dir;
    for (const auto& [option, acadver] :
         {std::pair{"R14", "AC1014"}, {"2004", "AC1018"}, {"2010", "AC1024"}}) {
        const auto out = dir / (std::string(option) + ".dxf");
        std::string log;
        ASSERT_EQ(Qv("dxf convert " + Symbol("SYMB2_S_KTR17") + " " + out.string() + " --version " +
                         option,
                     &log),
                  0)
            << log;
        EXPECT_NE(ReadFile(out).find(acadver), std::string::npos) << option;
        EXPECT_EQ(Check(out), "") << option;
    }
}

TEST(DxfConvert, RefusesAnUnknownVersion) {
    TempDir dir;
    std::string out;
    EXPECT_EQ(Qv("dxf convert " + Symbol("SYMB2_S_01") + " " + (dir / "x.dxf").string() +
                     " --version R12",
                 &out),
              2);
    EXPECT_NE(out.find("'R12'"), std::string::npos) << out;
    EXPECT_FALSE(std::filesystem::exists(dir / "x.dxf"));
}

TEST(DxfRender, DrawsASymbolWithItsRedMarker) {
    TempDir dir;
    std::string out;
    const auto png = dir / "ktr5.png";
    ASSERT_EQ(
        Qv("dxf render " + Symbol("SYMB2_S_KTR5") + " " + png.string() + " --width 300", &out), 0)
        << out;
    // Line, circle and marker drawn; the two text points on their layer that is off not.
    EXPECT_NE(out.find("3 entities drawn, 2 left out"), std::string::npos) << out;
    PixelImage image(png.string());
    ASSERT_TRUE(image.Ok());
    EXPECT_EQ(image.Width(), 300);
    // The symbol points right: its red marker is at the right-hand end.
    const int w = image.Width(), h = image.Height();
    EXPECT_GT(image.Count(w * 3 / 4, 0, w, h, IsRed), 20);
    EXPECT_EQ(image.Count(0, 0, w / 2, h, IsRed), 0);
}

TEST(DxfRender, MalformedInputNamesFileAndLine) {
    TempDir dir;
    const auto bad = dir / "bad.dxf";
    WriteFile(bad, "  0\nSECTION\n  2\nHEADER\n  9\n$ACADVER\nxx\nAC1015\n");
    std::string out;
    EXPECT_EQ(Qv("dxf render " + bad.string() + " " + (dir / "bad.png").string(), &out), 3);
    EXPECT_NE(out.find(bad.string() + ":7"), std::string::npos) << out;
    EXPECT_FALSE(std::filesystem::exists(dir / "bad.png"));
    EXPECT_EQ(Qv("dxf info " + (dir / "missing.dxf").string(), &out), 3);
}

TEST(DxfRender, SelfNestedBlocksAreRefusedAtOnceWithTheBlockNamed) {
    TempDir dir;
    const auto png = dir / "nested.png";
    std::string out;
    // Without the bound this runs for hours; `timeout` turns that into exit 124.
    EXPECT_EQ(
        RunCommand("timeout 60 " + Qvplc() + " dxf render " +
                       (SourceDir() / "fuzz/corpus/regression-self-nested-blocks.dxf").string() +
                       " " + png.string() + " 2>&1",
                   &out),
        3)
        << out;
    EXPECT_NE(out.find("block \"SYMB\" contains itself"), std::string::npos) << out;
    EXPECT_FALSE(std::filesystem::exists(png));
}

TEST(DxfRender, UsageErrors) {
    TempDir dir;
    std::string out;
    EXPECT_EQ(Qv("dxf render " + Symbol("SYMB2_S_01") + " " + (dir / "a.gif").string(), &out), 2);
    EXPECT_EQ(
        Qv("dxf render " + Symbol("SYMB2_S_01") + " " + (dir / "a.png").string() + " --width 10",
           &out),
        2);
    EXPECT_EQ(
        Qv("dxf render " + Symbol("SYMB2_S_01") + " " + (dir / "a.png").string() + " --block NOPE",
           &out),
        2);
    EXPECT_NE(out.find("NOPE"), std::string::npos);
    ASSERT_EQ(Qv("dxf render --help", &out), 0);
    EXPECT_NE(out.find("--block NAME"), std::string::npos);
    EXPECT_EQ(Qv("dxf frobnicate", &out), 2);
}
