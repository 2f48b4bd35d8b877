#pragma once

#include <QObject>

namespace orbitledge {

/// What the machine says of its network. A hint only: where it says that there is none, there may be one.
class Connectivity : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// False also where the machine does not tell.
    [[nodiscard]] virtual bool isOffline() const = 0;

Q_SIGNALS:
    void changed();
};

} // namespace orbitledge
