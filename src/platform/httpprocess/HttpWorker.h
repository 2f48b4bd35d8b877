#pragma once

#include "platform/httpprocess/HttpMessages.h"

#include <QObject>
#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace orbitledge {

/// The other side of a ProcessHttpSession: does what standard input tells, and answers on standard output.
class HttpWorker final : public QObject {
    Q_OBJECT

public:
    using MakeSession = std::function<std::shared_ptr<HttpSession>(HttpSetup)>;

    explicit HttpWorker(MakeSession makeSession);

Q_SIGNALS:
    /// Nobody is there any more to answer.
    void done();
    /// What came was not meant for this program.
    void failed();

private:
    void read();
    [[nodiscard]] bool perform(const HttpFrame &frame);

    MakeSession m_makeSession;
    std::shared_ptr<HttpSession> m_session;
    HttpFrameReader m_reader;
    QSocketNotifier m_input;
};

} // namespace orbitledge
