#include "cad/Expansion.h"

#include <algorithm>

#include "cad/Message.h"
#include "cad/Operations.h"

namespace cad {

std::string BlockCycleMessage(const std::string& block) {
    return FillMessage(
        "block \"%s\" contains itself through its block references; it cannot be expanded",
        {block});
}

std::string BlockNestingMessage(const std::string& block) {
    return FillMessage(
        "block references are nested more than %d deep (at block \"%s\"); they are refused",
        {std::to_string(kMaxBlockNesting), block});
}

std::string ExpansionBudgetMessage(long long budget) {
    return FillMessage(
        "the drawing expands to more than %d entities through its block references; it is refused",
        {std::to_string(budget)});
}

long long ExpansionBudget(const Database& db) {
    return std::max(kMinExpansionBudget,
                    kExpansionPerObject * static_cast<long long>(db.ObjectCount()));
}

ExpansionCounter::ExpansionCounter(const Database& db)
    : ExpansionCounter(db, ExpansionBudget(db)) {}

ExpansionCounter::ExpansionCounter(const Database& db, long long budget)
    : db_(db), budget_(budget) {}

bool ExpansionCounter::Fail(std::string message) {
    if (error_.empty()) {
        error_ = std::move(message);
    }
    return false;
}

bool ExpansionCounter::Add(const Entity& entity) {
    if (!error_.empty()) {
        return false;
    }
    const long long n = EntityCount(entity, 0);
    if (n < 0) {
        return false;
    }
    total_ += n;
    if (total_ > budget_) {
        return Fail(ExpansionBudgetMessage(budget_));
    }
    return true;
}

bool ExpansionCounter::AddBlock(Handle block) {
    const BlockRecord* b = db_.Block(block);
    if (b == nullptr) {
        return true;
    }
    for (Handle h : b->entities) {
        const auto* e = db_.Get<Entity>(h);
        if (e != nullptr && !e->erased && !Add(*e)) {
            return false;
        }
    }
    return true;
}

long long ExpansionCounter::EntityCount(const Entity& entity, int depth) {
    const auto* ref = Database::Cast<BlockReference>(&entity);
    if (ref == nullptr) {
        return 1;
    }
    const long long inner = BlockCount(ref->block, depth + 1);
    if (inner < 0) {
        return -1;
    }
    const long long cells = ref->Instances();
    // Saturates just past the budget: the exact figure no longer matters and must not
    // overflow.
    const long long limit = budget_ + 1;
    const long long grid = inner > 0 && cells > limit / inner ? limit : cells * inner;
    return std::min(limit, 1 + grid + static_cast<long long>(ref->attributes.size()));
}

long long ExpansionCounter::BlockCount(Handle block, int depth) {
    const BlockRecord* b = db_.Block(block);
    if (b == nullptr) {
        return 0;
    }
    if (auto it = counts_.find(block); it != counts_.end()) {
        return it->second;
    }
    if (std::find(path_.begin(), path_.end(), block) != path_.end()) {
        Fail(BlockCycleMessage(b->name));
        return -1;
    }
    if (depth > kMaxBlockNesting) {
        Fail(BlockNestingMessage(b->name));
        return -1;
    }
    path_.push_back(block);
    long long sum = 0;
    for (Handle h : b->entities) {
        const auto* e = db_.Get<Entity>(h);
        if (e == nullptr || e->erased) {
            continue;
        }
        const long long n = EntityCount(*e, depth);
        if (n < 0) {
            path_.pop_back();
            return -1;
        }
        sum = std::min(budget_ + 1, sum + n);
    }
    path_.pop_back();
    counts_.emplace(block, sum);
    return sum;
}

bool CheckExpansion(const Database& db, Handle space, std::string& error) {
    ExpansionCounter counter(db);
    if (!counter.AddBlock(space == kNullHandle ? db.ModelSpace() : space)) {
        error = counter.Error();
        return false;
    }
    return true;
}

bool CheckExpansion(const Database& db, const Entity& entity, std::string& error) {
    ExpansionCounter counter(db);
    if (!counter.Add(entity)) {
        error = counter.Error();
        return false;
    }
    return true;
}

Matrix3d GridTransform(const Database& db, const BlockReference& ref, int row, int column) {
    const Matrix3d base = BlockTransform(db, ref);
    if (row == 0 && column == 0) {
        return base;
    }
    const Vector3d offset{column * ref.columnSpacing, row * ref.rowSpacing, 0};
    return Matrix3d::Translation(Matrix3d::Rotation(ref.rotation).Apply(offset)) * base;
}

}  // namespace cad
