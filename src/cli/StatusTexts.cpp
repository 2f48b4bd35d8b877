#include "cli/Status.h"
#include "cli/Terminal.h"
#include "locale/MoneyFormatter.h"
#include "model/json/JsonWriter.h"
#include "timeline/EntryTexts.h"

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

constexpr auto notSignedIn = "Not signed in"_L1;
constexpr auto noRenewals = "No renewals"_L1;
constexpr auto separator = u" · ";
// A bar is shared with others.
constexpr int widestNameInBar = 24;
constexpr qsizetype mostTooltipRenewals = 10;

/// What a status says of names and amounts, which come from outside.
class Wording {
public:
    explicit Wording(const Locale &locale)
        : m_money(locale, FractionDigits::OfCurrency)
    {
    }

    QString money(const Decimal &amount, const QString &currency)
    {
        return isolated(printable(m_money.text(amount, currency)));
    }

    QString cost(const ComingRenewal &renewal)
    {
        return money(renewal.subscription->cost, renewal.subscription->currency);
    }

private:
    MoneyFormatter m_money;
};

QString name(const ComingRenewal &renewal)
{
    return printable(renewal.subscription->name);
}

/// "2 due", in front of what else there is to say.
QStringList leadOf(const Status &status, QLatin1StringView unit)
{
    if (status.badgeCount <= 0)
        return {};
    return {QString::number(status.badgeCount) + unit};
}

QString barText(const Status &status)
{
    QStringList parts = leadOf(status, ""_L1);
    if (const auto &next = status.nextRenewal)
        parts += isolated(elided(name(*next), widestNameInBar)) + u' ' + daysText(next->daysUntilRenewal);
    else
        parts += noRenewals;
    return parts.join(separator);
}

QString tooltip(const Status &status, const Locale &locale)
{
    Wording wording(locale);
    QStringList lines{
        wording.money(status.monthlyTotal, status.currency) + u" / month"_s,
        wording.money(status.remainingThisMonth, status.currency) + u" left this month"_s,
    };
    if (status.totalsArePartial)
        lines += u"Partial total"_s;
    const QList<ComingRenewal> &renewals = status.withinSevenDays;
    if (renewals.isEmpty())
        lines += u"No renewals within seven days"_s;
    for (const ComingRenewal &renewal : renewals.first(std::min(renewals.size(), mostTooltipRenewals))) {
        // The day comes first, so that no name decides the line's direction.
        lines
            += QStringList{daysText(renewal.daysUntilRenewal), isolated(name(renewal)), wording.cost(renewal)}
                   .join(separator);
    }
    if (renewals.size() > mostTooltipRenewals)
        lines += u"and %1 more"_s.arg(renewals.size() - mostTooltipRenewals);
    return lines.join(u'\n');
}

QByteArray waybarObject(const QString &text, const QString &tooltip, QLatin1StringView styleClass)
{
    // The characters that mean something in markup; quotes do only within tags, of which there are none.
    const auto escaped = [](QString plain) {
        return plain.replace(u'&', "&amp;"_L1).replace(u'<', "&lt;"_L1).replace(u'>', "&gt;"_L1);
    };
    json::JsonWriter writer;
    writer.beginObject();
    writer.key("text");
    writer.string(escaped(text));
    writer.key("tooltip");
    writer.string(escaped(tooltip));
    writer.key("class");
    writer.string(styleClass);
    writer.endObject();
    return writer.take() + '\n';
}

} // namespace

QString statusLine(const std::optional<Status> &status, const Locale &locale)
{
    if (!status)
        return notSignedIn + u'\n';
    Wording wording(locale);
    QStringList parts = leadOf(*status, " due"_L1);
    if (const auto &next = status->nextRenewal)
        parts += isolated(name(*next)) + u' ' + daysText(next->daysUntilRenewal) + u", "_s
            + wording.cost(*next);
    else
        parts += noRenewals;
    parts += wording.money(status->remainingThisMonth, status->currency) + u" left this month"_s;
    return parts.join(separator) + u'\n';
}

QByteArray waybarJson(const std::optional<Status> &status, const Locale &locale)
{
    // Without a text the bar gives it no room.
    if (!status)
        return waybarObject({}, notSignedIn, "signed-out"_L1);
    return waybarObject(
        barText(*status), tooltip(*status, locale), status->badgeCount > 0 ? "urgent"_L1 : "normal"_L1);
}

} // namespace orbitledge
