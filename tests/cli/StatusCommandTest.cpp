#include "cli/StatusCommand.h"

#include "cli/Status.h"
#include "support/CommandHarness.h"
#include "support/SampleRecords.h"
#include "support/SampleSubscriptions.h"
#include "support/TestMain.h"

#include <QJsonDocument>
#include <QJsonObject>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

namespace {

/// Costs 9.99 EUR; today is the 18th of March 2026.
SampleSubscription renewing(const QString &name, const LocalDate &date)
{
    return SampleSubscription(name).costs(u"9.99"_s, u"EUR"_s).renewsOn(date);
}

CacheSnapshot snapshotOf(const QList<Subscription> &subscriptions)
{
    CacheSnapshot snapshot = sampleSnapshot(0);
    snapshot.subscriptions = subscriptions;
    return snapshot;
}

Status statusOn(const CacheSnapshot &snapshot, const char *now = "2026-03-18T09:00:00Z")
{
    return statusOf(snapshot,
        {.now = *Instant::fromText(now),
            .calendar = Calendar(*TimeZone::named("UTC"), *Locale::named("en_US")),
            .currency = snapshot.profile.defaultCurrency});
}

QString line(const std::optional<Status> &status, const char *locale = "en_US")
{
    return statusLine(status, *Locale::named(locale));
}

QString lineOf(const QList<Subscription> &subscriptions)
{
    return line(statusOn(snapshotOf(subscriptions)));
}

QJsonObject waybarOf(const std::optional<Status> &status)
{
    return QJsonDocument::fromJson(waybarJson(status, *Locale::named("en_US"))).object();
}

QJsonObject waybarOf(const QList<Subscription> &subscriptions)
{
    return waybarOf(statusOn(snapshotOf(subscriptions)));
}

QStringList namesOf(const QList<ComingRenewal> &renewals)
{
    QStringList names;
    for (const ComingRenewal &renewal : renewals)
        names += renewal.subscription->name;
    return names;
}

} // namespace

class StatusCommandTest : public QObject {
    Q_OBJECT

private:
    std::optional<CommandHarness> m_harness;

    void save(const CacheSnapshot &snapshot)
    {
        QVERIFY(m_harness->files->replace(m_harness->cacheFile, encodeCacheSnapshot(snapshot)));
    }

private Q_SLOTS:
    void init() { m_harness.emplace(); }

    // What there is to show

    void shouldTakeTheEarliestRenewalThatIsNotOver_data()
    {
        QTest::addColumn<QList<Subscription>>("subscriptions");
        QTest::addColumn<QString>("next");
        QTest::addColumn<qint64>("days");
        using List = QList<Subscription>;
        const auto later = renewing(u"later"_s, {2026, 6, 1});
        QTest::newRow("one of many") << List{later, renewing(u"next month"_s, {2026, 4, 2}),
            renewing(u"this month"_s, {2026, 3, 25})}
                                     << u"this month"_s << qint64{7};
        QTest::newRow("today") << List{later, renewing(u"today"_s, {2026, 3, 18})} << u"today"_s << qint64{0};
        QTest::newRow("overdue ones are over")
            << List{renewing(u"yesterday"_s, {2026, 3, 17}), renewing(u"long ago"_s, {2025, 3, 17}), later}
            << u"later"_s << qint64{75};
        QTest::newRow("cancelled and paused ones do not renew")
            << List{renewing(u"cancelled"_s, {2026, 3, 19}).withStatus(u"cancelled"_s),
                   renewing(u"paused"_s, {2026, 3, 19}).withStatus(u"paused"_s), later}
            << u"later"_s << qint64{75};
        QTest::newRow("the first that is held, of several on one day")
            << List{renewing(u"zebra"_s, {2026, 3, 20}), renewing(u"ant"_s, {2026, 3, 20})} << u"zebra"_s
            << qint64{2};
        QTest::newRow("a date that does not exist is none")
            << List{renewing(u"never"_s, {2026, 2, 30}), later} << u"later"_s << qint64{75};
        QTest::newRow("the status in other letters")
            << List{later, renewing(u"loud"_s, {2026, 3, 30}).withStatus(u"ACTIVE"_s)} << u"loud"_s
            << qint64{12};
    }
    void shouldTakeTheEarliestRenewalThatIsNotOver()
    {
        QFETCH(QList<Subscription>, subscriptions);
        QFETCH(QString, next);
        QFETCH(qint64, days);
        const Status status = statusOn(snapshotOf(subscriptions));
        QVERIFY(status.nextRenewal);
        QCOMPARE(status.nextRenewal->subscription->name, next);
        QCOMPARE(status.nextRenewal->daysUntilRenewal, days);
    }

