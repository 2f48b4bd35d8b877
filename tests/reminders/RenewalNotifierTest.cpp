#include "reminders/RenewalNotifier.h"

#include "model/UuidText.h"
#include "support/FakeNotificationCenter.h"
#include "support/FakeUserDefaults.h"
#include "support/NotificationDesk.h"
#include "support/SampleSubscriptions.h"
#include "support/TestMain.h"

#include <QRegularExpression>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

namespace {

const QString ledgerKey = u"notifications.immediateLedger"_s;

Subscription renewing(const LocalDate &date, const QString &name = u"Disk space"_s)
{
    return SampleSubscription(name).costs(u"9.99"_s, u"EUR"_s).renewsOn(date);
}

QString keyOf(const Subscription &subscription, int leadDays = 3)
{
    return uuidText(subscription.id) + u'.' + subscription.nextBillingDate.text() + u'.'
        + QString::number(leadDays);
}

QString identifierOf(const Subscription &subscription, int leadDays = 3)
{
    return u"orbitledge.renewal."_s + keyOf(subscription, leadDays);
}

/// A notifier, and what it speaks to.
template <typename Center> struct Notifying {
    std::shared_ptr<FakeUserDefaults> defaults = std::make_shared<FakeUserDefaults>();
    std::unique_ptr<RenewalNotifier> notifier;

    explicit Notifying(std::shared_ptr<Center> center)
        : notifier(
              std::make_unique<RenewalNotifier>(std::move(center), defaults, QUrl(u"https://example.com/"_s)))
    {
    }

    ReminderSynchronisation synchronise(const QList<Subscription> &subscriptions, Instant now,
        qint64 leadDays = 3, const QByteArray &zone = "Europe/Berlin") const
    {
        return QCoro::waitFor(
            notifier->synchronise(subscriptions, leadDays, now, u"EUR"_s, calendarIn(zone)));
    }

    [[nodiscard]] QStringList ledger() const
    {
        return defaults->read<QStringList>(ledgerKey).value_or(QStringList{u"nothing"_s});
    }
};

} // namespace

class RenewalNotifierTest : public QObject {
    Q_OBJECT

private:
    std::shared_ptr<FakeNotificationCenter> m_center;

private Q_SLOTS:
    void init() { m_center = std::make_shared<FakeNotificationCenter>(); }

    void shouldAskForAScheduledReminder()
    {
        const Notifying notifying(m_center);
        const Subscription subscription = renewing({2026, 3, 21});
        const auto result = notifying.synchronise({subscription}, at("2026-03-17T12:00:00Z"));
        QCOMPARE(result, ReminderSynchronisation());
        const NotificationRequest expected{
            .identifier = identifierOf(subscription),
            .content = {
                .title = u"Disk space renews soon"_s,
                .body = u"\u20ac9.99 charges in 4 days."_s,
                .sound = NotificationSound::Default,
                .userInfo = {{u"url"_s,
                    u"https://example.com/subscriptions/"_s + uuidText(subscription.id) + u"/edit"_s}},
            },
            .trigger = CalendarTrigger{"Europe/Berlin", {2026, 3, 18}, 9, 0},
            .lastDay = LocalDate{2026, 3, 21},
        };
        QCOMPARE(m_center->requests, (QList<PendingNotification>{{expected, false}}));
        QCOMPARE(notifying.ledger(), QStringList());
    }

    void shouldAskForAnImmediateReminderOnce()
    {
        const Notifying notifying(m_center);
        const Subscription subscription = renewing({2026, 3, 19});
        notifying.synchronise({subscription}, at("2026-03-17T12:00:00Z"));
        QCOMPARE(m_center->requests.size(), 1);
        QVERIFY(m_center->requests[0].request.trigger
            == NotificationTrigger(TimeIntervalTrigger{std::chrono::milliseconds(2000)}));
        QCOMPARE(notifying.ledger(), QStringList{keyOf(subscription)});
        // Not yet shown, and it stays; shown, and it is not asked for again.
        notifying.synchronise({subscription}, at("2026-03-17T12:00:01Z"));
        QCOMPARE(m_center->identifiers(), QStringList{identifierOf(subscription)});
        m_center->requests.clear();
        notifying.synchronise({subscription}, at("2026-03-17T12:00:30Z"));
        QVERIFY(m_center->requests.isEmpty());
        QCOMPARE(notifying.ledger(), QStringList{keyOf(subscription)});
    }

