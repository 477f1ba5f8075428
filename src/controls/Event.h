#pragma once
// An event of a control: handlers run synchronously, in the order they were
// connected, inside the call that raises the event.
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

template <typename... Args>
class Event {
public:
    using Handler = std::function<void(Args...)>;

    // Gives a token for Disconnect.
    int32_t Connect(Handler handler) {
        handlers_.push_back({++lastToken_, std::move(handler)});
        return lastToken_;
    }

    void Disconnect(int32_t token) {
        for (auto it = handlers_.begin(); it != handlers_.end(); ++it) {
            if (it->first == token) {
                handlers_.erase(it);
                return;
            }
        }
    }

    void Raise(Args... args) {
        // A handler may connect or disconnect others while it runs.
        auto snapshot = handlers_;
        for (auto& h : snapshot) h.second(args...);
    }

    bool Empty() const { return handlers_.empty(); }

private:
    std::vector<std::pair<int32_t, Handler>> handlers_;
    int32_t lastToken_ = 0;
};
