#include "cli/TimelineTable.h"

#include "cli/Terminal.h"
#include "locale/DateFormatter.h"
#include "locale/MoneyFormatter.h"
#include "timeline/BrandColor.h"
#include "timeline/EntryTexts.h"

#include <algorithm>
#include <array>
#include <vector>

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

constexpr auto indent = "  "_L1;
constexpr auto gap = "  "_L1;
constexpr int narrowestName = 8;
constexpr int narrowestSubtitle = 16;

QString daysText(std::optional<qint64> days)
{
    if (!days)
        return {};
    switch (*days) {
    case -1:
        return u"yesterday"_s;
    case 0:
        return u"today"_s;
    case 1:
        return u"tomorrow"_s;
    default:
        return *days > 0 ? u"in %1 days"_s.arg(*days) : u"%1 days ago"_s.arg(-*days);
    }
}

struct Row {
    QString date;
    QString name;
    QString subtitle;
    QString cost;
    QString days;
    Urgency urgency = Urgency::None;
    bool isInactive = false;
};

struct Section {
    QString title;
    std::vector<Row> rows;
};

int widest(const std::vector<Section> &sections, QString Row::*column)
{
    int width = 0;
    for (const Section &section : sections) {
        for (const Row &row : section.rows)
            width = std::max(width, displayWidth(row.*column));
    }
    return width;
}

/// Colours of the terminal's own theme, which fits its background, in the order of the brand palette.
Style brandStyle(QStringView color)
{
    constexpr std::array styles{
        Style::Cyan, Style::Green, Style::Yellow, Style::Red, Style::Magenta, Style::Blue};
    static_assert(styles.size() == brandPalette.size());
    const auto *const found = std::ranges::find_if(
        brandPalette, [color](const BrandColor &brand) { return brand.dark == color; });
    return found == brandPalette.end() ? Style::Plain
                                       : styles[static_cast<std::size_t>(found - brandPalette.begin())];
}

class Table {
public:
    Table(const TimelineSnapshot &snapshot, Instant now, const Calendar &calendar, TableOptions options)
        : m_snapshot(snapshot)
        , m_today(calendar.localDate(now))
        , m_options(std::move(options))
        , m_money(calendar.locale())
        , m_dates(calendar.locale())
    {
    }

    QString text()
    {
        totals();
        week();
        rows();
        return std::move(m_text);
    }

private:
    QString decorated(const QString &text, Style style) const
    {
        return m_options.colors ? styled(text, style) : text;
    }

    void line(const QString &text = {})
    {
        // Blanks that would trail come from the last column's padding.
        qsizetype end = text.size();
        while (end > 0 && text[end - 1] == u' ')
            --end;
        m_text += QStringView(text).first(end);
        m_text += u'\n';
    }

    QString money(const Decimal &amount) { return m_money.text(amount, m_options.currency); }

    void totals()
    {
        line(m_dates.monthAndYear(m_today));
        line(decorated(money(m_snapshot.monthlyTotal), Style::Bold) + u" / month"_s);
        line(decorated(money(m_snapshot.remainingThisMonth), Style::Bold) + u" left to charge"_s);
        line(u"%1 active"_s.arg(m_snapshot.activeCount));
        if (m_snapshot.totalsArePartial) {
            line(decorated(u"Partial total"_s, Style::Yellow)
                + u": Some subscriptions could not be converted to your profile currency."_s);
        }
    }

    void week()
    {
        if (m_snapshot.week.isEmpty())
            return;
        QString strip;
        for (const TimelineDay &day : m_snapshot.week) {
            QString column
                = m_dates.narrowWeekday(day.localDate).toUpper() + u' ' + m_dates.day(day.localDate);
            if (day.isToday)
                column = u'[' + decorated(column, Style::Bold) + u']';
            else
                column = u' ' + column + u' ';
            QString dots;
            for (const QString &color : day.renewalColors)
                dots += decorated(u"●"_s, brandStyle(color));
            strip += column + dots + gap;
        }
        line();
        line(u' ' + strip);
    }

    void rows()
    {
        std::vector<Section> sections;
        for (const TimelineSection &section : m_snapshot.sections) {
            Section &shown = sections.emplace_back(Section{section.title, {}});
            for (const TimelineEntry &entry : section.entries)
                shown.rows.push_back(row(entry, section.id == "inactive"_L1));
        }
        if (sections.empty()) {
            line();
            line(u"No subscriptions yet"_s);
        }

        const int date = widest(sections, &Row::date);
        int subtitle = widest(sections, &Row::subtitle);
        const int cost = widest(sections, &Row::cost);
        const int days = widest(sections, &Row::days);
        int name = widest(sections, &Row::name);
        if (m_options.columns > 0) {
            const int fixed = static_cast<int>(indent.size() + 4 * gap.size()) + date + cost + days;
            const auto giveWay = [&](int width, int narrowest) {
                const int surplus = std::max(0, fixed + name + subtitle - m_options.columns);
                return std::min(width, std::max(narrowest, width - surplus));
            };
            subtitle = giveWay(subtitle, narrowestSubtitle);
            name = giveWay(name, narrowestName);
        }

        for (const Section &section : sections) {
            line();
            line(decorated(section.title, Style::Bold));
            for (const Row &row : section.rows) {
                const Style urgency = row.urgency == Urgency::Urgent ? Style::Red
                    : row.urgency == Urgency::Soon                   ? Style::Yellow
                                                                     : Style::Plain;
                const QString daysColumn = decorated(padded(row.days, days, Align::Left), urgency);
                line(indent + padded(row.date, date, Align::Left) + gap
                    + decorated(padded(elided(row.name, name), name, Align::Left),
                        row.isInactive ? Style::Dim : Style::Plain)
                    + gap
                    + decorated(padded(elided(row.subtitle, subtitle), subtitle, Align::Left), Style::Dim)
                    + gap + padded(row.cost, cost, Align::Right) + gap + daysColumn);
            }
        }
    }

    Row row(const TimelineEntry &entry, bool isInactive)
    {
        const Subscription &subscription = *entry.subscription;
        return {
            .date = m_dates.monthAndDay(subscription.nextBillingDate),
            .name = printable(subscription.name),
            .subtitle = printable(subtitle(subscription, m_dates)),
            .cost = printable(costText(subscription, m_options.currency, m_money)),
            .days = daysText(entry.daysUntilRenewal),
            .urgency = urgencyOf(entry.daysUntilRenewal),
            .isInactive = isInactive,
        };
    }

    const TimelineSnapshot &m_snapshot;
    LocalDate m_today;
    TableOptions m_options;
    MoneyFormatter m_money;
    DateFormatter m_dates;
    QString m_text;
};

} // namespace

QString timelineTable(
    const TimelineSnapshot &snapshot, Instant now, const Calendar &calendar, const TableOptions &options)
{
    return Table(snapshot, now, calendar, options).text();
}

} // namespace orbitledge
