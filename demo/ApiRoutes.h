#pragma once

#include "demo/CatalogueSearch.h"
#include "demo/Router.h"
#include "demo/SignIn.h"
#include "demo/Subscriptions.h"

namespace orbitledge::demo {

/// What programs ask: JSON in, JSON out.
class ApiRoutes {
public:
    ApiRoutes(SignIn &signIn, Accounts &accounts, Sessions &sessions, Subscriptions &subscriptions,
        QList<SearchableTemplate> catalogue)
        : m_signIn(signIn)
        , m_accounts(accounts)
        , m_sessions(sessions)
        , m_subscriptions(subscriptions)
        , m_catalogue(std::move(catalogue))
    {
    }

    void addTo(Router &router);

private:
    using Authorized = std::function<Response(const Request &, const UserProfile &, const QUuid &id)>;
    /// Only for those who are signed in.
    [[nodiscard]] Router::Handler authorized(Authorized handler);

    Response logIn(const Request &request);
    Response logOut(const Request &request);
    Response listSubscriptions(const UserProfile &profile);
    Response createSubscription(const Request &request, const UserProfile &profile);
    Response changeSubscription(
        const Request &request, const UserProfile &profile, const QUuid &id, bool cancel);
    Response searchTemplates(const Request &request);

    SignIn &m_signIn;
    Accounts &m_accounts;
    Sessions &m_sessions;
    Subscriptions &m_subscriptions;
    QList<SearchableTemplate> m_catalogue;
};

} // namespace orbitledge::demo
