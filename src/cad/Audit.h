// Checks a database before it is written, and in tests: handles unique and below the seed,
// owners present, every extended-data application registered, every 1005 item pointing at an
// object of this database, layers and styles defined, vertex counts sound, block references
// naming existing blocks.
#pragma once

#include <string>
#include <vector>

#include "cad/Database.h"

namespace cad {

struct AuditIssue {
    Handle handle = kNullHandle;  // the object concerned
    std::string message;
};

std::vector<AuditIssue> Audit(const Database& db);
// The issues as lines "handle: message".
std::string FormatIssues(const std::vector<AuditIssue>& issues);

}  // namespace cad
