#include "platform/linux/bus/NameOwner.h"

#include "platform/linux/bus/SessionBusCall.h"

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

QDBusMessage questionAbout(const QString &name, const QString &method)
{
    QDBusMessage question = busMethod(method);
    question << name;
    return question;
}

} // namespace

QCoro::Task<tl::expected<QString, QDBusMessage>> nameOwner(QString name, std::chrono::milliseconds limit)
{
    const QDBusMessage answer = co_await callSessionBus(questionAbout(name, u"GetNameOwner"_s), limit);
    if (isAnswer(answer))
        co_return answer.arguments().value(0).toString();
    if (answer.errorName() == "org.freedesktop.DBus.Error.NameHasNoOwner"_L1)
        co_return QString();
    co_return tl::unexpected(answer);
}

QCoro::Task<tl::expected<bool, QDBusMessage>> hasNameOwner(QString name, std::chrono::milliseconds limit)
{
    const QDBusMessage answer = co_await callSessionBus(questionAbout(name, u"NameHasOwner"_s), limit);
    if (!isAnswer(answer))
        co_return tl::unexpected(answer);
    co_return answer.arguments().value(0).toBool();
}

} // namespace orbitledge
