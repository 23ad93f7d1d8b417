#pragma once

#include <hexmire/hosting/LoopContainer.h>

#include <asio/io_context.hpp>

#include <cstddef>
#include <memory>
#include <vector>

namespace hexmire {

/// The containers of a loop. One is handed out for each control and used again when two things have
/// come to pass: its timer is stopped, which a control's teardown does, and nobody holds the
/// platform that it was handed out with. So a host that makes and ends controls all day needs no
/// more of them than it has controls at a time.
class ContainerPool : public std::enable_shared_from_this<ContainerPool> {
public:
    explicit ContainerPool(asio::io_context& loop) : loop_(loop) {}
    ContainerPool(const ContainerPool&) = delete;
    ContainerPool& operator=(const ContainerPool&) = delete;

    /// A container that is in nobody's use, and what holds it: the platform keeps the lease.
    struct Leased {
        LoopContainer& Container;
        std::shared_ptr<void> Lease;
    };
    [[nodiscard]] Leased Take(LoopContainer::Observer observer);

    /// Containers made so far.
    [[nodiscard]] std::size_t Size() const noexcept { return containers_.size(); }

private:
    [[nodiscard]] LoopContainer& IdleOrNew();
    void KeepIfIdle(LoopContainer& container);

    asio::io_context& loop_;
    std::vector<std::unique_ptr<LoopContainer>> containers_;
    std::vector<LoopContainer*> idle_;
};

}  // namespace hexmire