    void shouldKnowNoRenewalWhereAllAreOver()
    {
        const Status status = statusOn(snapshotOf({renewing(u"overdue"_s, {2026, 3, 17})}));
        QVERIFY(!status.nextRenewal);
        QVERIFY(status.withinSevenDays.isEmpty());
        QCOMPARE(status.activeCount, 1);
    }

    void shouldListTheRenewalsWithinSevenDaysByDay()
    {
        const Status status = statusOn(snapshotOf({
            renewing(u"in 8 days"_s, {2026, 3, 26}),
            renewing(u"in 7 days"_s, {2026, 3, 25}),
            renewing(u"in 4 days"_s, {2026, 3, 22}),
            renewing(u"yesterday"_s, {2026, 3, 17}),
            renewing(u"today"_s, {2026, 3, 18}),
            renewing(u"also in 4 days"_s, {2026, 3, 22}),
            renewing(u"cancelled"_s, {2026, 3, 20}).withStatus(u"cancelled"_s),
        }));
        QCOMPARE(namesOf(status.withinSevenDays),
            (QStringList{u"today"_s, u"in 4 days"_s, u"also in 4 days"_s, u"in 7 days"_s}));
    }

    void shouldListTheRenewalsWithinSevenDaysAcrossMonths()
    {
        const Status status
            = statusOn(snapshotOf({renewing(u"fifth"_s, {2026, 4, 5}), renewing(u"first"_s, {2026, 4, 1}),
                           renewing(u"thirtieth"_s, {2026, 3, 30})}),
                "2026-03-30T09:00:00Z");
        QCOMPARE(namesOf(status.withinSevenDays), (QStringList{u"thirtieth"_s, u"first"_s, u"fifth"_s}));
    }

    void shouldCountInDollarsWhereTheProfileNamesNoCurrency()
    {
        CacheSnapshot snapshot = snapshotOf({SampleSubscription().renewsOn({2026, 3, 20})});
        snapshot.profile.defaultCurrency.clear();
        const Status status = statusOn(snapshot);
        QCOMPARE(status.currency, u"USD"_s);
        QCOMPARE(status.monthlyTotal, Decimal(10));
    }

    // The line for people

    void shouldSayInOneLineWhatIsNext_data()
    {
        QTest::addColumn<QList<Subscription>>("subscriptions");
        QTest::addColumn<QString>("expected");
        using List = QList<Subscription>;
        const auto soon = renewing(u"Disk space"_s, {2026, 3, 21});
        QTest::newRow("urgent ones") << List{soon,
            renewing(u"Letters"_s, {2026, 3, 21}).costs(u"14.51"_s, u"EUR"_s)}
                                     << u"2 due · Disk space in 3 days, €9.99 · €24.50 left this month\n"_s;
        QTest::newRow("none that is urgent") << List{renewing(u"Disk space"_s, {2026, 3, 22})}
                                             << u"Disk space in 4 days, €9.99 · €9.99 left this month\n"_s;
        QTest::newRow("today") << List{renewing(u"Disk space"_s, {2026, 3, 18})}
                               << u"1 due · Disk space today, €9.99 · €9.99 left this month\n"_s;
        QTest::newRow("tomorrow") << List{renewing(u"Disk space"_s, {2026, 3, 19})}
                                  << u"1 due · Disk space tomorrow, €9.99 · €9.99 left this month\n"_s;
        QTest::newRow("nothing this month") << List{renewing(u"Disk space"_s, {2026, 4, 1})}
                                            << u"Disk space in 14 days, €9.99 · €0.00 left this month\n"_s;
        QTest::newRow("no renewal to come")
            << List{renewing(u"Disk space"_s, {2026, 3, 17})} << u"No renewals · €0.00 left this month\n"_s;
        QTest::newRow("no subscriptions") << List{} << u"No renewals · €0.00 left this month\n"_s;
        QTest::newRow("a currency of its own")
            << List{renewing(u"Disk space"_s, {2026, 3, 21})
                       .costs(u"12"_s, u"usd"_s)
                       .convertedTo(u"11.04"_s, u"EUR"_s)}
            << u"1 due · Disk space in 3 days, $12.00 · €11.04 left this month\n"_s;
        QTest::newRow("a currency without decimals")
            << List{renewing(u"Disk space"_s, {2026, 3, 21}).costs(u"1200"_s, u"JPY"_s)}
            << u"1 due · Disk space in 3 days, ¥1,200 · €0.00 left this month\n"_s;
        QTest::newRow("a currency that is none")
            << List{renewing(u"Disk space"_s, {2026, 3, 21}).costs(u"3"_s, u"\u001B[31m\n"_s)}
            << u"1 due · Disk space in 3 days, \uFFFD[31M\uFFFD 3 · €0.00 left this month\n"_s;
        QTest::newRow("control characters in a name")
            << List{renewing(u"Bad\u001B[31m\nname"_s, {2026, 3, 22})}
            << u"Bad\uFFFD[31m\uFFFDname in 4 days, €9.99 · €9.99 left this month\n"_s;
        QTest::newRow("markup is for others to mind")
            << List{renewing(u"<b>A & B</b> %1"_s, {2026, 3, 22})}
            << u"<b>A & B</b> %1 in 4 days, €9.99 · €9.99 left this month\n"_s;
        QTest::newRow("a name from right to left is set apart")
            << List{renewing(u"מוזיקה 24"_s, {2026, 3, 22})}
            << u"\u2068מוזיקה 24\u2069 in 4 days, €9.99 · €9.99 left this month\n"_s;
        QTest::newRow("a name that would turn what follows")
            << List{renewing(u"\u202Eecaps\u2067 disk"_s, {2026, 3, 22})}
            << u"ecaps disk in 4 days, €9.99 · €9.99 left this month\n"_s;
    }
    void shouldSayInOneLineWhatIsNext()
    {
        QFETCH(QList<Subscription>, subscriptions);
        QFETCH(QString, expected);
        QCOMPARE(lineOf(subscriptions), expected);
    }

