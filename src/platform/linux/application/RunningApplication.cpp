#include "platform/linux/application/RunningApplication.h"

#include "platform/OneShot.h"
#include "platform/linux/SealedMessage.h"
#include "platform/linux/bus/NameOwner.h"
#include "platform/linux/bus/SessionBusCall.h"

#include <QDBusError>
#include <QDBusUnixFileDescriptor>
#include <QDBusVariant>

#include <memory>
#include <utility>

namespace orbitledge {

using namespace Qt::StringLiterals;
using std::chrono::milliseconds;

namespace {

using Reached = tl::expected<bool, QString>;
using Performed = tl::expected<std::optional<SessionOutcome>, QString>;

QString muteSentence()
{
    return u"Orbitledge is running, but does not answer. End it, then try again."_s;
}

/// In its own words, where it has some.
QString refusal(const QDBusMessage &error)
{
    const QString words = error.errorMessage();
    return words.isEmpty() ? u"Orbitledge, which is running, refuses it (%1)."_s.arg(error.errorName())
                           : words;
}

/// Absent where it is not what a program of this kind says.
std::optional<SessionOutcome> outcomeFrom(const QDBusMessage &answer)
{
    if (answer.signature() != u"bsx")
        return std::nullopt;
    const QList<QVariant> values = answer.arguments();
    const SessionOutcome outcome{.isDone = values.at(0).toBool(),
        .problem = values.at(1).toString(),
        .subscriptionCount = values.at(2).toLongLong()};
    const bool isExplained = outcome.isDone || !outcome.problem.isEmpty();
    return isExplained && outcome.subscriptionCount >= 0 ? std::optional(outcome) : std::nullopt;
}

/// Its name on the bus that no other process ever has; empty where it is not there.
QCoro::Task<QString> ownerOf(QString name, milliseconds patience)
{
    const bool hasBus = co_await reachSessionBus();
    if (!hasBus)
        co_return QString();
    const auto owner = co_await nameOwner(name, patience);
    co_return owner.value_or(QString());
}

/// Where an answer is missing: has it gone, or does it only say nothing? It is there as long as the bus does
/// not tell that it has gone.
QCoro::Task<bool> isThere(QString owner, milliseconds patience)
{
    const auto hasOwner = co_await hasNameOwner(owner, patience);
    co_return hasOwner.value_or(true);
}

enum class Sign { Alive, Gone, Mute, Refusing };
struct Life {
    Sign sign = Sign::Alive;
    /// For people, where it does not do what was asked.
    QString sentence;
};

/// What a call shows of it that needs no time. Asked whether it works with the same, it may refuse as well.
QCoro::Task<Life> ask(QString owner, QDBusMessage call, milliseconds patience)
{
    const QDBusMessage answer = co_await callSessionBus(call, patience);
    if (isAnswer(answer))
        co_return Life{};
    const bool isStill = co_await isThere(owner, patience);
    if (!isStill)
        co_return Life{.sign = Sign::Gone, .sentence = {}};
    // The bus says so of one who has gone, also where another one has come, and of what it could not start.
    if (isSilence(answer) && !answer.service().isEmpty())
        co_return Life{.sign = Sign::Gone, .sentence = {}};
    if (isSilence(answer))
        co_return Life{.sign = Sign::Mute, .sentence = muteSentence()};
    co_return Life{.sign = Sign::Refusing, .sentence = refusal(answer)};
}

QDBusMessage actionCall(const QString &destination, const QString &path, const QString &action,
    const QVariantList &parameters, const QString &activationToken)
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        destination, path, QLatin1StringView(ApplicationBus::freedesktopInterface), u"ActivateAction"_s);
    call << action << QVariant(parameters) << ApplicationBus::platformData(activationToken);
    return call;
}

QDBusMessage sessionCall(
    const QString &owner, const QString &path, const QString &method, const SessionPlace &place)
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        owner, path, QLatin1StringView(ApplicationBus::sessionInterface), method);
    call << place.api << place.cacheFile;
    return call;
}

/// Its part that is of one kind alone. Absent where the system does not let us pass secrets on.
std::optional<QDBusMessage> callFor(
    const SessionRequest &request, const QString &owner, const QString &path, const SessionPlace &place)
{
    if (std::holds_alternative<RefreshRequest>(request))
        return sessionCall(owner, path, u"Refresh"_s, place);
    if (std::holds_alternative<SignOutRequest>(request))
        return sessionCall(owner, path, u"SignOut"_s, place);
    const auto &signIn = std::get<SignInRequest>(request);
    const auto memory = SealedMessage::write(signIn.email.toUtf8() + '\0' + signIn.password.toUtf8());
    if (!memory)
        return std::nullopt;
    QDBusMessage call = sessionCall(owner, path, u"SignIn"_s, place);
    call << QVariant::fromValue(QDBusUnixFileDescriptor(memory->get()));
    return call;
}

