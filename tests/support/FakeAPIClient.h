#pragma once

#include "service/APIClientProtocol.h"

#include <QStringList>

#include <optional>

namespace orbitledge::testing {

/// A service in memory: gives what it is told to, and remembers what it was asked.
class FakeAPIClient final : public APIClientProtocol {
public:
    bool hasSession = false;
    tl::expected<UserProfile, APIError> profile = tl::make_unexpected(APIError(APIError::InvalidResponse{}));
    tl::expected<QList<Subscription>, APIError> subscriptions = QList<Subscription>();
    tl::expected<QList<SubscriptionTemplate>, APIError> templates = QList<SubscriptionTemplate>();
    tl::expected<Subscription, APIError> subscription
        = tl::make_unexpected(APIError(APIError::InvalidResponse{}));
    /// The operations, in the order of the calls, with their operands but for passwords.
    QStringList calls;
    QString password;

    QCoro::Task<bool> hasValidSession() override
    {
        calls.append(QStringLiteral("hasValidSession"));
        co_return hasSession;
    }
    APITask<UserProfile> signIn(QString email, QString givenPassword) override
    {
        calls.append(QStringLiteral("signIn ") + email);
        password = givenPassword;
        co_return copyOf(profile);
    }
    APITask<UserProfile> fetchProfile() override
    {
        calls.append(QStringLiteral("fetchProfile"));
        co_return copyOf(profile);
    }
    APITask<QList<Subscription>> fetchSubscriptions() override
    {
        calls.append(QStringLiteral("fetchSubscriptions"));
        co_return copyOf(subscriptions);
    }
    APITask<QList<SubscriptionTemplate>> searchTemplates(QString query, qint64 limit) override
    {
        calls.append(QStringLiteral("searchTemplates %1 %2").arg(query).arg(limit));
        co_return copyOf(templates);
    }
    APITask<Subscription> createSubscription(CreateSubscriptionRequest request) override
    {
        calls.append(QStringLiteral("createSubscription ") + request.name);
        co_return copyOf(subscription);
    }
    APITask<Subscription> cancelSubscription(QUuid id) override
    {
        calls.append(QStringLiteral("cancelSubscription ") + id.toString());
        co_return copyOf(subscription);
    }
    APITask<Subscription> uncancelSubscription(QUuid id) override
    {
        calls.append(QStringLiteral("uncancelSubscription ") + id.toString());
        co_return copyOf(subscription);
    }
    QCoro::Task<void> signOut() override
    {
        calls.append(QStringLiteral("signOut"));
        hasSession = false;
        co_return;
    }

private:
    /// QCoro moves away what it is given to return, also what is not about to end.
    template <typename T> static T copyOf(const T &value) { return value; }
};

} // namespace orbitledge::testing
