#include "demo/Service.h"

#include "demo/Catalogue.h"
#include "demo/SampleData.h"
#include "locale/Calendar.h"

#include <QDateTime>

using namespace Qt::StringLiterals;

namespace orbitledge::demo {

namespace {

Subscriptions::Today clockFor(const Options &options)
{
    if (options.today)
        return [today = *options.today] { return today; };
    const Calendar calendar(TimeZone::system(), Locale::named("en_GB").value_or(Locale{}));
    return [calendar] {
        return calendar.localDate(Instant::fromMillisecondsSinceEpoch(QDateTime::currentMSecsSinceEpoch()));
    };
}

} // namespace

tl::expected<std::unique_ptr<Service>, QString> Service::open(const Options &options)
{
    auto database = Database::open(options.dataFolder);
    if (!database)
        return tl::unexpected(std::move(database.error()));
    try {
        std::unique_ptr<Service> service(new Service(*std::move(database), options));
        service->m_sessions.purge();
        const auto sample
            = ensureSampleAccount(*service->m_database, service->m_accounts, service->m_subscriptions);
        if (!sample)
            return tl::unexpected(sample.error());
        if (options.populate > 0)
            populate(service->m_subscriptions, *sample, options.populate);
        return service;
    } catch (const DatabaseError &error) {
        return tl::unexpected(u"The data folder %1 cannot be used: %2"_s.arg(
            options.dataFolder, QString::fromUtf8(error.what())));
    }
}

Service::Service(std::unique_ptr<Database> database, const Options &options)
    : m_database(std::move(database))
    , m_accounts(*m_database)
    , m_sessions(*m_database, options.sessionLifetime)
    , m_signIn(m_accounts, m_sessions)
    , m_subscriptions(*m_database, clockFor(options))
    , m_api(m_signIn, m_accounts, m_sessions, m_subscriptions, loadCatalogue())
    , m_pages(m_signIn, m_accounts, m_sessions, m_subscriptions)
    , m_front([this](const Request &request) { return m_router.answer(request); },
          [this](const Request &request) { return m_router.isSlow(request); })
{
    m_api.addTo(m_router);
    m_pages.addTo(m_router);
}

tl::expected<quint16, QString> Service::listen(quint16 port)
{
    return m_front.listenOnLoopback(port).map_error(
        [port](const QString &why) { return u"Port %1 cannot be used: %2"_s.arg(port).arg(why); });
}

} // namespace orbitledge::demo
