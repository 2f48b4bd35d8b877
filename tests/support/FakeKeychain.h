#pragma once

#include "platform/Keychain.h"

#include <QHash>
#include <QPair>

#include <optional>

namespace orbitledge::testing {

/// A secure store in memory, which fails when it is told to.
class FakeKeychain final : public Keychain {
public:
    /// Every operation ends with this.
    std::optional<KeychainStatus> failure;
    /// What the store holds, by service and account.
    QHash<QPair<QString, QString>, QByteArray> items;
    QHash<QPair<QString, QString>, QString> labels;
    /// Of each removal, in their order.
    QList<KeychainPrompt> removals;
    int reads = 0;

    QCoro::Task<tl::expected<QByteArray, KeychainStatus>> read(KeychainItem item) override
    {
        ++reads;
        if (failure)
            co_return tl::make_unexpected(*failure);
        const auto found = items.constFind(key(item));
        if (found == items.constEnd())
            co_return tl::make_unexpected(KeychainStatus::ItemNotFound);
        co_return *found;
    }

    QCoro::Task<KeychainStatus> write(KeychainItem item, QByteArray secret) override
    {
        if (failure)
            co_return *failure;
        items[key(item)] = secret;
        labels[key(item)] = item.label;
        co_return KeychainStatus::Success;
    }

    QCoro::Task<KeychainStatus> remove(KeychainItem item, KeychainPrompt prompt) override
    {
        removals.append(prompt);
        if (failure)
            co_return *failure;
        co_return items.remove(key(item)) ? KeychainStatus::Success : KeychainStatus::ItemNotFound;
    }

private:
    static QPair<QString, QString> key(const KeychainItem &item) { return {item.service, item.account}; }
};

} // namespace orbitledge::testing
