#pragma once

#include <QString>

namespace orbitledge {

/// The daemon of the wallets of this session, for instance "org.kde.kwalletd5"; empty where the Secret
/// Service is asked, as it is where the daemon is not there, or wallets are switched off. Variables of the
/// environment decide, as they do for QtKeychain, whose programs find their items in one place then.
QString preferredWalletDaemon();

} // namespace orbitledge
