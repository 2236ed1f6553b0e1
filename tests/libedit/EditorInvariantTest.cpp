// Random sequences of editor operations, seeded: after them the editor's entry list, its
// terminal rows and its tree are what a fresh load of the same file gives, and the file is
// sound. Names never repeat, so that no rename or new type meets the table of an old one:
// those collisions are the library's own behaviour, tested on their own elsewhere.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <random>
#include <set>

#include "EditorTestSupport.h"
#include "dialog/LibraryTree.h"

using namespace libedit;

namespace libedit_test {
namespace {

using Texts = std::vector<std::string>;

std::string EntryText(const CPlcPartData& e) {
    return e.manufacturer + "|" + e.series + "|" + e.type + "|" + e.code + "|" + e.points + "|" +
           e.moduleType + "|" + e.description + "|" + e.rating;
}

Texts SortedEntries(const CPlcLib::EntryList& entries) {
    Texts texts;
    for (const auto& entry : entries) {
        texts.push_back(EntryText(*entry));
    }
    std::sort(texts.begin(), texts.end());
    return texts;
}

Texts SortedTerms(const CPlcPartData& module) {
    Texts texts;
    for (const auto& row : module.terminals) {
        texts.push_back(row->sequence + "|" + row->termValue + "|" + row->termDesc + "|" +
                        row->detailTermDesc);
    }
    std::sort(texts.begin(), texts.end(), [](const std::string& a, const std::string& b) {
        return std::stoi(a) < std::stoi(b);
    });
    return texts;
}

// The tree as nested text; siblings in their shown order, or sorted.
void TreeText(const dialog::TreeNode& node, int depth, bool sorted, std::string& out) {
    out += std::string(depth, ' ') + node.text + "#" + std::to_string(node.image) + "\n";
    std::vector<std::string> children;
    for (const auto& child : node.children) {
        std::string text;
        TreeText(*child, depth + 1, sorted, text);
        children.push_back(text);
    }
    if (sorted) {
        std::sort(children.begin(), children.end());
    }
    for (const auto& text : children) {
        out += text;
    }
}

class RandomEditing {
public:
    RandomEditing(EditorTest& test, CDlgPlcDataLibEdit& dlg, unsigned seed)
        : test_(test), dlg_(dlg), random_(seed) {}

    void Step();
    int changes = 0;

private:
    int Pick(int count) { return std::uniform_int_distribution<int>(0, count - 1)(random_); }
    bool Chance(int percent) { return Pick(100) < percent; }
    std::string Name(const char* prefix) { return prefix + std::to_string(++counter_); }
    // A random path of `level` names (1 manufacturer .. 4 module); empty when none exists.
    std::vector<std::string> PathAt(int level);
    bool SelectModuleWithRows();
    void Done(bool result) { changes += result; }

