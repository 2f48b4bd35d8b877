#include "logos/LogoLoader.h"

#include "logos/Freshness.h"
#include "logos/LogoDecoder.h"
#include "platform/SerialQueue.h"

#include <QCache>
#include <QPointer>
#include <QSet>

#include <algorithm>
#include <deque>
#include <stop_token>

namespace orbitledge {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int mostImages = 200;
constexpr int mostFailures = 1000;
constexpr int mostFetches = 4;
/// Where the server has nothing that could be shown, and where it was not reached.
constexpr std::chrono::milliseconds patienceAfterRefusal = 1h;
constexpr std::chrono::milliseconds patienceAfterSilence = 1min;
/// Nothing may stay for longer; a clock that was wrong once may say otherwise.
constexpr std::chrono::milliseconds longestStay = 24h * 366;
/// In memory, whatever its server says: painting asks for it again and again.
constexpr std::chrono::milliseconds shortestStay = 1h;

Instant later(Instant instant, std::chrono::milliseconds duration)
{
    return Instant::fromMillisecondsSinceEpoch(instant.millisecondsSinceEpoch() + duration.count());
}

bool isFresh(Instant freshUntil, Instant now)
{
    return now < freshUntil && freshUntil <= later(now, longestStay);
}

/// What is wrong with what a server sent, and will be the next time.
bool isItsAnswer(TransportFailure::Kind kind)
{
    using Kind = TransportFailure::Kind;
    return kind == Kind::TooLarge || kind == Kind::BadAnswer || kind == Kind::TooManyRedirects;
}

/// When nothing came, and how long it is not asked for again.
struct Failure {
    Instant at;
    std::chrono::milliseconds patience{};
};

bool mayBeAsked(const QUrl &url)
{
    constexpr qsizetype longest = 4096;
    return url.isValid() && url.scheme() == u"https" && !url.host().isEmpty() && url.userInfo().isEmpty()
        && url.toEncoded().size() <= longest;
}

/// What the disk had.
struct Found {
    QImage image;
    Instant freshUntil;
    QByteArray entityTag;
    QByteArray lastModified;
};

std::optional<Found> lookUp(LogoCache &cache, const QUrl &url)
{
    const auto kept = cache.find(url);
    if (!kept)
        return std::nullopt;
    auto image = decodeLogo(kept->content);
    if (!image) {
        cache.remove(url);
        return std::nullopt;
    }
    return Found{*std::move(image), kept->freshUntil, kept->entityTag, kept->lastModified};
}

/// The server says that what the disk has is still right.
void renew(LogoCache &cache, const QUrl &url, const Freshness &freshness)
{
    if (!freshness.mayBeKept) {
        cache.remove(url);
    } else if (auto kept = cache.find(url)) {
        kept->freshUntil = freshness.until;
        (void)cache.keep(url, *kept);
    }
}

struct Wanted {
    QUrl url;
    std::optional<Found> found;
};

HttpRequest requestFor(const Wanted &wanted)
{
    HttpRequest request;
    request.url = wanted.url.adjusted(QUrl::RemoveFragment);
    request.headers = {{"Accept", "image/webp,image/png,image/jpeg,image/gif"}};
    if (wanted.found && !wanted.found->entityTag.isEmpty())
        request.headers.append({"If-None-Match", wanted.found->entityTag});
    if (wanted.found && !wanted.found->lastModified.isEmpty())
        request.headers.append({"If-Modified-Since", wanted.found->lastModified});
    return request;
}

} // namespace

/// Shared with what is under way, which may outlive the loader. Everything happens on the loader's thread but
/// the jobs, which own what they touch.
class LogoLoader::State {
public:
    using Self = std::shared_ptr<State>;

    State(Parts parts, LogoLoader *loader)
        : m_parts(std::move(parts))
        , m_loader(loader)
    {
    }

    static QImage image(const Self &self, const QUrl &url);
    static QCoro::Task<void> clear(Self self);

