// Opens a drawing of 100,000 entities and paints its first full frame offscreen at 1920x1080,
// against LibreCAD's dxf2pdf on the same file in the same run, then times a full redraw at a
// zoom that shows every entity.
#include <sys/wait.h>

#include <QApplication>
#include <QImage>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "cad/Database.h"
#include "cad/Dxf.h"
#include "view/DrawingView.h"

namespace {

constexpr int kEntities = 100000;

double Seconds(std::chrono::steady_clock::time_point since) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

// Lines, arcs, circles, texts, polylines and block references in equal shares, on a grid.
void WriteDrawing(const std::string& path) {
    cad::Database db;
    const cad::Handle block = db.DefineBlock("TERM");
    {
        auto circle = std::make_unique<cad::Circle>();
        circle->radius = 1;
        db.AppendToBlock("TERM", std::move(circle));
        auto line = std::make_unique<cad::Line>();
        line->start = {-2, 0, 0};
        line->end = {2, 0, 0};
        db.AppendToBlock("TERM", std::move(line));
    }
    for (int i = 0; i < kEntities; ++i) {
        const double x = (i % 400) * 10.0, y = (i / 400) * 10.0;
        cad::Entity* entity = nullptr;
        switch (i % 6) {
            case 0: {
                auto* e = db.AppendNew<cad::Line>();
                entity = e;
                e->start = {x, y, 0};
                e->end = {x + 8, y + 6, 0};
                break;
            }
            case 1: {
                auto* e = db.AppendNew<cad::Arc>();
                entity = e;
                e->center = {x + 4, y + 4, 0};
                e->radius = 3;
                e->endAngle = 2.5;
                break;
            }
            case 2: {
                auto* e = db.AppendNew<cad::Circle>();
                entity = e;
                e->center = {x + 4, y + 4, 0};
                e->radius = 2;
                break;
            }
            case 3: {
                auto* e = db.AppendNew<cad::Text>();
                entity = e;
                e->position = {x, y, 0};
                e->height = 2.5;
                e->text = "DI" + std::to_string(i);
                break;
            }
            case 4: {
                auto* e = db.AppendNew<cad::LwPolyline>();
                entity = e;
                e->vertices = {{x, y}, {x + 8, y}, {x + 8, y + 8}, {x, y + 8}};
                e->closed = true;
                break;
            }
            default:
                entity = db.InsertBlock(block, {x + 4, y + 4, 0});
                break;
        }
        entity->color = 1 + i % 7;
    }
    cad::WriteDxfFile(db, path, cad::DxfVersion::R2000);
}

// LibreCAD's own batch conversion, under a virtual X server; -1 when it cannot run.
double LibreCadSeconds(const std::string& dxf, const std::string& pdf) {
    if (std::system("command -v librecad >/dev/null 2>&1 && command -v xvfb-run >/dev/null 2>&1") !=
        0) {
        std::printf("LibreCAD or xvfb-run is not installed: no baseline\n");
        return -1;
    }
    std::filesystem::remove(pdf);
    const std::string command =
        "xvfb-run -a librecad dxf2pdf -o '" + pdf + "' '" + dxf + "' >/dev/null 2>&1";
    const auto start = std::chrono::steady_clock::now();
    const int status = std::system(command.c_str());
    const double seconds = Seconds(start);
    if (status != 0 || !std::filesystem::exists(pdf) || std::filesystem::file_size(pdf) == 0) {
        std::printf("librecad dxf2pdf failed (status %d): no baseline\n", status);
        return -1;
    }
    return seconds;
}

}  // namespace

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QApplication app(argc, argv);
    const auto dir = std::filesystem::temp_directory_path() / "qv_bench_desktop";
    std::filesystem::create_directories(dir);
    const std::string dxf = (dir / "drawing.dxf").string();
    WriteDrawing(dxf);
    std::printf("drawing: %d entities, %.1f MB\n", kEntities,
                std::filesystem::file_size(dxf) / 1e6);

    // The virtual X server's and the program's start-up are part of the baseline: a run on an
    // empty drawing says how much.
    const double libreCad = LibreCadSeconds(dxf, (dir / "drawing.pdf").string());
    const std::string empty = (dir / "empty.dxf").string();
    cad::WriteDxfFile(cad::Database(), empty, cad::DxfVersion::R2000);
    const double libreCadEmpty = LibreCadSeconds(empty, (dir / "empty.pdf").string());

    const auto start = std::chrono::steady_clock::now();
    std::unique_ptr<cad::Database> db = cad::ReadDxfFile(dxf);
    const double read = Seconds(start);
    desktop::DrawingView view;
    view.resize(1920, 1080);
    view.SetDatabase(db.get());
    view.ZoomExtents();
    QImage frame = view.RenderImage(QSize(1920, 1080));
    const double first = Seconds(start);
    std::printf(
        "qvplc-desktop view: open + first frame %.3f s (read %.3f s, measure and paint "
        "%.3f s), %d entities drawn (those inside block references counted)\n",
        first, read, first - read, view.LastCounts().drawn);

    const auto again = std::chrono::steady_clock::now();
    frame = view.RenderImage(QSize(1920, 1080));
    const double redraw = Seconds(again);
    std::printf("full redraw at zoom extents: %.3f s for %d drawn entities (%.2f us each)\n",
                redraw, view.LastCounts().drawn,
                redraw * 1e6 / std::max(1, view.LastCounts().drawn));

    const auto zoomed = std::chrono::steady_clock::now();
    view.ZoomAt(QPointF(960, 540), 20);
    frame = view.RenderImage(QSize(1920, 1080));
    std::printf("redraw zoomed 20x at the centre: %.3f s, %d drawn, %d culled\n", Seconds(zoomed),
                view.LastCounts().drawn, view.LastCounts().culled);

    if (libreCad > 0) {
        std::printf(
            "LibreCAD dxf2pdf (xvfb-run): %.3f s, of which %.3f s start-up (the same on "
            "an empty drawing)\n",
            libreCad, std::max(0.0, libreCadEmpty));
        std::printf("ratio vs LibreCAD dxf2pdf: %.2fx the time (%.1fx faster; goal: faster)\n",
                    first / libreCad, libreCad / first);
    }
    std::filesystem::remove_all(dir);
    return 0;
}
