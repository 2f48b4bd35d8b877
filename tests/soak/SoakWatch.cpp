#include "soak/SoakWatch.h"

#include "model/SubscriptionRules.h"
#include "model/UuidText.h"
#include "state/CacheSnapshot.h"
#include "support/ProcessActivity.h"

#include <QDirIterator>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace orbitledge::testing {

using namespace Qt::StringLiterals;

namespace {

#ifdef __SANITIZE_ADDRESS__
constexpr double longestSilence = 300; // milliseconds; what is checked takes about three times as long
constexpr qint64 recordingTime = 3000;
constexpr qint64 mostGrowth = qint64{48} << 10; // KiB
#else
constexpr double longestSilence = 100;
constexpr qint64 recordingTime = 1000;
constexpr qint64 mostGrowth = qint64{8} << 10;
#endif
constexpr int mostDescriptors = 80;
constexpr int mostThreads = 20;
/// One for the service, and one for logos.
constexpr int mostHelpers = 2;

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

int entriesOf(const QString &folder)
{
    return static_cast<int>(
        QDir(folder).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size());
}

QByteArrayList helpersOf(qint64 process)
{
    QByteArrayList helpers;
    for (const QString &thread :
        QDir(u"/proc/%1/task"_s.arg(process)).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        for (const QByteArray &child :
            contents(u"/proc/%1/task/%2/children"_s.arg(process).arg(thread)).simplified().split(' ')) {
            if (!child.isEmpty()
                && contents(u"/proc/%1/comm"_s.arg(QString::fromLatin1(child))).startsWith("orbitledge-http"))
                helpers.append(child);
        }
    }
    return helpers;
}

QString inWords(const char *what, const PingWatch::Figures &figures)
{
    return u"%1: %2 answers, median %3 ms, 99 of 100 within %4 ms, longest %5 ms"_s
        .arg(QLatin1StringView(what))
        .arg(figures.count)
        .arg(figures.median, 0, 'f', 1)
        .arg(figures.percentile99, 0, 'f', 1)
        .arg(figures.longest, 0, 'f', 1);
}

} // namespace

QString SoakWatch::glance()
{
    if (!m_desk.problem().isEmpty())
        return m_desk.problem();
    if (const QStringList overlaps = m_desk.proxy().overlaps(); !overlaps.isEmpty())
        return overlaps.constFirst();
    if (const QString problem = lookAtProcess(); !problem.isEmpty())
        return problem;
    return lookAtCache();
}

QString SoakWatch::lookAtProcess()
{
    if (!m_desk.isRunning())
        return u"it ended by itself; it said: "_s + QString::fromUtf8(m_desk.words());
    if (const QByteArray words = m_desk.words(); !words.isEmpty())
        return u"it said on its standard error: "_s + QString::fromUtf8(words);
    const double longest = m_desk.pings().takeLongest();
    m_longest = std::max(m_longest, longest);
    // Where also a program that does nothing was kept waiting for half as long, it is the machine.
    if (longest > longestSilence && longest > 2 * m_desk.pings().bare().longest)
        return u"it did not answer for %1 ms"_s.arg(longest);
    return {};
}

QString SoakWatch::lookAtCache()
{
    const QFileInfo file(m_desk.cacheFile());
    if (!file.exists() || file.lastModified() == m_cacheTime)
        return {};
    QFile cache(m_desk.cacheFile());
    if (!cache.open(QIODevice::ReadOnly))
        return {}; // it was removed since
    m_cacheTime = file.lastModified();
    ++m_cachesRead;
    const auto snapshot = decodeCacheSnapshot(cache.readAll());
    return snapshot ? QString() : u"the saved data cannot be read: "_s + snapshot.error().errorDescription();
}

QString SoakWatch::look()
{
    constexpr int now = 4; // it takes a while to read all files
    m_desk.collectCommands();
    if (const auto secret = m_desk.notifications().read(m_desk.secrets()))
        return u"a secret passed over the bus"_s;
    if (const QString problem = lookAtResources(); !problem.isEmpty())
        return problem;
    if (const QString problem = lookAtNotifications(false); !problem.isEmpty())
        return problem;
    return ++m_looks % now == 0 ? lookForSecrets() : QString();
}