    /// Nothing is told, sent or decoded any more.
    void end();

private:
    struct Shown {
        QImage image;
        Instant freshUntil;
    };

    [[nodiscard]] bool mayBeTried(const QUrl &url) const;

    static QCoro::Task<void> load(Self self, QUrl url);
    static QCoro::Task<void> fetch(Self self, Wanted wanted);
    static QCoro::Task<bool> take(Self self, QUrl url, HttpResponse response, std::stop_token stop);
    static QCoro::Task<bool> renewed(Self self, QUrl url, Freshness freshness, std::stop_token stop);
    static void startFetches(const Self &self);

    void show(const QUrl &url, QImage image, Instant freshUntil);

    template <typename Work> auto onDisk(std::stop_token stop, Work work)
    {
        using Result = std::invoke_result_t<Work, LogoCache &>;
        return m_queue.run([cache = m_parts.cache, stop = std::move(stop), work = std::move(work)] {
            return stop.stop_requested() ? Result{} : work(*cache);
        });
    }

    Parts m_parts;
    QPointer<LogoLoader> m_loader;
    QCache<QUrl, Shown> m_images{mostImages};
    /// When each was tried in vain.
    QCache<QUrl, Failure> m_failures{mostFailures};
    QSet<QUrl> m_underWay;
    std::deque<Wanted> m_waiting;
    int m_fetching = 0;
    bool m_isStarting = false;
    /// Of what is under way.
    std::stop_source m_stop;
    SerialQueue m_queue;
};

QImage LogoLoader::State::image(const Self &self, const QUrl &url)
{
    if (!mayBeAsked(url))
        return {};
    const Shown *shown = self->m_images.object(url);
    const QImage image = shown ? shown->image : QImage();
    const bool isToStay = shown && isFresh(shown->freshUntil, self->m_parts.clock->now());
    if (!isToStay && !self->m_underWay.contains(url) && self->mayBeTried(url)) {
        self->m_underWay.insert(url);
        load(self, url);
    }
    return image;
}

void LogoLoader::State::end()
{
    m_stop.request_stop();
    m_waiting.clear();
    m_parts.http.reset();
}

QCoro::Task<void> LogoLoader::State::clear(Self self)
{
    self->m_stop.request_stop();
    self->m_stop = std::stop_source();
    self->m_waiting.clear();
    self->m_underWay.clear();
    self->m_images.clear();
    self->m_failures.clear();
    // Behind what the disk is asked for at the moment, and also where the program ends meanwhile.
    auto clearing = self->m_queue.run([cache = self->m_parts.cache] {
        cache->clear();
        return true;
    });
    (void)co_await clearing;
}

bool LogoLoader::State::mayBeTried(const QUrl &url) const
{
    const Failure *const failed = m_failures.object(url);
    const Instant now = m_parts.clock->now();
    return !failed || now < failed->at || now >= later(failed->at, failed->patience);
}

void LogoLoader::State::show(const QUrl &url, QImage image, Instant freshUntil)
{
    m_images.insert(url, new Shown{std::move(image), freshUntil});
    Q_EMIT m_loader->arrived(url);
}

QCoro::Task<void> LogoLoader::State::load(Self self, QUrl url)
{
    const std::stop_token stop = self->m_stop.get_token();
    auto lookingUp = self->onDisk(stop, [url](LogoCache &cache) { return lookUp(cache, url); });
    std::optional<Found> found = co_await lookingUp;
    if (stop.stop_requested())
        co_return;
    if (found && isFresh(found->freshUntil, self->m_parts.clock->now()))
        self->m_underWay.remove(url);
    else
        self->m_waiting.push_back({url, found});
    if (found)
        self->show(url, found->image, found->freshUntil);
    startFetches(self);
}

void LogoLoader::State::startFetches(const Self &self)
{
    // A session may answer before it returns, and its answer leads here again.
    if (self->m_isStarting)
        return;
    self->m_isStarting = true;
    while (self->m_fetching < mostFetches && !self->m_waiting.empty()) {
        Wanted wanted = std::move(self->m_waiting.front());
        self->m_waiting.pop_front();
        ++self->m_fetching;
        fetch(self, std::move(wanted));
    }
    self->m_isStarting = false;
}

