// The tree the dialogs show: names in order of first appearance at every level, nodes for
// entries without children, modules in list order.
#include "plclib/LibraryTree.h"

#include <gtest/gtest.h>

namespace plclib_test {
namespace {

std::string Render(const std::vector<plcdb::TreeNode>& nodes, int depth = 0) {
    std::string out;
    for (const auto& node : nodes) {
        out += std::string(depth * 2, ' ') + node.name + (node.entry ? " *" : "") + "\n";
        out += Render(node.children, depth + 1);
    }
    return out;
}

TEST(LibraryTreeTest, GroupsInterleavedEntriesInOrderOfFirstAppearance) {
    std::vector<std::unique_ptr<CPlcPartData>> entries;
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
    add("beta", "B1", "DI", "b-4DI");  // names are compared as stored
    EXPECT_EQ(Render(plcdb::BuildTree(entries)),
              "Beta\n"
              "  B1\n"
              "    DI\n"
              "      B-16DI *\n"
              "      B-8DI *\n"
              "    AI\n"
              "  B2\n"
              "Alpha\n"
              "beta\n"
              "  B1\n"
              "    DI\n"
              "      b-4DI *\n");
    EXPECT_EQ(plcdb::FindModule(entries, "Beta", "B1", "DI", "B-8DI"), entries[4].get());
    EXPECT_EQ(plcdb::FindModule(entries, "Beta", "B1", "DI", "b-8di"), nullptr);
    EXPECT_EQ(plcdb::FindModule(entries, "Alpha", "", "", ""), nullptr);
}

}  // namespace
}  // namespace plclib_test
