#pragma once

#include <QCoroTask>
#include <QString>

#include <tl/expected.hpp>

namespace orbitledge {

enum class LoginItemStatus {
    NotRegistered,
    Enabled,
    /// Registered, but switched off by the person in the desktop's settings.
    RequiresApproval,
    /// Registered, but what it would start is gone.
    NotFound,
};

struct LoginItemError {
    /// A sentence for people.
    QString errorDescription;

    friend bool operator==(const LoginItemError &, const LoginItemError &) = default;
};

/// Starting this program at login.
class LoginItemService {
public:
    LoginItemService() = default;
    LoginItemService(const LoginItemService &) = delete;
    LoginItemService &operator=(const LoginItemService &) = delete;
    virtual ~LoginItemService() = default;

    /// As it really is, anew each time. Reads at most a small file.
    [[nodiscard]] virtual LoginItemStatus status() const = 0;
    /// Also repairs what is registered but would not start this program.
    [[nodiscard]] virtual QCoro::Task<tl::expected<void, LoginItemError>> registerItem() = 0;
    [[nodiscard]] virtual QCoro::Task<tl::expected<void, LoginItemError>> unregisterItem() = 0;
    /// Opens the place where the person approves of login items. False where there is none.
    [[nodiscard]] virtual QCoro::Task<bool> openSystemSettings() = 0;
};

} // namespace orbitledge