QString SoakWatch::lookForSecrets() const
{
    QByteArrayList secrets = m_desk.secrets();
    const QByteArrayList plain = secrets;
    for (const QByteArray &secret : plain)
        secrets.append(secret.toBase64(QByteArray::OmitTrailingEquals));
    const auto holds = [&secrets](const QByteArray &content) {
        return std::ranges::any_of(
            secrets, [&](const QByteArray &secret) { return content.contains(secret); });
    };
    for (const char *folder : {"home", "config", "data", "state", "cache", "runtime"}) {
        QDirIterator files(m_desk.path(QString::fromLatin1(folder)), QDir::Files | QDir::Hidden,
            QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString file = files.next();
            if (holds(file.toUtf8()) || holds(contents(file)))
                return u"a secret is in "_s + file;
        }
    }
    QByteArrayList processes = helpersOf(m_desk.process());
    processes.append(QByteArray::number(m_desk.process()));
    for (const QByteArray &process : std::as_const(processes)) {
        for (const char *what : {"cmdline", "environ"}) {
            if (holds(contents(u"/proc/%1/%2"_s.arg(QString::fromLatin1(process), QLatin1StringView(what)))))
                return u"a secret is in the %1 of a process"_s.arg(QLatin1StringView(what));
        }
    }
    return {};
}

QString SoakWatch::lookAtResources()
{
    const qint64 process = m_desk.process();
    if (!m_desk.isRunning())
        return {};
    const QString folder = u"/proc/%1/"_s.arg(process);
    const Sample sample{
        .life = m_desk.lives(),
        .memory = ProcessActivity::memory(process),
        .descriptors = entriesOf(folder + u"fd"_s),
        .threads = entriesOf(folder + u"task"_s),
    };
    m_samples.push_back(sample);
    if (sample.descriptors > mostDescriptors)
        return u"it has %1 descriptors open"_s.arg(sample.descriptors);
    if (sample.threads > mostThreads)
        return u"it has %1 threads"_s.arg(sample.threads);
    const auto helpers = static_cast<int>(helpersOf(process).size());
    m_mostHelpers = std::max(m_mostHelpers, helpers);
    return helpers > mostHelpers ? u"it has %1 helpers"_s.arg(helpers) : QString();
}

QString SoakWatch::lookAtNotifications(bool isAtTheEnd)
{
    // While somebody signs out it is not known yet when the program forgets.
    if (!m_desk.collectCommands() && !isAtTheEnd)
        return {};
    const auto verdict = m_desk.notifications().verdict(recordingTime);
    return verdict.wrong.isEmpty() ? QString() : QString::fromUtf8(verdict.wrong.constFirst());
}

/// Of each life that was long enough: between its settling and its end.
QString SoakWatch::lookAtGrowth() const
{
    constexpr std::ptrdiff_t settling = 40;
    constexpr std::ptrdiff_t several = 10;
    for (auto begin = m_samples.begin(); begin != m_samples.end();) {
        const auto end = std::find_if(
            begin, m_samples.end(), [&](const Sample &sample) { return sample.life != begin->life; });
        if (end - begin >= settling + 2 * several) {
            const auto smallest = [](auto from, auto to) {
                return std::min_element(from, to, [](const Sample &a, const Sample &b) {
                    return a.memory < b.memory;
                })->memory;
            };
            const qint64 growth
                = smallest(end - several, end) - smallest(begin + settling, begin + settling + several);
            if (growth > mostGrowth)
                return u"it grew by %1 KiB over %2 steps"_s.arg(growth).arg(end - begin - settling);
        }
        begin = end;
    }
    return {};
}

