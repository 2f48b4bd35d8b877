#include "demo/Accounts.h"

#include "demo/ExchangeRates.h"

#include <QDateTime>
#include <QRegularExpression>

#include <sodium.h>

#include <array>

using namespace Qt::StringLiterals;

namespace orbitledge::demo {

namespace {

// Two passes over 19 MiB: slow enough for whoever guesses, and several sign-ins at once still fit a laptop.
constexpr unsigned long long passes = 2;
constexpr std::size_t memory = std::size_t(19) << 20;

QByteArray hashOf(const QString &password)
{
    const QByteArray utf8 = password.toUtf8();
    std::array<char, crypto_pwhash_STRBYTES> hash{};
    if (crypto_pwhash_str_alg(hash.data(), utf8.constData(), static_cast<unsigned long long>(utf8.size()),
            passes, memory, crypto_pwhash_ALG_ARGON2ID13)
        != 0)
        throw std::bad_alloc();
    return {hash.data()};
}

bool matches(const QByteArray &hash, const QString &password)
{
    const QByteArray utf8 = password.toUtf8();
    return crypto_pwhash_str_verify(
               hash.constData(), utf8.constData(), static_cast<unsigned long long>(utf8.size()))
        == 0;
}

const QString columns = u"id, email, first_name, last_name, is_verified, default_currency, monthly_budget, "
                        "created_at, updated_at"_s;

UserProfile profileOf(const QSqlQuery &row)
{
    UserProfile profile;
    profile.id = QUuid(row.value(0).toString());
    profile.email = row.value(1).toString();
    profile.firstName = row.value(2).toString();
    profile.lastName = row.value(3).toString();
    profile.isVerified = row.value(4).toBool();
    profile.planType = u"free"_s;
    profile.onboardingStatus = u"completed"_s;
    profile.defaultCurrency = row.value(5).toString();
    if (!row.isNull(6)) {
        if (const auto budget = Decimal::fromText(row.value(6).toString().toStdString()))
            profile.monthlyBudget = *budget;
    }
    profile.createdAt = Instant::fromMillisecondsSinceEpoch(row.value(7).toLongLong());
    profile.updatedAt = Instant::fromMillisecondsSinceEpoch(row.value(8).toLongLong());
    return profile;
}

std::optional<QString> problemOf(const NewAccount &account)
{
    static const QRegularExpression form(uR"(^[^\s@]+@[^\s@]+$)"_s);
    if (!form.match(account.email).hasMatch() || account.email.size() > Accounts::maximumEmailLength)
        return u"\"%1\" is not an e-mail address"_s.arg(account.email);
    if (account.password.size() < Accounts::minimumPasswordLength)
        return u"The password is too short; it needs at least %1 characters"_s.arg(
            Accounts::minimumPasswordLength);
    if (account.password.size() > Accounts::maximumPasswordLength)
        return u"The password is too long; keep it to %1 characters"_s.arg(Accounts::maximumPasswordLength);
    if (findCurrency(account.currency) == nullptr)
        return u"The service does not know the currency \"%1\""_s.arg(account.currency);
    return std::nullopt;
}

} // namespace

Accounts::Accounts(Database &database)
    : m_database(database)
    , m_hashOfNobody(hashOf(u"nobody"_s))
{
}

tl::expected<QUuid, QString> Accounts::add(const NewAccount &account)
{
    if (auto problem = problemOf(account))
        return tl::unexpected(*std::move(problem));
    const QByteArray hash = hashOf(account.password);
    return m_database.write([&]() -> tl::expected<QUuid, QString> {
        if (idOf(account.email))
            return tl::unexpected(u"There is already an account for %1"_s.arg(account.email));
        const QUuid id = QUuid::createUuid();
        const qint64 now = QDateTime::currentMSecsSinceEpoch();
        m_database.run(
            u"INSERT INTO accounts (id, email, email_key, password_hash, first_name, last_name, is_verified, "
            "default_currency, created_at, updated_at) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"_s,
            {stored(id), account.email, emailKey(account.email), QString::fromLatin1(hash),
                stored(account.firstName), stored(account.lastName), stored(account.isVerified),
                account.currency.toUpper(), now, now});
        return id;
    });
}

std::optional<UserProfile> Accounts::verify(const QString &email, const QString &password)
{
    QSqlQuery row = m_database.run(
        u"SELECT "_s + columns + u", password_hash FROM accounts WHERE email_key = ?"_s, {emailKey(email)});
    const bool exists = row.next();
    const QByteArray hash = exists ? row.value(9).toString().toLatin1() : m_hashOfNobody;
    const bool isRight = password.size() <= maximumPasswordLength && matches(hash, password);
    if (!exists || !isRight)
        return std::nullopt;
    return profileOf(row);
}

std::optional<UserProfile> Accounts::find(const QUuid &id)
{
    QSqlQuery row = m_database.run(u"SELECT "_s + columns + u" FROM accounts WHERE id = ?"_s, {stored(id)});
    return row.next() ? std::optional(profileOf(row)) : std::nullopt;
}

std::optional<QUuid> Accounts::idOf(const QString &email)
{
    QSqlQuery row = m_database.run(u"SELECT id FROM accounts WHERE email_key = ?"_s, {emailKey(email)});
    return row.next() ? std::optional(QUuid(row.value(0).toString())) : std::nullopt;
}

} // namespace orbitledge::demo