    void shouldWriteAmountsAsTheLocaleDoes()
    {
        const Status status
            = statusOn(snapshotOf({renewing(u"Speicher"_s, {2026, 3, 22}).costs(u"1234.5"_s, u"EUR"_s)}));
        QCOMPARE(line(status, "de_DE"),
            u"Speicher in 4 days, 1.234,50\u00A0€ · 1.234,50\u00A0€ left this month\n"_s);
    }

    void shouldSayThatNobodyIsSignedIn() { QCOMPARE(line(std::nullopt), u"Not signed in\n"_s); }

    // The object for Waybar

    void shouldFillABar()
    {
        const QJsonObject object = waybarOf({
            renewing(u"Disk space"_s, {2026, 3, 21}),
            renewing(u"Letters"_s, {2026, 3, 18}).costs(u"5"_s, u"USD"_s).convertedTo(u"4.6"_s, u"EUR"_s),
            renewing(u"Far away"_s, {2026, 3, 26}),
        });
        QCOMPARE(object.keys(), (QStringList{u"class"_s, u"text"_s, u"tooltip"_s}));
        QCOMPARE(object[u"text"_s].toString(), u"2 · Letters today"_s);
        QCOMPARE(object[u"class"_s].toString(), u"urgent"_s);
        QCOMPARE(object[u"tooltip"_s].toString(),
            u"€24.58 / month\n€24.58 left this month\n"
            "today · Letters · $5.00\nin 3 days · Disk space · €9.99"_s);
    }

    void shouldLeaveTheBarCalmWhereNothingIsUrgent()
    {
        const QJsonObject object = waybarOf({renewing(u"Disk space"_s, {2026, 4, 2})});
        QCOMPARE(object[u"text"_s].toString(), u"Disk space in 15 days"_s);
        QCOMPARE(object[u"class"_s].toString(), u"normal"_s);
        QCOMPARE(object[u"tooltip"_s].toString(),
            u"€9.99 / month\n€0.00 left this month\nNo renewals within seven days"_s);
        QCOMPARE(waybarOf(QList<Subscription>{})[u"text"_s].toString(), u"No renewals"_s);
    }

    void shouldLeaveTheBarEmptyWhereNobodyIsSignedIn()
    {
        QCOMPARE(waybarJson(std::nullopt, *Locale::named("en_US")),
            R"({"text":"","tooltip":"Not signed in","class":"signed-out"})"
            "\n"_ba);
    }

    void shouldEscapeMarkupOnce()
    {
        const QJsonObject object
            = waybarOf({renewing(u"A & <b>\"B\"</b> &lt;"_s, {2026, 3, 21}).costs(u"1"_s, u"<&>"_s)});
        QCOMPARE(object[u"text"_s].toString(), u"1 · A &amp; &lt;b&gt;\"B\"&lt;/b&gt; &amp;lt; in 3 days"_s);
        QVERIFY(object[u"tooltip"_s].toString().endsWith(
            u"\nin 3 days · A &amp; &lt;b&gt;\"B\"&lt;/b&gt; &amp;lt; · &lt;&amp;&gt; 1"_s));
    }

