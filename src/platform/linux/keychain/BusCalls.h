#pragma once

#include "platform/Keychain.h"

#include <QCoroTask>
#include <QDBusMessage>
#include <QString>

#include <tl/expected.hpp>

#include <chrono>

namespace orbitledge {

/// The calls that one operation makes on the session bus, and the time in which they have to be answered, all
/// together. Must outlive what it returns.
///
/// Where a call fails, TimedOut means that nobody answered, IoError that whoever should answer went away,
/// AuthFailed that the bus or the service does not let us, ItemNotFound that there is no such object, and
/// InteractionNotAllowed that it is locked.
class BusCalls {
public:
    explicit BusCalls(std::chrono::milliseconds limit)
        : m_limit(limit)
        , m_left(limit)
    {
    }

    /// The limit for the whole operation, and what is left of it.
    [[nodiscard]] std::chrono::milliseconds limit() const { return m_limit; }
    [[nodiscard]] std::chrono::milliseconds left() const { return m_left; }

    /// Starts the whole time anew, since a person was waited for.
    void restartTime() { m_left = m_limit; }

    QCoro::Task<tl::expected<QDBusMessage, KeychainStatus>> call(QDBusMessage message);

    /// For what takes a person's time: waits without limit, and ends when the service does.
    QCoro::Task<tl::expected<QDBusMessage, KeychainStatus>> callPatiently(QDBusMessage message);

    /// Is there somebody who answers for `name`? Whom the bus can start is started and waited for.
    /// ItemNotFound where there is nobody and the bus cannot help.
    QCoro::Task<KeychainStatus> summon(QString name);

    /// The same, and who cannot be started is waited for as long as `comingUp`. NotAvailable where nobody
    /// came.
    QCoro::Task<KeychainStatus> summon(QString name, std::chrono::milliseconds comingUp);

    /// The unique name of who answers for `name`. IoError where nobody does.
    QCoro::Task<tl::expected<QString, KeychainStatus>> owner(QString name);

private:
    [[nodiscard]] bool hasTime() const { return m_left > std::chrono::milliseconds::zero(); }
    /// The time runs while it is awaited.
    template <typename Answer> QCoro::Task<Answer> timed(QCoro::Task<Answer> asking);

    std::chrono::milliseconds m_limit;
    std::chrono::milliseconds m_left;
};

} // namespace orbitledge
