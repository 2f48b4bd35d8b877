#pragma once

#include "platform/HttpSession.h"

#include <filesystem>
#include <memory>

namespace orbitledge {

class HttpProcess;

/// HttpSession by a program of its own, which is there while something is to be sent, and ends a second after
/// the last answer: what it takes to speak HTTP and TLS is more than all the rest of a program that asks for
/// something every quarter of an hour. Whatever an answer does to it, it is not this process that it does it
/// to.
///
/// Where that program cannot be started or says what it should not, requests fail as Other; where it ends
/// without an answer, as ConnectionLost. Nothing is sent twice.
class ProcessHttpSession final : public HttpSession {
public:
    /// `program` is a path. It is opened now, and what is started later is that file, also where an update
    /// has put another one in its place.
    ProcessHttpSession(const std::filesystem::path &program, QByteArray userAgent,
        HttpSessionConfiguration configuration = {});
    /// Ends what is under way as Cancelled; who awaits it is told through the event loop.
    ~ProcessHttpSession() override;

    [[nodiscard]] QCoro::Task<tl::expected<HttpResponse, TransportFailure>> send(
        HttpRequest request) override;

private:
    std::shared_ptr<HttpProcess> m_process;
};

} // namespace orbitledge
