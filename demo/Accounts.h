#pragma once

#include "demo/Database.h"
#include "model/UserProfile.h"

#include <optional>

namespace orbitledge::demo {

struct NewAccount {
    QString email;
    QString password;
    QString firstName;
    QString lastName;
    QString currency;
    bool isVerified = true;
};

/// Who may sign in. Passwords are kept as salted argon2id hashes only.
class Accounts {
public:
    static constexpr qsizetype maximumEmailLength = 254;
    static constexpr qsizetype minimumPasswordLength = 8;
    static constexpr qsizetype maximumPasswordLength = 1'000;

    /// `libsodium` must have been initialised.
    explicit Accounts(Database &database);

    /// The new account's identifier, or a sentence that says why there is none.
    tl::expected<QUuid, QString> add(const NewAccount &account);

    /// The profile where the password is right. An e-mail that nobody has takes as long to refuse as a wrong
    /// password, so that the time tells nobody who has an account.
    std::optional<UserProfile> verify(const QString &email, const QString &password);

    std::optional<UserProfile> find(const QUuid &id);
    std::optional<QUuid> idOf(const QString &email);

    /// How e-mails are compared.
    static QString emailKey(const QString &email) { return email.trimmed().toCaseFolded(); }

private:
    Database &m_database;
    QByteArray m_hashOfNobody;
};

} // namespace orbitledge::demo
