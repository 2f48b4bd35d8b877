#pragma once

#include "locale/DateFormatter.h"
#include "state/AppState.h"

namespace orbitledge {

/// One line above the list that tells how current the list is.
struct BannerContent {
    enum class Kind { Updating, Offline, Error };

    Kind kind = Kind::Updating;
    QString message;

    [[nodiscard]] bool canRetry() const { return kind != Kind::Updating; }

    friend bool operator==(const BannerContent &, const BannerContent &) = default;
};

/// Absent where there is nothing to tell. Times are those of the zone's wall clock.
std::optional<BannerContent> bannerOf(const AppState &state, DateFormatter &dates, const TimeZone &timeZone);

} // namespace orbitledge
