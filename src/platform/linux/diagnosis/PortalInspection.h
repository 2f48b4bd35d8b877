#pragma once

#include "platform/Diagnosis.h"
#include "platform/linux/diagnosis/BusInquiry.h"

#include <QCoroTask>

#include <chrono>

namespace orbitledge {

/// The desktop's portal, and what it tells of how programs should look.
QCoro::Task<findings::Portal> inspectPortal(BusNames names, std::chrono::milliseconds limit);

} // namespace orbitledge
