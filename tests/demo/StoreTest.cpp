#include "demo/Accounts.h"
#include "demo/Database.h"
#include "demo/SampleData.h"
#include "demo/Sessions.h"
#include "support/TestMain.h"

#include <sodium.h>

using namespace orbitledge;
using namespace orbitledge::demo;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

/// What is kept in the database, without the service around it.
class StoreTest : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<Database> m_database;

    int count(const QString &table) const
    {
        QSqlQuery row = m_database->run(u"SELECT count(*) FROM "_s + table);
        return row.next() ? row.value(0).toInt() : -1;
    }

    QUuid addAccount() const
    {
        return Accounts(*m_database)
            .add({.email = u"ben@example.com"_s,
                .password = u"a long password"_s,
                .firstName = u"Ben"_s,
                .lastName = {},
                .currency = u"EUR"_s})
            .value_or(QUuid());
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(sodium_init() >= 0); }

    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        auto database = Database::open(m_folder->path());
        QVERIFY(database);
        m_database = *std::move(database);
    }

    void shouldTakeBackWhatIsInterrupted()
    {
        const QUuid id = addAccount();
        QVERIFY(!id.isNull());
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, m_database->write([this]() -> bool {
            m_database->run(u"DELETE FROM accounts"_s);
            throw std::runtime_error("interrupted");
        }));
        QCOMPARE(count(u"accounts"_s), 1);
        // One that is part of another goes with it.
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, m_database->write([this]() -> bool {
            m_database->write([this] {
                m_database->run(u"DELETE FROM accounts"_s);
                return true;
            });
            throw std::runtime_error("interrupted");
        }));
        QCOMPARE(count(u"accounts"_s), 1);
        QVERIFY(m_database->write([] { return true; }));
    }

    void shouldRefuseWhatRefersToNobody()
    {
        QVERIFY_THROWS_EXCEPTION(
            DatabaseError, m_database->run(u"INSERT INTO sessions VALUES ('x', 'nobody', 0)"_s));
    }

    void shouldForgetExpiredSessions()
    {
        const QUuid id = addAccount();
        Sessions brief(*m_database, -1s);
        Sessions lasting(*m_database, 60s);
        const QByteArray expired = brief.start(id).token;
        QVERIFY(!brief.find(expired));
        QCOMPARE(count(u"sessions"_s), 1);
        const QByteArray live = lasting.start(id).token;
        QCOMPARE(count(u"sessions"_s), 1);
        QCOMPARE(lasting.find(live), id);
        QVERIFY(live != lasting.start(id).token);
        lasting.end(live);
        QVERIFY(!lasting.find(live));
        QCOMPARE(count(u"sessions"_s), 1);
    }

    void shouldSaltPasswords()
    {
        QVERIFY(!addAccount().isNull());
        Accounts accounts(*m_database);
        QVERIFY(accounts.add({.email = u"cleo@example.com"_s,
            .password = u"a long password"_s,
            .firstName = {},
            .lastName = {},
            .currency = u"USD"_s}));
        QSqlQuery rows = m_database->run(u"SELECT DISTINCT password_hash FROM accounts"_s);
        QVERIFY(rows.next() && rows.next());
        QVERIFY(accounts.verify(u"BEN@example.com"_s, u"a long password"_s));
        QVERIFY(!accounts.verify(u"ben@example.com"_s, u"A long password"_s));
        QVERIFY(!accounts.verify(u"ben@example.com"_s, QString(2'000, u'x')));
    }

    void shouldMakeTheSampleOnce()
    {
        Accounts accounts(*m_database);
        Subscriptions subscriptions(*m_database, [] { return LocalDate{2026, 1, 31}; });
        const auto first = ensureSampleAccount(*m_database, accounts, subscriptions);
        const auto second = ensureSampleAccount(*m_database, accounts, subscriptions);
        QVERIFY(first && second);
        QCOMPARE(first->id, second->id);
        QCOMPARE(subscriptions.count(*first), 16);
        populate(subscriptions, *first, 40);
        QCOMPARE(subscriptions.count(*first), 40);
        populate(subscriptions, *first, 20);
        QCOMPARE(subscriptions.count(*first), 40);
    }

    void shouldLeaveTheDataOfANewerVersionAlone()
    {
        m_database->run(u"PRAGMA user_version = 99"_s);
        const auto again = Database::open(m_folder->path());
        QVERIFY(!again);
        QVERIFY(again.error().contains(u"newer"_s));
    }
};

ORBITLEDGE_TEST_MAIN(StoreTest)
#include "StoreTest.moc"
