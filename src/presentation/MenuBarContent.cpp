#include "presentation/MenuBarContent.h"

#include "timeline/EntryTexts.h"

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

/// Sections come by their day, and what is overdue comes first.
const TimelineEntry *nextRenewalOf(const TimelineSnapshot &snapshot)
{
    for (const TimelineSection &section : snapshot.sections) {
        for (const TimelineEntry &entry : section.entries) {
            if (entry.daysUntilRenewal.value_or(-1) >= 0)
                return &entry;
        }
    }
    return nullptr;
}

} // namespace

MenuBarContent menuBarOf(AuthState authState, const TimelineSnapshot &snapshot, const QString &currency,
    bool showsBadge, MoneyFormatter &money)
{
    MenuBarContent content;
    constexpr qint64 mostShown = 9;
    const qint64 count = showsBadge ? snapshot.badgeCount : 0;
    if (count >= 1) {
        content.badge = count > mostShown ? u"9+"_s : QString::number(count);
        content.badgeLabel = u"%1 renewals due soon"_s.arg(count);
    }
    if (authState != AuthState::SignedIn) {
        content.nextRenewal = authState == AuthState::SignedOut ? u"Not signed in"_s : QString();
        return content;
    }
    const TimelineEntry *const next = nextRenewalOf(snapshot);
    content.nextRenewal = next == nullptr
        ? u"No renewals"_s
        : QStringList{next->subscription->name, daysText(next->daysUntilRenewal),
              costText(*next->subscription, currency, money)}
              .join(u" · ");
    return content;
}

} // namespace orbitledge
