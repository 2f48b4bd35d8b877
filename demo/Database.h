#pragma once

#include "model/Instant.h"
#include "model/LocalDate.h"

#include <QMutex>
#include <QSqlQuery>
#include <QString>
#include <QUuid>
#include <QVariant>

#include <tl/expected.hpp>

#include <memory>
#include <stdexcept>

namespace orbitledge::demo {

/// The database failed where it must not: disk full, file gone, lock held for too long. Nothing that a
/// request can do better; it is told so and nothing of it has been written.
class DatabaseError : public std::runtime_error {
public:
    explicit DatabaseError(const QString &text)
        : std::runtime_error(text.toStdString())
    {
    }
};

/// The service's data: one SQLite file. Any thread may use it; each has a connection of its own, which is
/// closed when the thread ends. What has been committed outlives the process and the machine's power.
class Database {
public:
    /// Opens the file, or makes it: readable by its owner only, in a folder of the same kind.
    static tl::expected<std::unique_ptr<Database>, QString> open(const QString &folder);
    ~Database();
    Q_DISABLE_COPY_MOVE(Database)

    QSqlQuery run(const QString &sql, const QVariantList &values = {});

    /// Runs `work` in one write transaction: what it reads stays true until what it writes is committed.
    /// An exception takes everything back. Inside another one it is a part of that one.
    template <typename Work> auto write(Work &&work)
    {
        if (isWriting())
            return std::forward<Work>(work)();
        const QMutexLocker lock(&m_writers);
        Transaction transaction(*this);
        auto result = std::forward<Work>(work)();
        transaction.commit();
        return result;
    }

private:
    /// A write transaction of this thread, taken back unless it is committed.
    class Transaction {
    public:
        explicit Transaction(Database &database);
        ~Transaction();
        Q_DISABLE_COPY_MOVE(Transaction)
        void commit();

    private:
        Database &m_database;
        bool m_isOpen = true;
    };

    static bool isWriting();
    tl::expected<QSqlQuery, QString> tryRun(const QString &sql, const QVariantList &values);

    explicit Database(QString file)
        : m_file(std::move(file))
    {
    }

    void createTables();

    QString m_file;
    // Waiting here is fair and costs nothing; SQLite's own waiting, which is for other processes, polls.
    QMutex m_writers;
};

// How values are stored: identifiers and dates as their texts, instants as milliseconds, absent ones as NULL.
inline QVariant stored(const QUuid &id)
{
    return id.toString(QUuid::WithoutBraces);
}
inline QVariant stored(const LocalDate &date)
{
    return date.text();
}
inline QVariant stored(const Instant &instant)
{
    return instant.millisecondsSinceEpoch();
}
inline QVariant stored(const QString &text)
{
    // The toolkit would make NULL of a text that was never set.
    return text.isNull() ? QStringLiteral("") : text;
}
inline QVariant stored(qint64 number)
{
    return number;
}
inline QVariant stored(bool value)
{
    return value ? 1 : 0;
}
template <typename T> QVariant stored(const std::optional<T> &value)
{
    return value ? stored(*value) : QVariant();
}

} // namespace orbitledge::demo
