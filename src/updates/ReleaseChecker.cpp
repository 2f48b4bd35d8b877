#include "updates/ReleaseChecker.h"

#include "model/WebAddress.h"
#include "platform/HttpStatusPhrase.h"

namespace orbitledge {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using Outcome = tl::expected<ReleaseManifest, ReleaseCheckError>;

tl::unexpected<ReleaseCheckError> failed(QString reason)
{
    return tl::make_unexpected(ReleaseCheckError{std::move(reason)});
}

QUrl manifestAddress(const QString &configured, const QUrl &releaseHost)
{
    const QString address = configured.trimmed();
    const auto url = absoluteUrlFromText(address);
    if (url && address.startsWith("https:"_L1) && !url->host().isEmpty())
        return *url;
    return releaseHost.resolved(QUrl(u"/mac/latest.json"_s));
}

// Free of the checker, which may be gone while it waits.
QCoro::Task<Outcome> fetch(
    QUrl address, std::shared_ptr<HttpSession> session, std::shared_ptr<SerialQueue> decoding)
{
    HttpRequest request;
    request.url = address;
    request.headers.append(HttpHeader{"Accept", "application/json"});
    request.idleTimeout = 10s;
    auto response = co_await session->send(std::move(request));
    if (!response)
        co_return failed(response.error().errorDescription());
    if (!response->isSuccess())
        co_return failed(httpStatusPhrase(response->statusCode.value_or(0)));

    auto work
        = [json = std::move(response->body)]() mutable { return decodeReleaseManifest(std::move(json)); };
    auto task = decoding->run(std::move(work));
    auto manifest = co_await task;
    if (!manifest)
        co_return failed(manifest.error().errorDescription());
    co_return *std::move(manifest);
}

} // namespace

ReleaseChecker::ReleaseChecker(
    const QString &configuredURL, const QUrl &releaseHost, std::shared_ptr<HttpSession> session)
    : m_manifestURL(manifestAddress(configuredURL, releaseHost))
    , m_session(std::move(session))
{
}

QCoro::Task<Outcome> ReleaseChecker::fetchLatest()
{
    return fetch(m_manifestURL, m_session, m_decoding);
}

} // namespace orbitledge
