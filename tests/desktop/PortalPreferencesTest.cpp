// What the desktop's portal tells about colours, motion and text, on a bus of the test's own.

#include "support/DesktopLab.h"
#include "support/ProbeDriver.h"
#include "support/TestMain.h"

#include <QDBusMessage>
#include <QDBusVariant>

using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

namespace {

const QString portalName = u"org.freedesktop.portal.Desktop"_s;
const QString appearance = u"org.freedesktop.appearance"_s;
const QString gnome = u"org.gnome.desktop.interface"_s;
const QByteArray nothingPreferred = "none moves 1";

class Portal {
public:
    explicit Portal(DesktopLab &lab)
        : m_lab(lab)
    {
    }

    void start(const QString &settings, const QString &kind = u"settings"_s)
    {
        m_lab.startService(portalName, u"/usr/bin/python3"_s,
            {QStringLiteral(ORBITLEDGE_TEST_SUPPORT) + u"/mock_settings_portal.py"_s, settings, kind});
    }
    void set(const QString &group, const QString &key, const QString &json)
    {
        call(u"Set"_s, {group, key, json});
    }
    void awaitRead()
    {
        DesktopLab::await("somebody who asks", [&] { return call(u"ReadCount"_s, {}).toInt() > 0; });
    }
    void kill() { m_lab.killService(portalName); }
    void pause() { m_lab.pauseService(portalName); }
    void resume() { m_lab.resumeService(portalName); }

private:
    QVariant call(const QString &method, const QVariantList &arguments)
    {
        QDBusMessage message = QDBusMessage::createMethodCall(
            portalName, u"/org/freedesktop/portal/desktop"_s, u"app.orbitledge.Test"_s, method);
        message.setArguments(arguments);
        const QDBusMessage answer = m_lab.bus().call(message);
        if (answer.type() != QDBusMessage::ReplyMessage)
            qFatal("%s", qPrintable(answer.errorMessage()));
        return answer.arguments().value(0);
    }

    DesktopLab &m_lab;
};

QString colorScheme(int number)
{
    return uR"({"org.freedesktop.appearance": {"color-scheme": %1}})"_s.arg(number);
}

} // namespace

class PortalPreferencesTest : public QObject {
    Q_OBJECT

private:
    std::optional<DesktopLab> m_lab;
    std::optional<Portal> m_portal;
    std::unique_ptr<ProbeDriver> m_probe;

    void startProbe()
    {
        m_probe = std::make_unique<ProbeDriver>(
            m_lab->environment(), QStringLiteral(ORBITLEDGE_PREFERENCES_PROBE));
    }
    void awaitLook(const QByteArray &look)
    {
        QByteArray last;
        if (!QTest::qWaitFor([&] { return (last = m_probe->tell("look")) == look; }, 20'000))
            qFatal("it is %s, and not %s", last.constData(), look.constData());
    }
    /// What is told after what is to be ignored counts, and nothing changed before.
    void verifyNothingChangedBut(const QByteArray &look)
    {
        awaitLook(look);
        m_probe->awaitLine("changed");
        QVERIFY(!m_probe->hasSaid("changed"));
    }

private Q_SLOTS:
    void init()
    {
        m_lab.emplace();
        m_portal.emplace(*m_lab);
    }
    void cleanup()
    {
        m_probe.reset();
        m_portal.reset();
        m_lab.reset();
    }

    void shouldReadWhatIsPreferred_data()
    {
        QTest::addColumn<QString>("settings");
        QTest::addColumn<QByteArray>("look");
        QTest::newRow("dark") << colorScheme(1) << QByteArray("dark moves 1");
        QTest::newRow("light") << colorScheme(2) << QByteArray("light moves 1");
        QTest::newRow("no motion") << uR"({"org.gnome.desktop.interface": {"enable-animations": false}})"_s
                                   << QByteArray("none still 1");
        QTest::newRow("large text") << uR"({"org.gnome.desktop.interface": {"text-scaling-factor": 1.5}})"_s
                                    << QByteArray("none moves 1.5");
        QTest::newRow("all at once")
            << uR"({"org.freedesktop.appearance": {"color-scheme": 1, "contrast": 1, "accent-color": [1.0]},
                    "org.gnome.desktop.interface": {"enable-animations": false, "text-scaling-factor": 1.25,
                                                    "gtk-theme": "Adwaita"}})"_s
            << QByteArray("dark still 1.25 clear");
        QTest::newRow("more contrast")
            << uR"({"org.freedesktop.appearance": {"contrast": 1}})"_s << QByteArray("none moves 1 clear");
        QTest::newRow("GNOME's high contrast")
            << uR"({"org.gnome.desktop.a11y.interface": {"high-contrast": true}})"_s
            << QByteArray("none moves 1 clear");
    }
    void shouldReadWhatIsPreferred()
    {
        QFETCH(const QString, settings);
        QFETCH(const QByteArray, look);
        m_portal->start(settings);
        startProbe();
        awaitLook(look);
        m_probe->awaitLine("changed");
        QVERIFY(!m_probe->hasSaid("changed")); // all of it together
    }

