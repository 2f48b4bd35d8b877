#include "support/DemoService.h"
#include "support/DesktopLab.h"
#include "support/ProbeDriver.h"
#include "support/TestMain.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <optional>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

namespace {

const QString sampleEmail(DemoService::email);

QByteArray encoded(const QString &text)
{
    return text.toUtf8().toPercentEncoding();
}

} // namespace

/// The store with everything real: the service over HTTP, a keyring, files, a session bus.
class StoreTest : public QObject {
    Q_OBJECT

private:
    std::optional<DesktopLab> m_lab;
    std::optional<DemoService> m_service;
    std::unique_ptr<ProbeDriver> m_store;

    void startService()
    {
        // Where it was before, if it was.
        const QStringList port{
            u"--port"_s, QString::number(m_service->baseUrl().isEmpty() ? 0 : m_service->port())};
        if (!m_service->start({}, port))
            qFatal("%s", qPrintable(m_service->problem()));
    }

    /// A new run of the program.
    void startStore()
    {
        m_store.reset();
        QProcessEnvironment environment = m_lab->environment();
        environment.insert(u"ORBITLEDGE_API_URL"_s, m_service->baseUrl().toString());
        m_store = std::make_unique<ProbeDriver>(environment, QStringLiteral(ORBITLEDGE_STORE_PROBE));
    }

    void signIn()
    {
        QCOMPARE(
            m_store->tell("sign-in " + encoded(sampleEmail) + ' ' + encoded(QString(DemoService::password))),
            ""_ba);
    }

    QJsonObject state() { return QJsonDocument::fromJson(m_store->tell("state")).object(); }
    QStringList cancelled() { return texts(state()[u"cancelled"_s]); }
    QStringList names() { return texts(state()[u"names"_s]); }

    static QStringList texts(const QJsonValue &values)
    {
        QStringList texts;
        for (const QJsonValue &value : values.toArray())
            texts.append(value.toString());
        texts.sort();
        return texts;
    }

