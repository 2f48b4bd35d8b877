#pragma once

#include "platform/Completion.h"
#include "platform/Keychain.h"

#include <QHash>
#include <QPair>

#include <memory>
#include <optional>
#include <utility>

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
    /// Where it is there, what is read next ends only after it, and as things were when it was asked for.
    std::shared_ptr<Completion> hold;

    QCoro::Task<tl::expected<QByteArray, KeychainStatus>> read(KeychainItem item) override
    {
        ++reads;
        tl::expected<QByteArray, KeychainStatus> outcome = tl::make_unexpected(KeychainStatus::ItemNotFound);
        if (failure)
            outcome = tl::make_unexpected(*failure);
        else if (items.contains(key(item)))
            outcome = items.value(key(item));
        if (const auto held = std::exchange(hold, nullptr))
            co_await Completion::wait(held);
        co_return outcome;
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
