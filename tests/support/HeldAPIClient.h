#pragma once

#include "platform/OneShot.h"
#include "service/APIClientProtocol.h"

#include <QList>
#include <QStringList>

#include <memory>

namespace orbitledge::testing {

/// A service that answers when the test says so, in the order that the test chooses. What is asked for is
/// named in `waiting`, in the order of the calls.
class HeldAPIClient final : public APIClientProtocol {
public:
    ~HeldAPIClient() override { answerAll(); }

    /// Whether there is a session; asked without being held.
    bool hasSession = true;
    /// What is given to those who are answered.
    tl::expected<UserProfile, APIError> profile = UserProfile();
    tl::expected<QList<Subscription>, APIError> subscriptions = QList<Subscription>();
    tl::expected<QList<SubscriptionTemplate>, APIError> templates = QList<SubscriptionTemplate>();
    tl::expected<Subscription, APIError> subscription = Subscription();
    /// All that was ever asked for, but for the session.
    QStringList calls;
    /// What was to be created, and who signed in with which password.
    QList<CreateSubscriptionRequest> requests;
    QList<std::pair<QString, QString>> credentials;
    /// Answers come at once.
    bool isQuick = false;
    /// Whatever the test wants to remember of the moment of a call.
    int tag = 0;
    [[nodiscard]] int tagAt(qsizetype index) const { return m_waiting[index].tag; }

    [[nodiscard]] QStringList waiting() const
    {
        QStringList names;
        for (const Call &call : m_waiting)
            names.append(call.name);
        return names;
    }

    /// How many of them.
    [[nodiscard]] qsizetype waitingCount(const QString &name) const { return waiting().count(name); }

    /// The first of that name.
    void answer(const QString &name)
    {
        const qsizetype index = waiting().indexOf(name);
        if (index < 0)
            qFatal("nobody waits for %s", qPrintable(name));
        answerAt(index);
    }
    void answerAt(qsizetype index) { m_waiting.takeAt(index).answer->settle(true); }
    void answerAll()
    {
        while (!m_waiting.isEmpty())
            answerAt(0);
    }

    QCoro::Task<bool> hasValidSession() override
    {
        const bool copy = hasSession;
        co_return copy;
    }
    APITask<UserProfile> signIn(QString email, QString password) override
    {
        credentials.append({email, password});
        co_await held(QStringLiteral("signIn"));
        hasSession = profile.has_value();
        co_return copyOf(profile);
    }
    APITask<UserProfile> fetchProfile() override
    {
        co_await held(QStringLiteral("fetchProfile"));
        forgetWhereUnauthorized(profile);
        co_return copyOf(profile);
    }
    APITask<QList<Subscription>> fetchSubscriptions() override
    {
        co_await held(QStringLiteral("fetchSubscriptions"));
        forgetWhereUnauthorized(subscriptions);
        co_return copyOf(subscriptions);
    }
    APITask<QList<SubscriptionTemplate>> searchTemplates(QString query, qint64 limit) override
    {
        co_await held(QStringLiteral("search %1 %2").arg(query).arg(limit));
        forgetWhereUnauthorized(templates);
        co_return copyOf(templates);
    }
    APITask<Subscription> createSubscription(CreateSubscriptionRequest request) override
    {
        requests.append(request);
        co_await held(QStringLiteral("create"));
        forgetWhereUnauthorized(subscription);
        co_return copyOf(subscription);
    }
    APITask<Subscription> cancelSubscription(QUuid /*id*/) override
    {
        co_await held(QStringLiteral("cancel"));
        forgetWhereUnauthorized(subscription);
        co_return copyOf(subscription);
    }
    APITask<Subscription> uncancelSubscription(QUuid /*id*/) override
    {
        co_await held(QStringLiteral("uncancel"));
        forgetWhereUnauthorized(subscription);
        co_return copyOf(subscription);
    }
    QCoro::Task<void> signOut() override
    {
        co_await held(QStringLiteral("signOut"));
        hasSession = false;
    }

private:
    struct Call {
        QString name;
        std::shared_ptr<OneShot<bool>> answer;
        int tag = 0;
    };

    QCoro::Task<void> held(QString name)
    {
        calls.append(name);
        if (isQuick)
            co_return;
        const auto answer = std::make_shared<OneShot<bool>>();
        m_waiting.append({name, answer, tag});
        (void)co_await answer->settled();
    }

    /// As the client does it.
    template <typename T> void forgetWhereUnauthorized(const tl::expected<T, APIError> &result)
    {
        if (!result && result.error().template is<APIError::Unauthorized>())
            hasSession = false;
    }

    template <typename T> static T copyOf(const T &value) { return value; }

    QList<Call> m_waiting;
};

} // namespace orbitledge::testing
