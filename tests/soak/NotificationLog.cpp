#include "soak/NotificationLog.h"

#include "support/DesktopLab.h"

#include <QDateTime>
#include <QFileInfo>

#include <sys/prctl.h>

#include <algorithm>
#include <csignal>

namespace orbitledge::testing {

using namespace Qt::StringLiterals;

namespace {

QByteArray field(const QByteArray &line, const QByteArray &name)
{
    for (const QByteArray &word : line.split(' ')) {
        if (word.startsWith(name + '='))
            return word.sliced(name.size() + 1);
    }
    return {};
}

qint64 timeOf(const QByteArray &line)
{
    constexpr double perSecond = 1000;
    return static_cast<qint64>(field(line, "time").toDouble() * perSecond);
}

} // namespace

NotificationLog::NotificationLog(const QProcessEnvironment &environment, const QString &file)
    : m_file(file)
{
    m_monitor.setProcessEnvironment(environment);
    m_monitor.setStandardOutputFile(file);
    m_monitor.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
    m_monitor.start(u"dbus-monitor"_s, {u"--session"_s});
    if (!m_monitor.waitForStarted())
        qFatal("dbus-monitor does not start");
    // It writes that it has its name on the bus.
    DesktopLab::await("the bus's monitor", [&] { return QFileInfo(file).size() > 0; });
    if (!m_file.open(QIODevice::ReadOnly))
        qFatal("cannot read what the monitor writes");
}

NotificationLog::~NotificationLog()
{
    m_monitor.kill();
    m_monitor.waitForFinished();
}

qint64 NotificationLog::now()
{
    return QDateTime::currentMSecsSinceEpoch();
}

std::optional<QByteArray> NotificationLog::read(const QByteArrayList &secrets)
{
    constexpr qsizetype longestSecret = 4096;
    const QByteArray fresh = m_file.readAll();
    m_tail = m_tail.right(longestSecret) + fresh;
    QByteArrayList lines = (m_rest + fresh).split('\n');
    m_rest = lines.takeLast();
    for (const QByteArray &line : std::as_const(lines))
        take(line);
    for (const QByteArray &secret : secrets) {
        if (m_tail.contains(secret))
            return secret;
    }
    return std::nullopt;
}

void NotificationLog::take(const QByteArray &line)
{
    if (!line.startsWith(' ')) {
        takeHead(line);
        return;
    }
    if (!m_call)
        return;
    constexpr qsizetype titlePlace = 2; // after the name of the program and that of its icon
    const QByteArray argument = line.trimmed();
    if (argument.startsWith("uint32 "))
        m_isChange = argument != "uint32 0";
    if (argument.startsWith("string "))
        m_strings.append(argument.sliced(8).chopped(1));
    if (m_strings.size() <= titlePlace)
        return;
    m_call->title = m_strings[titlePlace];
    if (!m_isChange) {
        std::vector<Showing> &list = m_showings[m_call->title];
        m_unanswered.insert_or_assign(
            {m_call->sender, m_call->serial}, std::pair(m_call->title, list.size()));
        list.push_back(*m_call);
    }
    m_call.reset();
}

void NotificationLog::takeHead(const QByteArray &line)
{
    m_call.reset();
    if (line.startsWith("method call ")
        && line.endsWith("interface=org.freedesktop.Notifications; member=Notify")) {
        m_call = Showing{.title = {},
            .sender = field(line, "sender"),
            .serial = field(line, "serial"),
            .sentAt = timeOf(line),
            .answeredAt = {}};
        m_strings.clear();
        m_isChange = false;
    } else if (line.startsWith("method return ")) {
        const auto found = m_unanswered.find({field(line, "destination"), field(line, "reply_serial")});
        if (found != m_unanswered.end()) {
            const auto &[title, place] = found->second;
            m_showings[title][place].answeredAt = timeOf(line);
            m_unanswered.erase(found);
        }
    }
}

bool NotificationLog::mayRepeat(const Showing &first, const Showing &again, qint64 recordingTime) const
{
    // It went with the daemon, or its sender did not live to hear of it.
    if (!first.answeredAt)
        return true;
    const bool isUnrecorded = std::ranges::any_of(m_kills, [&](qint64 kill) {
        return first.sentAt <= kill && kill <= *first.answeredAt + recordingTime && kill <= again.sentAt;
    });
    // Who quits waits for the answer, but not for long.
    const bool isUnheard = std::ranges::any_of(
        m_ends, [&](qint64 end) { return first.sentAt <= end && end <= *first.answeredAt; });
    const bool isForgotten = std::ranges::any_of(m_forgettings, [&](const Span &span) {
        return span.begin <= again.sentAt && span.end.value_or(again.sentAt) >= first.sentAt;
    });
    return isUnrecorded || isUnheard || isForgotten;
}

NotificationLog::Verdict NotificationLog::verdict(qint64 recordingTime) const
{
    Verdict verdict;
    for (const auto &[title, list] : m_showings) {
        // What has another text each time is not a reminder of one renewal.
        if (!title.endsWith(" renews soon"))
            continue;
        for (std::size_t i = 0; i < list.size(); ++i) {
            ++(i == 0 ? verdict.shown : verdict.again);
            if (i > 0 && !mayRepeat(list[i - 1], list[i], recordingTime))
                verdict.wrong.append('"' + title + "\" was shown at " + QByteArray::number(list[i - 1].sentAt)
                    + " and again at " + QByteArray::number(list[i].sentAt));
        }
    }
    return verdict;
}

} // namespace orbitledge::testing
