#include "draw/ModuleParts.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "cad/Message.h"
#include "cad/Operations.h"
#include "cadutil/BlockHelpers.h"
#include "cadutil/EntityHelpers.h"
#include "cadutil/SymbolData.h"
#include "draw/AworkSettings.h"
#include "draw/DlgPlcRendal.h"
#include "draw/DrawingFileCache.h"
#include "draw/ModuleDrawing.h"
#include "host/Host.h"

namespace draw {
namespace {

// The outward normal of a side: the direction a terminal's lead leaves the body.
cad::Vector3d Outward(Side side) {
    switch (side) {
        case Side::Upper:
            return {0, 1, 0};
        case Side::Lower:
            return {0, -1, 0};
        case Side::Right:
            return {1, 0, 0};
        case Side::Left:
            return {-1, 0, 0};
    }
    return {0, 1, 0};
}

bool IsVerticalSide(Side side) {
    return side == Side::Right || side == Side::Left;
}

struct TextSpec {
    cad::Point3d at;  // module coordinates
    double height = 2.0;
    double rotation = 0;
    cad::TextHorz horz = cad::TextHorz::Middle;
    cad::TextVert vert = cad::TextVert::Baseline;
    int color = 2;
};

cad::Text* AddText(DrawContext& ctx, const std::string& content, const TextSpec& style) {
    auto text = std::make_unique<cad::Text>();
    text->text = content;
    text->height = style.height;
    text->rotation = style.rotation;
    text->widthFactor = 0.8;
    text->horizontal = style.horz;
    text->vertical = style.vert;
    text->color = static_cast<std::int16_t>(style.color);
    text->layer = ctx.layer;
    text->style = ctx.textStyle;
    text->SetAnchor(ctx.At(style.at.x, style.at.y));
    cad::Text* raw = text.get();
    ctx.db.Append(std::move(text));
    return raw;
}

cad::MText* AddMText(DrawContext& ctx, const std::string& content, const cad::Point3d& at,
                     double height, int attachment, double rotation) {
    auto mtext = std::make_unique<cad::MText>();
    mtext->contents = content;
    mtext->position = ctx.At(at.x, at.y);
    mtext->height = height;
    mtext->attachment = attachment;
    mtext->rotation = rotation;
    mtext->layer = ctx.layer;
    mtext->style = ctx.textStyle;
    cad::MText* raw = mtext.get();
    ctx.db.Append(std::move(mtext));
    return raw;
}

// Extents of a placed symbol reference; an empty box at its position when it measures
// nothing.
struct Measured {
    cad::Point3d min, max;
    cad::Vector3d Size() const { return {std::abs(max.x - min.x), std::abs(max.y - min.y), 0}; }
};

Measured MeasureReference(const cad::Database& db, cad::Handle ref, const cad::Point3d& at) {
    Measured m{at, at};
    if (!cadutil::BlockReferenceExtents(db, ref, m.min, m.max)) {
        m = Measured{at, at};
    }
    return m;
}

// A terminal symbol reference of the context's block, at unit scale.
Measured MeasureSymbol(DrawContext& ctx, const cad::BlockReference& ref) {
    for (const auto& f : ctx.symbolFootprints) {
        if (f.rotation == ref.rotation) {
            return {ref.position + f.low, ref.position + f.high};
        }
    }
    const Measured m = MeasureReference(ctx.db, ref.handle, ref.position);
    ctx.symbolFootprints.push_back({ref.rotation, m.min - ref.position, m.max - ref.position});
    return m;
}

// How far a cell's symbol must move out so that its inner end stands on the cell's outer
// edge: for a symbol that lies wholly inside the edge after insertion this is its measured
// height (width on the vertical sides); a symbol whose base point sits elsewhere is brought
// to the edge all the same.
double ShiftOntoEdge(Side side, const Measured& m, const cad::Point3d& edge) {
    switch (side) {
        case Side::Upper:
            return edge.y - m.min.y;
        case Side::Lower:
            return m.max.y - edge.y;
        case Side::Right:
            return edge.x - m.min.x;
        case Side::Left:
            return m.max.x - edge.x;
    }
    return 0;
}

// The cell of a terminal in the cell style: pitch long along the edge, 5 across it.
std::vector<cad::Point3d> CellCorners(const cad::Point3d& c, double pitch, bool vertical) {
    const double along = pitch / 2, across = 2.5;
    if (vertical) {
        return {{c.x - across, c.y + along},
                {c.x - across, c.y - along},
                {c.x + across, c.y - along},
                {c.x + across, c.y + along}};
    }
    return {{c.x - along, c.y - across},
            {c.x + along, c.y - across},
            {c.x + along, c.y + across},
            {c.x - along, c.y + across}};
}

// Texts of a terminal in the frame styles: the number inside the body, the description
// outside, both set off from the edge by the symbol's measured size. The whole module sets
// them by their middle, the description on the upper and right sides hanging from its top;
// the divided drawing centres every number on its point and hangs every description.
void FrameTexts(Side side, const cad::Point3d& edge, const cad::Vector3d& size, bool divided,
                TextSpec& number, TextSpec& desc) {
    const cad::Vector3d out = Outward(side);
    const bool vertical = IsVerticalSide(side);
    const double s = vertical ? std::max(size.x, size.y) : size.y;
    number.at = edge - out * (s + 0.8);
    desc.at = edge + out * (s + 0.5);
    number.rotation = desc.rotation = vertical ? kAngleMinus90 : kAngle90;
    if (divided) {
        number.horz = desc.horz = cad::TextHorz::Center;
        number.vert = cad::TextVert::Middle;
        desc.vert = cad::TextVert::Top;
        return;
    }
    desc.vert =
        (side == Side::Upper || side == Side::Right) ? cad::TextVert::Top : cad::TextVert::Baseline;
}

// The "up" of a cell text, whose baseline runs along the edge: +Y unrotated (horizontal
// module), +X turned to 270 degrees (vertical module).
cad::Vector3d CellTextUp(bool vertical) {
    return vertical ? cad::Vector3d{1, 0, 0} : cad::Vector3d{0, 1, 0};
}

// Texts of a terminal in the cell style: the number in the middle of its cell. The symbol
// stands outside the cell, so the description goes beyond the symbol's far end, half a unit
// clear of it. It hangs from its top, except on the lower side of a whole horizontal module
// where it stands on its bottom; its anchor is put so that the text's body lies wholly
// beyond that clearance whichever way the body extends from the anchor.
void CellTexts(Side side, const cad::Point3d& centre, const cad::Vector3d& size, bool divided,
               TextSpec& number, TextSpec& desc) {
    const cad::Vector3d out = Outward(side);
    const bool vertical = IsVerticalSide(side);
    const double s = vertical ? size.x : size.y;
    number.at = centre;
    number.horz = desc.horz = cad::TextHorz::Center;
    number.vert = cad::TextVert::Middle;
    desc.height = 1.5;
    desc.color = 4;
    desc.vert = (side == Side::Lower && !divided) ? cad::TextVert::Bottom : cad::TextVert::Top;
    const cad::Vector3d up = CellTextUp(vertical);
    const bool upIsOut = up.x * out.x + up.y * out.y > 0;
    // A top-hung text's body runs down from its anchor, a bottom-set one's up.
    const bool bodyRunsIn = (desc.vert == cad::TextVert::Top) == upIsOut;
    const double clear = 2.5 + s + 0.5;
    desc.at = centre + out * (bodyRunsIn ? clear + desc.height : clear);
    number.rotation = desc.rotation = vertical ? kAngle270 : 0.0;
}

// The symbol drawing at `path`, read with shared access (read-only, not locked); every
// module drawing reads its symbol again, so the last one parsed is kept.
const cad::Database* ReadSymbolDrawing(const std::string& path) {
    static DrawingFileCache cache;
    std::string error;
    return cache.Read(path, error);
}

// The first terminal-text point a symbol's designer marked, in world coordinates.
bool FirstTextPoint(const cad::Database& db, cad::Handle ref, cad::Point3d& point) {
    std::vector<STRUCT_TERMTEXTPOINT> points;
    if (!CGetSymbData().GetTermTextPoints(db, ref, points) || points.empty()) {
        return false;
    }
    point = points.front().point;
    return true;
}

void Link(cad::Database& db, cad::Handle from, const char* app, cad::Handle to) {
    cadutil::AppendXDataItem(db, from, app, cad::XDataItem::HandleRef(to));
}

}  // namespace

DrawingSession::DrawingSession(CDlgPlcRendal& dlg) : dlg_(dlg) {
    dlg_.drawActive = 1;
    dlg_.drawBusy = true;
}

DrawingSession::~DrawingSession() {
    dlg_.drawBusy = false;
    // The next run of either drawing command finds reshowPending and only shows the dialog.
    dlg_.reshowPending = true;
    host::Current().SendCommandString("(Command)\nRendalFull\n");
}

double SymbolRotation(int termDirection, Side side) {
    static constexpr double kTable[4][4] = {
        // upper, lower, right, left
        {0.0, kAngle180, kAngleMinus90, kAngle90},
        {kAngle180, 0.0, kAngle90, kAngleMinus90},
        {kAngle90, kAngleMinus90, 0.0, kAngle180},
        {kAngleMinus90, kAngle90, kAngle180, 0.0},
    };
    if (termDirection < 0 || termDirection > 3) {
        return 0.0;
    }
    return kTable[termDirection][static_cast<int>(side)];
}

DrawContext::DrawContext(CDlgPlcRendal& d, const ModuleChoice& c, cad::Database& target)
    : dlg(d), settings(d), choice(c), db(target) {}

namespace {

// The terminals to draw in order, each put in the first or the second list by `place`.
template <class Place>
TermLists CollectTerminals(const ModuleChoice& choice, Place place) {
    TermLists lists;
    for (std::size_t i = 0; i < choice.terminals.size(); ++i) {
        const ChosenTerminal& terminal = choice.terminals[i];
        if (!terminal.marked || !terminal.side) {
            continue;
        }
        if (std::vector<int>* list = place(lists, *terminal.side)) {
            list->push_back(static_cast<int>(i));
        }
    }
    return lists;
}

}  // namespace

TermLists CollectModuleTerminals(const ModuleChoice& choice) {
    const bool vertical = choice.orientation != 0;
    const Side first = vertical ? Side::Right : Side::Upper;
    const Side second = vertical ? Side::Left : Side::Lower;
    return CollectTerminals(choice, [&](TermLists& lists, Side side) -> std::vector<int>* {
        if (side == first) {
            return &lists.first;
        }
        return side == second ? &lists.second : nullptr;
    });
}

TermLists CollectDividedTerminals(const ModuleChoice& choice) {
    return CollectTerminals(choice, [](TermLists& lists, Side side) -> std::vector<int>* {
        return side == Side::Upper || side == Side::Right ? &lists.first : &lists.second;
    });
}

std::string MTextLiteral(std::string_view text) {
    std::string escaped;
    escaped.reserve(text.size());
    for (const char c : text) {
        if (c == '\\' || c == '{' || c == '}') {
            escaped += '\\';
        }
        escaped += c;
    }
    return escaped;
}

std::string HeaderDataText(const PlcDrawSettings& settings, const ModuleChoice& choice) {
    std::string text;
    // The manufacturer line opens without a paragraph break and every other line with one,
    // so a header without the manufacturer starts with an empty line.
    if (settings.labelManufacturer) {
        text += (settings.labelManufacturerPrefix ? "厂家:" : "") + MTextLiteral(choice.shortName);
    }
    if (settings.labelModuleCode) {
        text +=
            (settings.labelModuleCodePrefix ? "\\P模块代号:" : "\\P") + MTextLiteral(choice.code);
    }
    if (settings.labelModuleDesc) {
        text += (settings.labelModuleDescPrefix ? "\\P模块描述:" : "\\P") +
                MTextLiteral(choice.description);
    }
    if (settings.labelFrameNo && !choice.frameNo.empty()) {
        text += (settings.labelFramePrefix ? "\\P框架号:" : "\\P") + MTextLiteral(choice.frameNo);
    }
    if (settings.labelSlotNo && !choice.slotNo.empty()) {
        text += (settings.labelSlotPrefix ? "\\P槽号:" : "\\P") + MTextLiteral(choice.slotNo);
    }
    return text;
}

TermStyle TermStyleFor(int componentType) {
    if (componentType == 2) {
        return TermStyle::FrameTextPoint;
    }
    return componentType == 3 ? TermStyle::Cell : TermStyle::Frame;
}

// The module's text style: named so that LibreCAD, which draws a text with the stroke font
// named like its style, finds qvcjk.lff; its font files are the configured ones.
static cad::Handle ModuleTextStyle(cad::Database& db, const AworkSettings& settings) {
    cad::Handle style = db.FindTextStyle(kTextStyleName);
    if (style == cad::kNullHandle) {
        return db.AddTextStyle(kTextStyleName, settings.textFont, settings.bigFont);
    }
    if (cad::TextStyleRecord* record = db.TextStyle(style)) {
        record->font = settings.textFont;
        record->bigFont = settings.bigFont;
    }
    return style;
}

bool OpenDrawContext(DrawContext& ctx) {
    const AworkSettings awork = LoadAworkSettings(AworkFilePath());
    ctx.labelHeight = awork.labelHeight;
    ctx.layer = cadutil::LayerIdByName(ctx.db, "DIM");
    if (ctx.db.TextStyle(ctx.db.CurrentTextStyle()) == nullptr) {
        return false;
    }
    ctx.textStyle = ModuleTextStyle(ctx.db, awork);
    return true;
}

void DrawHeader(DrawContext& ctx, bool detailLinks) {
    const double h = ctx.labelHeight;
    const double H = ctx.settings.typeWidth;
    const bool vertical = ctx.choice.orientation != 0;
    const cad::Point3d labelAt =
        vertical ? cad::Point3d{-H / 2, h, 0} : cad::Point3d{-h, -H / 2, 0};
    const cad::Point3d dataAt =
        vertical ? cad::Point3d{-H / 2, 2 * h, 0} : cad::Point3d{-2 * h, -H / 2, 0};
    const double rotation = vertical ? 0.0 : kAngle90;
    cad::MText* label = AddMText(ctx, MTextLiteral(ctx.choice.tag), labelAt, h, 5, rotation);
    cad::MText* data =
        AddMText(ctx, HeaderDataText(ctx.settings, ctx.choice), dataAt, 2.5, 8, rotation);
    data->color = 2;
    ctx.label = label->handle;
    ctx.data = data->handle;
    if (detailLinks) {
        Link(ctx.db, ctx.label, kAppLabelDetail, ctx.data);
        Link(ctx.db, ctx.data, kAppDetailLabel, ctx.label);
    }
}

cad::Handle AddOutline(DrawContext& ctx, const std::vector<cad::Point3d>& points, bool closed) {
    std::vector<cad::Point3d> world;
    world.reserve(points.size());
    host::IHost& host = host::Current();
    for (const cad::Point3d& p : points) {
        world.push_back(host.UcsToWcs(ctx.At(p.x, p.y)));
    }
    const cad::Handle handle = cadutil::AddPolylineWithWidth(&ctx.db, world, 0.0);
    if (auto* polyline = ctx.db.Get<cad::LwPolyline>(handle)) {
        polyline->closed = closed;
    }
    // An outline names its label; the label lists every outline piece of its module.
    cadutil::SetXDataItem(ctx.db, handle, kAppOutlineText, cad::XDataItem::HandleRef(ctx.label));
    Link(ctx.db, ctx.label, kAppOutlineRect, handle);
    return handle;
}

bool LoadSymbolBlock(DrawContext& ctx) {
    const cad::Database* symbol = ReadSymbolDrawing(ctx.settings.termSymbolPath);
    if (symbol == nullptr) {
        host::Print("文件<" + ctx.settings.termSymbolPath + ">打开失败！" + "\n");
        return false;
    }
    std::string error;
    ctx.symbolBlock = cad::InsertAsBlock(ctx.db, *symbol, ctx.settings.termSymbolName, &error);
    if (!error.empty()) {
        host::Print(cad::FillMessage("文件<%s>: %s\n", {ctx.settings.termSymbolPath, error}));
    }
    ctx.symbolFootprints.clear();
    return ctx.symbolBlock != cad::kNullHandle;
}

void DrawTerminal(DrawContext& ctx, int index, Side side, TermStyle style, const cad::Point3d& at) {
    const PlcDrawSettings& settings = ctx.settings;
    const ChosenTerminal& terminal = ctx.choice.terminals.at(static_cast<std::size_t>(index));
    const bool vertical = IsVerticalSide(side);
    const cad::Vector3d out = Outward(side);
    if (style == TermStyle::Cell) {
        AddOutline(ctx, CellCorners(at, settings.termSpacing, vertical), true);
    }
    // A cell's symbol is inserted on the cell's outer edge, measured, and moved out so that
    // it stands on that edge.
    const cad::Point3d insertAt = style == TermStyle::Cell ? at + out * 2.5 : at;
    cad::BlockReference* ref =
        ctx.db.InsertBlock(ctx.symbolBlock, ctx.At(insertAt.x, insertAt.y), {1, 1, 1},
                           SymbolRotation(settings.termDirection, side));
    const cad::Handle refHandle = ref->handle;
    const Measured measured = MeasureSymbol(ctx, *ref);
    const cad::Vector3d size = measured.Size();
    ctx.dlg.termLength = static_cast<float>(std::max(size.x, size.y));
    if (style == TermStyle::Cell) {
        const cad::Point3d edge = ctx.At(insertAt.x, insertAt.y);
        ref->position = ref->position + out * ShiftOntoEdge(side, measured, edge);
    }

    TextSpec number, desc;
    if (style == TermStyle::Cell) {
        CellTexts(side, at, size, ctx.divided, number, desc);
    } else {
        FrameTexts(side, at, size, ctx.divided, number, desc);
    }
    cad::Text* numberText = AddText(ctx, terminal.value, number);
    cad::Point3d textPoint;
    if (style == TermStyle::FrameTextPoint && FirstTextPoint(ctx.db, refHandle, textPoint)) {
        numberText->SetAnchor(textPoint);
    }
    cad::Text* descText = AddText(ctx, terminal.description, desc);

    // Both description links sit on the number text; the description text itself links
    // back only in the divided drawing.
    cad::Database& db = ctx.db;
    const cad::Handle numberHandle = numberText->handle, descHandle = descText->handle;
    cadutil::AppendXDataItem(db, refHandle, kAppTermText, cad::XDataItem::String("1"));
    Link(db, refHandle, kAppTermText, numberHandle);
    Link(db, refHandle, kAppTermDescText, descHandle);
    Link(db, numberHandle, kAppTermText, refHandle);
    Link(db, numberHandle, kAppTermDescText, refHandle);
    if (ctx.divided) {
        Link(db, descHandle, kAppTermDescText, refHandle);
    }
    Link(db, ctx.label, kAppLabel, refHandle);
    cadutil::SetXDataItem(db, refHandle, kAppLabel, cad::XDataItem::HandleRef(ctx.label));
}

}  // namespace draw
