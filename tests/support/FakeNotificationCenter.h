#pragma once

#include "platform/OneShot.h"
#include "platform/UserNotificationCenter.h"

#include <algorithm>
#include <functional>

namespace orbitledge::testing {

/// A notification centre in memory, which writes down what it is asked for.
class FakeNotificationCenter final : public UserNotificationCenter {
public:
    NotificationSettings currentSettings;
    QList<PendingNotification> requests;
    /// Why a request is refused; absent for those that are taken.
    std::function<std::optional<QString>(const NotificationRequest &)> refuse;
    std::optional<QString> readingFailure;
    std::optional<QString> savingFailure;
    std::optional<QString> forgettingFailure;
    tl::expected<bool, NotificationError> permission = true;
    /// Of the last request for permission.
    NotificationOptions options;
    /// Who asks for permission waits for `decideAt` or `decideAll`.
    bool isSlowToDecide = false;
    [[nodiscard]] qsizetype undecidedCount() const { return m_undecided.size(); }
    void decideAt(qsizetype index) { m_undecided.takeAt(index)->settle(true); }
    void decideAll()
    {
        while (!m_undecided.isEmpty())
            decideAt(0);
    }
    /// Forgetting waits for `forgetNow`.
    bool isSlowToForget = false;
    void forgetNow()
    {
        if (OneShot<bool> *const forgetting = std::exchange(m_forgetting, nullptr))
            forgetting->settle(true);
    }
    /// What was called, in order, with what it was called for.
    QStringList calls;
    /// How often the pending requests were read.
    int readings = 0;

    QCoro::Task<NotificationSettings> settings() override
    {
        const NotificationSettings copy = currentSettings;
        co_return copy;
    }

    QCoro::Task<tl::expected<bool, NotificationError>> requestAuthorization(
        NotificationOptions wanted) override
    {
        options = wanted;
        if (isSlowToDecide) {
            OneShot<bool> decision;
            m_undecided.append(&decision);
            (void)co_await decision.settled();
        }
        auto copy = permission;
        co_return copy;
    }

    QCoro::Task<tl::expected<QList<PendingNotification>, NotificationError>> pendingRequests() override
    {
        calls.append(QStringLiteral("pending"));
        if (readingFailure)
            co_return tl::make_unexpected(NotificationError{*readingFailure});
        ++readings;
        const auto copy = requests;
        co_return copy;
    }

    QCoro::Task<void> removePendingRequests(QStringList identifiers) override
    {
        calls.append(QStringLiteral("remove ") + identifiers.join(u','));
        requests.removeIf([&identifiers](const PendingNotification &pending) {
            return identifiers.contains(pending.request.identifier);
        });
        co_return;
    }

    QCoro::Task<tl::expected<void, NotificationError>> add(NotificationRequest request) override
    {
        calls.append(QStringLiteral("add ") + request.identifier);
        if (refuse) {
            if (const auto reason = refuse(request))
                co_return tl::make_unexpected(NotificationError{*reason});
        }
        requests.removeIf([&request](const PendingNotification &pending) {
            return pending.request.identifier == request.identifier;
        });
        requests.append({request, std::holds_alternative<TimeIntervalTrigger>(request.trigger)});
        co_return {};
    }

    QCoro::Task<tl::expected<void, NotificationError>> save() override
    {
        calls.append(QStringLiteral("save"));
        if (savingFailure)
            co_return tl::make_unexpected(NotificationError{*savingFailure});
        co_return {};
    }

    QCoro::Task<tl::expected<void, NotificationError>> forget(QString prefix) override
    {
        calls.append(QStringLiteral("forget ") + prefix);
        if (isSlowToForget) {
            OneShot<bool> done;
            m_forgetting = &done;
            (void)co_await done.settled();
        }
        if (forgettingFailure)
            co_return tl::make_unexpected(NotificationError{*forgettingFailure});
        requests.removeIf([&prefix](const PendingNotification &pending) {
            return pending.request.identifier.startsWith(prefix);
        });
        co_return {};
    }

    [[nodiscard]] bool isForgetting() const { return m_forgetting != nullptr; }
    [[nodiscard]] QStringList identifiers() const
    {
        QStringList identifiers;
        for (const PendingNotification &pending : requests)
            identifiers.append(pending.request.identifier);
        return identifiers;
    }

private:
    QList<OneShot<bool> *> m_undecided;
    OneShot<bool> *m_forgetting = nullptr;
};

} // namespace orbitledge::testing