    void shouldReplaceAllPendingRemindersAndNothingElse()
    {
        const Notifying notifying(m_center);
        const Subscription gone = renewing({2026, 3, 22}, u"Gone"_s);
        const Subscription kept = renewing({2026, 3, 23}, u"Kept"_s);
        QVERIFY(QCoro::waitFor(notifying.notifier->sendTestNotification()));
        notifying.synchronise({gone, kept}, at("2026-03-17T12:00:00Z"));
        QCOMPARE(m_center->requests.size(), 3);
        m_center->calls.clear();
        notifying.synchronise({kept}, at("2026-03-17T12:00:00Z"));
        QCOMPARE(m_center->requests.size(), 2);
        QVERIFY(m_center->identifiers()[0].startsWith(u"orbitledge.test."));
        QCOMPARE(m_center->identifiers()[1], identifierOf(kept));
        // In one call, and before anything is added.
        QCOMPARE(m_center->calls,
            (QStringList{u"pending"_s, u"remove "_s + identifierOf(gone) + u',' + identifierOf(kept),
                u"remove "_s, u"add "_s + identifierOf(kept), u"save"_s}));
    }

    void shouldLetGoOnWhatIsOnItsWay()
    {
        const Notifying notifying(m_center);
        const Subscription cancelled = renewing({2026, 3, 19}, u"Cancelled"_s);
        const Subscription kept = renewing({2026, 3, 19}, u"Kept"_s);
        notifying.synchronise({cancelled, kept}, at("2026-03-17T12:00:00Z"));
        QCOMPARE(m_center->requests.size(), 2);
        notifying.synchronise({kept}, at("2026-03-17T12:00:01Z"));
        QCOMPARE(m_center->identifiers(), QStringList{identifierOf(kept)});
    }

    void shouldTakeBackWhatIsOnItsWayAlsoWhereOthersArePlanned()
    {
        const Notifying notifying(m_center);
        const Subscription cancelled = renewing({2026, 3, 19}, u"Cancelled"_s);
        const Subscription later = renewing({2026, 4, 19}, u"Later"_s);
        notifying.synchronise({cancelled, later}, at("2026-03-17T12:00:00Z"));
        QCOMPARE(m_center->requests.size(), 2);
        notifying.synchronise({later}, at("2026-03-17T12:00:01Z"));
        QCOMPARE(m_center->identifiers(), QStringList{identifierOf(later)});
    }

    void shouldYieldTheSameIdentifiersAgain()
    {
        const Notifying notifying(m_center);
        QList<Subscription> subscriptions;
        for (int i = 0; i < 10; ++i)
            subscriptions.append(renewing({2026, 3, 18 + i}, QString::number(i)));
        notifying.synchronise(subscriptions, at("2026-03-17T12:00:00Z"));
        QStringList first = m_center->identifiers();
        notifying.synchronise(subscriptions, at("2026-03-17T12:00:20Z"));
        QStringList second = m_center->identifiers();
        first.sort();
        second.sort();
        QCOMPARE(second, first);
    }

    void shouldKeepTheLedgerSorted()
    {
        const Notifying notifying(m_center);
        QList<Subscription> subscriptions;
        for (int i = 0; i < 20; ++i)
            subscriptions.append(renewing({2026, 3, 18}, QString::number(i)));
        notifying.synchronise(subscriptions, at("2026-03-17T12:00:00Z"));
        QStringList sorted = notifying.ledger();
        QCOMPARE(sorted.size(), 20);
        sorted.sort();
        QCOMPARE(notifying.ledger(), sorted);
    }

