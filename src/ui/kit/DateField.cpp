#include "ui/kit/DateField.h"

#include "ui/kit/Palette.h"
#include "ui/kit/Symbols.h"
#include "ui/kit/Typography.h"

#include <QCalendarWidget>
#include <QEvent>
#include <QRegularExpression>
#include <QTextCharFormat>
#include <QToolButton>

namespace orbitledge::ui {

namespace {

// What the toolkit calls the parts of its calendar.
constexpr QLatin1StringView navigationBar("qt_calendar_navigationbar");
constexpr QLatin1StringView previousMonth("qt_calendar_prevmonth");
constexpr QLatin1StringView nextMonth("qt_calendar_nextmonth");

void setIcon(const QCalendarWidget &calendar, QLatin1StringView button, Symbol symbol, const QColor &color)
{
    if (auto *const found = calendar.findChild<QToolButton *>(button))
        found->setIcon(symbolIcon(symbol, color));
}

/// With the year in full, which a region's short form may not have, and no day of the week.
QString displayFormatFor(const QLocale &locale)
{
    static const QRegularExpression weekday(QStringLiteral("[,\u060C]?\\s*dddd?[,\u060C]?\\s*"));
    QString format = locale.dateFormat(QLocale::LongFormat);
    format.remove(weekday);
    format.replace(QStringLiteral("MMMM"), QStringLiteral("MMM"));
    return format.contains(QLatin1StringView("yyyy")) ? format : QStringLiteral("yyyy-MM-dd");
}

} // namespace

DateField::DateField(QDate date, QWidget *parent)
    : QDateEdit(date, parent)
{
    setCalendarPopup(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    calendarWidget()->setVerticalHeaderFormat(QCalendarWidget::NoVerticalHeader);
    setAlignment(leadingIn(*this));
    followLocale();
    dressCalendar();
}

void DateField::dressCalendar()
{
    QCalendarWidget &calendar = *calendarWidget();
    const ColorScheme colorScheme = colorSchemeOf(palette());
    const QColor ink = colorOf(Tone::Ink, colorScheme);
    const QColor slate = colorOf(Tone::Slate, colorScheme);
    QTextCharFormat heading;
    heading.setForeground(slate);
    heading.setBackground(palette().color(QPalette::Base));
    calendar.setHeaderTextFormat(heading);
    for (const Qt::DayOfWeek day : {Qt::Saturday, Qt::Sunday})
        calendar.setWeekdayTextFormat(day, QTextCharFormat());
    if (auto *const bar = calendar.findChild<QWidget *>(navigationBar)) {
        // It stands on the colour of what is selected.
        QPalette quiet;
        quiet.setColor(QPalette::Highlight, palette().color(QPalette::Base));
        quiet.setColor(QPalette::HighlightedText, ink);
        bar->setPalette(quiet);
    }
    const bool isMirrored = layoutDirection() == Qt::RightToLeft;
    setIcon(calendar, previousMonth, isMirrored ? Symbol::ChevronRight : Symbol::ChevronLeft, slate);
    setIcon(calendar, nextMonth, isMirrored ? Symbol::ChevronLeft : Symbol::ChevronRight, slate);
}

void DateField::followLocale()
{
    setDisplayFormat(displayFormatFor(locale()));
    calendarWidget()->setLocale(locale());
    calendarWidget()->setFirstDayOfWeek(locale().firstDayOfWeek());
}

void DateField::changeEvent(QEvent *event)
{
    QDateEdit::changeEvent(event);
    if (event->type() == QEvent::LocaleChange)
        followLocale();
    if (event->type() == QEvent::LayoutDirectionChange)
        setAlignment(leadingIn(*this));
    const bool isOfInterest = event->type() == QEvent::PaletteChange
        || event->type() == QEvent::LayoutDirectionChange || event->type() == QEvent::StyleChange;
    if (isOfInterest)
        dressCalendar();
}

} // namespace orbitledge::ui
