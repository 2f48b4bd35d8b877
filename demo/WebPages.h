#pragma once

#include "demo/PageFrame.h"
#include "demo/Router.h"
#include "demo/SignIn.h"
#include "demo/Subscriptions.h"

namespace orbitledge::demo {

/// What people see in a browser. Plain pages and forms, without scripts; a browser is signed in by the same
/// cookie as a program.
class WebPages {
public:
    WebPages(SignIn &signIn, Accounts &accounts, Sessions &sessions, Subscriptions &subscriptions)
        : m_signIn(signIn)
        , m_accounts(accounts)
        , m_sessions(sessions)
        , m_subscriptions(subscriptions)
    {
    }

    void addTo(Router &router);

private:
    using ViewerPage
        = std::function<Response(const Request &, const Viewer &, const UserProfile &, const QUuid &id)>;
    /// Only for those who are signed in; others are asked to, and come back here after.
    [[nodiscard]] Router::Handler signedIn(ViewerPage handler);
    /// A form of one who is signed in, sent by a page of this service.
    [[nodiscard]] Router::Handler signedInForm(ViewerPage handler);

    [[nodiscard]] Viewer viewerOf(const Request &request);

    Response start(const Request &request);
    Response logInPage(const Request &request);
    Response logIn(const Request &request);
    Response logOut(const Request &request);
    Response calendar(const Request &request, const Viewer &viewer, const UserProfile &profile);
    Response editPage(
        const Request &request, const Viewer &viewer, const UserProfile &profile, const QUuid &id);
    Response edit(const Request &request, const Viewer &viewer, const UserProfile &profile, const QUuid &id);
    static Response download(const Viewer &viewer);

    SignIn &m_signIn;
    Accounts &m_accounts;
    Sessions &m_sessions;
    Subscriptions &m_subscriptions;
};

} // namespace orbitledge::demo
