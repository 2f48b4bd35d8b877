#include "demo/WebPages.h"

#include "demo/CalendarPage.h"
#include "demo/EditPage.h"
#include "demo/LoginPage.h"
#include "demo/StartPage.h"

using namespace Qt::StringLiterals;

namespace orbitledge::demo {

namespace {

/// Before there is a session, a form is known by a secret that only its own browser has.
constexpr auto loginCookie = "orbitledge_demo_login";

bool hasFormToken(const FormFields &form, const QByteArray &expected)
{
    return !expected.isEmpty() && isSameSecret(form.value("form_token"_L1).toLatin1(), expected);
}

bool isForm(const Request &request)
{
    return request.contentType() == "application/x-www-form-urlencoded";
}

Response notAForm(const Viewer &viewer)
{
    return errorPage(viewer, 415,
        {u"This is not a form of this page."_s, u"Open the page and use its own form."_s, {},
            "unsupported_media_type"_L1});
}

Response foreignForm(const Viewer &viewer)
{
    return errorPage(viewer, 403,
        {u"This form is too old, or comes from elsewhere."_s,
            u"Go back, load the page again and send the form once more."_s, {}, "form_token"_L1});
}

Response noSuchSubscription(const Viewer &viewer)
{
    return errorPage(viewer, 404,
        {u"There is no such subscription."_s, u"It may belong to another account."_s, {},
            "subscription_not_found"_L1});
}

QByteArray loginPathFor(const Request &request, bool hadSession)
{
    const QByteArray next = "/login?next=" + request.path.toPercentEncoding("/");
    return hadSession ? next + "&expired=1" : next;
}

QString messageFor(const QString &done)
{
    if (done == "saved"_L1)
        return u"Saved."_s;
    if (done == "cancelled"_L1)
        return u"Marked as cancelled."_s;
    if (done == "active"_L1)
        return u"The cancellation is taken back."_s;
    return {};
}

} // namespace

void WebPages::addTo(Router &router)
{
    const auto get = [&router](QByteArray path, Router::Handler handler) {
        router.add({Method::Get, std::move(path), std::move(handler), true, false});
    };
    const auto post = [&router](QByteArray path, Router::Handler handler, bool isSlow = false) {
        router.add({Method::Post, std::move(path), std::move(handler), true, isSlow});
    };
    get("/", [this](const Request &request, const QUuid &) { return start(request); });
    get("/login", [this](const Request &request, const QUuid &) { return logInPage(request); });
    post("/login", [this](const Request &request, const QUuid &) { return logIn(request); }, true);
    post("/logout",
        signedInForm([this](const Request &request, const Viewer &, const UserProfile &, const QUuid &) {
            return logOut(request);
        }));
    get("/calendar",
        signedIn([this](const Request &request, const Viewer &viewer, const UserProfile &profile,
                     const QUuid &) { return calendar(request, viewer, profile); }));
    get("/subscriptions/{id}/edit",
        signedIn([this](const Request &request, const Viewer &viewer, const UserProfile &profile,
                     const QUuid &id) { return editPage(request, viewer, profile, id); }));
    post("/subscriptions/{id}/edit",
        signedInForm([this](const Request &request, const Viewer &viewer, const UserProfile &profile,
                         const QUuid &id) { return edit(request, viewer, profile, id); }));
    get("/download", [this](const Request &request, const QUuid &) { return download(viewerOf(request)); });
    get("/style.css", [](const Request &, const QUuid &) { return styleSheet(); });
    get("/icon.svg", [](const Request &, const QUuid &) { return icon(); });
    router.setErrorPage([this](const Request &request, int status, const ErrorBody &body) {
        return errorPage(status < 500 ? viewerOf(request) : Viewer{}, status, body);
    });
}

Viewer WebPages::viewerOf(const Request &request)
{
    const auto token = request.cookie(sessionCookie);
    const auto account = token ? m_sessions.find(*token) : std::nullopt;
    if (!account)
        return {};
    return {m_accounts.find(*account), formTokenFor(*token)};
}

Router::Handler WebPages::signedIn(ViewerPage handler)
{
    return [this, handler = std::move(handler)](const Request &request, const QUuid &id) {
        const Viewer viewer = viewerOf(request);
        if (!viewer.profile)
            return redirectTo(loginPathFor(request, !request.cookie(sessionCookie).value_or("").isEmpty()));
        return handler(request, viewer, *viewer.profile, id);
    };
}

Router::Handler WebPages::signedInForm(ViewerPage handler)
{
    return signedIn([handler = std::move(handler)](const Request &request, const Viewer &viewer,
                        const UserProfile &profile, const QUuid &id) {
        if (!isForm(request))
            return notAForm(viewer);
        if (!hasFormToken(FormFields::parse(request.body), viewer.formToken))
            return foreignForm(viewer);
        return handler(request, viewer, profile, id);
    });
}

Response WebPages::start(const Request &request)
{
    const Viewer viewer = viewerOf(request);
    if (!viewer.profile)
        return page(u"Welcome"_s, viewer, welcome());
    return page(u"Overview"_s, viewer,
        overview(*viewer.profile, m_subscriptions.list(*viewer.profile), m_subscriptions.today()));
}

Response WebPages::logInPage(const Request &request)
{
    const QByteArray next = localPathOrRoot(request.query.value("next"_L1));
    if (viewerOf(request).profile)
        return redirectTo(next);
    LoginForm form;
    form.next = next;
    if (request.query.find("expired"_L1))
        form.notice = u"Your session has expired. Please sign in again."_s;

    // Kept where there is one: another tab's form must stay valid.
    const auto known = request.cookie(loginCookie);
    const QByteArray secret = known && known->size() == newSecret().size() ? *known : newSecret();
    return loginPage({std::nullopt, formTokenFor(secret)}, form)
        .with("Set-Cookie",
            QByteArray(loginCookie) + '=' + secret + "; Path=/login; HttpOnly; SameSite=Strict");
}

Response WebPages::logIn(const Request &request)
{
    const auto secret = request.cookie(loginCookie);
    const Viewer viewer{std::nullopt, secret ? formTokenFor(*secret) : QByteArray()};
    if (!isForm(request))
        return notAForm(viewer);
    const FormFields fields = FormFields::parse(request.body);
    if (!hasFormToken(fields, viewer.formToken))
        return foreignForm(viewer);

    LoginForm form;
    form.email = fields.value("email"_L1).trimmed();
    form.next = localPathOrRoot(fields.value("next"_L1));
    const QString password = fields.value("password"_L1);
    if (form.email.isEmpty() || password.isEmpty()) {
        form.problem = u"Give your e-mail and your password."_s;
        return loginPage(viewer, form, 422);
    }
    const auto signedIn = m_signIn.attempt(form.email, password);
    if (!signedIn) {
        const SignInFailure &failure = signedIn.error();
        form.problem = failure.sentence();
        if (failure.wait)
            form.problem += u" Try again in %1 seconds."_s.arg(failure.wait->count());
        Response response = loginPage(viewer, form, failure.status());
        if (failure.wait)
            response.with("Retry-After", QByteArray::number(static_cast<qint64>(failure.wait->count())));
        return response;
    }
    return redirectTo(form.next).with("Set-Cookie", m_sessions.cookieFor(signedIn->session));
}

Response WebPages::logOut(const Request &request)
{
    m_sessions.end(request.cookie(sessionCookie).value_or(QByteArray()));
    return redirectTo("/").with("Set-Cookie", Sessions::expiredCookie());
}

Response WebPages::calendar(const Request &request, const Viewer &viewer, const UserProfile &profile)
{
    const LocalDate today = m_subscriptions.today();
    const auto asked = request.query.find("month"_L1);
    const auto month = asked ? monthFromText(*asked) : LocalDate{today.year, today.month, 1};
    if (!month) {
        return errorPage(viewer, 422,
            {u"There is no such month in this calendar."_s,
                u"Ask for one as year-month, for instance 2026-03, between 2000 and 2199."_s, {},
                "validation_failed"_L1});
    }
    return page(
        u"Calendar"_s, viewer, calendarContent(profile, m_subscriptions.list(profile), *month, today));
}

Response WebPages::editPage(
    const Request &request, const Viewer &viewer, const UserProfile &profile, const QUuid &id)
{
    const auto found = m_subscriptions.find(profile, id);
    if (!found)
        return noSuchSubscription(viewer);
    EditForm form = EditForm::of(found->record);
    form.message = messageFor(request.query.value("done"_L1));
    return page(found->record.name, viewer, editContent(viewer, found->record, form));
}

Response WebPages::edit(
    const Request &request, const Viewer &viewer, const UserProfile &profile, const QUuid &id)
{
    const auto found = m_subscriptions.find(profile, id);
    if (!found)
        return noSuchSubscription(viewer);
    const FormFields fields = FormFields::parse(request.body);
    const QString action = fields.value("action"_L1);
    const auto done
        = [&request](const QByteArray &what) { return redirectTo(request.path + "?done=" + what); };

    if (action == "cancel"_L1 || action == "uncancel"_L1) {
        const bool cancels = action == "cancel"_L1;
        const auto changed
            = cancels ? m_subscriptions.cancel(profile, id) : m_subscriptions.uncancel(profile, id);
        if (changed)
            return done(cancels ? "cancelled" : "active");
        if (changed.error() == Refusal::NotFound)
            return noSuchSubscription(viewer);
        EditForm form = EditForm::of(found->record);
        form.refusal = cancels ? u"It is cancelled already."_s : u"It is not cancelled."_s;
        return page(found->record.name, viewer, editContent(viewer, found->record, form), 409);
    }

    const auto draft = checkSubscriptionForm(fields, profile.defaultCurrency, m_subscriptions.today());
    if (!draft) {
        EditForm form = EditForm::typed(fields);
        form.problems = draft.error();
        return page(found->record.name, viewer, editContent(viewer, found->record, form), 422);
    }
    if (!m_subscriptions.update(profile, id, *draft))
        return noSuchSubscription(viewer);
    return done("saved");
}

Response WebPages::download(const Viewer &viewer)
{
    return page(u"Download"_s, viewer,
        element("section"_L1, {{"class"_L1, u"card narrow"_s}},
            element("h1"_L1, {}, u"Download"_s)
                + element("p"_L1, {},
                    u"This is where new versions of the Orbitledge client would be offered. The demo service "
                    "has none to give: build the client from its sources, next to this service’s."_s)
                + element("p"_L1, {},
                    element("a"_L1, {{"class"_L1, u"button plain"_s}, {"href"_L1, u"/"_s}},
                        u"To the start page"_s))));
}

} // namespace orbitledge::demo
