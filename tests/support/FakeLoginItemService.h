#pragma once

#include "platform/LoginItemService.h"
#include "platform/OneShot.h"

#include <QStringList>

#include <memory>
#include <optional>
#include <variant>

namespace orbitledge::testing {

/// A system on which the next change ends as it is told, at once or when it is told.
class FakeLoginItemService final : public LoginItemService {
public:
    LoginItemStatus current = LoginItemStatus::NotRegistered;
    /// What a successful registration leads to.
    LoginItemStatus afterRegistering = LoginItemStatus::Enabled;
    /// Changes fail with this, and change nothing.
    std::optional<QString> failure;
    /// Changes wait for `goOn`.
    bool waits = false;
    /// The beginning and the end of every operation.
    QStringList log;

    [[nodiscard]] LoginItemStatus status() const override { return current; }

    [[nodiscard]] QCoro::Task<tl::expected<void, LoginItemError>> registerItem() override
    {
        return change(QStringLiteral("register"), afterRegistering);
    }

    [[nodiscard]] QCoro::Task<tl::expected<void, LoginItemError>> unregisterItem() override
    {
        return change(QStringLiteral("unregister"), LoginItemStatus::NotRegistered);
    }

    bool hasSystemSettings = true;

    [[nodiscard]] QCoro::Task<bool> openSystemSettings() override
    {
        log.append(QStringLiteral("open settings"));
        const bool copy = hasSystemSettings;
        co_return copy;
    }

    /// Lets the change that waits go on.
    void goOn() { m_gate->settle({}); }

private:
    QCoro::Task<tl::expected<void, LoginItemError>> change(QString name, LoginItemStatus result)
    {
        log.append(name);
        if (waits) {
            m_gate = std::make_shared<OneShot<std::monostate>>();
            const auto gate = m_gate;
            co_await gate->settled();
        }
        log.append(name + QStringLiteral(" done"));
        if (failure)
            co_return tl::make_unexpected(LoginItemError{*failure});
        current = result;
        co_return {};
    }

    std::shared_ptr<OneShot<std::monostate>> m_gate;
};

} // namespace orbitledge::testing
