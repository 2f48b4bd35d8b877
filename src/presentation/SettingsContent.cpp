#include "presentation/SettingsContent.h"

namespace orbitledge {

using namespace Qt::StringLiterals;

QString titleOf(Appearance appearance)
{
    switch (appearance) {
    case Appearance::System:
        return u"Match System"_s;
    case Appearance::Light:
        return u"Light"_s;
    case Appearance::Dark:
        return u"Dark"_s;
    }
    Q_UNREACHABLE();
}

QString leadDaysSuffix(qint64 days)
{
    return days == 1 ? u" day before"_s : u" days before"_s;
}

std::optional<QString> budgetNote(qint64 skippedOverBudget)
{
    if (skippedOverBudget < 1)
        return std::nullopt;
    return u"macOS limits how many reminders an app can queue, so the %1 furthest-out renewals are scheduled later, as nearer ones pass."_s
        .arg(skippedOverBudget);
}

std::optional<AuthorizationNote> authorizationNote(NotificationAuthorization authorization)
{
    switch (authorization) {
    case NotificationAuthorization::NotDetermined:
        return AuthorizationNote{
            .text = u"macOS has not granted notification permission yet, so no reminders will appear."_s};
    case NotificationAuthorization::Denied:
        return AuthorizationNote{
            .text = u"macOS is blocking notifications for Orbitledge, so no reminders will appear."_s,
            .offersSettings = true,
        };
    case NotificationAuthorization::Authorized:
    case NotificationAuthorization::Provisional:
        return std::nullopt;
    }
    Q_UNREACHABLE();
}

AccountContent accountOf(const AppState &state)
{
    return {
        .email = state.user ? std::optional(state.user->email) : std::nullopt,
        .canSignOut = state.authState != AuthState::SignedOut,
    };
}

QString versionText(const AboutProgram &about)
{
    const QString version = about.version.isEmpty() ? u"1.0"_s : about.version;
    return version + u" ("_s + about.build + u')';
}

QString apiText(const AboutProgram &about)
{
    return about.api.host();
}

std::optional<UpdateOffer> updateOfferOf(const AppState &state)
{
    if (!state.availableUpdate)
        return std::nullopt;
    const QString &version = state.availableUpdate->version;
    return UpdateOffer{
        .text = u"Version "_s + version + u" is ready to download."_s,
        .buttonLabel = u"Get "_s + version,
    };
}

std::optional<QString> lastCheckText(
    std::optional<Instant> lastCheck, DateFormatter &dates, const Calendar &calendar)
{
    if (!lastCheck)
        return std::nullopt;
    return u"Last checked %1, %2"_s.arg(
        dates.monthAndDay(calendar.localDate(*lastCheck)), dates.shortTime(*lastCheck, calendar.timeZone()));
}

} // namespace orbitledge
