// The whole program as a screen reader finds it: over the accessibility bus, with a real keyboard.

#include "support/ProgramDesk.h"
#include "support/ScreenReader.h"
#include "support/TestMain.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QRegularExpression>

#include <algorithm>
#include <optional>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

namespace {

/// What has to be told of one thing. Patterns are of all of a text; an empty one wants no text.
struct Expected {
    const char *role;
    const char *name;
    const char *description = "";
    std::optional<const char *> value = std::nullopt;
    QStringList actions = {};
    QStringList states = {};
    QStringList labels = {};
};

bool matches(const char *pattern, const QString &text)
{
    return QRegularExpression(QRegularExpression::anchoredPattern(QString::fromUtf8(pattern)))
        .match(text)
        .hasMatch();
}

bool matches(const Expected &expected, const Accessible &found)
{
    const auto hasAll = [](const QStringList &wanted, const QStringList &there) {
        return std::ranges::all_of(wanted, [&](const QString &text) { return there.contains(text); });
    };
    return found.role == QString::fromUtf8(expected.role) && matches(expected.name, found.name)
        && matches(expected.description, found.description)
        && (!expected.value || (found.value && matches(*expected.value, *found.value)))
        && hasAll(expected.actions, found.actions) && hasAll(expected.states, found.states)
        && hasAll(expected.labels, found.labels);
}

/// Where each is found after the one before; what is not found, as a text.
QString missingFrom(const QList<Accessible> &found, const QList<Expected> &expected)
{
    QStringList missing;
    auto from = found.begin();
    for (const Expected &one : expected) {
        const auto place
            = std::find_if(from, found.end(), [&](const Accessible &there) { return matches(one, there); });
        if (place == found.end())
            missing.append(u"%1 \"%2\""_s.arg(QString::fromUtf8(one.role), QString::fromUtf8(one.name)));
        else
            from = place + 1;
    }
    return missing.isEmpty() ? QString()
                             : u"not there, or not in this order:\n%1\nthere is:\n%2"_s.arg(
                                   missing.join(u'\n'), ScreenReader::textOf(found));
}

/// Of what may have the keyboard, or has it: what a screen reader would have nothing to say about.
QString namelessIn(const QList<Accessible> &found)
{
    static const QStringList nothing{u"filler"_s, u"unknown"_s, u"invalid"_s, u"drawing area"_s};
    QStringList nameless;
    for (const Accessible &one : found) {
        const bool mayHaveKeyboard = one.is(u"focusable") || one.is(u"focused");
        if (mayHaveKeyboard && (one.name.trimmed().isEmpty() || nothing.contains(one.role)))
            nameless.append(one.text());
    }
    return nameless.join(u'\n');
}

const QStringList buttonActions{u"Press"_s, u"SetFocus"_s};

} // namespace

class PanelAccessibilityTest : public QObject {
    Q_OBJECT

private:
    std::optional<ProgramDesk> m_program;
    std::optional<ScreenReader> m_reader;

    void prepare(const QStringList &serviceArguments = {})
    {
        m_program.emplace(XfceDesk::Edge::Top, serviceArguments);
        m_reader.emplace(m_program->lab());
        ScreenReader::addVariables(m_program->environment());
        m_program->desk().startWindowManager(XfceDesk::Compositing::Off);
    }
    void start()
    {
        m_program->start();
        m_reader->awaitProgram(u"Orbitledge"_s);
        m_program->desk().awaitActive(u"Orbitledge"_s);
    }
    void startSignedIn()
    {
        prepare();
        m_program->signIn();
        start();
        m_reader->await(u"push button"_s, u"Quiet Meadow"_s);
    }
    void openQuickAdd()
    {
        m_reader->act(m_reader->await(u"push button"_s, u"Add"_s), u"Press"_s);
        m_reader->awaitFocus(u"text"_s, u"Service"_s);
    }
    void openSettings()
    {
        press(u"ctrl+comma"_s);
        m_program->desk().awaitActive(u"Orbitledge Settings"_s);
        m_reader->await(u"push button"_s, u"Sign Out"_s, u"Orbitledge Settings"_s);
    }

