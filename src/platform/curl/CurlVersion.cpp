#include "platform/curl/CurlVersion.h"

#include <curl/curl.h>

namespace orbitledge {

QString curlVersion()
{
    const curl_version_info_data *const information = curl_version_info(CURLVERSION_NOW);
    const QString version = QString::fromLatin1(information->version);
    if (information->ssl_version == nullptr)
        return version;
    return version + QStringLiteral(" (%1)").arg(QLatin1StringView(information->ssl_version));
}

} // namespace orbitledge
