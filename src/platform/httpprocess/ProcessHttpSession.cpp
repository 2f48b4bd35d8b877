#include "platform/httpprocess/ProcessHttpSession.h"

#include "platform/httpprocess/HttpProcess.h"

namespace orbitledge {

namespace {

QCoro::Task<HttpOutcome> exchange(
    std::shared_ptr<HttpProcess> process, HttpRequest request, std::chrono::milliseconds limit)
{
    const std::shared_ptr<HttpAnswer> answer = process->order(request);
    std::optional<HttpOutcome> outcome = co_await answer->settledWithin(limit);
    if (!outcome) {
        process->giveUp();
        outcome = tl::make_unexpected(TransportFailure{TransportFailure::Kind::TimedOut});
    }
    co_return *std::move(outcome);
}

} // namespace

ProcessHttpSession::ProcessHttpSession(
    const std::filesystem::path &program, QByteArray userAgent, HttpSessionConfiguration configuration)
    : m_process(std::make_shared<HttpProcess>(
          program, HttpSetup{.userAgent = std::move(userAgent), .configuration = std::move(configuration)}))
{
}

ProcessHttpSession::~ProcessHttpSession()
{
    m_process->shutDown();
}

QCoro::Task<HttpOutcome> ProcessHttpSession::send(HttpRequest request)
{
    // The program keeps to the limits itself. Where it is stopped, or does not answer at all, this counts.
    constexpr std::chrono::seconds patience(5);
    return exchange(m_process, std::move(request), m_process->resourceTimeout() + patience);
}

} // namespace orbitledge
