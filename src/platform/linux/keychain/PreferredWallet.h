#pragma once

#include <QString>

namespace orbitledge {

/// The daemon of the wallets that QtKeychain prefers in this session, for instance "org.kde.kwalletd5"; empty
/// where that is the Secret Service. It decides by variables of the environment, and falls back to the Secret
/// Service where the daemon does not answer.
QString preferredWalletDaemon();

} // namespace orbitledge
