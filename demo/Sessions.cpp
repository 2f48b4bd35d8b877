#include "demo/Sessions.h"

#include <QDateTime>
#include <QLocale>

#include <sodium.h>

#include <array>

using namespace Qt::StringLiterals;

namespace orbitledge::demo {

namespace {

constexpr std::size_t secretBytes = 32;
constexpr qsizetype maximumTokenLength = 100;

QByteArray hashOf(const QByteArray &message, QByteArrayView key)
{
    std::array<unsigned char, crypto_generichash_BYTES> hash{};
    crypto_generichash(hash.data(), hash.size(), reinterpret_cast<const unsigned char *>(message.constData()),
        static_cast<unsigned long long>(message.size()), reinterpret_cast<const unsigned char *>(key.data()),
        static_cast<std::size_t>(key.size()));
    return QByteArray(reinterpret_cast<const char *>(hash.data()), hash.size()).toHex();
}

QString storedHash(const QByteArray &token)
{
    return QString::fromLatin1(hashOf(token, "orbitledge demo session"));
}

QByteArray httpDate(const Instant &instant)
{
    const QDateTime moment = QDateTime::fromMSecsSinceEpoch(instant.millisecondsSinceEpoch(), Qt::UTC);
    return QLocale::c().toString(moment, u"ddd, dd MMM yyyy hh:mm:ss 'GMT'"_s).toLatin1();
}

} // namespace

NewSession Sessions::start(const QUuid &accountId)
{
    NewSession session{newSecret(),
        Instant::fromMillisecondsSinceEpoch(
            QDateTime::currentMSecsSinceEpoch() + std::chrono::milliseconds(m_lifetime).count())};
    m_database.write([&] {
        purge();
        m_database.run(u"INSERT INTO sessions (token_hash, account_id, expires_at) VALUES (?, ?, ?)"_s,
            {storedHash(session.token), stored(accountId), stored(session.expiresAt)});
        return true;
    });
    return session;
}

std::optional<QUuid> Sessions::find(const QByteArray &token)
{
    if (token.isEmpty() || token.size() > maximumTokenLength)
        return std::nullopt;
    QSqlQuery row
        = m_database.run(u"SELECT account_id FROM sessions WHERE token_hash = ? AND expires_at > ?"_s,
            {storedHash(token), QDateTime::currentMSecsSinceEpoch()});
    return row.next() ? std::optional(QUuid(row.value(0).toString())) : std::nullopt;
}

void Sessions::end(const QByteArray &token)
{
    m_database.write([&] {
        m_database.run(u"DELETE FROM sessions WHERE token_hash = ?"_s, {storedHash(token)});
        return true;
    });
}

void Sessions::purge()
{
    m_database.run(u"DELETE FROM sessions WHERE expires_at <= ?"_s, {QDateTime::currentMSecsSinceEpoch()});
}

QByteArray Sessions::cookieFor(const NewSession &session) const
{
    // Not "Secure": this service speaks plain HTTP, and only on loopback.
    return QByteArray(sessionCookie) + '=' + session.token
        + "; Path=/; Max-Age=" + QByteArray::number(static_cast<qint64>(m_lifetime.count()))
        + "; Expires=" + httpDate(session.expiresAt) + "; HttpOnly; SameSite=Lax";
}

QByteArray Sessions::expiredCookie()
{
    return QByteArray(sessionCookie)
        + "=; Path=/; Max-Age=0; Expires=Thu, 01 Jan 1970 00:00:00 GMT; HttpOnly; SameSite=Lax";
}

QByteArray formTokenFor(const QByteArray &secret)
{
    return hashOf("orbitledge demo form"_ba + secret, "orbitledge demo forms"_ba);
}

bool isSameSecret(const QByteArray &left, const QByteArray &right)
{
    return left.size() == right.size()
        && sodium_memcmp(left.constData(), right.constData(), static_cast<std::size_t>(left.size())) == 0;
}

QByteArray newSecret()
{
    QByteArray bytes(secretBytes, Qt::Uninitialized);
    randombytes_buf(bytes.data(), secretBytes);
    return bytes.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals);
}

} // namespace orbitledge::demo
