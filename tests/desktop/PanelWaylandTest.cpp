// The whole program under a real Wayland compositor, whose screen is a window on an X server, so that keys
// are typed as a person types them.

#include "support/ProgramDesk.h"
#include "support/ScreenReader.h"
#include "support/TestMain.h"

#include <QDBusMessage>
#include <QDBusVariant>
#include <QRegularExpression>

#include <algorithm>
#include <optional>

using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

class PanelWaylandTest : public QObject {
    Q_OBJECT

private:
    std::optional<ProgramDesk> m_desk;
    std::optional<ScreenReader> m_reader;

    void startCompositor()
    {
        const QString socket = m_desk->lab().path(u"runtime/wayland-lab"_s);
        // A program that gets no processor for a while would take a key for one that is held down.
        QFile configuration(m_desk->lab().path(u"weston.ini"_s));
        QVERIFY(configuration.open(QIODevice::WriteOnly)
            && configuration.write("[keyboard]\nrepeat-rate=0\n") > 0);
        configuration.close();
        m_desk->lab().startProgram(u"weston"_s, u"weston"_s,
            {u"--config="_s + configuration.fileName(), u"--backend=x11-backend.so"_s, u"--use-pixman"_s,
                u"--socket=wayland-lab"_s, u"--idle-time=0"_s, u"--width=800"_s, u"--height=600"_s},
            [&] { return QFile::exists(socket); });
        m_desk->set("QT_QPA_PLATFORM", u"wayland"_s);
        m_desk->set("WAYLAND_DISPLAY", u"wayland-lab"_s);
    }

    /// With what it says to the compositor kept in a file.
    void start()
    {
        m_desk->set("WAYLAND_DEBUG", u"1"_s);
        m_desk->start({}, m_desk->lab().path(u"said"_s));
    }
    [[nodiscard]] QByteArray said()
    {
        QFile file(m_desk->lab().path(u"said"_s));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    [[nodiscard]] qsizetype openedCount() { return said().count(".get_toplevel("); }
    [[nodiscard]] qsizetype closedCount()
    {
        const QList<QByteArray> lines = said().split('\n');
        return std::ranges::count_if(lines, [](const QByteArray &line) {
            return line.contains(" -> xdg_toplevel@") && line.contains(".destroy()");
        });
    }
    [[nodiscard]] bool isOpen() { return openedCount() > closedCount(); }
    void awaitOpen(bool isThen)
    {
        DesktopLab::await(isThen ? "the panel" : "the end of the panel", [&] { return isOpen() == isThen; });
    }
    /// Until the compositor gives it the keyboard, for the time that it opened last.
    void awaitKeyboard()
    {
        DesktopLab::await("the keyboard", [&] {
            const QByteArray all = said();
            static const QRegularExpression enter(u"wl_keyboard@\\d+\\.enter\\("_s);
            return QString::fromUtf8(all).lastIndexOf(enter)
                > QString::fromUtf8(all).lastIndexOf(u".get_toplevel("_s);
        });
    }

    /// A list of icons with somebody who shows them, without a window that would take the keyboard.
    void startTray()
    {
        m_desk->lab().startService(XfceDesk::watcherName(), u"/usr/bin/python3"_s,
            {QStringLiteral(ORBITLEDGE_TEST_SUPPORT) + u"/mock_notifier_watcher.py"_s});
        QDBusMessage show = QDBusMessage::createMethodCall(
            XfceDesk::watcherName(), u"/StatusNotifierWatcher"_s, u"app.orbitledge.Test"_s, u"Host"_s);
        show.setArguments({true});
        QCOMPARE(m_desk->lab().bus().call(show).type(), QDBusMessage::ReplyMessage);
    }

    /// As the bar does it where somebody clicks.
    void activateIcon()
    {
        const QDBusConnection bus = m_desk->lab().bus();
        QDBusMessage list = QDBusMessage::createMethodCall(XfceDesk::watcherName(),
            u"/StatusNotifierWatcher"_s, u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
        list.setArguments({u"org.kde.StatusNotifierWatcher"_s, u"RegisteredStatusNotifierItems"_s});
        const QString entry
            = bus.call(list).arguments().value(0).value<QDBusVariant>().variant().toStringList().value(0);
        static const QRegularExpression connection(u"^:\\d+\\.\\d+"_s);
        const QString item = connection.match(entry).captured();
        QVERIFY2(!item.isEmpty(), qPrintable(entry));
        QDBusMessage click = QDBusMessage::createMethodCall(
            item, u"/StatusNotifierItem"_s, u"org.kde.StatusNotifierItem"_s, u"Activate"_s);
        click.setArguments({0, 0});
        QCOMPARE(bus.call(click).type(), QDBusMessage::ReplyMessage);
    }

private Q_SLOTS:
    void init()
    {
        m_desk.emplace();
        m_reader.emplace(m_desk->lab());
        ScreenReader::addVariables(m_desk->environment());
        // What the toolkit's Wayland plugin leaves cannot be told from ours: it is gone before the leaks are
        // looked for. The same is looked at on X11.
        m_desk->set("LSAN_OPTIONS", u"detect_leaks=0"_s);
        startCompositor();
        // The compositor's screen is where the pointer is.
        m_desk->desk().pointAt({400, 300});
    }
    void cleanup()
    {
        if (QTest::currentTestFailed())
            qInfo().noquote() << said().right(4000);
        m_desk->kill();
        m_reader.reset();
        m_desk.reset();
    }

    void shouldBeAnOrdinaryWindowThatEscapeClosesAndTheIconOpens()
    {
        m_desk->signIn();
        startTray();
        start();
        awaitOpen(true);
        awaitKeyboard();
        m_reader->awaitProgram(u"Orbitledge"_s);
        m_reader->await(u"push button"_s, u"Quiet Meadow"_s);
        const QByteArray opening = said();
        QVERIFY(opening.contains(".set_title(\"Orbitledge\")"));
        QVERIFY(!opening.contains(".get_popup("));

        // Keys reach it: the first row opens its page.
        m_reader->awaitFocus(u"panel"_s, u"Upcoming renewals"_s);
        m_desk->desk().press(u"Tab"_s);
        m_reader->awaitFocus(u"push button"_s, u"Quiet Meadow"_s);
        m_desk->desk().press(u"Return"_s);
        DesktopLab::await("the page", [&] { return !m_desk->openedPages().isEmpty(); });
        m_desk->desk().press(u"Escape"_s);
        awaitOpen(false);
        QCOMPARE(m_desk->program()->state(), QProcess::Running);

        const qsizetype before = openedCount();
        activateIcon();
        awaitOpen(true);
        QCOMPARE(openedCount(), before + 1);
        awaitKeyboard();
        m_desk->desk().press(u"ctrl+q"_s);
        QVERIFY(awaitEnd(*m_desk->program()));
        QCOMPARE(m_desk->program()->exitCode(), 0);
        QVERIFY(!said().contains(".get_popup("));
    }
};

ORBITLEDGE_TEST_MAIN(PanelWaylandTest)
#include "PanelWaylandTest.moc"
