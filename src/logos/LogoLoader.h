#pragma once

#include "logos/cache/LogoCache.h"
#include "platform/Clock.h"
#include "platform/HttpSession.h"

#include <QCoroTask>
#include <QImage>
#include <QObject>
#include <QUrl>

#include <memory>

namespace orbitledge {

/// Gets the pictures of logos: from memory at once, or else from the disk or their server, off this thread.
///
/// Their addresses come from anybody, so: https only, nothing but the address is told, at most 1 MiB is
/// taken, and the content's own first bytes say what it is. Four are fetched at once, each address once. One
/// that could not be had is not asked for again within an hour; one that is no longer fresh is shown until
/// there is a newer one.
///
/// It may be destroyed at any time; what is under way is given up.
class LogoLoader final : public QObject {
    Q_OBJECT

public:
    struct Parts {
        /// With `sessionConfiguration`.
        std::shared_ptr<HttpSession> http;
        /// Used on a thread of the loader's, and by nobody else.
        std::shared_ptr<LogoCache> cache;
        std::shared_ptr<Clock> clock;
    };

    explicit LogoLoader(Parts parts, QObject *parent = nullptr);
    ~LogoLoader() override;

    static HttpSessionConfiguration sessionConfiguration();

    /// At once; null where it is not in memory. Then it is loaded, unless it cannot be had.
    QImage image(const QUrl &url);

    /// Forgets all of them, also those on the disk; what is under way comes to nothing. Done when nothing is
    /// left.
    QCoro::Task<void> clear();

Q_SIGNALS:
    /// Through the event loop: `image` has it now, or has a newer one.
    void arrived(const QUrl &url);

private:
    class State;

    std::shared_ptr<State> m_state;
};

} // namespace orbitledge
