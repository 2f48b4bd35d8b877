#include "demo/Database.h"

#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlError>

#include <sys/stat.h>

#include <cerrno>
#include <system_error>

using namespace Qt::StringLiterals;

namespace orbitledge::demo {

namespace {

constexpr int schemaVersion = 1;

constexpr std::array schema{
    "CREATE TABLE accounts ("
    " id TEXT PRIMARY KEY,"
    " email TEXT NOT NULL,"
    " email_key TEXT NOT NULL UNIQUE," // case-folded
    " password_hash TEXT NOT NULL,"
    " first_name TEXT NOT NULL,"
    " last_name TEXT NOT NULL,"
    " is_verified INTEGER NOT NULL,"
    " default_currency TEXT NOT NULL,"
    " monthly_budget TEXT,"
    " created_at INTEGER NOT NULL,"
    " updated_at INTEGER NOT NULL) STRICT",
    "CREATE TABLE sessions ("
    " token_hash TEXT PRIMARY KEY,"
    " account_id TEXT NOT NULL REFERENCES accounts(id) ON DELETE CASCADE,"
    " expires_at INTEGER NOT NULL) STRICT",
    "CREATE INDEX sessions_by_expiry ON sessions(expires_at)",
    "CREATE TABLE subscriptions ("
    " position INTEGER PRIMARY KEY," // the order of the list
    " id TEXT NOT NULL UNIQUE,"
    " account_id TEXT NOT NULL REFERENCES accounts(id) ON DELETE CASCADE,"
    " name TEXT NOT NULL,"
    " cost TEXT NOT NULL," // exact decimal digits
    " currency TEXT NOT NULL,"
    " billing_cycle TEXT NOT NULL,"
    " next_billing_date TEXT NOT NULL,"
    " anchor_date TEXT NOT NULL," // the day from which renewals are counted
    " category_id TEXT,"
    " status TEXT NOT NULL,"
    " cancelled_at INTEGER,"
    " cancellation_date TEXT,"
    " trial_end_date TEXT,"
    " trial_notification_days INTEGER,"
    " created_at INTEGER NOT NULL,"
    " updated_at INTEGER NOT NULL) STRICT",
    "CREATE INDEX subscriptions_by_account ON subscriptions(account_id, position)",
};

/// One thread's connections, by file; closed with the thread.
class ThreadConnections {
public:
    ThreadConnections() = default;
    ~ThreadConnections()
    {
        for (const QString &name : std::as_const(m_names))
            QSqlDatabase::removeDatabase(name);
    }
    Q_DISABLE_COPY_MOVE(ThreadConnections)

    QSqlDatabase open(const QString &file)
    {
        const auto known = m_names.constFind(file);
        if (known != m_names.constEnd())
            return QSqlDatabase::database(*known, false);
        const QString name = QUuid::createUuid().toString();
        QSqlDatabase database = QSqlDatabase::addDatabase(u"QSQLITE"_s, name);
        m_names.insert(file, name);
        database.setDatabaseName(file);
        database.setConnectOptions(u"QSQLITE_BUSY_TIMEOUT=15000"_s);
        if (!database.open())
            throw DatabaseError(database.lastError().databaseText());
        for (const auto &pragma :
            {u"PRAGMA foreign_keys = ON"_s, u"PRAGMA journal_mode = WAL"_s, u"PRAGMA synchronous = FULL"_s}) {
            QSqlQuery query(database);
            if (!query.exec(pragma))
                throw DatabaseError(query.lastError().databaseText());
        }
        return database;
    }

private:
    QHash<QString, QString> m_names;
};

// Each thread's own: the toolkit lets a connection be used by the thread only that opened it.
// NOLINTBEGIN(cppcoreguidelines-avoid-non-const-global-variables)
thread_local ThreadConnections threadConnections;
thread_local bool threadIsWriting = false;
// NOLINTEND(cppcoreguidelines-avoid-non-const-global-variables)

QString lastSystemError()
{
    return QString::fromStdString(std::error_code(errno, std::generic_category()).message());
}

} // namespace

bool Database::isWriting()
{
    return threadIsWriting;
}

Database::Transaction::Transaction(Database &database)
    : m_database(database)
{
    m_database.run(u"BEGIN IMMEDIATE"_s);
    threadIsWriting = true;
}

Database::Transaction::~Transaction()
{
    threadIsWriting = false;
    if (!m_isOpen)
        return;
    // Fails where SQLite has taken it back by itself, as it does on a full disk.
    (void)m_database.tryRun(u"ROLLBACK"_s, {});
}

void Database::Transaction::commit()
{
    m_database.run(u"COMMIT"_s);
    m_isOpen = false;
}

tl::expected<std::unique_ptr<Database>, QString> Database::open(const QString &folder)
{
    const auto failed = [&folder](const QString &why) {
        return tl::unexpected(u"The data folder %1 cannot be used: %2"_s.arg(folder, why));
    };
    const QString absolute = QDir(folder).absolutePath();
    const bool isNew = !QDir(absolute).exists();
    if (!QDir().mkpath(absolute))
        return failed(lastSystemError());
    if (isNew && ::chmod(QFile::encodeName(absolute).constData(), S_IRWXU) != 0)
        return failed(lastSystemError());

    std::unique_ptr<Database> database(new Database(absolute + u"/orbitledge-demo.sqlite"_s));
    // Made before SQLite does, so that it never was open to others.
    QFile file(database->m_file);
    if (!file.open(QIODevice::ReadWrite))
        return failed(file.errorString());
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    file.close();

    try {
        database->createTables();
    } catch (const DatabaseError &error) {
        return failed(QString::fromUtf8(error.what()));
    }
    return database;
}

Database::~Database() = default;

tl::expected<QSqlQuery, QString> Database::tryRun(const QString &sql, const QVariantList &values)
{
    QSqlQuery query(threadConnections.open(m_file));
    query.setForwardOnly(true);
    bool done = query.prepare(sql);
    if (done) {
        for (const QVariant &value : values)
            query.addBindValue(value);
        done = query.exec();
    }
    if (!done)
        return tl::unexpected(query.lastError().databaseText());
    return query;
}

QSqlQuery Database::run(const QString &sql, const QVariantList &values)
{
    auto query = tryRun(sql, values);
    if (!query)
        throw DatabaseError(query.error());
    return *std::move(query);
}

void Database::createTables()
{
    write([this] {
        QSqlQuery version = run(u"PRAGMA user_version"_s);
        version.next();
        const int found = version.value(0).toInt();
        version.finish();
        if (found > schemaVersion)
            throw DatabaseError(u"its data were written by a newer version"_s);
        if (found == 0) {
            for (const char *statement : schema)
                run(QString::fromLatin1(statement));
            run(u"PRAGMA user_version = %1"_s.arg(schemaVersion));
        }
        return true;
    });
}

} // namespace orbitledge::demo
