// The icon in the bar of a real desktop, and the panel beside it, with a real mouse and keyboard.

#include "support/Pixels.h"
#include "support/ProbeDriver.h"
#include "support/TestMain.h"
#include "support/XfceDesk.h"

#include <QDBusMessage>
#include <QLocalSocket>

using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

namespace {

struct Session {
    DesktopLab lab{DesktopLab::Options{.hasDisplay = true}};
    XfceDesk desk;

    explicit Session(XfceDesk::Edge edge = XfceDesk::Edge::Top)
        : desk(lab, edge)
    {
    }
};

class Tray : public ProbeDriver {
public:
    explicit Tray(const Session &session)
        : Tray(session.lab.environment())
    {
    }
    enum class Wait { UntilItKnows, ForNothing };
    explicit Tray(const QProcessEnvironment &environment, Wait wait = Wait::UntilItKnows)
        : ProbeDriver(environment, QStringLiteral(ORBITLEDGE_TRAY_PROBE))
    {
        if (wait == Wait::UntilItKnows)
            awaitLine("known");
    }

    struct Panel {
        bool isVisible = false;
        QRect place;
        bool hasFocus = false;
    };
    Panel panel()
    {
        const QList<QByteArray> words = tell("panel").split(' ');
        if (words.size() != 5)
            return {};
        return {true, QRect(words[0].toInt(), words[1].toInt(), words[2].toInt(), words[3].toInt()),
            words[4] == "focus"};
    }
    void awaitFocus()
    {
        DesktopLab::await("the panel to have the focus", [&] { return panel().hasFocus; });
    }
    void awaitHost(const QByteArray &kind)
    {
        DesktopLab::await("the host", [&] { return tell("host") == kind; });
    }
};

/// Keeps a list of icons, and shows none itself.
class Watcher {
public:
    explicit Watcher(DesktopLab &lab)
        : m_lab(lab)
    {
        start();
    }

    void start()
    {
        m_lab.startService(XfceDesk::watcherName(), u"/usr/bin/python3"_s,
            {QStringLiteral(ORBITLEDGE_TEST_SUPPORT) + u"/mock_notifier_watcher.py"_s});
    }
    void kill() { m_lab.killService(XfceDesk::watcherName()); }
    void pause() { m_lab.pauseService(XfceDesk::watcherName()); }
    void setHost(bool hasHost) { call(u"Host"_s, {hasHost}); }
    [[nodiscard]] int itemCount() const { return call(u"ItemCount"_s, {}).toInt(); }

private:
    QVariant call(const QString &method, const QVariantList &arguments) const
    {
        QDBusMessage message = QDBusMessage::createMethodCall(
            XfceDesk::watcherName(), u"/StatusNotifierWatcher"_s, u"app.orbitledge.Test"_s, method);
        message.setArguments(arguments);
        const QDBusMessage answer = m_lab.bus().call(message);
        if (answer.type() != QDBusMessage::ReplyMessage)
            qFatal("%s", qPrintable(answer.errorMessage()));
        return answer.arguments().value(0);
    }

    DesktopLab &m_lab;
};

/// Keeps a picture to be looked at, where somebody asks for it.
void keep(const QImage &image, const QString &name)
{
    const QString folder = qEnvironmentVariable("ORBITLEDGE_TEST_PICTURES");
    if (!folder.isEmpty())
        image.save(folder + u'/' + name + u".png"_s);
}

} // namespace

class TrayTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // ---- the icon, in any order ----

    void shouldShowItsBadgeInABarThatWasThereBefore()
    {
        Session session;
        session.desk.startBar();
        Tray tray(session);
        tray.awaitHost("notifier");
        tray.tell("badge 3");
        const QRect badge = session.desk.awaitBadge();
        keep(session.desk.screen(), u"badge"_s);
        QVERIFY(badge.bottom() < 30); // in the bar
        tray.tell("badge");
        session.desk.awaitNoBadge();
        tray.tell("badge 9+");
        session.desk.awaitBadge();
    }

    void shouldBeDrawnForALightBar()
    {
        Session session;
        session.desk.startBar();
        Tray tray(session);
        tray.awaitHost("notifier");
        tray.tell("badge 3");
        const QRect badge = session.desk.awaitBadge();
        // The symbol beside the badge.
        const auto symbol = [&] { return session.desk.screen().copy(badge.adjusted(-8, 4, -4, 8)); };
        const QImage forDark = symbol();
        tray.tell("light-bar");
        DesktopLab::await("another symbol", [&] { return symbol() != forDark; });
        keep(session.desk.screen(), u"light-bar"_s);
        const auto darkest = [](const QImage &picture) {
            int count = 0;
            for (int y = 0; y < picture.height(); ++y) {
                for (int x = 0; x < picture.width(); ++x)
                    count += luminanceOf(picture.pixelColor(x, y)) < 0.05 ? 1 : 0;
            }
            return count;
        };
        QVERIFY(darkest(symbol()) > darkest(forDark) + 20);
        session.desk.awaitBadge();
    }

    void shouldTellWhereNothingShowsIcons()
    {
        Session session;
        Tray tray(session);
        QCOMPARE(tray.tell("host"), "none");
        QVERIFY(!tray.hasSaid("host"));
        // By the mouse, as an ordinary window in the middle of anywhere.
        tray.tell("open");
        tray.awaitLine("shown");
        QVERIFY(tray.panel().isVisible);
    }

    void shouldTellSoWithoutABus()
    {
        Session session;
        QProcessEnvironment nowhere = session.lab.environment();
        nowhere.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, u"unix:path=/nowhere"_s);
        Tray tray(nowhere);
        QCOMPARE(tray.tell("host"), "none");
    }

    void shouldTellSoWithoutX11()
    {
        const DesktopLab lab;
        QProcessEnvironment environment = lab.environment();
        environment.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
        Tray tray(environment);
        QCOMPARE(tray.tell("host"), "none");
        tray.tell("open");
        tray.awaitLine("shown");
    }

    void shouldBeInABarThatComesLater()
    {
        Session session;
        Tray tray(session);
        tray.tell("badge 3");
        session.desk.startBar();
        session.desk.awaitBadge();
    }

    void shouldBeInTheBarEachTimeItStartsAnew()
    {
        Session session;
        session.desk.startBar();
        Tray tray(session);
        tray.tell("badge 3");
        session.desk.awaitBadge();
        for (int i = 0; i < 3; ++i) {
            session.desk.killBar();
            tray.awaitHost("none");
            session.desk.awaitNoBadge();
            session.desk.startBar();
            session.desk.awaitBadge();
        }
        // What it says meanwhile is shown afterwards.
        session.desk.killBar();
        tray.tell("badge");
        session.desk.startBar();
        tray.awaitHost("notifier");
        tray.tell("badge 5");
        session.desk.awaitBadge();
    }

    // ---- trays of the older kind ----

    void shouldBeInATrayThatTakesWindows()
    {
        Session session;
        session.desk.startWindowManager(XfceDesk::Compositing::Off);
        Tray tray(session);
        tray.tell("badge 3");
        QCOMPARE(tray.tell("host"), "none");
        for (int i = 0; i < 2; ++i) {
            session.desk.startTrayOfWindows();
            tray.awaitHost("embedder");
            const QPoint icon = session.desk.awaitBadge().center();
            QVERIFY(icon.y() < 30);
            keep(session.desk.screen(), u"tray of windows"_s);
            session.desk.click(icon);
            tray.awaitLine("shown");
            tray.awaitFocus();
            // Here the icon's place is known, wherever the pointer is.
            const QRect place = tray.panel().place;
            keep(session.desk.screen(), u"panel at a tray of windows"_s);
            QVERIFY(place.left() < icon.x() && icon.x() < place.right());
            QVERIFY(place.top() > icon.y() && place.top() < 60);
            session.desk.click(icon);
            tray.awaitLine("hidden");
            session.desk.killTrayOfWindows();
            tray.awaitHost("none");
            session.desk.awaitNoBadge();
        }
    }

    // ---- a list of icons without somebody who shows them ----

    void shouldWaitForWhoeverShowsTheIcons()
    {
        DesktopLab lab(DesktopLab::Options{.hasDisplay = true});
        Watcher watcher(lab);
        Tray tray(lab.environment());
        QCOMPARE(tray.tell("host"), "none");
        QCOMPARE(watcher.itemCount(), 0);
        watcher.setHost(true);
        tray.awaitHost("notifier");
        QTRY_COMPARE_WITH_TIMEOUT(watcher.itemCount(), 1, 20'000);
        watcher.setHost(false);
        tray.awaitHost("none");
        watcher.setHost(true);
        tray.awaitHost("notifier");

        // The list begins anew, empty, before somebody shows what is in it.
        watcher.kill();
        tray.awaitHost("none");
        watcher.start();
        watcher.setHost(true);
        tray.awaitHost("notifier");
        QTRY_COMPARE_WITH_TIMEOUT(watcher.itemCount(), 1, 20'000);
    }

    void shouldNotWaitLongForAListThatIsMute()
    {
        DesktopLab lab(DesktopLab::Options{.hasDisplay = true});
        Watcher watcher(lab);
        watcher.setHost(true);
        watcher.pause();
        Tray tray(lab.environment(), Tray::Wait::ForNothing);
        // The interface goes on meanwhile.
        tray.tell("open");
        QCOMPARE(tray.awaitNextOf({"shown", "known"}), "shown");
        tray.awaitLine("known");
        QCOMPARE(tray.tell("host"), "none");
    }

    // ---- Wayland ----

    void shouldOpenAnOrdinaryWindowOnWayland()
    {
        // The bar is on another screen of the same session; it shows what comes over the bus.
        Session session;
        session.desk.startBar();
        const auto isListening = [&session] {
            QLocalSocket socket;
            socket.connectToServer(session.lab.path(u"runtime/wayland-lab"_s));
            return socket.waitForConnected();
        };
        session.lab.startProgram(u"weston"_s, u"weston"_s,
            {u"--backend=headless-backend.so"_s, u"--socket=wayland-lab"_s, u"--idle-time=0"_s}, isListening);
        QProcessEnvironment environment = session.lab.environment();
        environment.insert(u"QT_QPA_PLATFORM"_s, u"wayland"_s);
        environment.insert(u"WAYLAND_DISPLAY"_s, u"wayland-lab"_s);
        Tray tray(environment);
        tray.awaitHost("notifier");
        QCOMPARE(tray.tell("platform"), "wayland");
        tray.tell("badge 3");
        const QPoint icon = session.desk.awaitBadge().center();
        for (int i = 0; i < 2; ++i) {
            session.desk.click(icon);
            tray.awaitLine("shown");
            QCOMPARE(tray.tell("manner"), "window");
            QVERIFY(tray.panel().isVisible);
            session.desk.click(icon);
            tray.awaitLine("hidden");
        }
        session.desk.killBar();
        tray.awaitHost("none"); // there may be an XEmbed tray, but not for these windows
    }

    // ---- the panel ----

    void shouldOpenByTheIconAndCloseAtASecondClick_data()
    {
        QTest::addColumn<XfceDesk::Edge>("edge");
        QTest::addColumn<QPoint>("distance");
        QTest::newRow("bar at the top") << XfceDesk::Edge::Top << QPoint(0, 1);
        QTest::newRow("bar at the bottom") << XfceDesk::Edge::Bottom << QPoint(0, -1);
        QTest::newRow("bar at the left") << XfceDesk::Edge::Left << QPoint(1, 0);
        QTest::newRow("bar at the right") << XfceDesk::Edge::Right << QPoint(-1, 0);
    }
    void shouldOpenByTheIconAndCloseAtASecondClick()
    {
        QFETCH(const XfceDesk::Edge, edge);
        QFETCH(const QPoint, distance);
        Session session(edge);
        session.desk.startWindowManager(XfceDesk::Compositing::Off);
        session.desk.startBar();
        Tray tray(session);
        tray.tell("badge 3");
        const QPoint icon = session.desk.awaitBadge().center();
        session.desk.click(icon);
        tray.awaitLine("shown");
        tray.awaitFocus();
        const QRect place = tray.panel().place;
        keep(session.desk.screen(), QString::fromLatin1(QTest::currentDataTag()));
        QCOMPARE(place.size(), QSize(360, 480));
        QVERIFY(QRect(0, 0, 1024, 768).contains(place));
        // Beside the bar, and near the icon along it.
        const QPoint beside(icon + distance * 100);
        QVERIFY2(place.contains(beside), qPrintable(u"%1,%2"_s.arg(place.x()).arg(place.y())));
        QVERIFY(!place.contains(icon));

        session.desk.click(icon);
        tray.awaitLine("hidden");
        QVERIFY(!tray.panel().isVisible);
        session.desk.click(icon);
        tray.awaitLine("shown");
    }

    void shouldCloseAtASecondClickAfterThePointerWasInIt()
    {
        // Then the click itself is what takes the focus away, or may.
        Session session;
        session.desk.startWindowManager(XfceDesk::Compositing::Off);
        session.desk.startBar();
        Tray tray(session);
        tray.tell("badge 3");
        const QPoint icon = session.desk.awaitBadge().center();
        session.desk.click(icon);
        tray.awaitLine("shown");
        tray.awaitFocus();
        session.desk.click(tray.panel().place.center());
        session.desk.click(icon);
        tray.awaitLine("hidden");
        QVERIFY(!QTest::qWaitFor([&] { return tray.panel().isVisible; }, 500));
        QVERIFY(!tray.hasSaid("shown"));
    }

    void shouldCloseAtEscape()
    {
        Session session;
        session.desk.startWindowManager(XfceDesk::Compositing::Off);
        session.desk.startBar();
        Tray tray(session);
        tray.tell("badge 3");
        session.desk.click(session.desk.awaitBadge().center());
        tray.awaitFocus();
        session.desk.press(u"Escape"_s);
        tray.awaitLine("hidden");
    }

    void shouldCloseWhenSomebodyTurnsToAnotherWindow()
    {
        Session session;
        session.desk.startWindowManager(XfceDesk::Compositing::Off);
        // Before the bar, so that it is an ordinary window, which stays.
        Tray other(session.lab.environment());
        other.tell("open");
        QCOMPARE(other.tell("manner"), "window");
        other.awaitFocus();
        session.desk.startBar();
        Tray tray(session);
        tray.tell("badge 3");
        session.desk.click(session.desk.awaitBadge().center());
        tray.awaitFocus();
        const QRect place = tray.panel().place;
        // It was not looked at yet.
        const QPoint elsewhere = other.panel().place.topLeft() + QPoint(60, 300);
        QVERIFY(!place.contains(elsewhere));
        session.desk.settleWindows();
        session.desk.click(elsewhere);
        other.awaitFocus();
        QVERIFY(!QTest::qWaitFor([&] { return !tray.panel().isVisible; }, 500));
        session.desk.settleWindows();
        session.desk.click(place.center());
        tray.awaitFocus();
        session.desk.settleWindows();
        session.desk.click(elsewhere);
        tray.awaitLine("hidden");
        QVERIFY(!tray.panel().isVisible);
    }

    void shouldHaveRoundCornersWhereWindowsMayBeTranslucent_data()
    {
        QTest::addColumn<XfceDesk::Compositing>("compositing");
        QTest::newRow("they may") << XfceDesk::Compositing::On;
        QTest::newRow("they may not") << XfceDesk::Compositing::Off;
    }
    void shouldHaveRoundCornersWhereWindowsMayBeTranslucent()
    {
        QFETCH(const XfceDesk::Compositing, compositing);
        Session session;
        session.desk.startWindowManager(compositing);
        session.desk.startBar();
        Tray tray(session);
        tray.tell("badge 3");
        session.desk.click(session.desk.awaitBadge().center());
        tray.awaitFocus();
        const QRect place = tray.panel().place;
        const QRgb paper
            = orbitledge::ui::colorOf(orbitledge::ui::Tone::Paper, orbitledge::ui::ColorScheme::Light).rgb();
        QTRY_COMPARE_WITH_TIMEOUT(session.desk.screen().pixel(place.center()), paper, 20'000);
        const QImage screen = session.desk.screen();
        keep(screen, u"corners "_s + QString::fromLatin1(QTest::currentDataTag()));
        // The desktop behind it is black.
        const bool isRound = qGray(screen.pixel(place.bottomLeft() + QPoint(1, -1))) < 100;
        QCOMPARE(isRound, compositing == XfceDesk::Compositing::On);
    }

    // ---- the menu ----

    void shouldOfferEverythingInItsMenu()
    {
        Session session;
        session.desk.startWindowManager(XfceDesk::Compositing::Off);
        session.desk.startBar();
        Tray tray(session);
        tray.tell("badge 3");
        tray.tell("next " + QByteArray("Salt & Pepper · tomorrow · €10.99").toPercentEncoding());
        const QPoint icon = session.desk.awaitBadge().center();
        const auto choose = [&](const QByteArrayList &keys) {
            session.desk.click(icon, 3);
            const QPoint inMenu(1000, 100);
            DesktopLab::await("the menu", [&] { return qGray(session.desk.screen().pixel(inMenu)) > 100; });
            for (const QByteArray &key : keys)
                session.desk.press(QString::fromLatin1(key));
            keep(session.desk.screen(), u"menu "_s + QString::fromLatin1(keys.join(' ')));
            session.desk.press(u"Return"_s);
            DesktopLab::await("no menu", [&] { return qGray(session.desk.screen().pixel(inMenu)) < 100; });
        };
        choose({"Up"});
        tray.awaitLine("quit-requested");
        choose({"Up", "Up"});
        tray.awaitLine("settings");
        session.desk.click(icon, 3);
        DesktopLab::await(
            "the menu", [&] { return qGray(session.desk.screen().pixel(QPoint(1000, 100))) > 100; });
        session.desk.press(u"Down"_s);
        session.desk.press(u"Return"_s);
        tray.awaitLine("shown");
        tray.awaitFocus();
    }
};

ORBITLEDGE_TEST_MAIN(TrayTest)
#include "TrayTest.moc"