    void shouldKeepOutsidersTextsInTheirLine()
    {
        const QJsonObject object = waybarOf(
            {renewing(u"two\nlines \u0007"_s, {2026, 3, 21}), renewing(u"חדשות"_s, {2026, 3, 22})});
        QCOMPARE(object[u"text"_s].toString(), u"1 · two\uFFFDlines \uFFFD in 3 days"_s);
        QVERIFY(object[u"tooltip"_s].toString().endsWith(
            u"\nin 3 days · two\uFFFDlines \uFFFD · €9.99\nin 4 days · \u2068חדשות\u2069 · €9.99"_s));
    }

    void shouldCutALongNameInTheBarAlone()
    {
        const QString name(60, u'&');
        const QJsonObject object = waybarOf({renewing(name, {2026, 3, 22})});
        QCOMPARE(object[u"text"_s].toString(), u"&amp;"_s.repeated(23) + u"… in 4 days"_s);
        QVERIFY(object[u"tooltip"_s].toString().contains(u"&amp;"_s.repeated(60)));
    }

    void shouldBoundTheTooltip()
    {
        QList<Subscription> many;
        for (int i = 0; i < 12; ++i)
            many += renewing(u"Name %1"_s.arg(i), {2026, 3, 20});
        const QString tooltip = waybarOf(many)[u"tooltip"_s].toString();
        QCOMPARE(tooltip.count(u"in 2 days · "_s), 10);
        QVERIFY(tooltip.endsWith(u"\nin 2 days · Name 9 · €9.99\nand 2 more"_s));
    }

    void shouldTellThatTheTotalIsPartial()
    {
        const QJsonObject object
            = waybarOf({renewing(u"Disk space"_s, {2026, 4, 2}).costs(u"5"_s, u"USD"_s)});
        QVERIFY(object[u"tooltip"_s].toString().startsWith(
            u"€0.00 / month\n€0.00 left this month\nPartial total\n"_s));
    }

    // The object for programs

    void shouldTellProgramsAll()
    {
        Subscription next = renewing(u"Disk <space>\n"_s, {2026, 3, 21});
        next.id = QUuid(u"{6f1c2c1e-9f0b-4a6e-8b57-1d4e6a7f9b10}"_s);
        next.cost = *Decimal::fromText("12345678901234567890.123456789");
        next.currency = u"usd"_s;
        next.convertedCost = *Decimal::fromText("0.10");
        next.convertedCurrency = u"EUR"_s;
        CacheSnapshot snapshot
            = snapshotOf({next, renewing(u"Paused"_s, {2026, 3, 19}).withStatus(u"paused"_s)});
        snapshot.fetchedAt = *Instant::fromText("2026-03-18T10:30:00+02:00");
        QCOMPARE(statusJson(statusOn(snapshot)),
            R"({"signedIn":true,"badgeCount":1,"nextRenewal":{"id":"6F1C2C1E-9F0B-4A6E-8B57-1D4E6A7F9B10",)"
            R"("name":"Disk <space>\u000a","date":"2026-03-21","daysUntilRenewal":3,)"
            R"("cost":12345678901234567890.123456789,"currency":"usd"},"monthlyTotal":0.1,)"
            R"("remainingThisMonth":0.1,"activeCount":1,"currency":"EUR","fetchedAt":"2026-03-18T08:30:00Z"})"
            "\n"_ba);
    }

    void shouldTellProgramsThatNothingIsNext()
    {
        QCOMPARE(statusJson(statusOn(snapshotOf({}))),
            R"({"signedIn":true,"badgeCount":0,"nextRenewal":null,"monthlyTotal":0,"remainingThisMonth":0,)"
            R"("activeCount":0,"currency":"EUR","fetchedAt":"2026-03-18T09:00:00Z"})"
            "\n"_ba);
    }

    void shouldTellProgramsThatNothingIsSaved()
    {
        QCOMPARE(statusJson(std::nullopt),
            R"({"signedIn":false,"badgeCount":null,"nextRenewal":null,"monthlyTotal":null,)"
            R"("remainingThisMonth":null,"activeCount":null,"currency":null,"fetchedAt":null})"
            "\n"_ba);
    }

    // The command

