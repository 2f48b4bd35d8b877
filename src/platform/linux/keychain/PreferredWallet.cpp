#include "platform/linux/keychain/PreferredWallet.h"

#include <QByteArray>
#include <QtGlobal>

namespace orbitledge {

using namespace Qt::StringLiterals;

QString preferredWalletDaemon()
{
    const QByteArray desktop = qgetenv("XDG_CURRENT_DESKTOP");
    const QByteArray session = qgetenv("DESKTOP_SESSION");
    const QByteArray version = qgetenv("KDE_SESSION_VERSION");
    bool isKde = desktop == "KDE";
    if (!isKde && desktop != "GNOME" && desktop != "Unity" && desktop != "XFCE") {
        if (session == "kde4")
            return u"org.kde.kwalletd"_s;
        const bool isOther = session == "gnome" || session.contains("xfce") || session == "xubuntu";
        isKde = session == "kde"
            || (!isOther && qEnvironmentVariableIsEmpty("GNOME_DESKTOP_SESSION_ID")
                && !qEnvironmentVariableIsEmpty("KDE_FULL_SESSION"));
    }
    if (isKde && version == "5")
        return u"org.kde.kwalletd5"_s;
    if (isKde && version == "4")
        return u"org.kde.kwalletd"_s;
    return {};
}

} // namespace orbitledge
