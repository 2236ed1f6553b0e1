#include "Commands.h"

namespace cli {

const std::vector<CommandGroup>& Groups() {
    static const std::vector<CommandGroup> groups = {
    };
    return groups;
}

}  // namespace cli