    void shouldPrintTheFormThatIsAskedFor()
    {
        save(snapshotOf({renewing(u"Disk space"_s, {2026, 3, 21})}));
        QCOMPARE(m_harness->run({"status"}), ExitCode::Success);
        QCOMPARE(m_harness->output, "1 due · Disk space in 3 days, €9.99 · €9.99 left this month\n"_ba);
        QCOMPARE(m_harness->run({"status", "--waybar"}), ExitCode::Success);
        QVERIFY(m_harness->output.startsWith("{\"text\":\"1 · Disk space in 3 days\","));
        QCOMPARE(m_harness->run({"status", "--json"}), ExitCode::Success);
        QVERIFY(m_harness->output.startsWith("{\"signedIn\":true,\"badgeCount\":1,"));
        QCOMPARE(m_harness->errors, ""_ba);
    }

    void shouldTakeInstantZoneLocaleAndCurrencyFromTheArguments()
    {
        save(snapshotOf({renewing(u"Disk space"_s, {2026, 4, 1})}));
        QCOMPARE(m_harness->run({"status", "--now=2026-03-31T11:30:00Z", "--time-zone", "Pacific/Auckland",
                     "--locale", "de_DE", "--currency", "usd"}),
            ExitCode::Success);
        // The first of April has begun there.
        QCOMPARE(
            m_harness->output, "1 due · Disk space today, 9,99\u00A0€ · 0,00\u00A0$ left this month\n"_ba);
    }

    void shouldTakeTheLocaleFromTheEnvironment()
    {
        m_harness->variables["LC_ALL"] = "de_DE.UTF-8";
        save(snapshotOf({renewing(u"Disk space"_s, {2026, 3, 22})}));
        QCOMPARE(m_harness->run({"status"}), ExitCode::Success);
        QVERIFY(m_harness->output.startsWith("Disk space in 4 days, 9,99\u00A0€ · "));
    }

    void shouldWriteForPeopleInTheTerminalsEncoding()
    {
        m_harness->environment.encoding = "ISO-8859-8";
        save(snapshotOf({renewing(u"אב"_s, {2026, 3, 22}).costs(u"5"_s, u"GBP"_s)}));
        QCOMPARE(m_harness->run({"status"}), ExitCode::Success);
        QCOMPARE(m_harness->output,
            "\xE0\xE1 in 4 days, \xA3"
            "5.00 \xB7 EUR0.00 left this month\n"_ba);
    }

    void shouldWriteJsonInUtf8WhateverTheTerminal()
    {
        m_harness->environment.encoding = "ISO-8859-1";
        save(snapshotOf({renewing(u"潮の音楽"_s, {2026, 3, 22})}));
        for (const char *form : {"--json", "--waybar"}) {
            QCOMPARE(m_harness->run({"status", form}), ExitCode::Success);
            QVERIFY(m_harness->output.contains("潮の音楽"));
        }
    }

    void shouldSucceedAndChangeNothingWhereNothingOfUseIsSaved_data()
    {
        QTest::addColumn<std::optional<QByteArray>>("content");
        using Content = std::optional<QByteArray>;
        QTest::newRow("no file") << Content();
        QTest::newRow("an empty file") << Content("");
        QTest::newRow("half of a file") << Content(encodeCacheSnapshot(sampleSnapshot(3)).chopped(200));
        QTest::newRow("another version") << Content("{\"version\":7}");
    }
    void shouldSucceedAndChangeNothingWhereNothingOfUseIsSaved()
    {
        QFETCH(std::optional<QByteArray>, content);
        if (content)
            QVERIFY(m_harness->files->replace(m_harness->cacheFile, *content));
        QCOMPARE(m_harness->run({"status"}), ExitCode::Success);
        QCOMPARE(m_harness->output, "Not signed in\n"_ba);
        QCOMPARE(m_harness->run({"status", "--waybar"}), ExitCode::Success);
        QVERIFY(m_harness->output.contains("\"signed-out\""));
        QCOMPARE(m_harness->run({"status", "--json"}), ExitCode::Success);
        QVERIFY(m_harness->output.startsWith("{\"signedIn\":false,\"badgeCount\":null,"));
        QCOMPARE(m_harness->errors, ""_ba);
        QCOMPARE(m_harness->files->removals(), 0);
        QCOMPARE(m_harness->files->exists(m_harness->cacheFile), content.has_value());
        if (content)
            QCOMPARE(m_harness->files->content(m_harness->cacheFile), *content);
    }