    void press(const QString &key) { m_program->desk().press(key); }
    void type(const QString &text) { m_program->lab().run(u"xdotool"_s, {u"type"_s, text}); }
    /// Presses the key once for each, and waits for the keyboard to be there.
    void walk(const QString &key, const QList<std::pair<QString, QString>> &stations)
    {
        for (const auto &[role, name] : stations) {
            press(key);
            m_reader->awaitFocus(role, name);
        }
    }

    /// Menus belong to no window.
    void awaitMenu()
    {
        DesktopLab::await("a menu", [&] {
            const QList<AccessibleEvent> events = m_reader->events();
            return std::ranges::any_of(events, [](const AccessibleEvent &event) {
                return event.detail == u"showing" && event.number == 1 && event.role == u"popup menu";
            });
        });
    }

    [[nodiscard]] QDBusMessage askItem(const QString &property)
    {
        const QDBusConnection bus = m_program->lab().bus();
        const auto get = [&](const QString &service, const QString &path, const QString &interface,
                             const QString &name) {
            QDBusMessage message = QDBusMessage::createMethodCall(
                service, path, u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
            message.setArguments({interface, name});
            return bus.call(message);
        };
        const QDBusMessage items = get(XfceDesk::watcherName(), u"/StatusNotifierWatcher"_s,
            u"org.kde.StatusNotifierWatcher"_s, u"RegisteredStatusNotifierItems"_s);
        const QString item
            = items.arguments().value(0).value<QDBusVariant>().variant().toStringList().value(0).section(
                u'/', 0, 0);
        return get(item, u"/StatusNotifierItem"_s, u"org.kde.StatusNotifierItem"_s, property);
    }
    [[nodiscard]] QString itemTitle()
    {
        return askItem(u"Title"_s).arguments().value(0).value<QDBusVariant>().variant().toString();
    }
    /// The two lines of a tool-tip.
    [[nodiscard]] QString itemToolTip()
    {
        const QVariant tip = askItem(u"ToolTip"_s).arguments().value(0).value<QDBusVariant>().variant();
        const auto argument = tip.value<QDBusArgument>();
        if (argument.currentType() != QDBusArgument::StructureType)
            return {};
        QString icon;
        QString title;
        QString text;
        argument.beginStructure();
        argument >> icon;
        argument.beginArray();
        while (!argument.atEnd()) {
            int width = 0;
            int height = 0;
            QByteArray pixels;
            argument.beginStructure();
            argument >> width >> height >> pixels;
            argument.endStructure();
        }
        argument.endArray();
        argument >> title >> text;
        argument.endStructure();
        return title + u'\n' + text;
    }

private Q_SLOTS:
    void cleanup()
    {
        if (m_program)
            m_program->kill();
        m_reader.reset();
        m_program.reset();
    }

    // ---- signed in ----

    void shouldTellWhatThePanelShows()
    {
        startSignedIn();
        m_reader->awaitFocus(u"panel"_s, u"Upcoming renewals"_s); // before any key
        const QList<Accessible> panel = m_reader->readWindow(u"Orbitledge"_s);
        const QString nameless = namelessIn(panel);
        QVERIFY2(nameless.isEmpty(), qPrintable(nameless));
        const QString day = u"\\w+, \\w+ \\d{1,2}, \\d{4}, \\d+ renewal"_s;
        const QByteArray dayPattern = day.toUtf8();
        const QString missing = missingFrom(panel,
            {
                {.role = "frame", .name = "Orbitledge", .states = {u"active"_s}},
                {.role = "label", .name = "\\w+ \\d{4}"},
                {.role = "label", .name = "€[\\d.,]+"},
                {.role = "label", .name = "/ month"},
                {.role = "label", .name = "14 active"},
                {.role = "label", .name = "€[\\d.,]+"},
                {.role = "label", .name = "left to charge"},
                {.role = "label", .name = dayPattern.constData()},
                {.role = "label", .name = dayPattern.constData()},
                {.role = "label", .name = dayPattern.constData()},
                {.role = "label", .name = dayPattern.constData()},
                {.role = "label", .name = dayPattern.constData()},
                {.role = "label", .name = dayPattern.constData()},
                {.role = "label", .name = dayPattern.constData()},
                {.role = "list", .name = "Subscriptions"},
                {.role = "heading", .name = "THIS WEEK"},
                {.role = "push button",
                    .name = "Quiet Meadow",
                    .description = "€12\\.50, \\w+ \\d+ · Health, urgent renewal\\. Opens this subscription "
                                   "in Orbitledge",
                    .actions = {u"Press"_s, u"ShowMenu"_s, u"SetFocus"_s, u"Cancel Quiet Meadow"_s}},
                {.role = "push button",
                    .name = "Northlight Video",
                    .description = "€15\\.99, \\w+ \\d+ · Streaming, urgent renewal\\. Opens .*"},
                {.role = "push button",
                    .name = "Arcade Cellar",
                    .description = "€[\\d.]+, \\w+ \\d+ · Games, renewal within seven days\\. Opens .*"},
                {.role = "push button", .name = "Add", .actions = buttonActions},
                {.role = "push button", .name = "Full calendar", .actions = buttonActions},
                {.role = "push button", .name = "Settings", .description = "Settings"},
            });
        QVERIFY2(missing.isEmpty(), qPrintable(missing));
    }

    void shouldGoThroughThePanelByTab()
    {
        startSignedIn();
        m_reader->awaitFocus(u"panel"_s, u"Upcoming renewals"_s);
        const QList<std::pair<QString, QString>> stations{
            {u"push button"_s, u"Quiet Meadow"_s},
            {u"push button"_s, u"Open Quiet Meadow in Web"_s},
            {u"push button"_s, u"Cancel Quiet Meadow"_s},
            {u"push button"_s, u"Add"_s},
            {u"push button"_s, u"Full calendar"_s},
            {u"push button"_s, u"Settings"_s},
            {u"push button"_s, u"Quiet Meadow"_s},
        };
        walk(u"Tab"_s, stations);
        // Backwards one comes to the row itself.
        walk(u"shift+Tab"_s, {stations[5], stations[4], stations[3], stations[0]});
    }

    void shouldGoThroughTheRowsByArrows()
    {
        startSignedIn();
        const QString button = u"push button"_s;
        walk(u"Tab"_s, {{button, u"Quiet Meadow"_s}});
        walk(u"Down"_s, {{button, u"Northlight Video"_s}, {button, u"Tidewater Music"_s}});
        walk(u"Up"_s, {{button, u"Northlight Video"_s}});
        walk(u"Right"_s,
            {{button, u"Open Northlight Video in Web"_s}, {button, u"Cancel Northlight Video"_s}});
        walk(u"Left"_s, {{button, u"Open Northlight Video in Web"_s}, {button, u"Northlight Video"_s}});

        // To the end, which was not there before.
        press(u"End"_s);
        m_reader->awaitFocus(button, u"Puzzle Club"_s);
        const Accessible last = m_reader->focused();
        QVERIFY2(matches("€3\\.49, .* · Paused\\. Opens this subscription in Orbitledge", last.description),
            qPrintable(last.text()));
        QVERIFY(!last.actions.contains(u"Cancel Puzzle Club"_s));
        walk(u"Up"_s, {{button, u"Old Gazette"_s}});
        const Accessible cancelled = m_reader->focused();
        QVERIFY2(matches("€4\\.00, .* · cancellation scheduled\\. .*", cancelled.description),
            qPrintable(cancelled.text()));
        QVERIFY(cancelled.actions.contains(u"Uncancel Old Gazette"_s));

        // Rows that were needed late lie where they are seen.
        QList<Accessible> rows = m_reader->read();
        rows.removeIf([](const Accessible &one) {
            return !one.actions.contains(u"ShowMenu"_s) || one.role != u"push button";
        });
        QVERIFY(rows.size() > 2);
        QVERIFY2(std::ranges::is_sorted(rows, {}, [](const Accessible &row) { return row.place.top(); }),
            qPrintable(ScreenReader::textOf(rows)));
        walk(u"Home"_s, {{button, u"Quiet Meadow"_s}});
    }

    void shouldDoByKeysWhatTheMouseDoes()
    {
        startSignedIn();
        const QString button = u"push button"_s;
        walk(u"Tab"_s, {{button, u"Quiet Meadow"_s}});
        press(u"Return"_s);
        DesktopLab::await("the page", [&] { return m_program->openedPages().size() == 1; });

        for (const QString &key : {u"Menu"_s, u"shift+F10"_s}) {
            m_reader->forgetEvents();
            press(key);
            awaitMenu();
            press(u"Down"_s);
            const AccessibleEvent first
                = m_reader->awaitEvent(u"state-changed"_s, u"focused"_s, u"Open in Web"_s);
            QCOMPARE(first.role, u"menu item"_s);
            press(u"Down"_s);
            m_reader->awaitEvent(u"state-changed"_s, u"focused"_s, u"Cancel…"_s);
            press(u"Escape"_s);
            m_reader->awaitFocus(button, u"Quiet Meadow"_s);
            QVERIFY(m_program->desk().isWindowOpen(u"Orbitledge"_s)); // Escape was the menu's
        }

        // The question, whose safe answer has the keyboard.
        walk(u"Right"_s, {{button, u"Open Quiet Meadow in Web"_s}, {button, u"Cancel Quiet Meadow"_s}});
        press(u"Return"_s);
        m_reader->awaitFocus(button, u"Keep subscription"_s);
        const QList<Accessible> question = m_reader->readWindow(u"Cancel Quiet Meadow?"_s);
        QVERIFY2(namelessIn(question).isEmpty(), qPrintable(namelessIn(question)));
        const QString missing = missingFrom(question,
            {
                {.role = "alert", .name = "Cancel Quiet Meadow\\?"},
                {.role = "label", .name = "Cancel Quiet Meadow\\?"},
            });
        QVERIFY2(missing.isEmpty(), qPrintable(missing));
        const QString text
            = u"This marks the subscription as cancelled in Orbitledge. It does not contact the merchant."_s;
        m_reader->await(u"label"_s, text);
        walk(u"Tab"_s, {{button, u"Cancel subscription"_s}});
        press(u"Escape"_s);
        m_program->desk().awaitActive(u"Orbitledge"_s);
        m_reader->awaitFocus(button, u"Cancel Quiet Meadow"_s);

        press(u"Escape"_s);
        DesktopLab::await(
            "the panel to close", [&] { return !m_program->desk().isWindowOpen(u"Orbitledge"_s); });
        QCOMPARE(m_program->program()->state(), QProcess::Running);
    }

    void shouldOfferTheRowsActionsToAScreenReader()
    {
        startSignedIn();
        const Accessible row = m_reader->await(u"push button"_s, u"Quiet Meadow"_s);
        QVERIFY(m_reader->act(row, u"SetFocus"_s));
        m_reader->awaitFocus(u"push button"_s, u"Quiet Meadow"_s);
        QVERIFY(m_reader->act(row, u"Press"_s));
        DesktopLab::await("the page", [&] { return !m_program->openedPages().isEmpty(); });
        QVERIFY(m_reader->act(row, u"Cancel Quiet Meadow"_s));
        const Accessible sure = m_reader->await(u"push button"_s, u"Cancel subscription"_s);
        QVERIFY(m_reader->act(sure, u"Press"_s));
        DesktopLab::await("the row to be cancelled",
            [&] { return m_reader->readAgain(row).actions.contains(u"Uncancel Quiet Meadow"_s); });
        // While the row is at work with the first change it takes no other.
        DesktopLab::await("the row to be taken back", [&] {
            const QStringList actions = m_reader->readAgain(row).actions;
            if (actions.contains(u"Uncancel Quiet Meadow"_s))
                m_reader->act(row, u"Uncancel Quiet Meadow"_s);
            return actions.contains(u"Cancel Quiet Meadow"_s);
        });
    }

    void shouldEndAtControlQ()
    {
        startSignedIn();
        press(u"ctrl+q"_s);
        QVERIFY(awaitEnd(*m_program->program()));
        QCOMPARE(m_program->program()->exitCode(), 0);
    }

    // ---- quick add ----

    void shouldTellTheFormForAdding()
    {
        startSignedIn();
        openQuickAdd();
        type(u"tidewater"_s);
        m_reader->await(u"push button"_s, u"Use Tidewater Music template"_s);
        const QList<Accessible> form = m_reader->readWindow(u"Orbitledge"_s);
        QVERIFY2(namelessIn(form).isEmpty(), qPrintable(namelessIn(form)));
        const QString missing = missingFrom(form,
            {
                {.role = "label", .name = "QUICK ADD"},
                {.role = "heading", .name = "New subscription"},
                {.role = "push button", .name = "Close Quick Add", .description = "Close"},
                {.role = "label", .name = "SERVICE"},
                {.role = "text",
                    .name = "Service",
                    .description = "Netflix, Spotify, iCloud…",
                    .value = "tidewater",
                    .states = {u"editable"_s, u"focused"_s}},
                {.role = "push button",
                    .name = "Use Tidewater Music template",
                    .description = "Tidewater Music",
                    .actions = buttonActions},
                {.role = "label", .name = "PRICE"},
                {.role = "text", .name = "Price", .description = "0\\.00", .value = ""},
                {.role = "label", .name = "CURRENCY"},
                {.role = "text", .name = "Currency", .description = "EUR", .value = "EUR"},
                {.role = "label", .name = "BILLING CYCLE"},
                {.role = "combo box", .name = "Monthly", .labels = {u"Billing cycle"_s}},
                {.role = "label", .name = "NEXT RENEWAL"},
                {.role = "spin button", .name = "Next renewal", .value = "\\w{3} \\d{1,2}, \\d{4}"},
                {.role = "push button", .name = "Cancel"},
                {.role = "push button", .name = "Add subscription"},
            });
        QVERIFY2(missing.isEmpty(), qPrintable(missing));
        QVERIFY(!m_reader->await(u"push button"_s, u"Add subscription"_s).is(u"enabled"));
    }

    void shouldGoThroughTheFormForAddingByTab()
    {
        startSignedIn();
        openQuickAdd();
        type(u"My own"_s);
        const std::pair<QString, QString> date{u"spin button"_s, u"Next renewal"_s};
        walk(u"Tab"_s, {{u"text"_s, u"Price"_s}});
        type(u"4.20"_s);
        walk(u"Tab"_s, {{u"text"_s, u"Currency"_s}, {u"combo box"_s, u"Monthly"_s}});
        // Day, month and year are stations of one field.
        walk(u"Tab"_s, {date, date, date, {u"push button"_s, u"Cancel"_s}});
        walk(u"Tab"_s,
            {{u"push button"_s, u"Add subscription"_s}, {u"push button"_s, u"Close Quick Add"_s},
                {u"text"_s, u"Service"_s}});
        press(u"Escape"_s);
        m_reader->awaitFocus(u"push button"_s, u"Add"_s);
        QVERIFY(m_program->desk().isWindowOpen(u"Orbitledge"_s));
    }

    // ---- signed out ----

    void shouldTellTheFormForSigningIn()
    {
        prepare();
        start();
        m_reader->awaitFocus(u"text"_s, u"Email"_s);
        const QList<Accessible> form = m_reader->readWindow(u"Orbitledge"_s);
        QVERIFY2(namelessIn(form).isEmpty(), qPrintable(namelessIn(form)));
        const QString missing = missingFrom(form,
            {
                {.role = "heading", .name = "ORBITLEDGE"},
                {.role = "label", .name = "See what’s about to charge\\."},
                {.role = "text",
                    .name = "Email",
                    .description = "Email",
                    .value = "",
                    .states = {u"editable"_s, u"focused"_s}},
                {.role = "password text", .name = "Password", .description = "Password", .value = ""},
                {.role = "push button", .name = "Sign in"},
                {.role = "push button", .name = "Open Orbitledge on the web", .actions = buttonActions},
            });
        QVERIFY2(missing.isEmpty(), qPrintable(missing));
        QVERIFY(!m_reader->await(u"push button"_s, u"Sign in"_s).is(u"enabled"));
    }

    void shouldReadOutAFailedSignIn()
    {
        prepare();
        start();
        m_reader->awaitFocus(u"text"_s, u"Email"_s);
        type(QString(DemoService::email));
        press(u"Return"_s);
        m_reader->awaitFocus(u"password text"_s, u"Password"_s);
        type(u"wrong"_s);
        // What is typed is nobody else's to hear.
        QVERIFY(!m_reader->await(u"password text"_s, u"Password"_s).value->contains(u"wrong"_s));
        walk(u"Tab"_s,
            {{u"push button"_s, u"Sign in"_s}, {u"push button"_s, u"Open Orbitledge on the web"_s},
                {u"text"_s, u"Email"_s}, {u"password text"_s, u"Password"_s}});
        m_reader->forgetEvents();
        press(u"Return"_s);
        const AccessibleEvent told = m_reader->awaitEvent(
            u"state-changed"_s, u"showing"_s, u"Sign-in failed. The e-mail or the password is wrong."_s);
        QCOMPARE(told.number, 1);
        m_reader->await(u"notification"_s, u"Sign-in failed. The e-mail or the password is wrong."_s);
        m_reader->await(u"alert"_s, u"Sign-in failed. The e-mail or the password is wrong."_s);
        m_reader->awaitFocus(u"password text"_s, u"Password"_s);
    }

    // ---- without the service ----

    void shouldReadOutThatTheServiceIsOutOfReach()
    {
        prepare();
        m_program->signIn();
        QVERIFY(QFile::remove(m_program->environment().value(u"XDG_DATA_HOME"_s)
            + u"/app.orbitledge.Orbitledge/subscription-snapshot-v1.json"_s));
        m_program->service().kill();
        start();
        m_reader->awaitFocus(u"push button"_s, u"Retry"_s);
        const QList<Accessible> panel = m_reader->readWindow(u"Orbitledge"_s);
        QVERIFY2(namelessIn(panel).isEmpty(), qPrintable(namelessIn(panel)));
        const QString missing = missingFrom(panel,
            {
                {.role = "heading", .name = "Can’t reach Orbitledge"},
                {.role = "label", .name = ".+"},
                {.role = "push button", .name = "Retry"},
                {.role = "push button", .name = "Sign in instead"},
            });
        QVERIFY2(missing.isEmpty(), qPrintable(missing));
        // The message is a notification besides.
        const auto isRead = [](const Accessible &one) { return one.role == u"notification"; };
        const auto news = std::ranges::find_if(panel, isRead);
        QVERIFY2(news != panel.end(), qPrintable(ScreenReader::textOf(panel)));
        QVERIFY(m_reader->find(u"label"_s, news->name).has_value());
        walk(u"Tab"_s, {{u"push button"_s, u"Sign in instead"_s}, {u"push button"_s, u"Retry"_s}});
    }

    // ---- settings ----

    void shouldTellTheSettings()
    {
        startSignedIn();
        openSettings();
        m_reader->awaitFocus(u"panel"_s, u"Settings"_s); // before any key
        const QList<Accessible> window = m_reader->readWindow(u"Orbitledge Settings"_s);
        QVERIFY2(namelessIn(window).isEmpty(), qPrintable(namelessIn(window)));
        const QStringList check{u"Toggle"_s};
        const QString missing = missingFrom(window,
            {
                {.role = "frame", .name = "Orbitledge Settings", .states = {u"active"_s}},
                {.role = "heading", .name = "General"},
                {.role = "panel", .name = "General"},
                {.role = "combo box", .name = "15 minutes", .labels = {u"Refresh"_s}},
                {.role = "check box",
                    .name = "Show urgent-renewal badge",
                    .actions = check,
                    .states = {u"checked"_s}},
                {.role = "combo box", .name = "Match System", .labels = {u"Appearance"_s}},
                {.role = "check box", .name = "Launch at login", .actions = check},
                {.role = "heading", .name = "Renewal reminders"},
                {.role = "panel", .name = "Renewal reminders"},
                {.role = "check box", .name = "Enable notifications", .actions = check},
                {.role = "spin button",
                    .name = "Remind me",
                    .value = "\\d+ days? before",
                    .labels = {u"Remind me"_s}},
                {.role = "label", .name = "Notifications are delivered at 09:00 local time\\."},
                {.role = "push button", .name = "Send Test Notification", .actions = buttonActions},
                {.role = "heading", .name = "Account"},
                {.role = "panel", .name = "Account"},
                {.role = "label", .name = "Signed in as"},
                {.role = "label", .name = "ada@example\\.com", .description = "ada@example\\.com"},
                {.role = "push button", .name = "Open Orbitledge", .actions = buttonActions},
                {.role = "push button", .name = "Sign Out", .actions = buttonActions},
                {.role = "push button", .name = "Quit Orbitledge", .description = "Ctrl\\+Q"},
                {.role = "heading", .name = "About"},
                {.role = "panel", .name = "About"},
                {.role = "label", .name = "Version"},
                {.role = "label", .name = "\\d+\\.\\d+\\.\\d+ \\(\\d+\\)"},
                {.role = "label", .name = "API"},
                {.role = "label", .name = "127\\.0\\.0\\.1"},
                {.role = "label",
                    .name = "Orbitledge checks for a new version on launch and roughly every six hours\\."},
                {.role = "push button", .name = "Check for Updates", .actions = buttonActions},
            });
        QVERIFY2(missing.isEmpty(), qPrintable(missing));
    }

    void shouldGoThroughTheSettingsByTab()
    {
        startSignedIn();
        openSettings();
        m_reader->awaitFocus(u"panel"_s, u"Settings"_s);
        const QString button = u"push button"_s;
        const QString check = u"check box"_s;
        walk(u"Tab"_s,
            {{u"combo box"_s, u"15 minutes"_s}, {check, u"Show urgent-renewal badge"_s},
                {u"combo box"_s, u"Match System"_s}, {check, u"Launch at login"_s},
                {check, u"Enable notifications"_s}, {u"spin button"_s, u"Remind me"_s},
                {button, u"Send Test Notification"_s}, {button, u"Open Orbitledge"_s},
                {button, u"Sign Out"_s}, {button, u"Quit Orbitledge"_s}, {button, u"Check for Updates"_s},
                {u"combo box"_s, u"15 minutes"_s}, {check, u"Show urgent-renewal badge"_s}});
        press(u"space"_s);
        DesktopLab::await("the switch", [&] { return !m_reader->focused().is(u"checked"); });
        press(u"Escape"_s);
        DesktopLab::await("the settings to close",
            [&] { return !m_program->desk().isWindowOpen(u"Orbitledge Settings"_s); });
        QVERIFY(m_program->desk().isWindowOpen(u"Orbitledge"_s));
    }

    // ---- the icon ----

    void shouldTellTheFullCountAtTheIcon()
    {
        prepare({u"--populate"_s, u"1200"_s});
        m_program->signIn();
        m_program->desk().startBar();
        m_program->start({u"--background"_s});
        m_program->desk().awaitBadge();
        static const QRegularExpression count(u"(\\d+) renewals due soon"_s);
        // The badge shows no more than "9+".
        DesktopLab::await("the count", [&] { return count.match(itemToolTip()).captured(1).toInt() > 9; });
        QVERIFY2(itemToolTip().startsWith(u"Orbitledge\n"_s), qPrintable(itemToolTip()));
        QCOMPARE(itemTitle(), u"Orbitledge"_s);
    }
};

ORBITLEDGE_TEST_MAIN(PanelAccessibilityTest)
#include "PanelAccessibilityTest.moc"