    void shouldTakeAMalformedLedgerForAnEmptyOne()
    {
        const Notifying notifying(m_center);
        notifying.defaults->setValue(ledgerKey, u"x"_s);
        notifying.synchronise({renewing({2026, 3, 19})}, at("2026-03-17T12:00:00Z"));
        QCOMPARE(m_center->requests.size(), 1);
        QCOMPARE(notifying.ledger().size(), 1);
    }

    void shouldSayHowManyWereTooMany()
    {
        const Notifying notifying(m_center);
        QList<Subscription> subscriptions;
        for (int i = 0; i < 70; ++i)
            subscriptions.append(renewing({2026, 3, 28}, QString::number(i)));
        const auto result = notifying.synchronise(subscriptions, at("2026-03-17T12:00:00Z"));
        QCOMPARE(result.skippedOverBudget, 10);
        QCOMPARE(m_center->requests.size(), 60);
    }

    void shouldSayWhatWasRefused()
    {
        const Notifying notifying(m_center);
        const Subscription first = renewing({2026, 3, 19}, u"First"_s);
        const Subscription second = renewing({2026, 3, 19}, u"Second"_s);
        m_center->refuse = [&](const NotificationRequest &request) -> std::optional<QString> {
            return request.identifier == identifierOf(first) ? std::optional(u"No room"_s) : std::nullopt;
        };
        const auto result = notifying.synchronise({first, second}, at("2026-03-17T12:00:00Z"));
        QCOMPARE(result.failure, u"No room"_s);
        QCOMPARE(m_center->identifiers(), QStringList{identifierOf(second)});
        // The refused one was not shown, and can be later.
        QCOMPARE(notifying.ledger(), QStringList{keyOf(second)});
        m_center->refuse = nullptr;
        QCOMPARE(notifying.synchronise({first, second}, at("2026-03-17T12:00:00Z")).failure, std::nullopt);
        QCOMPARE(m_center->requests.size(), 2);
    }

    void shouldSayThatTheyCouldNotBeSaved()
    {
        const Notifying notifying(m_center);
        m_center->savingFailure = u"No space left on device"_s;
        const auto result = notifying.synchronise({renewing({2026, 3, 19})}, at("2026-03-17T12:00:00Z"));
        QCOMPARE(result.failure, u"No space left on device"_s);
        // What may be lost with this process can be planned again.
        QCOMPARE(notifying.ledger(), QStringList());
        m_center->savingFailure.reset();
        notifying.synchronise({renewing({2026, 3, 19})}, at("2026-03-17T12:00:00Z"));
        QCOMPARE(notifying.ledger().size(), 1);
    }

    void shouldChangeNothingWhereItCannotSeeWhatIsThere()
    {
        const Notifying notifying(m_center);
        m_center->readingFailure = u"Another process is in charge."_s;
        const auto result = notifying.synchronise({renewing({2026, 3, 19})}, at("2026-03-17T12:00:00Z"));
        QCOMPARE(result.failure, u"Another process is in charge."_s);
        QCOMPARE(m_center->calls, QStringList{u"pending"_s});
        QVERIFY(notifying.defaults->values.isEmpty());
    }

    void shouldRemoveAllRemindersAndTheLedger()
    {
        const Notifying notifying(m_center);
        QVERIFY(QCoro::waitFor(notifying.notifier->sendTestNotification()));
        notifying.synchronise(
            {renewing({2026, 3, 19}, u"a"_s), renewing({2026, 3, 29}, u"b"_s)}, at("2026-03-17T12:00:00Z"));
        QCOMPARE(m_center->requests.size(), 3);
        QVERIFY(QCoro::waitFor(notifying.notifier->removeAll()));
        QCOMPARE(m_center->calls.last(), u"forget orbitledge.renewal."_s);
        QCOMPARE(m_center->requests.size(), 1);
        QVERIFY(!notifying.defaults->values.contains(ledgerKey));
    }