    [[nodiscard]] QByteArray contentOf(const QString &folder, const QString &name) const
    {
        QFile file(m_lab->environment().value(folder) + u"/app.orbitledge.Orbitledge/"_s + name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    [[nodiscard]] QByteArray cacheFile() const
    {
        return contentOf(u"XDG_DATA_HOME"_s, u"subscription-snapshot-v1.json"_s);
    }
    [[nodiscard]] QByteArray remindersFile() const
    {
        return contentOf(u"XDG_STATE_HOME"_s, u"reminders.json"_s);
    }

    QByteArray keyringItem()
    {
        QProcess search;
        search.setProcessEnvironment(m_lab->environment());
        search.setProcessChannelMode(QProcess::MergedChannels);
        search.start(
            u"secret-tool"_s, {u"search"_s, u"--all"_s, u"server"_s, u"app.orbitledge.Orbitledge"_s});
        return search.waitForFinished() ? search.readAll() : QByteArray();
    }

    /// As a person does who signs out everywhere.
    void endSessionsAtTheService()
    {
        m_lab->run(u"/usr/bin/python3"_s,
            {u"-c"_s,
                u"import sqlite3, sys; base = sqlite3.connect(sys.argv[1]); "
                "base.execute('DELETE FROM sessions'); base.commit()"_s,
                m_service->dataFolder() + u"/orbitledge-demo.sqlite"_s});
    }

private Q_SLOTS:
    void init()
    {
        m_lab.emplace();
        m_lab->startKeyring(DesktopLab::Keyring::Unlocked);
        m_service.emplace();
        startService();
        startStore();
    }
    void cleanup()
    {
        m_store.reset();
        m_service.reset();
        m_lab.reset();
    }

    void shouldGoThroughALifeWithEverything()
    {
        // Nobody is signed in.
        m_store->tell("start");
        QCOMPARE(state()[u"auth"_s], u"signedOut"_s);
        QVERIFY(names().isEmpty());

        // A wrong password is told, and nothing is kept.
        QVERIFY(!m_store->tell("sign-in " + encoded(sampleEmail) + " wrong").isEmpty());
        QCOMPARE(state()[u"auth"_s], u"signedOut"_s);
        QVERIFY(!state()[u"error"_s].toString().isEmpty());
        QVERIFY(!keyringItem().contains("Orbitledge"));

        signIn();
        QCOMPARE(state()[u"auth"_s], u"signedIn"_s);
        QCOMPARE(state()[u"user"_s], sampleEmail);
        QCOMPARE(names().size(), 16);
        QVERIFY(keyringItem().contains("Orbitledge session"));
        QVERIFY(cacheFile().contains("Northlight Video"));

        // What is changed here is changed there, and back.
        const QStringList before = cancelled();
        QVERIFY(!before.contains(u"Tidewater Music"_s));
        m_store->tell("cancel Tidewater%20Music");
        QVERIFY(cancelled().contains(u"Tidewater Music"_s));
        QCOMPARE(state()[u"error"_s], QJsonValue());
        m_store->tell("uncancel Tidewater%20Music");
        QCOMPARE(cancelled(), before);

        QCOMPARE(m_store->tell("add Paper%20Lantern 12.34"), ""_ba);
        QVERIFY(names().contains(u"Paper Lantern"_s));
        QCOMPARE(names().size(), 17);
        QVERIFY(cacheFile().contains("Paper Lantern"));

        m_store->tell("sign-out");
        QCOMPARE(state()[u"auth"_s], u"signedOut"_s);
        QVERIFY(names().isEmpty());
        QVERIFY(cacheFile().isEmpty());
        QVERIFY(!keyringItem().contains("Orbitledge"));
    }

    void shouldKeepTheDataWhileTheServiceIsGone()
    {
        m_store->tell("start");
        signIn();
        const QJsonObject before = state();

        m_service->kill();
        m_store->tell("refresh");
        const QJsonObject offline = state();
        QCOMPARE(offline[u"offline"_s], true);
        QCOMPARE(offline[u"error"_s], u"Could not connect to the server."_s);
        QCOMPARE(offline[u"auth"_s], u"signedIn"_s);
        QCOMPARE(offline[u"refresh"_s], u"idle"_s);
        QCOMPARE(offline[u"names"_s], before[u"names"_s]);
        QCOMPARE(offline[u"fetched"_s], before[u"fetched"_s]);
        // What cannot be done changes nothing.
        m_store->tell("cancel Tidewater%20Music");
        QCOMPARE(state()[u"cancelled"_s], before[u"cancelled"_s]);

        startService();
        m_store->tell("refresh");
        const QJsonObject after = state();
        QCOMPARE(after[u"offline"_s], false);
        QCOMPARE(after[u"error"_s], QJsonValue());
        QVERIFY(after[u"fetched"_s].toDouble() > before[u"fetched"_s].toDouble());
        m_store->tell("cancel Tidewater%20Music");
        QVERIFY(cancelled().contains(u"Tidewater Music"_s));
    }

    void shouldSayThatTheSessionExpired()
    {
        m_store->tell("start");
        signIn();
        endSessionsAtTheService();
        m_store->tell("refresh");
        QCOMPARE(state()[u"auth"_s], u"signedOut"_s);
        QCOMPARE(state()[u"error"_s], u"Your session has expired. Please sign in again."_s); // its own words
        QVERIFY(names().isEmpty());
        QVERIFY(!keyringItem().contains("Orbitledge"));
        // The next run finds nobody signed in, whatever is in the file.
        startStore();
        m_store->tell("start");
        QCOMPARE(state()[u"auth"_s], u"signedOut"_s);
        QVERIFY(names().isEmpty());

        signIn();
        QCOMPARE(names().size(), 16);
        QCOMPARE(state()[u"error"_s], QJsonValue());
    }

    void shouldShowWhatWasSavedBeforeTheNetworkAnswers()
    {
        signIn();
        const QJsonObject before = state();
        m_store->quit();
        m_service->freeze();
        startStore();
        m_store->begin("start");
        DesktopLab::await("the saved data", [this] { return state()[u"refresh"_s] == u"refreshing"_s; });
        QCOMPARE(state()[u"auth"_s], u"signedIn"_s);
        QCOMPARE(state()[u"names"_s], before[u"names"_s]);
        const auto second = [](const QJsonObject &shown) { return shown[u"fetched"_s].toInteger() / 1000; };
        QCOMPARE(second(state()), second(before)); // the file keeps no more
        QVERIFY(!m_store->hasSaid("start"));

        m_service->resume();
        m_store->awaitLine("start");
        QVERIFY(state()[u"fetched"_s].toDouble() > before[u"fetched"_s].toDouble());
        QCOMPARE(state()[u"refresh"_s], u"idle"_s);
    }

    void shouldShowWhatWasSavedWithoutTheService()
    {
        signIn();
        const QJsonObject before = state();
        m_store->quit();
        m_service->kill();
        startStore();
        m_store->tell("start");
        QCOMPARE(state()[u"auth"_s], u"signedIn"_s);
        QCOMPARE(state()[u"offline"_s], true);
        QCOMPARE(state()[u"names"_s], before[u"names"_s]);
    }

    void shouldKeepTheRemindersInStep()
    {
        m_store->tell("start");
        signIn();
        QVERIFY(!remindersFile().contains("Kettle"));
        m_store->tell("reminders on");
        QCOMPARE(state()[u"reminderFailure"_s], QJsonValue());
        QVERIFY(remindersFile().contains("Kettle"));
        m_store->tell("cancel Kettle%20%26%20Bean");
        QVERIFY(!remindersFile().contains("Kettle"));
        m_store->tell("uncancel Kettle%20%26%20Bean");
        QVERIFY(remindersFile().contains("Kettle"));
        m_store->tell("sign-out");
        QVERIFY(!remindersFile().contains("Kettle"));
    }

    void shouldSurviveAnythingInTheMiddleOfARefresh()
    {
        m_store->tell("start");
        signIn();
        m_service->freeze();
        m_store->begin("refresh");
        DesktopLab::await("the fetch", [this] { return state()[u"refresh"_s] == u"refreshing"_s; });
        // The service ends while it is asked.
        m_service->kill();
        m_store->awaitLine("refresh");
        QCOMPARE(state()[u"offline"_s], true);
        QCOMPARE(names().size(), 16);

        // Who signs out in the middle stays signed out.
        startService();
        m_service->freeze();
        m_store->begin("refresh");
        DesktopLab::await("the fetch", [this] { return state()[u"refresh"_s] == u"refreshing"_s; });
        m_store->begin("sign-out");
        m_service->resume();
        m_store->awaitLine("sign-out");
        m_store->awaitLine("refresh");
        QCOMPARE(state()[u"auth"_s], u"signedOut"_s);
        QVERIFY(names().isEmpty());
        QVERIFY(cacheFile().isEmpty());
    }
};

ORBITLEDGE_TEST_MAIN(StoreTest)
#include "StoreTest.moc"
