#pragma once

#include "demo/HttpMessages.h"

#include <QUuid>

#include <functional>
#include <vector>

namespace orbitledge::demo {

/// Who answers what. A pattern is a path in which one segment may be "{id}", which stands for an identifier
/// in any letter case.
class Router {
public:
    using Handler = std::function<Response(const Request &, const QUuid &id)>;
    using ErrorPage = std::function<Response(const Request &, int status, const ErrorBody &)>;

    struct Route {
        Method method = Method::Get;
        QByteArray pattern;
        Handler handler;
        /// Whether refusals are pages, whatever the request says it accepts.
        bool isPage = false;
        /// Whether answering computes for long.
        bool isSlow = false;
    };

    void add(Route route) { m_routes.push_back(std::move(route)); }
    void setErrorPage(ErrorPage page) { m_errorPage = std::move(page); }

    [[nodiscard]] bool isSlow(const Request &request) const;
    /// Never throws: where a handler fails, the answer says so and the reason goes to standard error.
    [[nodiscard]] Response answer(const Request &request) const;

private:
    struct Match {
        const Route *route = nullptr;
        QUuid id;
        /// What the path can be asked with, where it is known at all.
        QList<QByteArray> allowed;
        bool isPage = false;
    };

    [[nodiscard]] Match find(const Request &request) const;
    [[nodiscard]] Response refuse(
        const Request &request, bool isPage, int status, const ErrorBody &body) const;

    std::vector<Route> m_routes;
    ErrorPage m_errorPage;
};

} // namespace orbitledge::demo
