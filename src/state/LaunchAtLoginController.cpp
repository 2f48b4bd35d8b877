#include "state/LaunchAtLoginController.h"

namespace orbitledge {

using namespace Qt::StringLiterals;

LaunchAtLoginController::LaunchAtLoginController(std::shared_ptr<LoginItemService> service, QObject *parent)
    : QObject(parent)
    , m_service(std::move(service))
{
    refreshStatus();
}

void LaunchAtLoginController::refreshStatus()
{
    const LoginItemStatus status = m_service->status();
    Q_EMIT aboutToChange();
    m_isEnabled = status == LoginItemStatus::Enabled;
    Q_EMIT aboutToChange();
    m_requiresApproval = status == LoginItemStatus::RequiresApproval;
    Q_EMIT changed();
}

QCoro::Task<void> LaunchAtLoginController::setEnabled(bool enabled)
{
    auto operation = [controller = QPointer(this), service = m_service, enabled] {
        return change(controller, service, enabled);
    };
    return Turns::take(m_turns, std::move(operation));
}

QCoro::Task<void> LaunchAtLoginController::change(
    QPointer<LaunchAtLoginController> controller, std::shared_ptr<LoginItemService> service, bool enabled)
{
    if (controller)
        controller->setErrorMessage(std::nullopt);
    auto task = enabled ? service->registerItem() : service->unregisterItem();
    const auto outcome = co_await task;
    if (!outcome && controller)
        controller->setErrorMessage(outcome.error().errorDescription);
    if (controller)
        controller->refreshStatus();
}

QCoro::Task<void> LaunchAtLoginController::openLoginItems()
{
    return openSettings(this, m_service);
}

// The controller may go while the page opens.
QCoro::Task<void> LaunchAtLoginController::openSettings(
    QPointer<LaunchAtLoginController> controller, std::shared_ptr<LoginItemService> service)
{
    auto task = service->openSystemSettings();
    const bool isOpened = co_await task;
    if (controller && !isOpened) {
        controller->setErrorMessage(
            u"Could not open System Settings. Open it manually and look under Login Items."_s);
    }
}

void LaunchAtLoginController::setErrorMessage(std::optional<QString> message)
{
    Q_EMIT aboutToChange();
    m_errorMessage = std::move(message);
    Q_EMIT changed();
}

} // namespace orbitledge
