#pragma once

#include "model/Instant.h"

#include <QCoroTask>
#include <QString>

#include <tl/expected.hpp>

#include <optional>

namespace orbitledge {

/// Has due notifications delivered while the program does not run.
class UnattendedDelivery {
public:
    UnattendedDelivery() = default;
    UnattendedDelivery(const UnattendedDelivery &) = delete;
    UnattendedDelivery &operator=(const UnattendedDelivery &) = delete;
    virtual ~UnattendedDelivery() = default;

    /// A delivery will be started when the machine's clock shows `next`, to the second, or as soon after that
    /// as the machine is up; instead of what was arranged before. Where absent, nothing of what was arranged
    /// is left on the machine. Success also where the machine has no means for it. On failure a sentence for
    /// people.
    [[nodiscard]] virtual QCoro::Task<tl::expected<void, QString>> arrange(std::optional<Instant> next) = 0;
};

} // namespace orbitledge
