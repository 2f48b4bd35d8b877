#include "platform/httpprocess/HttpProcess.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <utility>

namespace orbitledge {

namespace {

/// Requests of one refresh follow each other at once, and so do those of someone who types.
constexpr std::chrono::seconds idleTime(1);

/// Headers of an answer; libcurl takes 300 KiB of them.
constexpr qint64 largestHead = qint64{1} << 20;

} // namespace

HttpProcess::HttpProcess(const std::filesystem::path &program, HttpSetup setup)
    : m_path(program.string())
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-vararg,hicpp-vararg): POSIX has it so
    , m_program(::open(m_path.c_str(), O_PATH | O_CLOEXEC))
    , m_setup(std::move(setup))
{
    m_idle.setSingleShot(true);
    m_idle.setInterval(idleTime);
    connect(&m_idle, &QTimer::timeout, this, &HttpProcess::letGo);
}

HttpProcess::~HttpProcess()
{
    for (QProcess *const process : findChildren<QProcess *>()) {
        process->disconnect();
        process->kill();
        process->waitForFinished();
    }
    if (m_program >= 0)
        ::close(m_program);
}

std::chrono::milliseconds HttpProcess::resourceTimeout() const
{
    return m_setup.configuration.resourceTimeout;
}

bool HttpProcess::start()
{
    if (m_program < 0)
        return false;
    // The process goes with this, or when it has ended.
    // NOLINTNEXTLINE(cppcoreguidelines-owning-memory)
    m_process = new QProcess(this);
    m_process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process->setProgram(QString::fromStdString(m_path));
    m_process->setChildProcessModifier([program = m_program, name = m_path.data()] {
        const std::array<char *, 2> words{name, nullptr};
        ::fexecve(program, words.data(), environ);
        ::_exit(127);
    });
    connect(m_process, &QProcess::readyReadStandardOutput, this, &HttpProcess::read);
    connect(m_process, &QProcess::finished, this, &HttpProcess::finished);
    // Queued, since it is told while this starts it. There is no other end of one that never began.
    connect(
        m_process, &QProcess::errorOccurred, this,
        [this, started = QPointer(m_process)](QProcess::ProcessError error) {
            if (error == QProcess::FailedToStart && started && started == m_process)
                finished();
        },
        Qt::QueuedConnection);
    m_reader = std::make_unique<HttpFrameReader>(largestHead, m_setup.configuration.largestBody);
    m_process->start();
    write(encoded(m_setup));
    return true;
}

void HttpProcess::write(const HttpFrame &frame)
{
    m_process->write(frame.lengths());
    m_process->write(frame.head);
    m_process->write(frame.body);
}

std::shared_ptr<HttpAnswer> HttpProcess::order(HttpRequest request)
{
    auto answer = std::make_shared<HttpAnswer>();
    const auto fail = [&](TransportFailure::Kind kind) {
        answer->settle(tl::make_unexpected(TransportFailure{kind}));
        return answer;
    };
    if (m_isShutDown)
        return fail(TransportFailure::Kind::Cancelled);
    if (!m_process && !start())
        return fail(TransportFailure::Kind::Other);
    m_idle.stop();
    m_pending.emplace(++m_lastNumber, answer);
    write(encoded(HttpOrder{.number = m_lastNumber, .request = std::move(request)}));
    return answer;
}

void HttpProcess::read()
{
    const QByteArray bytes = m_process->readAllStandardOutput();
    QByteArrayView rest = bytes;
    const auto refuse = [this] {
        settleAll(TransportFailure::Kind::Other);
        giveUp();
    };
    while (!rest.isEmpty()) {
        if (!m_reader->feed(rest))
            return refuse();
        std::optional<HttpFrame> frame = m_reader->take();
        if (!frame)
            continue;
        std::optional<HttpReport> report = decodedReport(*std::move(frame));
        if (!report)
            return refuse();
        settle(*std::move(report));
    }
}

void HttpProcess::settle(HttpReport report)
{
    const auto found = m_pending.find(report.number);
    if (found == m_pending.end())
        return;
    found->second->settle(std::move(report.outcome));
    m_pending.erase(found);
    if (m_pending.empty())
        m_idle.start();
}

void HttpProcess::settleAll(TransportFailure::Kind kind)
{
    for (const auto &[number, answer] : std::exchange(m_pending, {}))
        answer->settle(tl::make_unexpected(TransportFailure{kind}));
}

void HttpProcess::finished()
{
    const bool wasKilled
        = m_process->error() != QProcess::FailedToStart && m_process->exitStatus() == QProcess::CrashExit;
    m_process->deleteLater();
    m_process = nullptr;
    m_idle.stop();
    settleAll(wasKilled ? TransportFailure::Kind::ConnectionLost : TransportFailure::Kind::Other);
}

void HttpProcess::giveUp()
{
    m_idle.stop();
    if (QProcess *const process = std::exchange(m_process, nullptr)) {
        process->disconnect(this);
        connect(process, &QProcess::finished, process, &QObject::deleteLater);
        process->kill();
    }
    settleAll(TransportFailure::Kind::ConnectionLost);
}

void HttpProcess::letGo()
{
    QProcess *const process = std::exchange(m_process, nullptr);
    process->disconnect(this);
    connect(process, &QProcess::finished, process, &QObject::deleteLater);
    // For which it waits, to end.
    process->closeWriteChannel();
}

void HttpProcess::shutDown()
{
    m_isShutDown = true;
    settleAll(TransportFailure::Kind::Cancelled);
    giveUp();
}

} // namespace orbitledge
