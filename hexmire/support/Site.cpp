#include <hexmire/support/ProcessState.h>
#include <hexmire/support/Site.h>

#include <algorithm>

namespace hexmire {

SiteOwner::SiteOwner(IErrorSink& sink) : cell_(new detail::SiteCell{&sink, 1}), ref_(cell_) {}

SiteOwner::~SiteOwner() { Release(); }

void SiteOwner::Release() noexcept {
    cell_->Sink = nullptr;
    std::erase(detail::State().PublishedSites, cell_);
}

void SiteOwner::Publish() {
    auto& published = detail::State().PublishedSites;
    std::erase(published, cell_);
    published.push_back(cell_);
}

SiteRef LastPublishedSite() noexcept {
    const auto& published = detail::State().PublishedSites;
    if (published.empty()) return {};
    ++published.back()->Uses;
    return SiteRef(published.back());
}

// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables)
constinit const SiteScope* detail::CurrentScope = nullptr;

SiteRef CurrentSite() noexcept {
    const SiteScope* scope = detail::CurrentScope;
    return scope == nullptr ? LastPublishedSite() : scope->Site();
}

}  // namespace hexmire
