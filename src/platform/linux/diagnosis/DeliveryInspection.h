#pragma once

#include "platform/Diagnosis.h"
#include "platform/linux/diagnosis/BusInquiry.h"

#include <QCoroTask>
#include <QString>

#include <chrono>

namespace orbitledge {

/// The person's systemd, and what it does about the timer of this name, which has no suffix. `isArranged` is
/// whether the timer's files are there.
QCoro::Task<findings::Delivery> inspectDelivery(
    BusNames names, QString unit, bool isArranged, std::chrono::milliseconds limit);

} // namespace orbitledge
