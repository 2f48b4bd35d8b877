#include "demo/ApiRoutes.h"

#include "model/RecordCodecs.h"
#include "model/json/Records.h"

#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace orbitledge::demo {

namespace {

Response badJson(const QString &details)
{
    return errorResponse(400,
        {u"The request is not valid JSON."_s, u"Correct it and send it again."_s, details,
            "malformed_json"_L1});
}

/// The body as an object, or the answer that says why it is none.
tl::expected<QJsonObject, Response> jsonObject(const Request &request)
{
    if (request.contentType() != "application/json") {
        return tl::unexpected(errorResponse(415,
            {u"The service reads JSON only."_s, u"Send Content-Type: application/json."_s, {},
                "unsupported_media_type"_L1}));
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(request.body, &error);
    // A number that is only too large for this parser is left to the record's own reader, which keeps all
    // digits and names the field.
    if (error.error == QJsonParseError::IllegalNumber)
        return QJsonObject();
    if (error.error != QJsonParseError::NoError)
        return tl::unexpected(badJson(u"byte %1: %2"_s.arg(error.offset).arg(error.errorString())));
    if (!document.isObject()) {
        return tl::unexpected(errorResponse(
            400, {u"The request must be a JSON object."_s, u"Send { … }."_s, {}, "malformed_json"_L1}));
    }
    return document.object();
}

Response invalidFields(const FieldProblems &problems)
{
    QStringList details;
    for (const FieldProblem &problem : problems)
        details.append(problem.field + u": "_s + problem.sentence);
    return errorResponse(422,
        {problems.first().sentence, u"Correct what is marked and send it again."_s, details.join(u' '),
            "validation_failed"_L1});
}

template <typename Record> QByteArray encodeList(const QList<Record> &records)
{
    json::JsonWriter writer;
    write(writer, records);
    return writer.take();
}

Response unauthorized(bool hadSession)
{
    return errorResponse(401,
        {hadSession ? u"Your session has expired. Please sign in again."_s
                    : u"You are not signed in. Please sign in first."_s,
            u"Sign in to go on."_s, {}, hadSession ? "session_expired"_L1 : "not_signed_in"_L1})
        .with("WWW-Authenticate", R"(Cookie realm="Orbitledge", cookie-name="orbitledge_user_session")");
}

} // namespace

void ApiRoutes::addTo(Router &router)
{
    const auto add
        = [&router](Method method, QByteArray pattern, Router::Handler handler, bool isSlow = false) {
              router.add({method, std::move(pattern), std::move(handler), false, isSlow});
          };
    add(
        Method::Post, "/auth/login", [this](const Request &request, const QUuid &) { return logIn(request); },
        true);
    add(Method::Get, "/auth/profile",
        authorized([](const Request &, const UserProfile &profile, const QUuid &) {
            return jsonResponse(encodeJson(profile));
        }));
    add(Method::Post, "/auth/logout",
        authorized(
            [this](const Request &request, const UserProfile &, const QUuid &) { return logOut(request); }));
    add(Method::Get, "/subscriptions",
        authorized([this](const Request &, const UserProfile &profile, const QUuid &) {
            return listSubscriptions(profile);
        }));
    add(Method::Post, "/subscriptions",
        authorized([this](const Request &request, const UserProfile &profile, const QUuid &) {
            return createSubscription(request, profile);
        }));
    add(Method::Post, "/subscriptions/{id}/cancel",
        authorized([this](const Request &request, const UserProfile &profile, const QUuid &id) {
            return changeSubscription(request, profile, id, true);
        }));
    add(Method::Post, "/subscriptions/{id}/uncancel",
        authorized([this](const Request &request, const UserProfile &profile, const QUuid &id) {
            return changeSubscription(request, profile, id, false);
        }));
    add(Method::Get, "/templates/search",
        authorized([this](const Request &request, const UserProfile &, const QUuid &) {
            return searchTemplates(request);
        }));
}

Router::Handler ApiRoutes::authorized(Authorized handler)
{
    return [this, handler = std::move(handler)](const Request &request, const QUuid &id) {
        const auto token = request.cookie(sessionCookie);
        const auto account = token ? m_sessions.find(*token) : std::nullopt;
        const auto profile = account ? m_accounts.find(*account) : std::nullopt;
        if (!profile)
            return unauthorized(token && !token->isEmpty());
        return handler(request, *profile, id);
    };
}

Response ApiRoutes::logIn(const Request &request)
{
    const auto body = jsonObject(request);
    if (!body)
        return body.error();
    FieldProblems problems;
    for (const QLatin1StringView field : {"email"_L1, "password"_L1}) {
        if (!body->value(field).isString() || body->value(field).toString().isEmpty())
            problems.append({field, u"Give the %1 as a text."_s.arg(field)});
    }
    if (!problems.isEmpty())
        return invalidFields(problems);

    const auto signedIn
        = m_signIn.attempt(body->value("email"_L1).toString(), body->value("password"_L1).toString());
    if (!signedIn) {
        const SignInFailure &failure = signedIn.error();
        Response response = errorResponse(failure.status(),
            {failure.sentence(), failure.wait ? u"Wait a little, then try again."_s : u"Try again."_s, {},
                failure.wait ? "too_many_attempts"_L1 : "wrong_credentials"_L1});
        if (failure.wait)
            response.with("Retry-After", QByteArray::number(static_cast<qint64>(failure.wait->count())));
        return response;
    }
    return jsonResponse(encodeJson(AuthenticationResponse{signedIn->profile}))
        .with("Set-Cookie", m_sessions.cookieFor(signedIn->session));
}

Response ApiRoutes::logOut(const Request &request)
{
    m_sessions.end(request.cookie(sessionCookie).value_or(QByteArray()));
    return jsonResponse(R"({"message":"You are signed out."})").with("Set-Cookie", Sessions::expiredCookie());
}

Response ApiRoutes::listSubscriptions(const UserProfile &profile)
{
    json::JsonWriter writer;
    writer.beginArray();
    for (const StoredSubscription &subscription : m_subscriptions.list(profile))
        write(writer, subscription.record);
    writer.endArray();
    return jsonResponse(writer.take());
}

Response ApiRoutes::createSubscription(const Request &request, const UserProfile &profile)
{
    const auto body = jsonObject(request);
    if (!body)
        return body.error();
    if (!profile.isVerified) {
        return errorResponse(403,
            {u"Verify your e-mail before you add subscriptions."_s,
                u"Follow the link in the mail that you got when you signed up."_s, {},
                "email_not_verified"_L1});
    }
    const auto decoded = decodeJson<CreateSubscriptionRequest>(request.body);
    if (!decoded) {
        const DecodingError &error = decoded.error();
        if (error.codingPath.empty())
            return badJson(error.debugDescription);
        return errorResponse(422,
            {u"The field \"%1\" is missing or cannot be read."_s.arg(error.pathText()),
                u"Correct it and send it again."_s, error.pathText() + u": "_s + error.debugDescription,
                "validation_failed"_L1});
    }
    const auto draft = checkSubscription(*decoded, profile.defaultCurrency, m_subscriptions.today());
    if (!draft)
        return invalidFields(draft.error());
    return jsonResponse(encodeJson(m_subscriptions.create(profile, *draft)), 201);
}

Response ApiRoutes::changeSubscription(
    const Request &request, const UserProfile &profile, const QUuid &id, bool cancel)
{
    const auto body = jsonObject(request);
    if (!body)
        return body.error();
    const auto changed = cancel ? m_subscriptions.cancel(profile, id) : m_subscriptions.uncancel(profile, id);
    if (changed) {
        return jsonResponse(encodeJson(SubscriptionMutationResponse{
            cancel ? u"The subscription is marked as cancelled."_s : u"The subscription is active again."_s,
            *changed}));
    }
    switch (changed.error()) {
    case Refusal::AlreadyCancelled:
        return errorResponse(409,
            {u"This subscription is cancelled already."_s, u"Refresh to see it as it is."_s, {},
                "already_cancelled"_L1});
    case Refusal::NotCancelled:
        return errorResponse(409,
            {u"This subscription is not cancelled, so there is nothing to take back."_s,
                u"Refresh to see it as it is."_s, {}, "not_cancelled"_L1});
    case Refusal::NotFound:
        break;
    }
    return errorResponse(404,
        {u"There is no such subscription."_s, u"Refresh to see those that there are."_s, {},
            "subscription_not_found"_L1});
}

Response ApiRoutes::searchTemplates(const Request &request)
{
    constexpr qsizetype maximumQuery = 100;
    constexpr int maximumLimit = 20;

    FieldProblems problems;
    const QString query = request.query.value("q"_L1).trimmed();
    if (query.isEmpty())
        problems.append({"q"_L1, u"Say what to search for."_s});
    else if (query.size() > maximumQuery)
        problems.append({"q"_L1, u"Keep what to search for to %1 characters."_s.arg(maximumQuery)});
    bool isNumber = true;
    const auto limitText = request.query.find("limit"_L1);
    const int limit = limitText ? limitText->toInt(&isNumber) : 10;
    if (!isNumber || limit < 1 || limit > maximumLimit)
        problems.append({"limit"_L1, u"Ask for 1 to %1 templates."_s.arg(maximumLimit)});
    if (!problems.isEmpty())
        return invalidFields(problems);
    return jsonResponse(encodeList(searchCatalogue(m_catalogue, query, limit)));
}

} // namespace orbitledge::demo
