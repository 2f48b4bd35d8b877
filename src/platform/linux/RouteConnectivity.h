#pragma once

#include "platform/Connectivity.h"

class QSocketNotifier;

namespace orbitledge {

/// Asks the kernel's routing tables, and listens to their changes (rtnetlink(7)): without a default route
/// there is no Internet, whichever program manages the network. Belongs to one thread and never blocks it.
class RouteConnectivity final : public Connectivity {
    Q_OBJECT

public:
    explicit RouteConnectivity(QObject *parent = nullptr);
    ~RouteConnectivity() override;

    [[nodiscard]] bool isOffline() const override;

private:
    void drain();

    /// -1 where the kernel offers none; then no change is told.
    int m_socket = -1;
    QSocketNotifier *m_notifier = nullptr;
};

} // namespace orbitledge
