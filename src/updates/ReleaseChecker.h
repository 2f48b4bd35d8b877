#pragma once

#include "platform/HttpSession.h"
#include "platform/SerialQueue.h"
#include "updates/ReleaseManifest.h"

#include <QCoroTask>

#include <tl/expected.hpp>

#include <memory>

namespace orbitledge {

/// Why no manifest could be had.
struct ReleaseCheckError {
    /// A sentence for people.
    QString errorDescription;

    friend bool operator==(const ReleaseCheckError &, const ReleaseCheckError &) = default;
};

/// Tells what the release host announces.
class ReleaseCheckerProviding {
public:
    ReleaseCheckerProviding() = default;
    ReleaseCheckerProviding(const ReleaseCheckerProviding &) = delete;
    ReleaseCheckerProviding &operator=(const ReleaseCheckerProviding &) = delete;
    virtual ~ReleaseCheckerProviding() = default;

    [[nodiscard]] virtual QCoro::Task<tl::expected<ReleaseManifest, ReleaseCheckError>> fetchLatest() = 0;
};

/// Fetches the manifest over HTTPS. Sends nothing about the person or the program but its name.
class ReleaseChecker final : public ReleaseCheckerProviding {
public:
    /// `configuredURL` is used where, without the blanks around it, it is an https address with a host;
    /// otherwise the usual path on the release host.
    ReleaseChecker(
        const QString &configuredURL, const QUrl &releaseHost, std::shared_ptr<HttpSession> session);

    [[nodiscard]] const QUrl &manifestURL() const { return m_manifestURL; }

    [[nodiscard]] QCoro::Task<tl::expected<ReleaseManifest, ReleaseCheckError>> fetchLatest() override;

private:
    QUrl m_manifestURL;
    std::shared_ptr<HttpSession> m_session;
    std::shared_ptr<SerialQueue> m_decoding = std::make_shared<SerialQueue>();
};

} // namespace orbitledge
