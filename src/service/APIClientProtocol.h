#pragma once

#include "model/CreateSubscriptionRequest.h"
#include "model/Subscription.h"
#include "model/SubscriptionTemplate.h"
#include "model/UserProfile.h"
#include "service/APIError.h"

#include <QCoroTask>
#include <QList>
#include <QString>
#include <QUuid>

namespace orbitledge {

/// What the program can ask of the service. Operations may overlap; nothing is ever retried.
class APIClientProtocol {
public:
    APIClientProtocol() = default;
    APIClientProtocol(const APIClientProtocol &) = delete;
    APIClientProtocol &operator=(const APIClientProtocol &) = delete;
    virtual ~APIClientProtocol() = default;

    /// A credential is stored and has not expired. Asks nobody but the secure store, and removes from there
    /// what is of no use.
    [[nodiscard]] virtual QCoro::Task<bool> hasValidSession() = 0;

    /// Opens a session and keeps its credential; on failure none is kept.
    [[nodiscard]] virtual APITask<UserProfile> signIn(QString email, QString password) = 0;

    [[nodiscard]] virtual APITask<UserProfile> fetchProfile() = 0;
    [[nodiscard]] virtual APITask<QList<Subscription>> fetchSubscriptions() = 0;

    /// Catalogue entries by name, best first. A query of less than two characters, blanks around it not
    /// counted, finds nothing and asks nobody. `limit` is taken as 1 where it is less, as 20 where it is
    /// more.
    [[nodiscard]] virtual APITask<QList<SubscriptionTemplate>> searchTemplates(QString query, qint64 limit)
        = 0;

    [[nodiscard]] virtual APITask<Subscription> createSubscription(CreateSubscriptionRequest request) = 0;
    [[nodiscard]] virtual APITask<Subscription> cancelSubscription(QUuid id) = 0;
    [[nodiscard]] virtual APITask<Subscription> uncancelSubscription(QUuid id) = 0;

    /// Ends the session at the service where that can be done, and forgets the credential in any case.
    [[nodiscard]] virtual QCoro::Task<void> signOut() = 0;
};

} // namespace orbitledge
