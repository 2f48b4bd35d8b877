#pragma once

#include "platform/LoginItemService.h"
#include "platform/Turns.h"

#include <QObject>
#include <QPointer>

#include <memory>
#include <optional>

namespace orbitledge {

/// The switch for starting the program at login. It shows what is really registered and not what was wished,
/// since the desktop has a say in it too. User-interface thread only.
class LaunchAtLoginController : public QObject {
    Q_OBJECT

public:
    explicit LaunchAtLoginController(std::shared_ptr<LoginItemService> service, QObject *parent = nullptr);

    [[nodiscard]] bool isEnabled() const { return m_isEnabled; }
    /// Registered, but the person still has to approve of it in the desktop's settings.
    [[nodiscard]] bool requiresApproval() const { return m_requiresApproval; }
    /// Why the last change, or opening the desktop's settings, failed, a sentence for people; absent where it
    /// did not.
    [[nodiscard]] const std::optional<QString> &errorMessage() const { return m_errorMessage; }

    void refreshStatus();

    /// A failure is told by `errorMessage`. Changes run one after the other, so that the last wish is what
    /// stays; a change goes on where this object goes meanwhile.
    QCoro::Task<void> setEnabled(bool enabled);

    /// Opens the place where the person approves of login items. A failure is told by `errorMessage`.
    QCoro::Task<void> openLoginItems();

Q_SIGNALS:
    /// Before a property changes, so that those who show it can compare, and after that.
    void aboutToChange();
    void changed();

private:
    static QCoro::Task<void> change(QPointer<LaunchAtLoginController> controller,
        std::shared_ptr<LoginItemService> service, bool enabled);
    static QCoro::Task<void> openSettings(
        QPointer<LaunchAtLoginController> controller, std::shared_ptr<LoginItemService> service);
    void setErrorMessage(std::optional<QString> message);

    std::shared_ptr<LoginItemService> m_service;
    std::shared_ptr<Turns> m_turns = std::make_shared<Turns>();
    bool m_isEnabled = false;
    bool m_requiresApproval = false;
    std::optional<QString> m_errorMessage;
};

} // namespace orbitledge
