#include "platform/linux/diagnosis/DeliveryInspection.h"

#include <QDBusObjectPath>

namespace orbitledge {

using namespace Qt::StringLiterals;
using findings::Delivery;
using findings::Presence;

namespace {

const QString service = u"org.freedesktop.systemd1"_s;
const QString managerPath = u"/org/freedesktop/systemd1"_s;
const QString managerInterface = u"org.freedesktop.systemd1.Manager"_s;

Delivery::Timer timerOf(const QString &activeState)
{
    if (activeState == "active"_L1 || activeState == "activating"_L1 || activeState == "reloading"_L1)
        return Delivery::Timer::Waiting;
    return activeState == "failed"_L1 ? Delivery::Timer::Failed : Delivery::Timer::NotInForce;
}

/// In microseconds; none is all zeroes or all ones.
std::optional<Instant> instantOf(const BusInquiry::Property &moment)
{
    const quint64 microseconds = moment ? moment->toULongLong() : 0;
    if (microseconds == 0 || microseconds == ~quint64{0})
        return std::nullopt;
    return Instant::fromMillisecondsSinceEpoch(static_cast<qint64>(microseconds / 1000));
}

} // namespace

QCoro::Task<Delivery> inspectDelivery(
    BusNames names, QString unit, bool isArranged, std::chrono::milliseconds limit)
{
    Delivery found;
    found.systemd = names.presenceOf(service);
    found.timer = isArranged ? Delivery::Timer::NotInForce : Delivery::Timer::None;
    // The bus of a session without it may offer to start one, which would fail.
    if (found.systemd == Presence::Startable)
        found.systemd = Presence::Absent;
    if (found.systemd != Presence::Present)
        co_return found;
    BusInquiry inquiry(limit);
    const auto version = co_await inquiry.property(service, managerPath, managerInterface, u"Version"_s);
    if (!version) {
        found.systemd = version.error();
        co_return found;
    }
    found.version = version->toString();

    QDBusMessage question
        = QDBusMessage::createMethodCall(service, managerPath, managerInterface, u"GetUnit"_s);
    question << unit + u".timer"_s;
    const auto known = co_await inquiry.ask(question);
    if (!known)
        co_return found; // it does not have it in memory
    const QString path = qvariant_cast<QDBusObjectPath>(known->arguments().value(0)).path();
    const QString unitInterface = u"org.freedesktop.systemd1.Unit"_s;
    const auto state = co_await inquiry.property(service, path, unitInterface, u"ActiveState"_s);
    if (!state || !(isArranged || state->toString() != "inactive"_L1))
        co_return found;
    found.timer = timerOf(state->toString());
    const QString timerInterface = u"org.freedesktop.systemd1.Timer"_s;
    const auto next = co_await inquiry.property(service, path, timerInterface, u"NextElapseUSecRealtime"_s);
    found.next = instantOf(next);
    co_return found;
}

} // namespace orbitledge
