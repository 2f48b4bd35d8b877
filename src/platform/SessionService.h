#pragma once

#include <QCoroTask>
#include <QString>

#include <variant>

namespace orbitledge {

/// How something that was asked for about the session has ended.
struct SessionOutcome {
    bool isDone = false;
    /// For people: why it failed; or, where it is done, what went wrong beside it. Empty where nothing did.
    QString problem;
    /// How many subscriptions there are now.
    qint64 subscriptionCount = 0;

    friend bool operator==(const SessionOutcome &, const SessionOutcome &) = default;
};

struct SignInRequest {
    QString email;
    QString password;
};
struct RefreshRequest { };
struct SignOutRequest { };
using SessionRequest = std::variant<SignInRequest, RefreshRequest, SignOutRequest>;

/// Whoever is in charge of the person's session with the service: their credential, what was fetched, and the
/// reminders of it.
class SessionService {
public:
    SessionService() = default;
    SessionService(const SessionService &) = delete;
    SessionService &operator=(const SessionService &) = delete;
    virtual ~SessionService() = default;

    /// May be destroyed meanwhile; what was asked for is still done.
    [[nodiscard]] virtual QCoro::Task<SessionOutcome> perform(SessionRequest request) = 0;
};

} // namespace orbitledge
