#include "soak/PingWatch.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QElapsedTimer>
#include <QFile>

#include <algorithm>
#include <optional>

namespace orbitledge::testing {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr double perMillisecond = 1e6; // nanoseconds

/// How long the first thread of the process was ready to run, and did not, in nanoseconds.
qint64 timeInQueue(qint64 process)
{
    QFile file(u"/proc/%1/task/%1/schedstat"_s.arg(process));
    return file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').value(1).toLongLong() : 0;
}

/// In milliseconds; absent where there was no answer. Of no interest is what the answer says.
std::optional<double> ask(QDBusConnection &bus, const PingWatch::Target &target)
{
    constexpr int patience = 30'000;
    QDBusMessage message = QDBusMessage::createMethodCall(
        target.name, target.path, u"org.freedesktop.DBus.Properties"_s, u"GetAll"_s);
    message << u"app.orbitledge.Bare"_s;
    message.setAutoStartService(false);
    QElapsedTimer elapsed;
    elapsed.start();
    const QDBusMessage answer = bus.call(message, QDBus::Block, patience);
    const double took = static_cast<double>(elapsed.nsecsElapsed()) / perMillisecond;
    const QString error = answer.errorName();
    const bool isThere = answer.type() == QDBusMessage::ReplyMessage
        || error == u"org.freedesktop.DBus.Error.UnknownInterface"
        || error == u"org.freedesktop.DBus.Error.InvalidArgs";
    // What does not answer for so long is not gone, or the bus would say so.
    const bool isMute = error == u"org.freedesktop.DBus.Error.NoReply" && took >= patience;
    return isThere || isMute ? std::optional(took) : std::nullopt;
}

} // namespace

PingWatch::PingWatch(QString busAddress, Target program, Target bare)
    : m_thread([this, busAddress = std::move(busAddress), program = std::move(program),
                   bare = std::move(bare)](const std::stop_token &stop) {
        const QString name = u"ping-watch"_s;
        {
            QDBusConnection bus = QDBusConnection::connectToBus(busAddress, name);
            while (!stop.stop_requested()) {
                if (const auto took = ask(bus, bare))
                    add(m_bare, *took);
                const qint64 process = m_process;
                const qint64 queued = process > 0 ? timeInQueue(process) : 0;
                const auto took = process > 0 ? ask(bus, program) : std::nullopt;
                const qint64 wait = timeInQueue(process) - queued;
                // One that has begun meanwhile, or ended, is another one.
                if (took && process == m_process && m_hasAnswered.exchange(true)) {
                    const double own = *took - static_cast<double>(wait) / perMillisecond;
                    add(m_program, *took);
                    add(m_own, std::max(0.0, own));
                    m_longest = std::max(m_longest.load(), own);
                }
                std::this_thread::sleep_for(40ms);
            }
        }
        QDBusConnection::disconnectFromBus(name);
    })
{
}

PingWatch::~PingWatch() = default;

void PingWatch::setProcess(qint64 process)
{
    m_hasAnswered = false;
    m_process = process;
}

void PingWatch::add(std::vector<float> &list, double milliseconds) const
{
    const std::scoped_lock lock(m_mutex);
    list.push_back(static_cast<float>(milliseconds));
}

PingWatch::Figures PingWatch::figuresOf(const std::vector<float> &list) const
{
    std::vector<float> sorted;
    {
        const std::scoped_lock lock(m_mutex);
        sorted = list;
    }
    if (sorted.empty())
        return {};
    std::ranges::sort(sorted);
    const auto at = [&sorted](double part) {
        return static_cast<double>(
            sorted[static_cast<std::size_t>(part * static_cast<double>(sorted.size() - 1))]);
    };
    return {.count = sorted.size(), .median = at(0.5), .percentile99 = at(0.99), .longest = at(1)};
}

} // namespace orbitledge::testing