    void shouldRunOneAfterTheOther()
    {
        // Signing out while a refresh is under way must win.
        const Notifying notifying(m_center);
        auto synchronising = notifying.notifier->synchronise(
            {renewing({2026, 3, 19})}, 3, at("2026-03-17T12:00:00Z"), u"EUR"_s, calendarIn("UTC"));
        auto removing = notifying.notifier->removeAll();
        (void)QCoro::waitFor(std::move(synchronising));
        QVERIFY(QCoro::waitFor(std::move(removing)));
        QVERIFY(m_center->requests.isEmpty());
        QVERIFY(!notifying.defaults->values.contains(ledgerKey));
    }

    void shouldSendATest()
    {
        const Notifying notifying(m_center);
        QVERIFY(QCoro::waitFor(notifying.notifier->sendTestNotification()));
        QVERIFY(QCoro::waitFor(notifying.notifier->sendTestNotification()));
        QCOMPARE(m_center->requests.size(), 2);
        const NotificationRequest &request = m_center->requests[0].request;
        const QRegularExpression form(u"^orbitledge\\.test\\.[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}$"_s);
        QVERIFY2(form.match(request.identifier).hasMatch(), qPrintable(request.identifier));
        QVERIFY(request.identifier != m_center->requests[1].request.identifier);
        QCOMPARE(request.content.title, u"Orbitledge"_s);
        QCOMPARE(request.content.body, u"Renewal reminders are working."_s);
        QCOMPARE(request.content.sound, NotificationSound::Default);
        QVERIFY(request.trigger == NotificationTrigger(TimeIntervalTrigger{std::chrono::milliseconds(2000)}));
    }

    void shouldSayWhyATestCannotBeSent()
    {
        const Notifying notifying(m_center);
        m_center->refuse = [](const NotificationRequest &) { return u"Not allowed"_s; };
        const auto refused = QCoro::waitFor(notifying.notifier->sendTestNotification());
        QVERIFY(!refused);
        QCOMPARE(refused.error().errorDescription, u"Not allowed"_s);
        m_center->refuse = nullptr;
        m_center->savingFailure = u"Disk full"_s;
        QCOMPARE(QCoro::waitFor(notifying.notifier->sendTestNotification()).error().errorDescription,
            u"Disk full"_s);
    }

    void shouldPassOnThePermission()
    {
        const Notifying notifying(m_center);
        RenewalNotifier &notifier = *notifying.notifier;
        m_center->currentSettings.authorization = NotificationAuthorization::Provisional;
        QCOMPARE(QCoro::waitFor(notifier.authorizationStatus()), NotificationAuthorization::Provisional);
        QVERIFY(!QCoro::waitFor(notifier.canPresent()));
        m_center->currentSettings.alertsEnabled = true;
        QVERIFY(QCoro::waitFor(notifier.canPresent()));
        m_center->currentSettings = {};
        m_center->currentSettings.notificationCenterEnabled = true;
        QVERIFY(QCoro::waitFor(notifier.canPresent()));

        QCOMPARE(QCoro::waitFor(notifier.requestAuthorization()), true);
        QCOMPARE(m_center->options.toInt(), 6);
        m_center->permission = tl::make_unexpected(NotificationError{u"Broken"_s});
        QCOMPARE(QCoro::waitFor(notifier.requestAuthorization()).error().errorDescription, u"Broken"_s);
    }

    void shouldBeDestroyedWhileItWorks()
    {
        Notifying notifying(m_center);
        const Subscription subscription = renewing({2026, 3, 19});
        auto first = notifying.notifier->synchronise(
            {subscription}, 3, at("2026-03-17T12:00:00Z"), u"EUR"_s, calendarIn("UTC"));
        auto second = notifying.notifier->removeAll();
        auto third = notifying.notifier->sendTestNotification();
        notifying.notifier.reset();
        (void)QCoro::waitFor(std::move(first));
        QVERIFY(QCoro::waitFor(std::move(second)));
        QVERIFY(QCoro::waitFor(std::move(third)));
        QCOMPARE(m_center->requests.size(), 1);
    }