QCoro::Task<void> LogoLoader::State::fetch(Self self, Wanted wanted)
{
    constexpr int ok = 200;
    constexpr int notModified = 304;

    const std::stop_token stop = self->m_stop.get_token();
    auto sending = self->m_parts.http->send(requestFor(wanted));
    tl::expected<HttpResponse, TransportFailure> response = co_await sending;
    const bool wasReached = response || isItsAnswer(response.error().kind);
    bool isThere = false;
    if (!stop.stop_requested() && response && response->statusCode == ok) {
        auto taking = take(self, wanted.url, *std::move(response), stop);
        isThere = co_await taking;
    } else if (!stop.stop_requested() && response && response->statusCode == notModified && wanted.found) {
        auto renewing
            = renewed(self, wanted.url, freshnessOf(response->headers, self->m_parts.clock->now()), stop);
        isThere = co_await renewing;
    }
    --self->m_fetching;
    if (!stop.stop_requested()) {
        if (isThere)
            self->m_failures.remove(wanted.url);
        else
            self->m_failures.insert(wanted.url,
                new Failure{.at = self->m_parts.clock->now(),
                    .patience = wasReached ? patienceAfterRefusal : patienceAfterSilence});
        self->m_underWay.remove(wanted.url);
    }
    startFetches(self);
}

QCoro::Task<bool> LogoLoader::State::take(Self self, QUrl url, HttpResponse response, std::stop_token stop)
{
    auto decoding = self->onDisk(stop,
        [content = response.body](LogoCache & /*cache*/) { return decodeLogo(content).value_or(QImage()); });
    QImage image = co_await decoding;
    if (stop.stop_requested() || image.isNull())
        co_return false;

    const Instant now = self->m_parts.clock->now();
    const Freshness freshness = freshnessOf(response.headers, now);
    auto keeping = self->onDisk(stop, [url, freshness, response](LogoCache &cache) {
        if (!freshness.mayBeKept) {
            cache.remove(url);
            return true;
        }
        return cache
            .keep(url,
                {
                    .content = response.body,
                    .freshUntil = freshness.until,
                    .entityTag = headerValue(response.headers, "ETag").value_or(QByteArray()),
                    .lastModified = headerValue(response.headers, "Last-Modified").value_or(QByteArray()),
                })
            .has_value();
    });
    self->show(url, std::move(image), std::max(freshness.until, later(now, shortestStay)));
    (void)co_await keeping; // shown all the same
    co_return true;
}

QCoro::Task<bool> LogoLoader::State::renewed(Self self, QUrl url, Freshness freshness, std::stop_token stop)
{
    auto renewing = self->onDisk(stop, [url, freshness](LogoCache &cache) {
        renew(cache, url, freshness);
        return true;
    });
    if (Shown *const shown = self->m_images.object(url))
        shown->freshUntil = std::max(freshness.until, later(self->m_parts.clock->now(), shortestStay));
    co_return co_await renewing;
}

LogoLoader::LogoLoader(Parts parts, QObject *parent)
    : QObject(parent)
    , m_state(std::make_shared<State>(std::move(parts), this))
{
}

LogoLoader::~LogoLoader()
{
    m_state->end();
}

HttpSessionConfiguration LogoLoader::sessionConfiguration()
{
    HttpSessionConfiguration configuration;
    configuration.requestTimeout = 10s;
    configuration.resourceTimeout = 20s;
    configuration.largestBody = largestLogo;
    configuration.waitsForConnectivity = false;
    return configuration;
}

QImage LogoLoader::image(const QUrl &url)
{
    return State::image(m_state, url);
}

QCoro::Task<void> LogoLoader::clear()
{
    return State::clear(m_state);
}

} // namespace orbitledge
