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
// A subtitle that would be cut to less than this says nothing any more.
constexpr int narrowestSubtitle = 16;

/// A text that was measured once.
struct Cell {
    Cell(const QString &content)
        : text(content)
        , width(displayWidth(content))
    {
    }

    [[nodiscard]] QString filled(int columns, Align align) const
    {
        if (width > columns)
            return padded(elided(text, columns), columns, align);
        const QString blanks(columns - width, u' ');
        return align == Align::Left ? text + blanks : blanks + text;
    }

    QString text;
    int width;
};

struct Row {
    Cell date;
    Cell name;
    Cell subtitle;
    Cell cost;
    Cell days;
    Urgency urgency = Urgency::None;
    bool isInactive = false;
};

struct Section {
    QString title;
    std::vector<Row> rows;
};

int widest(const std::vector<Section> &sections, Cell Row::*column)
{
    int width = 0;
    for (const Section &section : sections) {
        for (const Row &row : section.rows)
            width = std::max(width, (row.*column).width);
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

    // The currency's code comes from outside and may be anything.
    QString money(const Decimal &amount) { return printable(m_money.text(amount, m_options.currency)); }

    [[nodiscard]] bool fits(int width) const { return m_options.columns <= 0 || width <= m_options.columns; }

    void totals()
    {
        line(m_dates.monthAndYear(m_today));
        line(decorated(money(m_snapshot.monthlyTotal), Style::Bold) + u" / month"_s);
        line(decorated(money(m_snapshot.remainingThisMonth), Style::Bold) + u" left to charge"_s);
        line(u"%1 active"_s.arg(m_snapshot.activeCount));
        if (m_snapshot.totalsArePartial)
            partialTotal();
    }

    void partialTotal()
    {
        const QString label = u"Partial total"_s;
        const QString reason = u"Some subscriptions could not be converted to your profile currency."_s;
        if (fits(static_cast<int>(label.size() + 2 + reason.size()))) {
            line(decorated(label, Style::Yellow) + u": "_s + reason);
            return;
        }
        line(decorated(label, Style::Yellow));
        QString part;
        for (const QString &word : reason.split(u' ')) {
            if (!part.isEmpty() && !fits(static_cast<int>(part.size() + 1 + word.size()))) {
                line(part);
                part.clear();
            }
            part += (part.isEmpty() ? QString() : u" "_s) + word;
        }
        line(part);
    }

    void week()
    {
        if (m_snapshot.week.isEmpty())
            return;
        line();
        const Strip wide = weekStrip(2);
        line(fits(wide.width) ? wide.text : weekStrip(0).text);
    }

    struct Strip {
        QString text;
        /// In columns, styles not counted.
        int width = 0;
    };

    /// The days in a row, with so many blanks between two of them.
    Strip weekStrip(int blanks)
    {
        Strip strip;
        for (const TimelineDay &day : m_snapshot.week) {
            const QString name
                = m_dates.narrowWeekday(day.localDate).toUpper() + u' ' + m_dates.day(day.localDate);
            const QString before(strip.text.isEmpty() ? 1 : blanks, u' ');
            QString dots;
            for (const QString &color : day.renewalColors)
                dots += decorated(u"●"_s, brandStyle(color));
            const QString shown
                = day.isToday ? u'[' + decorated(name, Style::Bold) + u']' : u' ' + name + u' ';
            strip.text += before + shown + dots;
            strip.width
                += static_cast<int>(before.size() + 2 + day.renewalColors.size()) + displayWidth(name);
        }
        return strip;
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

        const Widths widths = fittingWidths(sections);
        for (const Section &section : sections) {
            line();
            line(decorated(section.title, Style::Bold));
            for (const Row &row : section.rows)
                line(rowText(row, widths));
        }
    }

    struct Widths {
        int date;
        int name;
        /// 0 where there is no room for it.
        int subtitle;
        int cost;
        int days;

        [[nodiscard]] int whole() const
        {
            const auto gaps = indent.size() + (subtitle > 0 ? 4 : 3) * gap.size();
            return static_cast<int>(gaps) + date + name + subtitle + cost + days;
        }
    };

    /// First subtitles give way, down to nothing, as their date has a column of its own; then names.
    [[nodiscard]] Widths fittingWidths(const std::vector<Section> &sections) const
    {
        Widths widths{
            .date = widest(sections, &Row::date),
            .name = widest(sections, &Row::name),
            .subtitle = widest(sections, &Row::subtitle),
            .cost = widest(sections, &Row::cost),
            .days = widest(sections, &Row::days),
        };
        const auto surplus = [&] { return fits(widths.whole()) ? 0 : widths.whole() - m_options.columns; };
        widths.subtitle -= std::min(surplus(), std::max(0, widths.subtitle - narrowestSubtitle));
        widths.name -= std::min(surplus(), std::max(0, widths.name - narrowestName));
        if (surplus() > 0) {
            widths.subtitle = 0;
            widths.name = widest(sections, &Row::name);
            widths.name -= std::min(surplus(), std::max(0, widths.name - narrowestName));
        }
        return widths;
    }

    [[nodiscard]] QString rowText(const Row &row, const Widths &widths) const
    {
        const Style urgency = row.urgency == Urgency::Urgent ? Style::Red
            : row.urgency == Urgency::Soon                   ? Style::Yellow
                                                             : Style::Plain;
        QString text = indent + row.date.filled(widths.date, Align::Left) + gap
            + decorated(row.name.filled(widths.name, Align::Left), row.isInactive ? Style::Dim : Style::Plain)
            + gap;
        if (widths.subtitle > 0)
            text += decorated(row.subtitle.filled(widths.subtitle, Align::Left), Style::Dim) + gap;
        return text + row.cost.filled(widths.cost, Align::Right) + gap
            + decorated(row.days.filled(widths.days, Align::Left), urgency);
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