/// A call that is under way.
struct PendingCall {
    OneShot<bool> end;
    QDBusMessage answer;
};

QCoro::Task<void> settleWhenAnswered(QDBusMessage sent, std::shared_ptr<PendingCall> call)
{
    // Without limit: a person may be at a prompt of the keyring. The bus tells of one who went away.
    call->answer = co_await callSessionBusPatiently(sent);
    call->end.settle(true);
}

QCoro::Task<Performed> performAt(
    QString owner, QString path, SessionRequest request, SessionPlace place, milliseconds patience)
{
    const QDBusMessage check = sessionCall(owner, path, u"Check"_s, place);
    const Life life = co_await ask(owner, check, patience);
    if (life.sign == Sign::Gone)
        co_return std::optional<SessionOutcome>();
    if (life.sign != Sign::Alive)
        co_return tl::make_unexpected(life.sentence);
    const auto call = callFor(request, owner, path, place);
    if (!call)
        co_return tl::make_unexpected(u"The password cannot be passed on to Orbitledge, which is running."_s);

    const auto pending = std::make_shared<PendingCall>();
    settleWhenAnswered(*call, pending);
    while (true) {
        const std::optional<bool> end = co_await pending->end.settledWithin(patience);
        if (end)
            break;
        const Life still = co_await ask(owner, check, patience);
        if (still.sign == Sign::Mute)
            co_return tl::make_unexpected(still.sentence);
    }
    const QDBusMessage &answer = pending->answer;
    if (isAnswer(answer)) {
        const std::optional<SessionOutcome> outcome = outcomeFrom(answer);
        if (outcome)
            co_return outcome;
        co_return tl::make_unexpected(u"Orbitledge, which is running, gives an answer that is not "
                                      u"understood. It may be of another version: "
                                      "end it, then try again."_s);
    }
    // What it had begun may be done or not, and is not begun again.
    if (QDBusError(answer).type() == QDBusError::NoReply)
        co_return tl::make_unexpected(u"Orbitledge ended before it was done with this. Try again."_s);
    co_return tl::make_unexpected(refusal(answer));
}

QCoro::Task<Reached> requestFrom(
    QString applicationId, ApplicationAction action, QString activationToken, milliseconds patience)
{
    const QString owner = co_await ownerOf(applicationId, patience);
    if (owner.isEmpty())
        co_return false;
    const QDBusMessage call
        = actionCall(owner, ApplicationBus::pathOf(applicationId), nameOf(action), {}, activationToken);
    const Life life = co_await ask(owner, call, patience);
    if (life.sign == Sign::Mute || life.sign == Sign::Refusing)
        co_return tl::make_unexpected(life.sentence);
    co_return life.sign == Sign::Alive;
}

QCoro::Task<PageOpening> openReminderBy(
    QString applicationId, QString page, QString activationToken, milliseconds patience)
{
    const bool hasBus = co_await reachSessionBus();
    if (!hasBus)
        co_return PageOpening::Absent;
    QDBusMessage call = actionCall(applicationId, ApplicationBus::pathOf(applicationId),
        QLatin1StringView(ApplicationBus::openReminder), {QVariant::fromValue(QDBusVariant(page))},
        activationToken);
    call.setAutoStartService(true);
    const Life life = co_await ask(applicationId, call, patience);
    switch (life.sign) {
    case Sign::Alive:
        co_return PageOpening::Done;
    case Sign::Gone:
        co_return PageOpening::Absent;
    case Sign::Mute:
        co_return PageOpening::Mute;
    case Sign::Refusing:
        break;
    }
    co_return PageOpening::Refused;
}

QCoro::Task<Performed> performBy(
    QString applicationId, SessionRequest request, SessionPlace place, milliseconds patience)
{
    const QString owner = co_await ownerOf(applicationId, patience);
    if (owner.isEmpty())
        co_return std::optional<SessionOutcome>();
    auto performing = performAt(owner, ApplicationBus::pathOf(applicationId), request, place, patience);
    co_return co_await performing;
}

} // namespace

RunningApplication::RunningApplication(QString applicationId, milliseconds patience)
    : m_applicationId(std::move(applicationId))
    , m_patience(patience)
{
}

QCoro::Task<tl::expected<bool, QString>> RunningApplication::request(
    ApplicationAction action, QString activationToken) const
{
    return requestFrom(m_applicationId, action, std::move(activationToken), m_patience);
}

QCoro::Task<PageOpening> RunningApplication::openReminder(QString page, QString activationToken) const
{
    return openReminderBy(m_applicationId, std::move(page), std::move(activationToken), m_patience);
}

QCoro::Task<tl::expected<std::optional<SessionOutcome>, QString>> RunningApplication::perform(
    SessionRequest request, SessionPlace place) const
{
    return performBy(m_applicationId, std::move(request), std::move(place), m_patience);
}

} // namespace orbitledge
