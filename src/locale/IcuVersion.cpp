#include "locale/IcuVersion.h"

#include <unicode/uversion.h>

#include <array>

namespace orbitledge {

QString icuVersion()
{
    UVersionInfo version{};
    u_getVersion(version);
    std::array<char, U_MAX_VERSION_STRING_LENGTH> text{};
    u_versionToString(version, text.data());
    return QString::fromLatin1(text.data());
}

} // namespace orbitledge
