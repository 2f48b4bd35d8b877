#pragma once

#include <QDir>
#include <QFile>
#include <QMap>
#include <QString>

namespace orbitledge::testing {

/// What a process has used up to now, as the kernel tells it.
class ProcessActivity {
public:
    explicit ProcessActivity(qint64 process)
        : m_ticks(readTicks(process))
    {
        const QDir tasks(QStringLiteral("/proc/%1/task").arg(process));
        const QStringList threads = tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        for (const QString &thread : threads) {
            const QByteArray status = contents(tasks.filePath(thread + QStringLiteral("/status")));
            m_wakeUps[thread] = field(status, "voluntary_ctxt_switches:").toLongLong();
            m_names[thread] = QString::fromUtf8(field(status, "Name:"));
        }
    }

    /// Of a hundredth of a second of processor time each.
    [[nodiscard]] qint64 ticksSince(const ProcessActivity &earlier) const
    {
        return m_ticks - earlier.m_ticks;
    }

    /// How often one of its threads slept and woke. One that has ended since woke for that.
    [[nodiscard]] qint64 wakeUpsSince(const ProcessActivity &earlier) const
    {
        qint64 count = 0;
        for (auto thread = earlier.m_wakeUps.cbegin(); thread != earlier.m_wakeUps.cend(); ++thread)
            count += m_wakeUps.contains(thread.key()) ? 0 : 1;
        for (auto thread = m_wakeUps.cbegin(); thread != m_wakeUps.cend(); ++thread)
            count += *thread - earlier.m_wakeUps.value(thread.key());
        return count;
    }

    [[nodiscard]] bool hasThread(const QString &name) const { return m_names.values().contains(name); }

    /// Which threads these were.
    [[nodiscard]] QByteArray describeSince(const ProcessActivity &earlier) const
    {
        QStringList words;
        for (auto thread = m_wakeUps.cbegin(); thread != m_wakeUps.cend(); ++thread) {
            if (const qint64 count = *thread - earlier.m_wakeUps.value(thread.key()); count != 0)
                words.append(m_names.value(thread.key()) + u' ' + QString::number(count));
        }
        return words.join(QStringLiteral(", ")).toUtf8();
    }

    /// Of everything that it holds, in KiB. What it shares counts whole, so that others, which come and go,
    /// make no difference.
    static qint64 memory(qint64 process)
    {
        const QByteArray rollup = contents(QStringLiteral("/proc/%1/smaps_rollup").arg(process));
        return field(rollup, "Rss:").split(' ').constFirst().toLongLong();
    }

private:
    static QByteArray contents(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    static QByteArray field(const QByteArray &text, QByteArrayView name)
    {
        for (const QByteArray &line : text.split('\n')) {
            if (line.startsWith(name))
                return line.sliced(name.size()).trimmed();
        }
        return {};
    }

    /// Of all its threads, also of those that have ended.
    static qint64 readTicks(qint64 process)
    {
        const QByteArray status = contents(QStringLiteral("/proc/%1/stat").arg(process));
        // After the name, which may have spaces.
        const QList<QByteArray> fields = status.sliced(status.lastIndexOf(')') + 2).split(' ');
        constexpr int user = 11;
        constexpr int system = 12;
        return fields.value(user).toLongLong() + fields.value(system).toLongLong();
    }

    qint64 m_ticks;
    QMap<QString, qint64> m_wakeUps;
    QMap<QString, QString> m_names;
};

} // namespace orbitledge::testing
