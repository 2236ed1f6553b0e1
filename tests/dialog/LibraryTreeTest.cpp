#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "dialog/LibraryTree.h"

namespace {

dialog::Entries SampleEntries() {
    dialog::Entries entries;
    auto add = [&](const char* m, const char* s, const char* t, const char* code) {
        auto entry = std::make_unique<CPlcPartData>(m, s, t);
        entry->code = code;
        entries.push_back(std::move(entry));
    };
    add("Alpha", "S1", "DI", "A-16DI");
    add("Alpha", "S1", "DI", "A-32DI");
    add("Alpha", "S2", "", "");  // a series without types
    add("Beta", "", "", "");     // a manufacturer without series
    add("Alpha", "S1", "DO", "A-16DO");
    add("alpha", "S1", "DI", "x");  // another manufacturer: names are compared as stored
    return entries;
}

std::string Render(const dialog::TreeNode& node) {
    std::string text = node.text;
    if (!node.children.empty()) {
        text += "(";
        for (const auto& child : node.children) {
            text += Render(*child) + (child.get() == node.children.back().get() ? "" : " ");
        }
        text += ")";
    }
    return text;
}

TEST(LibraryTree, LevelsInFirstAppearanceOrderModulesOnlyWhenATypeIsOpened) {
    const auto entries = SampleEntries();
    dialog::TreeModel tree;
    dialog::TreeNode* root = dialog::FillLibraryTree(tree, entries);
    EXPECT_EQ(Render(*root), "PLC(Alpha(S1(DI DO) S2) Beta alpha(S1(DI)))");
    EXPECT_EQ(root->image, dialog::kImageRoot);
    dialog::TreeNode* di = root->children[0]->children[0]->children[0].get();
    EXPECT_EQ(di->image, dialog::kImageType);
    dialog::FillTypeModules(tree, di, entries);
    dialog::FillTypeModules(tree, di, entries);  // a filled type is left alone
    EXPECT_EQ(Render(*di), "DI(A-16DI A-32DI)");
    EXPECT_EQ(di->children[1]->image, dialog::kImageModule);
    const auto path = dialog::PathOf(di->children[1].get());
    EXPECT_EQ(path, (dialog::LastSelection{"Alpha", "S1", "DI", "A-32DI"}));
}

TEST(LibraryTree, InterleavedEntriesGroupUnderTheirFirstAppearance) {
    dialog::Entries entries;
    const auto add = [&](const char* m, const char* s, const char* t, const char* code) {
        auto e = std::make_unique<CPlcPartData>(m, s, t);
        e->code = code;
        entries.push_back(std::move(e));
    };
    add("Beta", "B1", "DI", "B-16DI");
    add("Alpha", "", "", "");
    add("Beta", "B2", "", "");
    add("Beta", "B1", "AI", "");
    add("Beta", "B1", "DI", "B-8DI");
    dialog::TreeModel tree;
    dialog::FillLibraryTree(tree, entries);
    dialog::FillAllModules(tree, entries);
    EXPECT_EQ(Render(*tree.Root()), "PLC(Beta(B1(DI(B-16DI B-8DI) AI) B2) Alpha)");
}

TEST(LibraryTree, DescentStopsAtTheFirstEmptyOrUnknownName) {
    const auto entries = SampleEntries();
    struct Case {
        dialog::LastSelection remembered;
        std::string selected;  // empty: nothing found
    } cases[] = {
        {{"ALPHA", "s1", "di", "a-32di"}, "A-32DI"},  // case does not matter here
        {{"Alpha", "S1", "", "A-32DI"}, "S1"},        // an empty level stops the descent
        {{"Alpha", "S9", "DI", ""}, "Alpha"},         // unknown series: its manufacturer
        {{"Alpha", "S1", "DI", "gone"}, "DI"},
        {{"Nobody", "", "", ""}, ""},
        {{"", "", "", ""}, ""},
    };
    for (const auto& c : cases) {
        dialog::TreeModel tree;
        dialog::FillLibraryTree(tree, entries);
        dialog::TreeNode* found = dialog::DescendTo(tree, c.remembered, entries);
        EXPECT_EQ(found ? found->text : "", c.selected) << c.remembered.series;
        for (auto* up = found; up != nullptr; up = up->parent) {
            EXPECT_TRUE(up->expanded) << up->text;
        }
    }
}

TEST(LibraryTree, FindWalksForwardFromTheStartInTreeOrder) {
    const auto entries = SampleEntries();
    dialog::TreeModel tree;
    dialog::TreeNode* root = dialog::FillLibraryTree(tree, entries);
    auto isModule = [](const dialog::TreeNode& node) { return node.Level() == 4; };
    dialog::TreeNode* first = dialog::FindFrom(tree, root, entries, isModule);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->text, "A-16DI");
    // From a module, the walk goes on after it, through the following types.
    std::string order;
    for (auto* node = first; node != nullptr;
         node = dialog::FindFrom(tree, node, entries, isModule)) {
        order += node->text + " ";
    }
    EXPECT_EQ(order, "A-16DI A-32DI A-16DO x ");
}

}  // namespace
