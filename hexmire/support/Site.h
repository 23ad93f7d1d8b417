#pragma once

#include <hexmire/support/IErrorSink.h>

#include <cstdint>
#include <utility>

namespace hexmire {

namespace detail {

/// What a control leaves behind for the objects it made: counted, and empty once the control has
/// ended. Counted without locks: the object model belongs to one thread.
struct SiteCell {
    IErrorSink* Sink = nullptr;
    std::uint32_t Uses = 1;
};

}  // namespace detail

/// Weak handle of an object to the control that made it; one without a maker belongs to an object
/// that a host made by itself. Once the control has ended, the handle leads nowhere.
class SiteRef {
public:
    SiteRef() noexcept = default;
    /// Takes over one use of the cell.
    explicit SiteRef(detail::SiteCell* cell) noexcept : cell_(cell) {}
    SiteRef(const SiteRef& other) noexcept : cell_(other.cell_) {
        if (cell_ != nullptr) ++cell_->Uses;
    }
    SiteRef(SiteRef&& other) noexcept : cell_(std::exchange(other.cell_, nullptr)) {}
    SiteRef& operator=(SiteRef other) noexcept {
        std::swap(cell_, other.cell_);
        return *this;
    }
    ~SiteRef() {
        if (cell_ != nullptr && --cell_->Uses == 0) delete cell_;
    }

    /// True when there is, or was, a maker.
    [[nodiscard]] bool HasMaker() const noexcept { return cell_ != nullptr; }
    /// The maker's sink; nullptr when there is no maker or it has ended.
    [[nodiscard]] IErrorSink* Sink() const noexcept {
        return cell_ == nullptr ? nullptr : cell_->Sink;
    }

private:
    detail::SiteCell* cell_ = nullptr;
};

/// The control's end of its handles: makes them, publishes the control and, at its end, empties
/// them.
class SiteOwner {
public:
    explicit SiteOwner(IErrorSink& sink);
    SiteOwner(const SiteOwner&) = delete;
    SiteOwner& operator=(const SiteOwner&) = delete;
    ~SiteOwner();

    /// A handle for an object that this control makes.
    [[nodiscard]] const SiteRef& Ref() const noexcept { return ref_; }
    /// Empties every handle; the control ends.
    void Release() noexcept;
    /// Makes this control the one that serves free routines and objects without a maker, until it
    /// ends or another one is published.
    void Publish();

private:
    detail::SiteCell* cell_;
    SiteRef ref_;
};

/// The control that serves objects without a maker: published last and still alive; or none.
[[nodiscard]] SiteRef LastPublishedSite() noexcept;
/// The maker behind a handle, or for an object without one the control published last.
[[nodiscard]] inline SiteRef ServingSite(const SiteRef& site) noexcept {
    return site.HasMaker() ? site : LastPublishedSite();
}

class SiteScope;

namespace detail {
/// The innermost scope. A plain variable: nearly every routine opens a scope.
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): what a process has one of
extern constinit const SiteScope* CurrentScope;
}  // namespace detail

/// While it lives, the control behind the handle is the current one: free routines report to it.
/// Scopes nest; they are for the stack only.
class SiteScope {
public:
    explicit SiteScope(const SiteRef& site) noexcept
        : site_(ServingSite(site)), outer_(std::exchange(detail::CurrentScope, this)) {}
    SiteScope(const SiteScope&) = delete;
    SiteScope& operator=(const SiteScope&) = delete;
    ~SiteScope() { detail::CurrentScope = outer_; }

    /// The control that serves the running routine; an ended one has no sink.
    [[nodiscard]] const SiteRef& Site() const noexcept { return site_; }

private:
    SiteRef site_;
    const SiteScope* outer_;
};

/// Where free routines report: the current control, else the one published last; nullptr when there
/// is none or the current one has ended.
[[nodiscard]] SiteRef CurrentSite() noexcept;

}  // namespace hexmire
