#pragma once

#include "platform/OneShot.h"
#include "platform/httpprocess/HttpMessages.h"

#include <QPointer>
#include <QProcess>
#include <QTimer>

#include <filesystem>
#include <map>
#include <memory>
#include <string>

namespace orbitledge {

using HttpOutcome = tl::expected<HttpResponse, TransportFailure>;
using HttpAnswer = OneShot<HttpOutcome>;

/// The program that sends requests: started with the first, and let go of when there is none for a second.
class HttpProcess final : public QObject {
    Q_OBJECT

public:
    HttpProcess(const std::filesystem::path &program, HttpSetup setup);
    Q_DISABLE_COPY_MOVE(HttpProcess)
    ~HttpProcess() override;

    [[nodiscard]] std::chrono::milliseconds resourceTimeout() const;

    /// Hands the request over, and tells how it ended.
    std::shared_ptr<HttpAnswer> order(HttpRequest request);

    /// Ends the program, and what it has not answered as ConnectionLost: it is beyond answering.
    void giveUp();

    /// Ends what is under way as Cancelled, and whatever comes later at once.
    void shutDown();

private:
    [[nodiscard]] bool start();
    void write(const HttpFrame &frame);
    void read();
    void finished();
    void settle(HttpReport report);
    void settleAll(TransportFailure::Kind kind);
    void letGo();

    std::string m_path;
    int m_program = -1;
    HttpSetup m_setup;
    QPointer<QProcess> m_process;
    std::unique_ptr<HttpFrameReader> m_reader;
    std::map<quint64, std::shared_ptr<HttpAnswer>> m_pending;
    quint64 m_lastNumber = 0;
    QTimer m_idle;
    bool m_isShutDown = false;
};

} // namespace orbitledge
