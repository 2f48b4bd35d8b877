#pragma once

#include "demo/ApiRoutes.h"
#include "demo/HttpFront.h"
#include "demo/Options.h"
#include "demo/WebPages.h"

namespace orbitledge::demo {

/// Everything that makes up the service, wired together.
class Service {
public:
    /// Opens the data and sees that the sample account is there.
    static tl::expected<std::unique_ptr<Service>, QString> open(const Options &options);

    Accounts &accounts() { return m_accounts; }

    /// The port, or why it cannot listen.
    tl::expected<quint16, QString> listen(quint16 port);
    void stop(std::function<void()> stopped) { m_front.stop(std::move(stopped)); }

private:
    Service(std::unique_ptr<Database> database, const Options &options);

    std::unique_ptr<Database> m_database;
    Accounts m_accounts;
    Sessions m_sessions;
    SignIn m_signIn;
    Subscriptions m_subscriptions;
    ApiRoutes m_api;
    WebPages m_pages;
    Router m_router;
    HttpFront m_front;
};

} // namespace orbitledge::demo
