/// The program's store with everything real, without a window, as it is told on its standard input, one
/// command a line, the fields separated by spaces and each but the first percent-encoded:
///
///     start
///     refresh
///     sign-in EMAIL PASSWORD      says the failure, for people
///     sign-out
///     cancel NAME
///     uncancel NAME
///     add NAME PRICE              creates a subscription that renews in five days, then refreshes
///     reminders on|off
///     state                       says the state as JSON
///     quit
///
/// Commands run beside one another; each says its first word when it is done.

#include "composition/SystemParts.h"
#include "support/CommandInput.h"
#include "timeline/EntryTexts.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <iostream>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

namespace {

void say(const QByteArray &line)
{
    std::cout << line.constData() << std::endl; // flushed, as somebody waits for it
}

QString textOf(const QByteArray &word)
{
    return QString::fromUtf8(QByteArray::fromPercentEncoding(word));
}

QJsonValue orNull(const std::optional<QString> &text)
{
    return text ? QJsonValue(*text) : QJsonValue();
}

QByteArray describe(const AppState &state)
{
    QJsonArray names;
    QJsonArray cancelled;
    for (const Subscription &subscription : state.subscriptions) {
        names.append(subscription.name);
        if (isCancelled(subscription))
            cancelled.append(subscription.name);
    }
    const QJsonObject object{
        {u"auth"_s, QStringList{u"checking"_s, u"signedOut"_s, u"signedIn"_s}[int(state.authState)]},
        {u"refresh"_s, QStringList{u"idle"_s, u"loading"_s, u"refreshing"_s}[int(state.refreshState)]},
        {u"user"_s, state.user ? QJsonValue(state.user->email) : QJsonValue()},
        {u"names"_s, names},
        {u"cancelled"_s, cancelled},
        {u"error"_s, orNull(state.errorMessage)},
        {u"offline"_s, state.isOffline},
        {u"fetched"_s,
            state.lastUpdatedAt ? QJsonValue(state.lastUpdatedAt->millisecondsSinceEpoch()) : QJsonValue()},
        {u"reminderFailure"_s, orNull(state.notificationFailureMessage)},
    };
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

class Probe {
public:
    explicit Probe(const SystemParts &parts)
        : m_parts(parts)
        , m_store(parts.store, parts.identity)
    {
    }

    QCoro::Task<> obey(QList<QByteArray> words)
    {
        const QByteArray command = words[0];
        QByteArray answer;
        if (command == "start") {
            co_await m_store.start();
        } else if (command == "refresh") {
            co_await m_store.refresh();
        } else if (command == "sign-in") {
            const auto signedIn = co_await m_store.signIn(textOf(words[1]), textOf(words[2]));
            answer = signedIn ? QByteArray() : signedIn.error().errorDescription().toUtf8();
        } else if (command == "sign-out") {
            co_await m_store.signOut();
        } else if (command == "cancel") {
            co_await m_store.cancelSubscription(idOf(textOf(words[1])));
        } else if (command == "uncancel") {
            co_await m_store.uncancelSubscription(idOf(textOf(words[1])));
        } else if (command == "add") {
            answer = co_await add(textOf(words[1]), words[2]);
        } else if (command == "reminders") {
            m_store.settings().setNotificationsEnabled(words[1] == "on");
            co_await m_store.synchroniseReminders();
        } else if (command == "state") {
            answer = describe(m_store.state());
        } else if (command == "quit") {
            QCoreApplication::quit();
        } else {
            qFatal("unknown command %s", command.constData());
        }
        say((command + ' ' + answer).trimmed());
    }

private:
    QCoro::Task<QByteArray> add(QString name, QByteArray price)
    {
        const Calendar calendar = m_parts.store.calendar();
        const LocalDate today = calendar.localDate(m_parts.store.clock->now());
        CreateSubscriptionRequest request{
            .name = name,
            .cost = *Decimal::fromText(price.toStdString()),
            .currency = u"EUR"_s,
            .billingCycle = u"monthly"_s,
            .nextBillingDate = LocalDate::fromDaysSinceEpoch(today.daysSinceEpoch() + 5),
            .categoryID = {},
            .trialEndDate = {},
            .trialNotificationDays = {},
        };
        auto creating = m_parts.store.api->createSubscription(std::move(request));
        const auto created = co_await creating;
        if (!created)
            co_return created.error().errorDescription().toUtf8();
        co_await m_store.refresh();
        co_return QByteArray();
    }

    [[nodiscard]] QUuid idOf(const QString &name) const
    {
        const auto found = std::ranges::find(m_store.state().subscriptions, name, &Subscription::name);
        if (found == m_store.state().subscriptions.end())
            qFatal("there is no %s", qPrintable(name));
        return found->id;
    }

    SystemParts m_parts;
    AppStore m_store;
};

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const auto parts = SystemParts::make(Presence::Resident);
    if (!parts)
        qFatal("%s", qPrintable(parts.error()));
    Probe probe(*parts);
    const CommandInput input(
        [&probe](const auto &words) { probe.obey(words); }, [] { QCoreApplication::quit(); });
    return QCoreApplication::exec();
}