    void shouldTakeWhatMeansNothingForNoPreference_data()
    {
        QTest::addColumn<QString>("settings");
        QTest::newRow("nothing") << u"{}"_s;
        QTest::newRow("no preference") << colorScheme(0);
        QTest::newRow("an unknown color scheme") << colorScheme(3);
        QTest::newRow("a negative color scheme") << colorScheme(-1);
        QTest::newRow("a color scheme in words")
            << uR"({"org.freedesktop.appearance": {"color-scheme": "1"}})"_s;
        QTest::newRow("a fraction of a color scheme")
            << uR"({"org.freedesktop.appearance": {"color-scheme": 1.2}})"_s;
        QTest::newRow("a list for a color scheme")
            << uR"({"org.freedesktop.appearance": {"color-scheme": [1.0]}})"_s;
        QTest::newRow("animations in words")
            << uR"({"org.gnome.desktop.interface": {"enable-animations": "false"}})"_s;
        QTest::newRow("animations as a list")
            << uR"({"org.gnome.desktop.interface": {"enable-animations": [0.0]}})"_s;
        QTest::newRow("a scale of nothing")
            << uR"({"org.gnome.desktop.interface": {"text-scaling-factor": 0.0}})"_s;
        QTest::newRow("a negative scale")
            << uR"({"org.gnome.desktop.interface": {"text-scaling-factor": -2.0}})"_s;
        QTest::newRow("an infinite scale")
            << uR"({"org.gnome.desktop.interface": {"text-scaling-factor": Infinity}})"_s;
        QTest::newRow("a scale in words")
            << uR"({"org.gnome.desktop.interface": {"text-scaling-factor": "1.5"}})"_s;
    }
    void shouldTakeWhatMeansNothingForNoPreference()
    {
        QFETCH(const QString, settings);
        m_portal->start(settings);
        startProbe();
        m_portal->awaitRead();
        // The bus keeps the order: this comes after the answer.
        m_portal->set(appearance, u"color-scheme"_s, u"2"_s);
        verifyNothingChangedBut("light moves 1");
    }

    void shouldFollowChanges()
    {
        m_portal->start(colorScheme(1));
        startProbe();
        awaitLook("dark moves 1");
        m_portal->set(appearance, u"color-scheme"_s, u"2"_s);
        awaitLook("light moves 1");
        m_portal->set(appearance, u"color-scheme"_s, u"0"_s);
        awaitLook("none moves 1");
        m_portal->set(gnome, u"enable-animations"_s, u"false"_s);
        awaitLook("none still 1");
        m_portal->set(gnome, u"text-scaling-factor"_s, u"2.0"_s);
        awaitLook("none still 2");
        m_portal->set(appearance, u"contrast"_s, u"1"_s);
        awaitLook("none still 2 clear");
        m_portal->set(appearance, u"contrast"_s, u"0"_s);
        m_portal->set(gnome, u"enable-animations"_s, u"true"_s);
        m_portal->set(gnome, u"text-scaling-factor"_s, u"1.0"_s);
        awaitLook(nothingPreferred);
    }

