// Bounds on what block references expand to. A reference draws its block's entities, and a
// block may hold references of its own, each with rows and columns: a few hundred bytes of
// file can stand for more entities than any machine holds. Drawing, measuring, exploding and
// copying a drawing as a block therefore first count what the expansion would produce and
// refuse, with a message naming the block, a block that contains itself, blocks nested
// deeper than kMaxBlockNesting, or more entities than the drawing's budget. The budget grows
// with the drawing (kExpansionPerObject entities per object it holds, at least
// kMinExpansionBudget), so the work and memory an expansion may take stay proportional to
// the input.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "cad/Database.h"

namespace cad {

inline constexpr int kMaxBlockNesting = 16;
inline constexpr long long kMinExpansionBudget = 200000;
inline constexpr long long kExpansionPerObject = 100;

long long ExpansionBudget(const Database& db);

// Counts the entities an expansion produces: every entity once, a block reference once for
// itself plus its block's count for each of its rows and columns, plus its attributes.
// Block counts are worked out once and reused, so counting is linear in the drawing.
class ExpansionCounter {
public:
    explicit ExpansionCounter(const Database& db);
    ExpansionCounter(const Database& db, long long budget);

    // Adds what the entity expands to; false with `error` set once a bound is passed.
    bool Add(const Entity& entity);
    // Adds every live entity of a block (a space).
    bool AddBlock(Handle block);
    long long Total() const { return total_; }
    const std::string& Error() const { return error_; }

private:
    // Entities of one block and its nested blocks, or -1 after an error.
    long long BlockCount(Handle block, int depth);
    long long EntityCount(const Entity& entity, int depth);
    bool Fail(std::string message);

    const Database& db_;
    long long budget_;
    long long total_ = 0;
    std::unordered_map<Handle, long long> counts_;
    std::vector<Handle> path_;
    std::string error_;
};

// The whole check for one space or one entity; false with `error` set.
bool CheckExpansion(const Database& db, Handle space, std::string& error);
bool CheckExpansion(const Database& db, const Entity& entity, std::string& error);

// The refusals, for every place that expands blocks.
std::string BlockCycleMessage(const std::string& block);
std::string BlockNestingMessage(const std::string& block);
std::string ExpansionBudgetMessage(long long budget);

// The transform of one cell of a reference's grid (row 0, column 0 is BlockTransform).
Matrix3d GridTransform(const Database& db, const BlockReference& ref, int row, int column);

}  // namespace cad
