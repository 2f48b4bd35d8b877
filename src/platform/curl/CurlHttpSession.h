#pragma once

#include "platform/Connectivity.h"
#include "platform/HttpSession.h"

#include <memory>

namespace orbitledge {

class HttpLoop;

/// HttpSession by libcurl, on a thread of its own: certificates, decompression and name servers can take
/// longer than a frame.
///
/// Proxies are the ones that the environment names (http_proxy and its like), never for a host of this
/// machine.
class CurlHttpSession final : public HttpSession {
public:
    /// Without `connectivity` nothing is waited for. `userAgent` is sent with every request (RFC 9110,
    /// section 10.1.5).
    explicit CurlHttpSession(QByteArray userAgent, HttpSessionConfiguration configuration = {},
        std::shared_ptr<Connectivity> connectivity = nullptr);
    /// Ends what is under way as Cancelled; who awaits it is told through the event loop.
    ~CurlHttpSession() override;

    [[nodiscard]] QCoro::Task<tl::expected<HttpResponse, TransportFailure>> send(
        HttpRequest request) override;

private:
    QByteArray m_userAgent;
    HttpSessionConfiguration m_configuration;
    std::shared_ptr<Connectivity> m_connectivity;
    std::shared_ptr<HttpLoop> m_loop;
};

} // namespace orbitledge
