#include "model/UuidText.h"
#include "state/CacheSnapshot.h"
#include "support/CommandHarness.h"
#include "support/SampleRecords.h"
#include "support/TestMain.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

class RemindersCommandTest : public QObject {
    Q_OBJECT

private:
    std::optional<CommandHarness> m_harness;
    QString m_first;
    QString m_second;

    QJsonObject json(const QList<QByteArray> &options = {})
    {
        if (m_harness->run(QList<QByteArray>{"reminders", "--json"} + options) != ExitCode::Success)
            return {};
        return QJsonDocument::fromJson(m_harness->output).object();
    }

private Q_SLOTS:
    void init()
    {
        m_harness.emplace();
        m_harness->variables["ORBITLEDGE_WEB_URL"] = "https://example.com/";
        CacheSnapshot snapshot = sampleSnapshot(2);
        snapshot.subscriptions[0].nextBillingDate = {2026, 3, 25};
        snapshot.subscriptions[1].nextBillingDate = {2026, 3, 19};
        m_first = uuidText(snapshot.subscriptions[0].id);
        m_second = uuidText(snapshot.subscriptions[1].id);
        QVERIFY(m_harness->files->replace(m_harness->cacheFile, encodeCacheSnapshot(snapshot)));
    }

    void shouldTellPeople()
    {
        QCOMPARE(m_harness->run({"reminders"}), ExitCode::Success);
        QCOMPARE(m_harness->output,
            "at once       Subscription 1 renews soon: \u20ac9.99 charges tomorrow.\n"
            "Mar 22 09:00  Subscription 0 renews soon: \u20ac9.99 charges in 7 days.\n"_ba);
        QCOMPARE(m_harness->errors, ""_ba);
    }

    void shouldTellPrograms()
    {
        const QString key = m_first + u".2026-03-25.3"_s;
        const QJsonObject expected{
            {u"plans"_s,
                QJsonArray{
                    QJsonObject{{u"key"_s, key}, {u"identifier"_s, u"orbitledge.renewal."_s + key},
                        {u"title"_s, u"Subscription 0 renews soon"_s},
                        {u"body"_s, u"\u20ac9.99 charges in 7 days."_s},
                        {u"destinationURL"_s, u"https://example.com/subscriptions/"_s + m_first + u"/edit"_s},
                        {u"delivery"_s, QJsonObject{{u"scheduled"_s, u"2026-03-22T08:00:00Z"_s}}}},
                    QJsonObject{{u"key"_s, QString(m_second + u".2026-03-19.3"_s)},
                        {u"identifier"_s, QString(u"orbitledge.renewal."_s + m_second + u".2026-03-19.3"_s)},
                        {u"title"_s, u"Subscription 1 renews soon"_s},
                        {u"body"_s, u"\u20ac9.99 charges tomorrow."_s},
                        {u"destinationURL"_s,
                            u"https://example.com/subscriptions/"_s + m_second + u"/edit"_s},
                        {u"delivery"_s, u"immediate"_s}},
                }},
            {u"ledger"_s, QJsonArray{QString(m_second + u".2026-03-19.3"_s)}},
            {u"skippedOverBudget"_s, 0},
        };
        QCOMPARE(json({"--time-zone", "Europe/Berlin"}), expected);
    }

    void shouldUseThePersonsSettings()
    {
        m_harness->defaults->values[u"settings.notificationLeadDays"_s] = qint64{1};
        m_harness->defaults->values[u"notifications.immediateLedger"_s]
            = QStringList{m_second + u".2026-03-19.1"_s, u"gone"_s};
        const auto before = m_harness->defaults->values;
        const QJsonObject object = json();
        const QJsonArray plans = object[u"plans"_s].toArray();
        QCOMPARE(plans.size(), 1);
        QCOMPARE(plans[0].toObject()[u"key"_s].toString(), m_first + u".2026-03-25.1"_s);
        QCOMPARE(object[u"ledger"_s].toArray(), (QJsonArray{QString(m_second + u".2026-03-19.1"_s)}));
        // It only looks.
        QVERIFY(m_harness->defaults->values == before);
    }

    void shouldUseWhatIsGivenInstead()
    {
        m_harness->defaults->values[u"settings.notificationLeadDays"_s] = qint64{1};
        QVERIFY(m_harness->files->replace("/tmp/ledger", "[\"" + m_second.toUtf8() + ".2026-03-19.14\"]"));
        const QJsonObject object = json({"--lead-days", "99", "--ledger", "/tmp/ledger"});
        const QJsonArray plans = object[u"plans"_s].toArray();
        QCOMPARE(plans.size(), 1);
        QCOMPARE(plans[0].toObject()[u"key"_s].toString(), m_first + u".2026-03-25.14"_s);
        QCOMPARE(json({"--lead-days=-5"})[u"plans"_s].toArray()[0].toObject()[u"key"_s].toString(),
            m_first + u".2026-03-25.0"_s);
    }

