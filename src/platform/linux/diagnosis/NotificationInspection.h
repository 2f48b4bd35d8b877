#pragma once

#include "platform/Diagnosis.h"
#include "platform/linux/diagnosis/BusInquiry.h"

#include <QByteArray>
#include <QCoroTask>
#include <QString>

#include <chrono>
#include <functional>

namespace orbitledge {

/// Who shows notifications, and what the desktop was set to for those of this application.
QCoro::Task<findings::Notifications> inspectNotifications(BusNames names, QString applicationId,
    std::function<QByteArray(const char *)> variable, std::chrono::milliseconds limit);

} // namespace orbitledge
