#pragma once

#include <memory>
#include <utility>

namespace clipwren {

// A closure that holds its owner weakly: when called it locks the owner and calls `function(*owner,
// args...)`, or does nothing when the owner is gone. Hop to the owner's thread first and call the closure
// there: locking elsewhere could make that thread the one that destroys the owner.
template <typename Owner, typename Function>
auto weakly(const std::shared_ptr<Owner>& owner, Function function) {
    return [weakOwner = std::weak_ptr<Owner>(owner), function = std::move(function)](auto&&... arguments) {
        if (const auto strongOwner = weakOwner.lock())
            function(*strongOwner, std::forward<decltype(arguments)>(arguments)...);
    };
}

} // namespace clipwren
