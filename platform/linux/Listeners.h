#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace clipwren {

// Who wants to be told of something. Each may go at any time, also while it is being told. One thread.
class Listeners {
public:
    // Keeps a handler in place as long as it lives.
    using Subscription = std::shared_ptr<const std::function<void()>>;

    [[nodiscard]] Subscription subscribe(std::function<void()> handler) {
        auto subscription = std::make_shared<const std::function<void()>>(std::move(handler));
        std::erase_if(handlers, [](const auto& known) { return known.expired(); });
        handlers.push_back(subscription);
        return subscription;
    }

    // Those that are there now, the first subscribed first.
    void tell() {
        const auto told = handlers;
        for (const auto& candidate : told)
            if (const auto handler = candidate.lock()) (*handler)();
    }

private:
    std::vector<std::weak_ptr<const std::function<void()>>> handlers;
};

} // namespace clipwren
