// A change notification a control raises after its state changed, so that a view can follow
// the plain-data state without polling. Slots run in the order they were connected; a slot
// must not connect or disconnect slots of the signal that is calling it.
#pragma once

#include <functional>
#include <utility>
#include <vector>

namespace dialog {

template <class... Args>
class Signal {
public:
    using Slot = std::function<void(Args...)>;

    // Returns the id that Disconnect takes.
    int Connect(Slot slot) {
        slots_.emplace_back(++lastId_, std::move(slot));
        return lastId_;
    }
    void Disconnect(int id) {
        std::erase_if(slots_, [id](const auto& entry) { return entry.first == id; });
    }
    void Emit(Args... args) const {
        for (const auto& entry : slots_) {
            entry.second(args...);
        }
    }
    bool Connected() const { return !slots_.empty(); }

private:
    std::vector<std::pair<int, Slot>> slots_;
    int lastId_ = 0;
};

}  // namespace dialog