    void shouldSortTheLedger()
    {
        QVERIFY(m_harness->files->replace("/tmp/ledger", "[]"));
        QByteArray shown;
        CacheSnapshot snapshot = sampleSnapshot(20);
        for (Subscription &subscription : snapshot.subscriptions)
            subscription.nextBillingDate = {2026, 3, 19};
        QVERIFY(m_harness->files->replace(m_harness->cacheFile, encodeCacheSnapshot(snapshot)));
        QStringList keys;
        for (const QJsonValue key : json({"--ledger", "/tmp/ledger"})[u"ledger"_s].toArray())
            keys.append(key.toString());
        QCOMPARE(keys.size(), 20);
        QVERIFY(std::ranges::is_sorted(keys));
    }

    void shouldSayThatNothingIsPlanned()
    {
        QVERIFY(m_harness->files->replace(m_harness->cacheFile, encodeCacheSnapshot(sampleSnapshot(0))));
        QCOMPARE(m_harness->run({"reminders"}), ExitCode::Success);
        QCOMPARE(m_harness->output, "No reminders are planned.\n"_ba);
    }

    void shouldSayHowManyWait()
    {
        CacheSnapshot snapshot = sampleSnapshot(64);
        for (Subscription &subscription : snapshot.subscriptions)
            subscription.nextBillingDate = {2026, 4, 19};
        QVERIFY(m_harness->files->replace(m_harness->cacheFile, encodeCacheSnapshot(snapshot)));
        QCOMPARE(m_harness->run({"reminders"}), ExitCode::Success);
        QVERIFY(m_harness->output.endsWith("\n4 more, which come later, wait until there is room.\n"));
        QCOMPARE(m_harness->output.count('\n'), 61);
    }

    void shouldRefuseWhatItCannotRead_data()
    {
        QTest::addColumn<QList<QByteArray>>("options");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QByteArray>("reason");
        const auto row = [](const QList<QByteArray> &options, ExitCode exitCode, const char *reason) {
            QTest::newRow(reason) << options << static_cast<int>(exitCode) << QByteArray(reason);
        };
        row({"--lead-days", "soon"}, ExitCode::Usage, "reminders: \"soon\" is not a number of days");
        row({"--lead-days"}, ExitCode::Usage, "reminders: --lead-days needs a value");
        row({"--ledger="}, ExitCode::Usage, "reminders: --ledger needs the name of a file");
        row({"--loud"}, ExitCode::Usage, "reminders: the option \"--loud\" is not known");
        row({"--ledger", "/missing"}, ExitCode::Failure, "/missing: No such file");
        row({"--ledger", "/list"}, ExitCode::Failure, "/list: A JSON array of texts was expected");
        row({"--snapshot", "/missing"}, ExitCode::Failure, "/missing: No such file");
    }
    void shouldRefuseWhatItCannotRead()
    {
        QFETCH(QList<QByteArray>, options);
        QFETCH(int, exitCode);
        QFETCH(QByteArray, reason);
        QVERIFY(m_harness->files->replace("/list", "[1]"));
        QCOMPARE(static_cast<int>(m_harness->run(QList<QByteArray>{"reminders"} + options)), exitCode);
        QCOMPARE(m_harness->errors, "orbitledge: " + reason + '\n');
        QCOMPARE(m_harness->output, ""_ba);
    }

    void shouldRefuseAnUnsafeWebAddress()
    {
        m_harness->variables["ORBITLEDGE_WEB_URL"] = "http://example.com/";
        QCOMPARE(m_harness->run({"reminders"}), ExitCode::Failure);
        QVERIFY(m_harness->errors.startsWith("orbitledge: ORBITLEDGE_WEB_URL must begin with https://"));
    }

    void shouldHelp()
    {
        QCOMPARE(m_harness->run({"reminders", "--help"}), ExitCode::Success);
        QVERIFY(m_harness->output.startsWith("Usage: orbitledge reminders"));
        for (const QByteArray &line : m_harness->output.split('\n'))
            QVERIFY2(line.size() <= 80, line.constData());
    }
};

ORBITLEDGE_TEST_MAIN(RemindersCommandTest)
#include "RemindersCommandTest.moc"
