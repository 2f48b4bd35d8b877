#include "platform/linux/diagnosis/BusInquiry.h"

#include "platform/linux/bus/SessionBusCall.h"

#include <QDBusVariant>

namespace orbitledge {

using namespace Qt::StringLiterals;
using findings::Presence;

Presence BusNames::presenceOf(const QString &name) const
{
    if (owned.contains(name))
        return Presence::Present;
    return startable.contains(name) ? Presence::Startable : Presence::Absent;
}

QCoro::Task<BusInquiry::Answer> BusInquiry::ask(QDBusMessage question)
{
    const auto left
        = std::chrono::duration_cast<std::chrono::milliseconds>(m_deadline.remainingTimeAsDuration());
    if (left <= std::chrono::milliseconds::zero())
        co_return tl::unexpected(Presence::Mute);
    question.setAutoStartService(false);
    const QDBusMessage reply = co_await callSessionBus(question, left);
    if (isAnswer(reply))
        co_return reply;
    co_return tl::unexpected(isSilence(reply) ? Presence::Mute : Presence::Refusing);
}

QCoro::Task<BusInquiry::Property> BusInquiry::property(
    QString service, QString path, QString interface, QString name)
{
    QDBusMessage get
        = QDBusMessage::createMethodCall(service, path, u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    get << interface << name;
    const Answer answer = co_await ask(get);
    if (!answer)
        co_return tl::unexpected(answer.error());
    co_return answer->arguments().value(0).value<QDBusVariant>().variant();
}

QCoro::Task<tl::expected<BusNames, Presence>> BusInquiry::names()
{
    const Answer owned = co_await ask(busMethod(u"ListNames"_s));
    if (!owned)
        co_return tl::unexpected(owned.error());
    const Answer startable = co_await ask(busMethod(u"ListActivatableNames"_s));
    if (!startable)
        co_return tl::unexpected(startable.error());
    co_return BusNames{.owned = owned->arguments().value(0).toStringList(),
        .startable = startable->arguments().value(0).toStringList()};
}

} // namespace orbitledge
