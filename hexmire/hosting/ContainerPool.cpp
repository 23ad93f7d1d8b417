#include <hexmire/hosting/ContainerPool.h>

#include <utility>

namespace hexmire {

ContainerPool::Leased ContainerPool::Take(LoopContainer::Observer observer) {
    LoopContainer& container = IdleOrNew();
    container.IsLeased = true;
    container.Observe(std::move(observer));
    // A platform may be kept longer than the loop: then there is nothing left to give back to.
    std::shared_ptr<void> lease(nullptr, [pool = weak_from_this(), &container](void*) {
        if (const auto alive = pool.lock()) {
            container.IsLeased = false;
            alive->KeepIfIdle(container);
        }
    });
    return {container, std::move(lease)};
}

LoopContainer& ContainerPool::IdleOrNew() {
    while (!idle_.empty()) {
        LoopContainer& container = *idle_.back();
        idle_.pop_back();
        container.IsPooled = false;
        // One whose timer was started again by a control that had stopped it stays with that
        // control.
        if (!container.IsRunning()) return container;
    }
    containers_.push_back(std::make_unique<LoopContainer>(
        loop_, [this](LoopContainer& stopped) { KeepIfIdle(stopped); }));
    idle_.reserve(containers_.size());  // So that giving one back cannot fail.
    return *containers_.back();
}

void ContainerPool::KeepIfIdle(LoopContainer& container) {
    if (container.IsLeased || container.IsRunning() || container.IsPooled) return;
    container.IsPooled = true;
    idle_.push_back(&container);
}

}  // namespace hexmire