    EditorTest& test_;
    CDlgPlcDataLibEdit& dlg_;
    std::mt19937 random_;
    int counter_ = 0;
};

std::vector<std::string> RandomEditing::PathAt(int level) {
    std::vector<const CPlcPartData*> candidates;
    for (const auto& entry : dlg_.plcLib.Entries()) {
        const std::string* fields[] = {&entry->manufacturer, &entry->series, &entry->type,
                                       &entry->code};
        if (!fields[level - 1]->empty()) {
            candidates.push_back(entry.get());
        }
    }
    if (candidates.empty()) {
        return {};
    }
    const CPlcPartData& entry = *candidates[Pick(static_cast<int>(candidates.size()))];
    const std::vector<std::string> all = {entry.manufacturer, entry.series, entry.type, entry.code};
    return {all.begin(), all.begin() + level};
}

bool RandomEditing::SelectModuleWithRows() {
    const auto path = PathAt(4);
    if (path.empty() || !dlg_.SelectPath(path)) {
        return false;
    }
    if (Chance(30)) {
        dlg_.OnTermHeaderClick(Pick(4));  // the list order changes; the rows do not
    }
    return true;
}

void RandomEditing::Step() {
    const int op = Pick(20);
    const auto answerOk = [&] { test_.env.host.messageAnswers.push_back(host::MsgResult::Ok); };
    switch (op) {
        case 0: {
            // Sometimes an existing name in another case: refused.
            std::string name = Name("M");
            const auto existing = PathAt(1);
            if (Chance(10) && !existing.empty()) {
                name = existing[0];
                std::transform(name.begin(), name.end(), name.begin(), ::tolower);
            }
            Done(test_.NewManufacturer(name, Chance(50) ? Name("s") : ""));
            break;
        }
        case 1:
        case 2: {
            const auto path = PathAt(1);
            if (!path.empty()) {
                Done(test_.NewSeries(path[0], Chance(5) ? "x'y" : Name("S")));
            }
            break;
        }
        case 3:
        case 4: {
            const auto path = PathAt(2);
            if (!path.empty()) {
                Done(test_.NewType(path[0] + "/" + path[1], Name(Chance(50) ? "T-" : "T ")));
            }
            break;
        }
        case 5:
        case 6: {
            const auto path = PathAt(3);
            if (!path.empty()) {
                // A description too long for its column fails with nothing changed.
                const std::string description = Chance(5) ? std::string(70, 'd') : Name("d");
                Done(test_.NewModule(path[0] + "/" + path[1] + "/" + path[2], Name("K"),
                                     std::to_string(Pick(64)), description));
            }
            break;
        }
        case 7: {
            const int level = 1 + Pick(4);
            const auto path = PathAt(level);
            if (!path.empty()) {
                std::string joined = path[0];
                for (size_t i = 1; i < path.size(); ++i) {
                    joined += "/" + path[i];
                }
                Done(test_.Rename(joined, Name("R")));
            }
            break;
        }
        case 8: {
            // Deletes, the higher levels more rarely.
            const int level = std::max(1, 4 - Pick(10) / 3);
            const auto path = PathAt(level);
            if (!path.empty() && dlg_.SelectPath(path)) {
                const int ids[] = {0, kCmdDeleteManufacturer, kCmdDeleteSeries, kCmdDeleteType,
                                   kCmdDeleteModule};
                answerOk();
                Done(dlg_.OnMenuCommand(ids[level]));
            }
            break;
        }
        case 9: {
            const auto path = PathAt(1);
            if (!path.empty() && dlg_.SelectPath(path)) {
                dlg_.newManufacturerRunner =
                    FillAndOk<CDlgNewManufacturer>([&](auto& d) { d.shortName = Name("n"); });
                Done(dlg_.OnMenuCommand(kCmdChangeShortName));
            }
            break;
        }
        case 10: {
            const auto path = PathAt(4);
            if (!path.empty() && dlg_.SelectPath(path)) {
                dlg_.changeModuleRunner = FillAndOk<CDlgChangeModule>([&](auto& d) {
                    d.points = std::to_string(Pick(32));
                    d.description = Name("D");
                });
                Done(dlg_.OnMenuCommand(kCmdChangeModule));
            }
            break;
        }
        case 11:
        case 12:
            if (SelectModuleWithRows()) {
                Done(
                    test_.AppendTerm(Name("v"), Chance(5) ? std::string(70, 'x') : "d", Name("x")));
            }
            break;
        case 13:
        case 14:
            if (SelectModuleWithRows() && dlg_.termList.Count() > 0) {
                const int row = Pick(dlg_.termList.Count());
                Done(test_.InsertTermBefore(dlg_.termList.Text(row, kTermSequence), Name("i")));
            }
            break;
        case 15:
            if (SelectModuleWithRows() && dlg_.termList.Count() > 0) {
                std::set<int> rows;
                const int count = 1 + Pick(std::min(3, dlg_.termList.Count()));
                while (static_cast<int>(rows.size()) < count) {
                    rows.insert(Pick(dlg_.termList.Count()));
                }
                dlg_.SelectTermRows({rows.begin(), rows.end()});
                answerOk();
                Done(dlg_.OnMenuCommand(kCmdDeleteTerms));
            }
            break;
        case 16:
            if (SelectModuleWithRows() && dlg_.termList.Count() > 0) {
                dlg_.SelectTermRows({Pick(dlg_.termList.Count())});
                dlg_.changeTermDataRunner = FillAndOk<CDlgChangeTermData>([&](auto& d) {
                    d.termValue = Chance(5) ? "q'" : Name("c");
                    d.termDesc = Name("e");
                });
                Done(dlg_.OnMenuCommand(kCmdChangeTerm));
            }
            break;
        case 17:
            if (SelectModuleWithRows() && dlg_.termList.Count() > 0) {
                dlg_.SelectTermRows({0});
                dlg_.termOrderRunner = FillAndOk<CDlgTermOrder>(
                    [&](auto& d) { std::shuffle(d.rows.begin(), d.rows.end(), random_); });
                Done(dlg_.OnMenuCommand(kCmdReorderTerms));
            }
            break;
        case 18: {
            dlg_.editFind = Name("").substr(0, 1 + Pick(2));
            test_.env.host.messageAnswers.push_back(host::MsgResult::Yes);
            dlg_.OnFind();
            break;
        }
        default: {
            const auto path = PathAt(1 + Pick(4));
            if (!path.empty()) {
                dlg_.SelectPath(path);
            }
            break;
        }
    }
    test_.env.host.messageAnswers.clear();
}

class EditorInvariantTest : public EditorTest {
protected:
    // Compares the editor with a fresh load of its file.
    void ExpectSameAsFreshLoad(int step) {
        SCOPED_TRACE("after step " + std::to_string(step));
        CPlcLib fresh;
        ASSERT_TRUE(fresh.Open(env.LibraryPath().string()));
        fresh.LoadLibrary();
        EXPECT_EQ(SortedEntries(dlg->plcLib.Entries()), SortedEntries(fresh.Entries()));
        for (const auto& entry : dlg->plcLib.Entries()) {
            if (entry->marker != kTerminalsLoaded) {
                continue;
            }
            CPlcPartData loaded;
            fresh.LoadTerminals(entry->manufacturer, entry->series, entry->type, entry->code,
                                loaded);
            EXPECT_EQ(SortedTerms(*entry), SortedTerms(loaded)) << EntryText(*entry);
        }
        dialog::TreeModel freshTree;
        dialog::FillLibraryTree(freshTree, fresh.Entries());
        dialog::FillAllModules(freshTree, fresh.Entries());
        dialog::FillAllModules(dlg->tree, dlg->plcLib.Entries());
        std::string mine, theirs;
        // A fresh load orders siblings by the first row that names them; deleting that row
        // (or writing a placeholder again) moves a name later in the file while the editor
        // keeps its node in place. The nodes must be the same; their order may differ.
        TreeText(*dlg->tree.Root(), 0, true, mine);
        TreeText(*freshTree.Root(), 0, true, theirs);
        EXPECT_EQ(mine, theirs);
        const auto check = Db("PRAGMA integrity_check");
        ASSERT_EQ(check.RowCount(), 1u);
        EXPECT_EQ(check.rows[0][0], "ok");
    }
};

TEST_F(EditorInvariantTest, RandomEditsKeepTheEditorInStepWithTheFile) {
    const int steps = 2500;
    for (unsigned seed : {1u, 2u}) {
        if (seed != 1u) {
            dlg.reset();
            dialog_test::WriteSampleLibrary(env.LibraryPath().string() + ".new");
            std::filesystem::rename(env.LibraryPath().string() + ".new", env.LibraryPath());
            dlg = OpenEditor();
        }
        SCOPED_TRACE("seed " + std::to_string(seed));
        RandomEditing editing(*this, *dlg, seed);
        for (int step = 1; step <= steps; ++step) {
            editing.Step();
            if (step % 500 == 0) {
                ExpectSameAsFreshLoad(step);
                if (HasFailure()) {
                    return;
                }
            }
        }
        EXPECT_GT(editing.changes, steps / 3);
        std::printf("seed %u: %d changes, %zu entries\n", seed, editing.changes,
                    dlg->plcLib.Entries().size());
    }
}

}  // namespace
}  // namespace libedit_test
