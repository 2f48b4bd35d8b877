// The settings of the whole program, by the keyboard alone: what they change, what is kept, and what they
// lead to in the desktop.

#include "support/Dunst.h"
#include "support/TestMain.h"
#include "support/Typist.h"

#include <QDirIterator>
#include <QJsonDocument>
#include <QJsonObject>

#include <optional>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

namespace {

const QString settingsTitle = u"Orbitledge Settings"_s;

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class SettingsProgramTest : public QObject {
    Q_OBJECT

private:
    std::optional<ProgramDesk> m_desk;
    std::optional<ScreenReader> m_reader;
    std::optional<Typist> m_typist;
    std::optional<Dunst> m_dunst;

    void start()
    {
        m_desk->start();
        m_reader->awaitProgram(u"Orbitledge"_s);
        m_desk->awaitPanel(true);
    }
    void openSettings()
    {
        m_typist->press(u"ctrl+comma"_s);
        m_desk->desk().awaitActive(settingsTitle);
    }

    /// In the application's folder below the one that this variable names.
    [[nodiscard]] QString fileOf(const char *variable, const QString &name) const
    {
        return m_desk->environment().value(QString::fromLatin1(variable)) + u"/app.orbitledge.Orbitledge/"_s
            + name;
    }
    [[nodiscard]] QString autostartFile() const
    {
        return m_desk->environment().value(u"XDG_CONFIG_HOME"_s)
            + u"/autostart/app.orbitledge.Orbitledge.desktop"_s;
    }
    void awaitSaved(const QJsonObject &settings)
    {
        DesktopLab::await("the settings on the disk", [&] {
            const QJsonObject saved
                = QJsonDocument::fromJson(contentOf(fileOf("XDG_CONFIG_HOME", u"settings.json"_s))).object();
            return std::ranges::all_of(
                settings.keys(), [&](const QString &key) { return saved[key] == settings[key]; });
        });
    }

    /// Whether a notification with this text went over the bus.
    [[nodiscard]] bool sent(const QByteArray &text)
    {
        return m_desk->lab().monitored().contains("string \"" + text + '"');
    }
    [[nodiscard]] QByteArray pendingReminders() const
    {
        return contentOf(fileOf("XDG_STATE_HOME", u"reminders.json"_s));
    }
    [[nodiscard]] QByteArray keptSession() const
    {
        QProcess search;
        search.setProcessEnvironment(m_desk->environment());
        search.setProcessChannelMode(QProcess::MergedChannels);
        search.start(
            u"secret-tool"_s, {u"search"_s, u"--all"_s, u"server"_s, u"app.orbitledge.Orbitledge"_s});
        return search.waitForFinished() ? search.readAll() : QByteArray("secret-tool does not end");
    }

private Q_SLOTS:
    void init()
    {
        m_desk.emplace();
        m_reader.emplace(m_desk->lab());
        m_typist.emplace(*m_desk, *m_reader);
        m_dunst.emplace(m_desk->lab());
        ScreenReader::addVariables(m_desk->environment());
        m_desk->desk().startWindowManager(XfceDesk::Compositing::Off);
    }
    void cleanup()
    {
        if (m_desk)
            m_desk->kill();
        m_dunst.reset();
        m_typist.reset();
        m_reader.reset();
        m_desk.reset();
    }

    void shouldKeepEverythingThatIsSet()
    {
        m_dunst->start();
        m_desk->signIn();
        start();
        openSettings();
        m_typist->goTo(u"Refresh"_s);
        m_typist->press(u"End"_s);
        m_typist->use(u"Show urgent-renewal badge"_s);
        m_typist->goTo(u"Appearance"_s);
        m_typist->press(u"End"_s);
        m_typist->use(u"Launch at login"_s);
        m_typist->use(u"Enable notifications"_s);
        m_typist->goTo(u"Remind me"_s);
        m_typist->press(u"Up"_s);
        m_typist->press(u"Up"_s);
        awaitSaved({{u"settings.refreshInterval"_s, 3600}, {u"settings.showMenuBadge"_s, false},
            {u"settings.appearance"_s, u"dark"_s}, {u"settings.notificationsEnabled"_s, true},
            {u"settings.notificationLeadDays"_s, 5}});
        DesktopLab::await("the entry for the login", [&] { return QFile::exists(autostartFile()); });
        QVERIFY(contentOf(autostartFile()).contains("/orbitledge\" --background")
            || contentOf(autostartFile()).contains("/orbitledge --background"));
        m_desk->keepPicture(u"settings-dark"_s);
        QVERIFY(m_desk->quit());

        start();
        openSettings();
        const Accessible refresh = m_reader->await(u"combo box"_s, u"1 hour"_s);
        QCOMPARE(refresh.labels, QStringList{u"Refresh"_s});
        QVERIFY(!m_reader->await(u"check box"_s, u"Show urgent-renewal badge"_s).is(u"checked"));
        QCOMPARE(m_reader->await(u"combo box"_s, u"Dark"_s).labels, QStringList{u"Appearance"_s});
        QVERIFY(m_reader->await(u"check box"_s, u"Launch at login"_s).is(u"checked"));
        QVERIFY(m_reader->await(u"check box"_s, u"Enable notifications"_s).is(u"checked"));
        QCOMPARE(m_reader->await(u"spin button"_s, u"Remind me"_s).value, u"5 days before"_s);
    }

    void shouldShowATestAndRemindersThatLeadToTheirPages()
    {
        m_dunst->start();
        m_desk->lab().startMonitor();
        m_desk->signIn();
        start();
        openSettings();
        m_typist->use(u"Enable notifications"_s);
        // Of what renews today.
        DesktopLab::await("a reminder", [&] { return sent("Northlight Video renews soon"); });
        DesktopLab::await("it on the screen", [&] { return m_dunst->displayedCount() > 0; });
        m_desk->keepPicture(u"reminder"_s);
        QVERIFY(m_desk->openedPages().isEmpty());
        m_dunst->click();
        m_desk->awaitPage();
        const QByteArrayList pages = m_desk->openedPages();
        QVERIFY2(pages.constFirst().startsWith(m_desk->service().baseUrl().toEncoded() + "subscriptions/")
                && pages.constFirst().endsWith("/edit"),
            pages.constFirst().constData());

        m_typist->use(u"Enable notifications"_s, u"shift+Tab"_s);
        DesktopLab::await(
            "the end of the reminders", [&] { return !pendingReminders().contains("orbitledge.renewal."); });
        m_dunst->closeAll();
        m_dunst->awaitDisplayed(0);
        m_typist->use(u"Send Test Notification"_s);
        m_reader->await(u"label"_s, u"Test notification sent \u2014 it should appear in a moment."_s);
        m_dunst->awaitDisplayed(1);
        QVERIFY(sent("Renewal reminders are working."));
        m_desk->keepPicture(u"test-notification"_s);
        // It leads nowhere.
        const qsizetype choices = m_desk->lab().monitored().count("member=ActionInvoked");
        m_dunst->click();
        DesktopLab::await("the choice",
            [&] { return m_desk->lab().monitored().count("member=ActionInvoked") == choices + 1; });
        m_typist->goTo(u"Remind me"_s, u"shift+Tab"_s); // it has had the time to
        QCOMPARE(m_desk->openedPages(), pages);
    }

    void shouldLeaveNothingOfTheSessionBehind()
    {
        m_dunst->start();
        m_desk->signIn();
        QVERIFY(keptSession().contains("Orbitledge session"));
        start();
        openSettings();
        m_typist->use(u"Enable notifications"_s);
        DesktopLab::await(
            "planned reminders", [&] { return pendingReminders().contains("orbitledge.renewal."); });
        const QString snapshot = fileOf("XDG_DATA_HOME", u"subscription-snapshot-v1.json"_s);
        QVERIFY(QFile::exists(snapshot));
        // As if one had been shown: those of the sample account have no addresses.
        const QString logos = fileOf("XDG_CACHE_HOME", u"logos"_s);
        QVERIFY(QDir().mkpath(logos));
        QFile logo(logos + u'/' + QString(64, u'a'));
        QVERIFY(logo.open(QIODevice::WriteOnly) && logo.write("logo") > 0);
        logo.close();

        m_typist->use(u"Sign Out"_s);
        m_reader->awaitGone(u"push button"_s, u"Sign Out"_s);
        m_desk->keepPicture(u"signed-out"_s);
        QVERIFY2(!keptSession().contains("Orbitledge session"), keptSession().constData());
        QVERIFY(!QFile::exists(snapshot));
        DesktopLab::await("the logos to go", [&] { return !QFile::exists(logos); });
        DesktopLab::await(
            "the reminders to go", [&] { return !pendingReminders().contains("orbitledge.renewal."); });
        QVERIFY(!contentOf(fileOf("XDG_CONFIG_HOME", u"settings.json"_s)).contains("immediateLedger"));
        // Nowhere: neither who it was, nor what they subscribe to.
        for (const char *const variable :
            {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME"}) {
            QDirIterator files(
                fileOf(variable, {}), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
            while (files.hasNext()) {
                const QString path = files.next();
                const QByteArray content = contentOf(path);
                QVERIFY2(!content.contains(QByteArray(DemoService::email.data()))
                        && !content.contains("Quiet Meadow"),
                    qPrintable(path));
            }
        }
    }

    void shouldOpenWhileNobodyIsSignedInAndThereIsNoTray()
    {
        start();
        m_reader->awaitFocus(u"text"_s, u"Email"_s);
        openSettings();
        m_reader->await(u"push button"_s, u"Quit Orbitledge"_s);
        m_typist->press(u"Escape"_s);
        m_desk->awaitPanel(true);
        // By the menu of the window as well.
        m_typist->goTo(u"Open Orbitledge on the web"_s);
        m_typist->press(u"Menu"_s);
        m_typist->press(u"Down"_s);
        m_reader->awaitEvent(u"state-changed"_s, u"focused"_s, u"Settings"_s);
        m_desk->keepPicture(u"menu"_s);
        m_typist->press(u"Return"_s);
        m_desk->desk().awaitActive(settingsTitle);
        m_typist->use(u"Quit Orbitledge"_s);
        QVERIFY(awaitEnd(*m_desk->program()));
        QCOMPARE(m_desk->program()->exitCode(), 0);
    }
};

ORBITLEDGE_TEST_MAIN(SettingsProgramTest)
#include "SettingsProgramTest.moc"
