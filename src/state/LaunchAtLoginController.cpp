#include "state/LaunchAtLoginController.h"

namespace orbitledge {

namespace {

// Free of the controller, which may go while the page opens.
QCoro::Task<void> openSettings(std::shared_ptr<LoginItemService> service)
{
    auto task = service->openSystemSettings();
    co_await task;
}

} // namespace

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
    return openSettings(m_service);
}

void LaunchAtLoginController::setErrorMessage(std::optional<QString> message)
{
    Q_EMIT aboutToChange();
    m_errorMessage = std::move(message);
}

} // namespace orbitledge