QString SoakWatch::lookAtTheEnd()
{
    const auto isEverythingShown = [this] {
        const auto snapshot = decodeCacheSnapshot(contents(m_desk.cacheFile()));
        if (!snapshot)
            return false;
        const QByteArray reminders = contents(m_desk.remindersFile());
        QStringList shown;
        for (const QJsonValue value : QJsonDocument::fromJson(reminders)[u"delivered"_s].toArray())
            shown.append(value[u"identifier"_s].toString());
        return std::ranges::all_of(snapshot->subscriptions, [&shown](const Subscription &subscription) {
            const bool isOurs = subscription.name.startsWith(u"soak ");
            const QString prefix = u"orbitledge.renewal."_s + uuidText(subscription.id);
            return !isOurs || !isActive(subscription)
                || std::ranges::any_of(
                    shown, [&](const QString &identifier) { return identifier.startsWith(prefix); });
        });
    };
    constexpr int patience = 120'000;
    if (!QTest::qWaitFor(isEverythingShown, patience))
        return u"a reminder was not shown"_s;
    if (!QTest::qWaitFor([this] { return helpersOf(m_desk.process()).isEmpty(); }, patience))
        return u"its helper does not go"_s;
    if (const auto secret = m_desk.notifications().read(m_desk.secrets()))
        return u"a secret passed over the bus"_s;
    for (const QString &problem : {lookForSecrets(), lookAtNotifications(true), lookAtGrowth(), glance()}) {
        if (!problem.isEmpty())
            return problem;
    }
    return {};
}

QStringList SoakWatch::figures() const
{
    const auto verdict = m_desk.notifications().verdict(recordingTime);
    QStringList asked;
    const QMap<QByteArray, int> requests = m_desk.proxy().requests();
    for (auto request = requests.cbegin(); request != requests.cend(); ++request)
        asked.append(u"%1 %2"_s.arg(*request).arg(QString::fromLatin1(request.key())));
    QStringList threads;
    for (const QString &thread :
        QDir(u"/proc/%1/task"_s.arg(m_desk.process())).entryList(QDir::Dirs | QDir::NoDotAndDotDot))
        threads.append(QString::fromUtf8(
            contents(u"/proc/%1/task/%2/comm"_s.arg(m_desk.process()).arg(thread)).trimmed()));
    QStringList lines{
        u"threads at the end: "_s + threads.join(u", "_s),
        u"%1 runs of the program, %2 ended by a kill; %3 commands, of which %4 said that they could not"_s
            .arg(m_desk.lives())
            .arg(m_desk.kills())
            .arg(m_desk.commands().first)
            .arg(m_desk.commands().second),
        u"requests: %1; %2 credentials; %3 states of the saved data read; %4 helpers at most; %5 KiB of the bus"_s
            .arg(asked.join(u", "_s))
            .arg(m_desk.secrets().size() - 1)
            .arg(m_cachesRead)
            .arg(m_mostHelpers)
            .arg(m_desk.notifications().bytes() >> 10),
        u"%1 reminders shown, %2 of them again, as they may be"_s.arg(verdict.shown).arg(verdict.again),
        inWords("the program", m_desk.pings().program()),
        inWords("without waiting for a processor", m_desk.pings().programsOwn()),
        inWords("a bare program", m_desk.pings().bare()),
    };
    for (auto begin = m_samples.begin(); begin != m_samples.end();) {
        const auto end = std::find_if(
            begin, m_samples.end(), [&](const Sample &sample) { return sample.life != begin->life; });
        constexpr std::ptrdiff_t worthTelling = 30;
        if (end - begin >= worthTelling) {
            QStringList values;
            for (auto sample = begin; sample < end; sample += std::max<std::ptrdiff_t>(1, (end - begin) / 12))
                values.append(
                    u"%1/%2/%3"_s.arg(sample->memory).arg(sample->descriptors).arg(sample->threads));
            lines.append(u"run %1, %2 steps, KiB/descriptors/threads: %3"_s.arg(begin->life)
                    .arg(end - begin)
                    .arg(values.join(u' ')));
        }
        begin = end;
    }
    return lines;
}

} // namespace orbitledge::testing
