#include "presentation/BannerContent.h"

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

QString offlineMessage(const AppState &state, DateFormatter &dates, const TimeZone &timeZone)
{
    if (!state.lastUpdatedAt)
        return u"Offline \u2014 retry when you\u2019re connected."_s;
    return u"Offline \u2014 showing data from "_s + dates.shortTime(*state.lastUpdatedAt, timeZone);
}

} // namespace

std::optional<BannerContent> bannerOf(const AppState &state, DateFormatter &dates, const TimeZone &timeZone)
{
    using Kind = BannerContent::Kind;
    if (state.isOffline)
        return BannerContent{.kind = Kind::Offline, .message = offlineMessage(state, dates, timeZone)};
    if (state.refreshState == RefreshState::Refreshing)
        return BannerContent{.kind = Kind::Updating, .message = u"Updating cached subscriptions\u2026"_s};
    if (state.errorMessage)
        return BannerContent{.kind = Kind::Error, .message = *state.errorMessage};
    return std::nullopt;
}

} // namespace orbitledge
