#pragma once

#include "platform/Clock.h"
#include "platform/HttpSession.h"
#include "service/APIClientProtocol.h"
#include "service/SessionCredentialStoring.h"

#include <QUrl>

#include <memory>

namespace orbitledge {

struct APIClientParts;

/// The service over HTTP. The session travels in a Cookie header that is put on each request by hand, from
/// the credential store; there is no cookie jar. Answers are decoded off the calling thread.
///
/// May be destroyed while operations wait: they still end.
class APIClient final : public APIClientProtocol {
public:
    /// Paths are resolved against `baseURL`, whose own path is not kept.
    APIClient(QUrl baseURL, std::shared_ptr<HttpSession> session,
        std::shared_ptr<SessionCredentialStoring> credentialStore, std::shared_ptr<const Clock> clock);
    ~APIClient() override;

    [[nodiscard]] QCoro::Task<bool> hasValidSession() override;
    [[nodiscard]] APITask<UserProfile> signIn(QString email, QString password) override;
    [[nodiscard]] APITask<UserProfile> fetchProfile() override;
    [[nodiscard]] APITask<QList<Subscription>> fetchSubscriptions() override;
    [[nodiscard]] APITask<QList<SubscriptionTemplate>> searchTemplates(QString query, qint64 limit) override;
    [[nodiscard]] APITask<Subscription> createSubscription(CreateSubscriptionRequest request) override;
    [[nodiscard]] APITask<Subscription> cancelSubscription(QUuid id) override;
    [[nodiscard]] APITask<Subscription> uncancelSubscription(QUuid id) override;
    [[nodiscard]] QCoro::Task<void> signOut() override;

private:
    std::shared_ptr<APIClientParts> m_parts;
};

} // namespace orbitledge
