// The whole program in sessions where something is missing or out of the ordinary.

#include "support/ProgramDesk.h"
#include "support/TestMain.h"

#include <QDateTime>
#include <QFileInfo>

#include <optional>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

class HardshipsTest : public QObject {
    Q_OBJECT

private:
    std::optional<ProgramDesk> m_session;

    /// Opens the page of the first row by the keyboard, which tells that the data are there. Keys that come
    /// before them do nothing.
    [[nodiscard]] QByteArray pageOfFirstRow()
    {
        m_session->desk().pressUntil({u"Tab"_s, u"Home"_s, u"Return"_s}, "the page",
            [this] { return !m_session->openedPages().isEmpty(); });
        return m_session->openedPages().constFirst();
    }

    /// Where the service has the pages of subscriptions.
    [[nodiscard]] QByteArray pages() { return m_session->service().baseUrl().toEncoded() + "subscriptions/"; }

    [[nodiscard]] QDateTime lastFetch() const
    {
        return QFileInfo(m_session->environment().value(u"XDG_DATA_HOME"_s)
            + u"/app.orbitledge.Orbitledge/subscription-snapshot-v1.json"_s)
            .lastModified();
    }
    void awaitFetchAfter(const QDateTime &before)
    {
        DesktopLab::await("the data to be fetched", [&] { return lastFetch() > before; });
    }

private Q_SLOTS:
    void init()
    {
        m_session.emplace();
        m_session->desk().startWindowManager(XfceDesk::Compositing::Off);
    }
    void cleanup()
    {
        if (QTest::currentTestFailed())
            m_session->keepPicture(u"hardship-failure"_s);
        m_session.reset();
    }

    void shouldOpenWithoutASessionBus_data()
    {
        QTest::addColumn<QString>("address");
        QTest::newRow("none") << QString();
        QTest::newRow("one that does not answer") << u"unix:path=/dev/null"_s;
    }
    void shouldOpenWithoutASessionBus()
    {
        QFETCH(const QString, address);
        m_session->unset("DBUS_SESSION_BUS_ADDRESS");
        // Where no address is given, one is looked for in this folder.
        const QString runtime = m_session->lab().path(u"another-runtime"_s);
        QVERIFY(QDir().mkpath(runtime));
        QVERIFY(QFile::setPermissions(runtime, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        m_session->set("XDG_RUNTIME_DIR", runtime);
        if (!address.isEmpty())
            m_session->set("DBUS_SESSION_BUS_ADDRESS", address);
        m_session->start();
        m_session->awaitPanel(true);
        m_session->keepPicture(u"no-bus"_s);
        QVERIFY(m_session->quit());
    }

    void shouldShowItsDataWhereNothingCanBeWritten()
    {
        m_session->signIn();
        // A folder cannot be made below a file; rights would not stop the administrator.
        for (const char *variable :
            {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME"})
            m_session->set(variable, u"/dev/null/nothing"_s);
        m_session->start();
        m_session->awaitPanel(true);
        QVERIFY(pageOfFirstRow().startsWith(pages()));
        QVERIFY(m_session->quit());
    }

    void shouldKeepItsFilesWhereTheSessionSaysSo()
    {
        const QString elsewhere = m_session->lab().path(u"else where/ö"_s);
        for (const char *variable : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME"})
            m_session->set(variable, elsewhere + u'/' + QString::fromLatin1(variable));
        m_session->signIn();
        m_session->start();
        m_session->awaitPanel(true);
        QVERIFY(pageOfFirstRow().startsWith(pages()));
        QVERIFY(QFile::exists(
            elsewhere + u"/XDG_DATA_HOME/app.orbitledge.Orbitledge/subscription-snapshot-v1.json"_s));
        QVERIFY(m_session->quit());
        QVERIFY(QDir(m_session->environment().value(u"HOME"_s))
                .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)
                .isEmpty());
    }

    void shouldWaitForAKeyringThatIsLocked()
    {
        m_session->signIn();
        const QDateTime before = lastFetch();
        m_session->lab().stopKeyring();
        m_session->lab().startKeyring(DesktopLab::Keyring::Locked);
        m_session->start();
        m_session->lab().answerPrompt(DesktopLab::keyringPassword());
        awaitFetchAfter(before);
        m_session->awaitPanel(true);
        QVERIFY(pageOfFirstRow().startsWith(pages()));
        QVERIFY(m_session->quit());
    }

    void shouldWaitForAKeyringThatComesLate()
    {
        m_session->signIn();
        const QDateTime before = lastFetch();
        m_session->lab().stopKeyring();
        m_session->start();
        m_session->awaitPanel(true);
        m_session->lab().startKeyring(DesktopLab::Keyring::Unlocked);
        awaitFetchAfter(before);
        QVERIFY(pageOfFirstRow().startsWith(pages()));
        QVERIFY(m_session->quit());
    }

    void shouldGoOnWhenTheKeyringIsBack()
    {
        m_session->signIn();
        m_session->desk().startBar();
        m_session->start({u"--background"_s});
        const QPoint icon = m_session->desk().awaitBadge().center();
        m_session->lab().killKeyring();
        m_session->desk().click(icon);
        m_session->awaitPanel(true);
        m_session->keepPicture(u"keyring-died"_s);
        m_session->desk().press(u"Escape"_s);
        m_session->awaitPanel(false);
        m_session->lab().startKeyring(DesktopLab::Keyring::Unlocked);
        const QDateTime before = lastFetch();
        QVERIFY(before.isValid());
        m_session->desk().click(icon);
        awaitFetchAfter(before);
        m_session->awaitPanel(true);
        m_session->desk().awaitBadge();
        QVERIFY(m_session->quit());
    }

    void shouldLeaveABrowserAloneThatTakesItsTime()
    {
        m_session->signIn();
        const QString bin = m_session->lab().path(u"bin"_s);
        QFile browser(bin + u"/xdg-open"_s);
        QVERIFY(browser.open(QIODevice::Append));
        // Until the test lets it go on, or is over.
        browser.write("while [ -d \"${0%/*}\" ] && [ ! -e \"${0%/*}/go\" ]; do sleep 0.1; done\n"
                      "echo shown >>\"$OPENED_PAGES\"\n");
        browser.close();
        m_session->start();
        m_session->awaitPanel(true);
        QVERIFY(pageOfFirstRow().startsWith(pages()));
        QVERIFY(m_session->quit());
        QVERIFY(!m_session->openedPages().contains("shown"));
        QVERIFY(QFile(bin + u"/go"_s).open(QIODevice::WriteOnly));
        DesktopLab::await("the browser", [this] { return m_session->openedPages().contains("shown"); });
    }

    void shouldOpenInAnyLocale_data()
    {
        QTest::addColumn<QString>("locale");
        QTest::newRow("none") << u"C"_s;
        QTest::newRow("one that is not installed") << u"tlh_XX.UTF-8"_s;
        QTest::newRow("Latin-1") << u"de_DE.ISO-8859-1"_s;
        QTest::newRow("written from the right") << u"ar_EG.UTF-8"_s;
    }
    void shouldOpenInAnyLocale()
    {
        QFETCH(const QString, locale);
        m_session->set("LC_ALL", locale);
        m_session->signIn();
        m_session->start();
        m_session->awaitPanel(true);
        m_session->keepPicture(u"locale-"_s + locale);
        QVERIFY(pageOfFirstRow().startsWith(pages()));
        QVERIFY(m_session->quit());
    }
};

ORBITLEDGE_TEST_MAIN(HardshipsTest)
#include "HardshipsTest.moc"
