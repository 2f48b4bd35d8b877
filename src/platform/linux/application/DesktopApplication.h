#pragma once

#include "platform/ApplicationService.h"
#include "platform/SessionService.h"
#include "platform/linux/application/ApplicationBus.h"

#include <QCoroTask>
#include <QDBusMessage>
#include <QTimer>
#include <QVariantList>

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

namespace orbitledge {

/// This program as others see it on the session bus. User-interface thread only.
class DesktopApplication final : public ApplicationService {
    Q_OBJECT

public:
    explicit DesktopApplication(
        QString applicationId, std::chrono::milliseconds patience = std::chrono::seconds(10));
    ~DesktopApplication() override;

    enum class Claim {
        /// This is the one.
        Granted,
        /// Another process is.
        Elsewhere,
        /// There is no bus, or it does not let us.
        NoBus,
    };
    /// Asks to be the one that runs; again where the other one has gone. Who finds this one from then on is
    /// heard, and answered later.
    QCoro::Task<Claim> claim();

    /// Requests are told from now on, first those that came before.
    void begin();

    /// The session is in this program's hands from now on.
    void serve(std::shared_ptr<SessionService> session, const SessionPlace &place);

private:
    struct Session;

    void tell();
    bool take(const QString &action, const QVariantList &parameters, const QVariantMap &platformData);
    static QCoro::Task<void> answer(std::shared_ptr<Session> session, QDBusMessage call);

    QString m_applicationId;
    std::chrono::milliseconds m_patience;
    bool m_isExported = false;
    bool m_hasBegun = false;
    /// What is yet to be told.
    std::vector<std::function<void()>> m_requests;
    QTimer m_telling;
    std::shared_ptr<Session> m_session;
};

} // namespace orbitledge
