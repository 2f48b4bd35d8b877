#include "service/ServiceAddresses.h"

#include "BuildInfo.h"
#include "model/WebAddress.h"

namespace orbitledge {

using namespace Qt::StringLiterals;

tl::expected<QUrl, QString> serviceAddress(const QString &name, const QString &text)
{
    const auto url = absoluteUrlFromText(text);
    if (!url || url->host().isEmpty())
        return tl::make_unexpected(name + u" is not a web address like https://example.com/"_s);
    if (!url->userInfo().isEmpty())
        return tl::make_unexpected(name + u" must not contain a user name or password"_s);
    const bool isSafe = url->scheme() == u"https" || (url->scheme() == u"http" && isLoopback(*url));
    if (!isSafe) {
        return tl::make_unexpected(name
            + u" must begin with https:// (http:// is for this machine only, like http://127.0.0.1:8080/)"_s);
    }
    return *url;
}

tl::expected<ServiceAddresses, QString> ServiceAddresses::fromEnvironment(
    const std::function<QByteArray(const char *name)> &variable)
{
    const auto address = [&variable](const char *name, const char *builtIn) {
        const QByteArray value = variable(name);
        return serviceAddress(QString::fromLatin1(name),
            value.isEmpty() ? QString::fromLatin1(builtIn) : QString::fromUtf8(value));
    };
    auto api = address("ORBITLEDGE_API_URL", build::apiUrl);
    if (!api)
        return tl::make_unexpected(std::move(api.error()));
    auto web = address("ORBITLEDGE_WEB_URL", build::webUrl);
    if (!web)
        return tl::make_unexpected(std::move(web.error()));
    auto releases = serviceAddress(u"The release host"_s, QString::fromLatin1(build::releaseUrl));
    if (!releases)
        return tl::make_unexpected(std::move(releases.error()));
    return ServiceAddresses{*std::move(api), *std::move(web), *std::move(releases)};
}

} // namespace orbitledge
