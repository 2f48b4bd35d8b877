// Measures for how long a refresh of a long list keeps the user-interface thread from its event loop, in any
// one stretch, with everything that a refresh does: the keyring, two requests to the demo service, decoding,
// and saving. Prints the longest stretch and the time of a whole refresh, in milliseconds, of the worst of
// some refreshes. Needs a session bus with a keyring: scripts/with-desktop makes one.
//
//   bench_refresh DEMO_SERVICE SUBSCRIPTIONS

#include "BuildInfo.h"
#include "platform/curl/CurlHttpSession.h"
#include "platform/linux/PosixFileStore.h"
#include "platform/linux/SystemClock.h"
#include "platform/linux/keychain/DesktopKeychain.h"
#include "service/APIClient.h"
#include "service/AccountData.h"
#include "service/SessionCredentialStore.h"
#include "state/SnapshotCache.h"
#include "support/StretchWatch.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>

using namespace orbitledge;
using namespace Qt::StringLiterals;

namespace {

/// What the program keeps after a refresh.
struct Shown {
    UserProfile profile;
    QList<Subscription> subscriptions;
};

QCoro::Task<bool> refresh(std::shared_ptr<APIClientProtocol> client, SnapshotCache &cache, Shown &shown)
{
    const bool hasSession = co_await client->hasValidSession();
    if (!hasSession)
        co_return false;
    auto data = co_await fetchAccountData(client);
    if (!data)
        co_return false;
    shown.profile = data->profile;
    shown.subscriptions = data->subscriptions;
    CacheSnapshot snapshot{.version = {},
        .profile = std::move(data->profile),
        .subscriptions = std::move(data->subscriptions),
        .fetchedAt = SystemClock().now()};
    const auto saved = co_await cache.save(std::move(snapshot));
    co_return saved.has_value();
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 3) {
        std::fputs("usage: bench_refresh DEMO_SERVICE SUBSCRIPTIONS\n", stderr);
        return 2;
    }
    const QCoreApplication application(argc, argv);
    const QTemporaryDir folder;
    QProcess service;
    service.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    service.start(QString::fromLocal8Bit(argv[1]),
        {u"--port"_s, u"0"_s, u"--data"_s, folder.filePath(u"service"_s), u"--populate"_s,
            QString::fromLocal8Bit(argv[2])});
    while (!service.canReadLine()) {
        if (!service.waitForReadyRead())
            return 1;
    }
    const QByteArray announcement = service.readLine().trimmed();
    const QUrl address(QString::fromLatin1(announcement.mid(qsizetype(std::strlen("Listening on ")))));

    auto client = std::make_shared<APIClient>(address, std::make_shared<CurlHttpSession>("Bench/1"),
        std::make_shared<SessionCredentialStore>(std::make_shared<DesktopKeychain>(),
            QString::fromLatin1(build::applicationId), u"benchmark"_s, u"Orbitledge benchmark"_s),
        std::make_shared<SystemClock>());
    SnapshotCache cache(
        folder.filePath(u"cache/snapshot.json"_s).toStdString(), std::make_shared<PosixFileStore>());
    const auto signedIn = QCoro::waitFor(client->signIn(u"ada@example.com"_s, u"orbit-ledger"_s));
    if (!signedIn) {
        std::fprintf(stderr, "%s\n", qUtf8Printable(signedIn.error().errorDescription()));
        return 1;
    }

    constexpr int refreshes = 10;
    double longestStretch = 0;
    double longestRefresh = 0;
    Shown shown;
    for (int i = 0; i < refreshes; ++i) {
        const testing::StretchWatch watch;
        QElapsedTimer timer;
        timer.start();
        // From the event loop, as the program's timer and button start it.
        bool succeeded = false;
        const auto run = [&]() -> QCoro::Task<> { succeeded = co_await refresh(client, cache, shown); };
        QCoro::waitFor(run());
        if (!succeeded || shown.subscriptions.size() < QByteArray(argv[2]).toInt() || watch.count() == 0) {
            std::fputs("the refresh failed\n", stderr);
            return 1;
        }
        longestStretch = std::max(longestStretch, watch.longestMilliseconds());
        longestRefresh = std::max(longestRefresh, double(timer.nsecsElapsed()) / 1e6);
    }
    QCoro::waitFor(client->signOut());
    std::printf("%.3f %.3f\n", longestStretch, longestRefresh);
    service.terminate();
    service.waitForFinished();
    return 0;
}