    void shouldPassOverASignalOfOtherTypes()
    {
        m_portal->start(colorScheme(1));
        startProbe();
        awaitLook("dark moves 1");
        QDBusMessage signal = QDBusMessage::createSignal(
            u"/org/freedesktop/portal/desktop"_s, u"org.freedesktop.portal.Settings"_s, u"SettingChanged"_s);
        // Arrays are not taken apart before they are handed over.
        const QVariantMap map{{u"color-scheme"_s, 2U}};
        const QVariant value = QVariant::fromValue(QDBusVariant(2U));
        signal.setArguments({map, map, value});
        QVERIFY(m_lab->bus().send(signal));
        // The bus keeps the order, by one sender.
        signal.setArguments({gnome, u"enable-animations"_s, QVariant::fromValue(QDBusVariant(false))});
        QVERIFY(m_lab->bus().send(signal));
        awaitLook("dark still 1");
    }

    void shouldTellNobodyWhereNothingChanged()
    {
        m_portal->start(colorScheme(1));
        startProbe();
        awaitLook("dark moves 1");
        m_probe->awaitLine("changed");
        m_portal->set(appearance, u"color-scheme"_s, u"1"_s);
        m_portal->set(appearance, u"contrast"_s, u"0"_s);
        m_portal->set(appearance, u"contrast"_s, u"\"1\""_s);
        m_portal->set(u"org.kde.kdeglobals"_s, u"color-scheme"_s, u"2"_s);
        m_portal->set(gnome, u"text-scaling-factor"_s, u"\"large\""_s);
        m_portal->set(gnome, u"enable-animations"_s, u"[0.0]"_s);
        m_portal->set(gnome, u"text-scaling-factor"_s, u"1.5"_s);
        verifyNothingChangedBut("dark moves 1.5");
    }

    void shouldPreferNothingWithoutAPortal()
    {
        startProbe();
        QCOMPARE(m_probe->tell("look"), nothingPreferred);
        // And follow one that comes later.
        m_portal->start(colorScheme(1));
        awaitLook("dark moves 1");
    }

    void shouldPreferNothingWithoutABus()
    {
        QProcessEnvironment nowhere = m_lab->environment();
        nowhere.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, u"unix:path=/nowhere"_s);
        ProbeDriver probe(nowhere, QStringLiteral(ORBITLEDGE_PREFERENCES_PROBE));
        QCOMPARE(probe.tell("look"), nothingPreferred);
    }

    void shouldReadAnewWhenThePortalStartsAnew()
    {
        m_portal->start(colorScheme(1));
        startProbe();
        awaitLook("dark moves 1");
        m_portal->kill();
        QCOMPARE(m_probe->tell("look"), "dark moves 1"); // nothing flickers meanwhile
        m_portal->start(colorScheme(2));
        awaitLook("light moves 1");
        // One that prefers nothing any more.
        m_portal->kill();
        m_portal->start(u"{}"_s);
        awaitLook(nothingPreferred);
    }

    void shouldNotWaitForAMutePortal()
    {
        m_portal->start(colorScheme(1));
        m_portal->pause();
        startProbe();
        QCOMPARE(m_probe->tell("look"), nothingPreferred);
        m_portal->resume();
        awaitLook("dark moves 1");
        m_probe->begin("quit");
        const double kept = m_probe->awaitLine("kept").split(' ').value(1).toDouble();
        QVERIFY2(kept < 1000, qPrintable(QString::number(kept)));
    }

    void shouldPreferNothingWhereThePortalRefuses()
    {
        m_portal->start(colorScheme(1), u"error"_s);
        startProbe();
        m_portal->awaitRead();
        m_portal->set(appearance, u"color-scheme"_s, u"2"_s);
        verifyNothingChangedBut("light moves 1");
    }
};

ORBITLEDGE_TEST_MAIN(PortalPreferencesTest)
#include "PortalPreferencesTest.moc"
