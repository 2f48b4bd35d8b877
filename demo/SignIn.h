#pragma once

#include "demo/Accounts.h"
#include "demo/Sessions.h"
#include "demo/SignInThrottle.h"

namespace orbitledge::demo {

struct SignedIn {
    UserProfile profile;
    NewSession session;
};

struct SignInFailure {
    /// Set where there were too many wrong attempts.
    std::optional<std::chrono::seconds> wait;

    [[nodiscard]] int status() const { return wait ? 429 : 401; }
    [[nodiscard]] QString sentence() const
    {
        using namespace Qt::StringLiterals;
        // Who asks may add for how long to wait, so that the sentence leaves it out.
        return wait ? u"There were too many wrong sign-ins for this e-mail."_s
                    : u"The e-mail or the password is wrong."_s;
    }
};

/// The one way in, for programs and for the page.
class SignIn {
public:
    SignIn(Accounts &accounts, Sessions &sessions)
        : m_accounts(accounts)
        , m_sessions(sessions)
    {
    }

    tl::expected<SignedIn, SignInFailure> attempt(const QString &email, const QString &password)
    {
        // No account has one so long, and nothing that long must be remembered.
        if (email.size() > Accounts::maximumEmailLength)
            return tl::unexpected(SignInFailure{});
        const QString key = Accounts::emailKey(email);
        if (const auto wait = m_throttle.waitFor(key, std::chrono::steady_clock::now()))
            return tl::unexpected(SignInFailure{wait});
        auto profile = m_accounts.verify(email, password);
        if (!profile) {
            m_throttle.recordFailure(key, std::chrono::steady_clock::now());
            return tl::unexpected(SignInFailure{});
        }
        const QUuid id = profile->id;
        return SignedIn{*std::move(profile), m_sessions.start(id)};
    }

private:
    Accounts &m_accounts;
    Sessions &m_sessions;
    SignInThrottle m_throttle;
};

} // namespace orbitledge::demo