    void shouldFailWhereTheSavedDataCannotBeRead()
    {
        m_harness->files->failReading(
            {.kind = FileError::Kind::AccessDenied, .errorDescription = u"Permission denied"_s});
        for (const char *form : {"--now=2026-03-18T09:00:00Z", "--json", "--waybar"}) {
            QCOMPARE(m_harness->run({"status", form}), ExitCode::Failure);
            QCOMPARE(m_harness->output, ""_ba);
            QCOMPARE(m_harness->errors, "orbitledge: /data/cache.json: Permission denied\n"_ba);
        }
    }

    void shouldFailWhereAFileThatIsNamedIsOfNoUse()
    {
        save(sampleSnapshot(1));
        QCOMPARE(m_harness->run({"status", "--snapshot", "/missing"}), ExitCode::Failure);
        QCOMPARE(m_harness->errors, "orbitledge: /missing: No such file\n"_ba);
        QVERIFY(m_harness->files->replace("/damaged", "{\"version\":7}"));
        QCOMPARE(m_harness->run({"status", "--snapshot", "/damaged"}), ExitCode::Failure);
        QVERIFY(m_harness->errors.startsWith("orbitledge: /damaged: version: Version 7 "));
    }

    void shouldRefuseWrongArgumentsInOneLine_data()
    {
        QTest::addColumn<QList<QByteArray>>("words");
        QTest::addColumn<QByteArray>("reason");
        using Words = QList<QByteArray>;
        QTest::newRow("both forms") << Words{"--json", "--waybar"}
                                    << "--json and --waybar exclude each other"_ba;
        QTest::newRow("both forms, the other way round")
            << Words{"--waybar", "--json"} << "--json and --waybar exclude each other"_ba;
        QTest::newRow("a value for a switch") << Words{"--waybar=yes"} << "--waybar takes no value"_ba;
        QTest::newRow("unknown option") << Words{"--polybar"} << "the option \"--polybar\" is not known"_ba;
        QTest::newRow("surplus word") << Words{"now"} << "\"now\" was not expected"_ba;
        QTest::newRow("the switch as a value")
            << Words{"--now", "--waybar"} << "\"--waybar\" is not an instant like 2026-03-18T09:30:00Z"_ba;
    }
    void shouldRefuseWrongArgumentsInOneLine()
    {
        QFETCH(QList<QByteArray>, words);
        QFETCH(QByteArray, reason);
        QCOMPARE(m_harness->run(QList<QByteArray>{"status"} + words), ExitCode::Usage);
        QCOMPARE(m_harness->output, ""_ba);
        QCOMPARE(m_harness->errors, "orbitledge: status: " + reason + '\n');
    }

    void shouldKnowItsSwitchAlone()
    {
        QCOMPARE(m_harness->run({"timeline", "--waybar"}), ExitCode::Usage);
        QCOMPARE(m_harness->errors, "orbitledge: timeline: the option \"--waybar\" is not known\n"_ba);
    }

    void shouldFailWhereTheOutputCannotBeWritten()
    {
        save(sampleSnapshot(1));
        m_harness->environment.writeOutput = [](const QByteArray &) { return false; };
        using Words = QList<QByteArray>;
        for (const Words &words : {Words{"status"}, Words{"status", "--json"}, Words{"status", "--waybar"},
                 Words{"status", "-h"}}) {
            QCOMPARE(m_harness->run(words), ExitCode::Failure);
            QCOMPARE(m_harness->errors, "orbitledge: The output could not be written\n"_ba);
        }
    }

    void shouldAskNobody()
    {
        save(sampleSnapshot(1));
        m_harness->environment.performSession
            = [](const SessionRequest &) -> tl::expected<SessionOutcome, QString> {
            qFatal("the service was asked");
        };
        m_harness->environment.deliverReminders
            = []() -> NotificationDelivery { qFatal("the desktop was asked"); };
        QCOMPARE(m_harness->run({"status"}), ExitCode::Success);
    }

    void shouldExplainItself()
    {
        QCOMPARE(m_harness->run({"--help"}), ExitCode::Success);
        QVERIFY(m_harness->output.contains("\n  status "));
        QCOMPARE(m_harness->run({"status", "--help"}), ExitCode::Success);
        for (const char *option :
            {"--json", "--waybar", "--snapshot", "--currency", "--now", "--time-zone", "--locale"})
            QVERIFY2(m_harness->output.contains(option), option);
    }
};

ORBITLEDGE_TEST_MAIN(StatusCommandTest)
#include "StatusCommandTest.moc"