    // ---- with the desktop's notification centre ----

    void shouldFireAtNineByTheLocalClockOnce_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<QByteArray>("zoneAfterwards");
        QTest::addColumn<LocalDate>("renewal");
        QTest::addColumn<QByteArray>("planned");
        QTest::addColumn<QByteArrayList>("moves");
        QTest::addColumn<QByteArray>("fires");
        const QByteArray berlin = "Europe/Berlin";
        const auto row
            = [&](const char *name, const QByteArray &after, const LocalDate &renewal,
                  const QByteArray &planned, const QByteArrayList &moves, const QByteArray &fires) {
                  QTest::newRow(name) << berlin << after << renewal << planned << moves << fires;
              };
        row("an ordinary day", berlin, {2026, 3, 21}, "2026-03-17T12:00:00Z",
            {"2026-03-18T07:59:00Z", "2026-03-18T08:00:00Z", "2026-03-18T08:01:00Z"}, "2026-03-18T08:00:00Z");
        row("the clocks go forward that night", berlin, {2026, 4, 1}, "2026-03-28T12:00:00Z",
            {"2026-03-29T06:59:00Z", "2026-03-29T07:00:00Z", "2026-03-29T08:00:00Z"}, "2026-03-29T07:00:00Z");
        row("the clocks go back that night", berlin, {2026, 10, 28}, "2026-10-24T12:00:00Z",
            {"2026-10-25T07:00:00Z", "2026-10-25T08:00:00Z", "2026-10-25T09:00:00Z"}, "2026-10-25T08:00:00Z");
        row("the clock is set a day forward", berlin, {2026, 3, 21}, "2026-03-16T12:00:00Z",
            {"2026-03-17T12:00:00Z", "2026-03-18T08:00:00Z", "2026-03-18T09:00:00Z"}, "2026-03-18T08:00:00Z");
        row("the clock is set a day forward over the time", berlin, {2026, 3, 21}, "2026-03-17T12:00:00Z",
            {"2026-03-18T12:00:00Z", "2026-03-18T13:00:00Z"}, "2026-03-18T12:00:00Z");
        row("the clock is set a day back", berlin, {2026, 3, 21}, "2026-03-18T07:00:00Z",
            {"2026-03-17T07:00:00Z", "2026-03-17T08:00:00Z", "2026-03-18T07:59:00Z", "2026-03-18T08:00:00Z"},
            "2026-03-18T08:00:00Z");
        row("the clock is set back after it fired", berlin, {2026, 3, 21}, "2026-03-17T12:00:00Z",
            {"2026-03-18T08:00:00Z", "2026-03-17T08:00:00Z", "2026-03-18T08:00:00Z"}, "2026-03-18T08:00:00Z");
        row("suspended over it", berlin, {2026, 3, 21}, "2026-03-17T20:00:00Z",
            {"2026-03-18T10:30:00Z", "2026-03-18T11:00:00Z"}, "2026-03-18T10:30:00Z");
        row("a journey west before it", "America/New_York", {2026, 3, 21}, "2026-03-17T12:00:00Z",
            {"2026-03-17T18:00:00Z", "2026-03-18T08:00:00Z", "2026-03-18T13:00:00Z"}, "2026-03-18T13:00:00Z");
        row("a journey east before it", "Asia/Tokyo", {2026, 3, 21}, "2026-03-17T12:00:00Z",
            {"2026-03-17T18:00:00Z", "2026-03-18T00:00:00Z", "2026-03-18T08:00:00Z"}, "2026-03-18T00:00:00Z");
    }

    void shouldFireAtNineByTheLocalClockOnce()
    {
        QFETCH(const QByteArray, zone);
        QFETCH(const QByteArray, zoneAfterwards);
        QFETCH(const LocalDate, renewal);
        QFETCH(const QByteArray, planned);
        QFETCH(const QByteArrayList, moves);
        QFETCH(const QByteArray, fires);

        NotificationDesk desk(planned.constData());
        desk.zone = zone;
        const auto center = std::shared_ptr<UserNotificationCenter>(
            &desk.startCenter(), [](UserNotificationCenter *) { }); // the desk's
        const Notifying notifying(center);
        const Subscription subscription = renewing(renewal);
        notifying.synchronise({subscription}, at(planned), 3, zone);
        QCOMPARE(desk.pending(), QStringList{identifierOf(subscription)});

        // What is planned anew may put another text in its place, but nobody is told twice.
        const auto announcements = [&desk] {
            return std::ranges::count_if(
                desk.display->shown, [](const auto &showing) { return showing.replaced == 0; });
        };
        QByteArrayList fired;
        desk.zone = zoneAfterwards;
        for (const QByteArray &move : moves) {
            const auto before = announcements();
            desk.alarm->moveTo(at(move), FakeWallClockAlarm::Move::Set);
            // Planned anew whenever the clock or the zone changes, and now and then anyway.
            notifying.synchronise({subscription}, at(move), 3, zoneAfterwards);
            desk.alarm->moveTo(later(at(move), 2 * second));
            const auto isAtRest = [&] { return !desk.alarm->target || *desk.alarm->target > at(move); };
            QTRY_VERIFY(isAtRest());
            desk.settle();
            if (announcements() > before)
                fired.append(move);
        }
        QCOMPARE(fired, QByteArrayList{fires});
    }

    void shouldNotLoseAnImmediateReminderThatWasNotYetShown()
    {
        NotificationDesk desk("2026-03-19T12:00:00Z");
        const auto center
            = std::shared_ptr<UserNotificationCenter>(&desk.startCenter(), [](UserNotificationCenter *) { });
        const Notifying notifying(center);
        const Subscription subscription = renewing({2026, 3, 21});
        notifying.synchronise({subscription}, at("2026-03-19T12:00:00Z"));
        notifying.synchronise({subscription}, at("2026-03-19T12:00:01Z"));
        desk.alarm->moveTo(at("2026-03-19T12:00:02Z"));
        QTRY_COMPARE(desk.display->titles(), QStringList{u"Disk space renews soon"_s});
        notifying.synchronise({subscription}, at("2026-03-19T12:01:00Z"));
        desk.alarm->moveTo(at("2026-03-19T13:00:00Z"));
        desk.settle();
        QCOMPARE(desk.display->shown.size(), 1);
    }

    void shouldTakeBackWhatIsShownAndTellAgainAfterRemovingAll()
    {
        NotificationDesk desk("2026-03-19T12:00:00Z");
        const auto center
            = std::shared_ptr<UserNotificationCenter>(&desk.startCenter(), [](UserNotificationCenter *) { });
        const Notifying notifying(center);
        const Subscription subscription = renewing({2026, 3, 21});
        notifying.synchronise({subscription}, at("2026-03-19T12:00:00Z"));
        desk.alarm->moveTo(at("2026-03-19T12:00:02Z"));
        QTRY_VERIFY(desk.pending().isEmpty());
        QVERIFY(QCoro::waitFor(notifying.notifier->removeAll()));
        QCOMPARE(desk.display->closings, QList<quint32>{1});
        notifying.synchronise({subscription}, at("2026-03-19T12:01:00Z"));
        desk.alarm->moveTo(at("2026-03-19T12:01:02Z"));
        QTRY_COMPARE(desk.display->shown.size(), 2);
    }
};

ORBITLEDGE_TEST_MAIN(RenewalNotifierTest)
#include "RenewalNotifierTest.moc"
