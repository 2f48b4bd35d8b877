#include "platform/httpprocess/HttpWorker.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <limits>

namespace orbitledge {

namespace {

/// Whole; where nobody reads, the process ends by the signal that tells so.
void writeOutput(QByteArrayView bytes)
{
    while (!bytes.isEmpty()) {
        const ssize_t written = ::write(STDOUT_FILENO, bytes.data(), static_cast<std::size_t>(bytes.size()));
        if (written < 0 && errno != EINTR)
            return;
        if (written > 0)
            bytes = bytes.sliced(written);
    }
}

/// Everything is a copy: nobody waits for the end of it.
QCoro::Task<void> answer(std::shared_ptr<HttpSession> session, HttpOrder order)
{
    auto sending = session->send(std::move(order.request));
    auto outcome = co_await sending;
    HttpReport report;
    report.number = order.number;
    report.outcome = std::move(outcome);
    const HttpFrame frame = encoded(report);
    writeOutput(frame.lengths());
    writeOutput(frame.head);
    writeOutput(frame.body);
}

} // namespace

HttpWorker::HttpWorker(MakeSession makeSession)
    : m_makeSession(std::move(makeSession))
    // Who starts this program may say what it likes.
    , m_reader(std::numeric_limits<int>::max(), std::numeric_limits<int>::max())
    , m_input(STDIN_FILENO, QSocketNotifier::Read)
{
    connect(&m_input, &QSocketNotifier::activated, this, &HttpWorker::read);
}

void HttpWorker::read()
{
    constexpr std::size_t pipeSize = std::size_t{64} * 1024;
    std::array<char, pipeSize> buffer{};
    const ssize_t count = ::read(STDIN_FILENO, buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR)
        return;
    if (count <= 0) {
        Q_EMIT done();
        return;
    }
    QByteArrayView bytes(buffer.data(), count);
    while (!bytes.isEmpty()) {
        const bool isFine = m_reader.feed(bytes);
        const std::optional<HttpFrame> frame = m_reader.take();
        if (!isFine || (frame && !perform(*frame))) {
            Q_EMIT failed();
            return;
        }
    }
}

bool HttpWorker::perform(const HttpFrame &frame)
{
    if (!m_session) {
        std::optional<HttpSetup> setup = decodedSetup(frame);
        if (!setup)
            return false;
        m_session = m_makeSession(*std::move(setup));
        return true;
    }
    std::optional<HttpOrder> order = decodedOrder(frame);
    if (!order)
        return false;
    answer(m_session, *std::move(order));
    return true;
}

} // namespace orbitledge
