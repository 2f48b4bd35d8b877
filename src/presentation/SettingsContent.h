#pragma once

#include "locale/Calendar.h"
#include "locale/DateFormatter.h"
#include "state/AppSettings.h"
#include "state/AppState.h"

#include <QUrl>

namespace orbitledge {

/// "Match System"
QString titleOf(Appearance appearance);

/// What follows the number in "Remind me 3 days before".
QString leadDaysSuffix(qint64 days);

/// That reminders wait for room; absent where none does.
std::optional<QString> budgetNote(qint64 skippedOverBudget);

/// Why no reminders appear.
struct AuthorizationNote {
    QString text;
    /// The person can change it in the desktop's settings.
    bool offersSettings = false;

    friend bool operator==(const AuthorizationNote &, const AuthorizationNote &) = default;
};

/// Absent where notifications are allowed.
std::optional<AuthorizationNote> authorizationNote(NotificationAuthorization authorization);

struct AccountContent {
    /// Absent where it is not known who is signed in.
    std::optional<QString> email;
    /// Also where a saved session could not be checked, which is a way out of it.
    bool canSignOut = false;

    friend bool operator==(const AccountContent &, const AccountContent &) = default;
};

AccountContent accountOf(const AppState &state);

/// What is running, and whom it talks to.
struct AboutProgram {
    /// Empty where it is not known.
    QString version;
    QString build;
    QUrl api;
};

/// "1.4.2 (900)"
QString versionText(const AboutProgram &about);
/// The host alone.
QString apiText(const AboutProgram &about);

struct UpdateOffer {
    QString text;
    QString buttonLabel;

    friend bool operator==(const UpdateOffer &, const UpdateOffer &) = default;
};

/// Absent where this is the newest version, as far as is known.
std::optional<UpdateOffer> updateOfferOf(const AppState &state);

/// "Last checked Mar 18, 9:41 AM", by the calendar's wall clock; absent before the first check.
std::optional<QString> lastCheckText(
    std::optional<Instant> lastCheck, DateFormatter &dates, const Calendar &calendar);

} // namespace orbitledge
