#include "demo/Router.h"

#include "model/UuidText.h"

#include <cstdio>
#include <exception>

using namespace Qt::StringLiterals;

namespace orbitledge::demo {

namespace {

bool matches(const QList<QByteArray> &pattern, const QList<QByteArray> &path, QUuid &id)
{
    if (pattern.size() != path.size())
        return false;
    for (qsizetype i = 0; i < pattern.size(); ++i) {
        if (pattern[i] == "{id}") {
            const auto read = uuidFromText(path[i].toStdString());
            if (!read)
                return false;
            id = *read;
        } else if (pattern[i] != path[i]) {
            return false;
        }
    }
    return true;
}

/// Whether a page of another site made the browser send this. Programs send no Origin.
bool comesFromElsewhere(const Request &request)
{
    return request.method == Method::Post && request.headerCount("Origin") > 0
        && request.header("Origin").toLower() != "http://" + request.header("Host").toLower();
}

} // namespace

Router::Match Router::find(const Request &request) const
{
    const Method wanted = request.method == Method::Head ? Method::Get : request.method;
    const QList<QByteArray> path = request.path.split('/');
    Match match;
    for (const Route &route : m_routes) {
        QUuid id;
        if (!matches(route.pattern.split('/'), path, id))
            continue;
        match.isPage = route.isPage;
        if (route.method == wanted) {
            match.route = &route;
            match.id = id;
            return match;
        }
        match.allowed += route.method == Method::Get ? QList{"GET"_ba, "HEAD"_ba} : QList{"POST"_ba};
    }
    return match;
}

bool Router::isSlow(const Request &request) const
{
    const Match match = find(request);
    return match.route != nullptr && match.route->isSlow;
}

Response Router::refuse(const Request &request, bool isPage, int status, const ErrorBody &body) const
{
    if ((isPage || request.prefersHtml()) && m_errorPage)
        return m_errorPage(request, status, body);
    return errorResponse(status, body);
}

Response Router::answer(const Request &request) const
{
    const Match match = find(request);
    try {
        if (match.route == nullptr && match.allowed.isEmpty()) {
            return refuse(request, false, 404,
                {u"There is nothing at this address."_s, u"Check how it is spelled."_s, {}, "not_found"_L1});
        }
        if (match.route == nullptr) {
            const QByteArray allowed = match.allowed.join(", ");
            return refuse(request, match.isPage, 405,
                {u"This address cannot be asked that way."_s, u"Use %1."_s.arg(QString::fromLatin1(allowed)),
                    {}, "method_not_allowed"_L1})
                .with("Allow", allowed);
        }
        if (comesFromElsewhere(request)) {
            return refuse(request, match.isPage, 403,
                {u"This was sent by a page of another site."_s, u"Open the service's own page instead."_s, {},
                    "foreign_origin"_L1});
        }
        return match.route->handler(request, match.id);
    } catch (const std::exception &failure) {
        (void)std::fprintf(
            stderr, "orbitledge-demo-service: %s: %s\n", request.path.constData(), failure.what());
        return refuse(request, match.isPage, 500,
            {u"The service could not do this; nothing was changed."_s, u"Try again in a moment."_s, {},
                "internal_error"_L1});
    }
}

} // namespace orbitledge::demo
