#pragma once

#include "locale/MoneyFormatter.h"
#include "state/AppState.h"
#include "timeline/TimelineSnapshot.h"

#include <QString>

namespace orbitledge {

/// What the icon in the tray says, to those who see it and to those who do not.
struct MenuBarContent {
    /// "3", or "9+"; empty where there is no badge.
    QString badge;
    /// "3 renewals due soon", of all; empty where there is no badge.
    QString badgeLabel;
    /// The first renewal that is not over, in one line: "Tidewater Music · tomorrow · €10.99". Empty as long
    /// as nothing is known.
    QString nextRenewal;

    friend bool operator==(const MenuBarContent &, const MenuBarContent &) = default;
};

/// `authState` tells whose the snapshot is, `currency` is that of the amounts; `showsBadge` whether the
/// person wants to see one.
MenuBarContent menuBarOf(AuthState authState, const TimelineSnapshot &snapshot, const QString &currency,
    bool showsBadge, MoneyFormatter &money);

} // namespace orbitledge
