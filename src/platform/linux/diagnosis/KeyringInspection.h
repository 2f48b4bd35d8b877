#pragma once

#include "platform/Diagnosis.h"
#include "platform/Keychain.h"
#include "platform/linux/diagnosis/BusInquiry.h"

#include <QCoroTask>

#include <chrono>

namespace orbitledge {

/// The keyring that the program would use here, and whether it keeps the item. Nobody is prompted.
QCoro::Task<findings::Keyring> inspectKeyring(
    BusNames names, KeychainItem item, std::chrono::milliseconds limit);

} // namespace orbitledge
