#pragma once

#include "platform/Connectivity.h"

namespace orbitledge::testing {

/// A network that the test takes away and gives back.
class FakeConnectivity final : public Connectivity {
public:
    [[nodiscard]] bool isOffline() const override { return m_isOffline; }

    void setOffline(bool isOffline)
    {
        m_isOffline = isOffline;
        Q_EMIT changed();
    }

private:
    bool m_isOffline = false;
};

} // namespace orbitledge::testing
