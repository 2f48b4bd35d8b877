#include "AnsweringServer.h"
#include "Require.h"
#include "platform/curl/CurlHttpSession.h"
#include "service/APIClient.h"
#include "service/SessionCredentialStore.h"
#include "support/FakeKeychain.h"
#include "support/StoppedClock.h"

#include <QCoreApplication>
#include <QCoroTask>

using namespace orbitledge;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr qint64 largestBody = 1 << 16;
/// More redirects than are followed.
constexpr int mostConnections = 30;

template <typename T> void check(const tl::expected<T, APIError> &result)
{
    fuzz::require(result || !result.error().errorDescription().isEmpty(), "a failure is explained");
}

HttpSessionConfiguration configuration()
{
    HttpSessionConfiguration configuration;
    configuration.requestTimeout = 5s;
    configuration.resourceTimeout = 8s;
    configuration.largestBody = largestBody;
    return configuration;
}

struct Parts {
    fuzz::AnsweringServer server;
    std::shared_ptr<testing::FakeKeychain> keychain = std::make_shared<testing::FakeKeychain>();
    std::shared_ptr<SessionCredentialStore> credentials = std::make_shared<SessionCredentialStore>(
        keychain, u"app.example"_s, u"session"_s, u"Example session"_s);
    std::shared_ptr<HttpSession> http = std::make_shared<CurlHttpSession>("Agent/1", configuration());
    APIClient client{QUrl(u"http://127.0.0.1:%1/"_s.arg(server.port())), http, credentials,
        std::make_shared<testing::StoppedClock>(*Instant::fromText("2026-03-18T09:00:00Z"))};
};

void keepCredential(Parts &parts)
{
    auto saving = parts.credentials->save({u"secret"_s, *Instant::fromText("2026-03-20T00:00:00Z")});
    QCoro::waitFor(std::move(saving));
}

void askForPage(Parts &parts)
{
    HttpRequest request;
    request.url = QUrl(u"http://127.0.0.1:%1/page"_s.arg(parts.server.port()));
    auto sending = parts.http->send(request);
    const auto answer = QCoro::waitFor(std::move(sending));
    if (!answer) {
        fuzz::require(!answer.error().errorDescription().isEmpty(), "a failure is explained");
        return;
    }
    fuzz::require(answer->statusCode.value_or(0) >= 200, "what is informational is not the answer");
    fuzz::require(answer->body.size() <= largestBody, "no body is larger than allowed");
    for (const HttpHeader &header : answer->headers)
        fuzz::require(!header.value.contains('\n') && !header.name.contains('\n'), "a header is a line");
}

void ask(Parts &parts, int what)
{
    const QUuid id(u"3f2504e0-4f89-41d3-9a0c-0305e82c3301"_s);
    CreateSubscriptionRequest request;
    request.name = u"Example"_s;
    request.billingCycle = u"monthly"_s;
    switch (what) {
    case 0:
        return askForPage(parts);
    case 1:
        return check(QCoro::waitFor(parts.client.fetchSubscriptions()));
    case 2:
        return check(QCoro::waitFor(parts.client.fetchProfile()));
    case 3:
        return check(QCoro::waitFor(parts.client.signIn(u"ada@example.com"_s, u"secret"_s)));
    case 4:
        return check(QCoro::waitFor(parts.client.searchTemplates(u"x"_s, 8)));
    case 5:
        return check(QCoro::waitFor(parts.client.createSubscription(request)));
    case 6:
        return check(QCoro::waitFor(parts.client.cancelSubscription(id)));
    default:
        QCoro::waitFor(parts.client.signOut());
    }
}

} // namespace

// All bytes that a server sends, from the status line to the end. The first byte is what was asked for, the
// second the size of the pieces.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static int count = 1;
    static char name[] = "answer"; // NOLINT(modernize-avoid-c-arrays): as main has it
    static char *words[] = {name, nullptr}; // NOLINT(modernize-avoid-c-arrays)
    static const QCoreApplication application(count, words);
    static auto &parts = *new Parts; // its threads end with the process
    if (size < 2)
        return 0;
    const int what = data[0] % 8;
    const QByteArray answer(reinterpret_cast<const char *>(data) + 2, static_cast<qsizetype>(size) - 2);
    parts.server.answerWith(answer, std::size_t{1} + data[1]);
    keepCredential(parts);
    ask(parts, what);
    fuzz::require(parts.server.connections() <= mostConnections, "redirects have an end");
    const bool mayFollow = answer.contains("30");
    fuzz::require(mayFollow || parts.server.connections() <= 1, "nothing is sent twice");
    return 0;
}
