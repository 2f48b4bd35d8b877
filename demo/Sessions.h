#pragma once

#include "demo/Database.h"

#include <chrono>
#include <optional>

namespace orbitledge::demo {

inline constexpr const char *sessionCookie = "orbitledge_user_session";

/// A sign-in that has just been accepted.
struct NewSession {
    /// The secret that the browser or client keeps. Never stored here, never shown.
    QByteArray token;
    Instant expiresAt;
};

/// Who is signed in. Of each secret only a hash is kept: who reads the database cannot sign in with it.
class Sessions {
public:
    Sessions(Database &database, std::chrono::seconds lifetime)
        : m_database(database)
        , m_lifetime(lifetime)
    {
    }

    /// Also forgets the sessions that have expired.
    NewSession start(const QUuid &accountId);
    /// Whose session it is, while it lasts.
    std::optional<QUuid> find(const QByteArray &token);
    void end(const QByteArray &token);
    void purge();

    [[nodiscard]] std::chrono::seconds lifetime() const { return m_lifetime; }

    /// The Set-Cookie header's value that hands a session to a browser, and the one that takes it back.
    [[nodiscard]] QByteArray cookieFor(const NewSession &session) const;
    [[nodiscard]] static QByteArray expiredCookie();

private:
    Database &m_database;
    std::chrono::seconds m_lifetime;
};

/// What a form of a session must carry, so that no other site's page can send it. It follows from the
/// session's secret and does not tell it.
QByteArray formTokenFor(const QByteArray &secret);

/// Compares in a time that does not depend on where the two differ.
bool isSameSecret(const QByteArray &left, const QByteArray &right);

/// 32 random bytes as text that fits a cookie.
QByteArray newSecret();

} // namespace orbitledge::demo
