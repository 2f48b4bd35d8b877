#pragma once

#include "platform/UserDefaults.h"

#include <QSet>
#include <QString>

namespace orbitledge {

// The keys of reminders that were shown at once because their moment had passed, between two runs.

/// Empty where nothing is kept, or something else.
QSet<QString> readDeliveredLedger(const UserDefaults &defaults);

void writeDeliveredLedger(UserDefaults &defaults, const QSet<QString> &ledger);

void removeDeliveredLedger(UserDefaults &defaults);

} // namespace orbitledge
