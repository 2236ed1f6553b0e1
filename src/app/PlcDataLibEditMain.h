// The run of the library-editor command.
#pragma once

namespace app {

class CPlcDataLibEditMain {
public:
    virtual ~CPlcDataLibEditMain() = default;
    void Run();
};

}  // namespace app
