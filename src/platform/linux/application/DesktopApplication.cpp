#include "platform/linux/application/DesktopApplication.h"

#include "platform/Completion.h"
#include "platform/linux/SealedMessage.h"
#include "platform/linux/application/ApplicationAdaptors.h"
#include "platform/linux/bus/SessionBusCall.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusUnixFileDescriptor>
#include <QDBusVariant>

#include <utility>

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

QVariant unwrapped(const QVariant &value)
{
    return value.metaType() == QMetaType::fromType<QDBusVariant>() ? value.value<QDBusVariant>().variant()
                                                                   : value;
}

/// Absent where the call is no such request, or its descriptor leads to something else.
std::optional<SessionRequest> requestOf(const QDBusMessage &call)
{
    if (call.member() == u"Refresh")
        return RefreshRequest();
    if (call.member() == u"SignOut")
        return SignOutRequest();
    const auto descriptor = call.arguments().value(2).value<QDBusUnixFileDescriptor>();
    if (!descriptor.isValid())
        return std::nullopt;
    const auto content = SealedMessage::read(descriptor.fileDescriptor());
    if (!content)
        return std::nullopt;
    const qsizetype end = content->indexOf('\0');
    if (end < 0)
        return std::nullopt;
    return SignInRequest{
        .email = QString::fromUtf8(content->first(end)),
        .password = QString::fromUtf8(content->sliced(end + 1)),
    };
}

void reply(const QDBusMessage &message)
{
    QDBusConnection::sessionBus().send(message);
}

} // namespace

/// What the answers share, which they keep alive until the last of them is given.
struct DesktopApplication::Session {
    std::shared_ptr<SessionService> service;
    SessionPlace place;
    /// From then on there is a service.
    std::shared_ptr<Completion> isServed = std::make_shared<Completion>();
};

DesktopApplication::DesktopApplication(QString applicationId, std::chrono::milliseconds patience)
    : m_applicationId(std::move(applicationId))
    , m_patience(patience)
    , m_session(std::make_shared<Session>())
{
    m_telling.setSingleShot(true);
    m_telling.setInterval(0);
    connect(&m_telling, &QTimer::timeout, this, &DesktopApplication::tell);
    new FreedesktopApplicationAdaptor(
        this, [this](const QString &action, const QVariantList &parameters, const QVariantMap &platformData) {
            return take(action, parameters, platformData);
        });
    new SessionAdaptor(this, [this](const QDBusMessage &call) { answer(m_session, call); });
}

DesktopApplication::~DesktopApplication() = default;

QCoro::Task<DesktopApplication::Claim> DesktopApplication::claim()
{
    const bool hasBus = co_await reachSessionBus();
    if (!hasBus)
        co_return Claim::NoBus;
    QDBusConnection bus = QDBusConnection::sessionBus();
    // Before the name: who finds that finds this too.
    const QString path = ApplicationBus::pathOf(m_applicationId);
    m_isExported = m_isExported || bus.registerObject(path, this, QDBusConnection::ExportAdaptors);
    if (!m_isExported)
        co_return Claim::NoBus;
    constexpr uint doNotQueue = 4;
    constexpr uint isPrimaryOwner = 1;
    constexpr uint exists = 3;
    constexpr uint isAlreadyOwner = 4;
    QDBusMessage request = busMethod(u"RequestName"_s);
    request << m_applicationId << doNotQueue;
    const QDBusMessage answer = co_await callSessionBus(request, m_patience);
    switch (answer.arguments().value(0).toUInt()) {
    case isPrimaryOwner:
    case isAlreadyOwner:
        co_return Claim::Granted;
    case exists:
        co_return Claim::Elsewhere;
    default:
        co_return Claim::NoBus;
    }
}

void DesktopApplication::begin()
{
    m_hasBegun = true;
    m_telling.start();
}

void DesktopApplication::tell()
{
    for (const auto &request : std::exchange(m_requests, {}))
        request();
}

void DesktopApplication::serve(std::shared_ptr<SessionService> session, const SessionPlace &place)
{
    m_session->service = std::move(session);
    m_session->place = place;
    m_session->isServed->complete();
}

bool DesktopApplication::take(
    const QString &action, const QVariantList &parameters, const QVariantMap &platformData)
{
    const QString token = ApplicationBus::activationToken(platformData);
    std::function<void()> request;
    if (const auto known = applicationActionNamed(action)) {
        request = [this, known = *known, token] { Q_EMIT requested(known, token); };
    } else if (action == QLatin1StringView(ApplicationBus::openReminder)) {
        const QVariant page = unwrapped(parameters.value(0));
        if (page.metaType() != QMetaType::fromType<QString>())
            return false;
        request = [this, page = page.toString(), token] { Q_EMIT pageRequested(page, token); };
    } else {
        return false;
    }
    m_requests.push_back(std::move(request));
    // After the answer: it may be to quit.
    if (m_hasBegun)
        m_telling.start();
    return true;
}

QCoro::Task<void> DesktopApplication::answer(std::shared_ptr<Session> session, QDBusMessage call)
{
    // Whoever only looks whether somebody is there does not wait.
    if (call.member() == u"Check" && !session->service) {
        reply(call.createReply());
        co_return;
    }
    co_await Completion::wait(session->isServed);
    const SessionPlace asked{
        .api = call.arguments().value(0).toString(), .cacheFile = call.arguments().value(1).toString()};
    if (asked != session->place) {
        reply(call.createErrorReply(QLatin1StringView(ApplicationBus::otherPlaceError),
            u"Orbitledge is running with the service at %1 and the data in %2. Quit it first, or use the same."_s
                .arg(session->place.api, session->place.cacheFile)));
        co_return;
    }
    if (call.member() == u"Check") {
        reply(call.createReply());
        co_return;
    }
    auto request = requestOf(call);
    if (!request) {
        reply(call.createErrorReply(QDBusError::InvalidArgs, u"There are no credentials."_s));
        co_return;
    }
    auto performing = session->service->perform(*std::move(request));
    const SessionOutcome outcome = co_await performing;
    reply(call.createReply(
        {outcome.isDone, outcome.problem, QVariant::fromValue<qlonglong>(outcome.subscriptionCount)}));
}

} // namespace orbitledge
