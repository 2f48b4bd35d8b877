#include "platform/curl/CurlVersion.h"

#include "platform/curl/CurlLibrary.h"

namespace orbitledge {

QString curlVersion()
{
    const CurlLibrary *const library = CurlLibrary::shared();
    if (library == nullptr)
        return QStringLiteral("missing");
    const curl_version_info_data *const information = library->versionInfo(CURLVERSION_NOW);
    QString version = QString::fromLatin1(information->version);
    if (information->ssl_version == nullptr)
        return version;
    return version + QStringLiteral(" (%1)").arg(QLatin1StringView(information->ssl_version));
}

} // namespace orbitledge
