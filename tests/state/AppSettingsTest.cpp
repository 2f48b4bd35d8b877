#include "state/AppSettings.h"

#include "support/FakeUserDefaults.h"
#include "support/TestMain.h"

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

using Value = UserDefaults::Value;
Q_DECLARE_METATYPE(std::optional<Value>)

class AppSettingsTest : public QObject {
    Q_OBJECT

private:
    std::shared_ptr<FakeUserDefaults> m_defaults;

    AppSettings settingsWith(const QString &key, const std::optional<Value> &value)
    {
        if (value)
            m_defaults->values[key] = *value;
        return AppSettings(m_defaults);
    }

private Q_SLOTS:
    void init() { m_defaults = std::make_shared<FakeUserDefaults>(); }

    void shouldHaveDefaults()
    {
        const AppSettings settings(m_defaults);
        QCOMPARE(settings.refreshInterval(), RefreshInterval::FifteenMinutes);
        QCOMPARE(settings.notificationsEnabled(), false);
        QCOMPARE(settings.notificationLeadDays(), 3);
        QCOMPARE(settings.showMenuBadge(), true);
        QCOMPARE(settings.appearance(), Appearance::System);
        QVERIFY(!settings.lastUpdateCheck());
        QVERIFY(!settings.dismissedUpdateVersion());
        QVERIFY(m_defaults->values.isEmpty());
    }

    void shouldReadTheRefreshInterval_data()
    {
        QTest::addColumn<std::optional<Value>>("stored");
        QTest::addColumn<RefreshInterval>("interval");
        const auto row = [](const char *name, const Value &stored, RefreshInterval interval) {
            QTest::newRow(name) << std::optional(stored) << interval;
        };
        row("300", qint64{300}, RefreshInterval::FiveMinutes);
        row("900", qint64{900}, RefreshInterval::FifteenMinutes);
        row("1800", qint64{1800}, RefreshInterval::ThirtyMinutes);
        row("3600", qint64{3600}, RefreshInterval::OneHour);
        row("1234", qint64{1234}, RefreshInterval::FifteenMinutes);
        row("0", qint64{0}, RefreshInterval::FifteenMinutes);
        row("-300", qint64{-300}, RefreshInterval::FifteenMinutes);
        row("the largest", std::numeric_limits<qint64>::max(), RefreshInterval::FifteenMinutes);
        row("a text", u"300"_s, RefreshInterval::FifteenMinutes);
        row("a bool", true, RefreshInterval::FifteenMinutes);
    }
    void shouldReadTheRefreshInterval()
    {
        QFETCH(std::optional<Value>, stored);
        QFETCH(RefreshInterval, interval);
        QCOMPARE(settingsWith(u"settings.refreshInterval"_s, stored).refreshInterval(), interval);
    }

    void shouldReadTheLeadDays_data()
    {
        QTest::addColumn<std::optional<Value>>("stored");
        QTest::addColumn<qint64>("days");
        const auto row = [](const char *name, const Value &stored, qint64 days) {
            QTest::newRow(name) << std::optional(stored) << days;
        };
        row("0", qint64{0}, 0);
        row("7", qint64{7}, 7);
        row("14", qint64{14}, 14);
        row("30", qint64{30}, 14);
        row("-2", qint64{-2}, 0);
        row("a text", u"7"_s, 3);
        row("a list", QStringList{u"7"_s}, 3);
    }
    void shouldReadTheLeadDays()
    {
        QFETCH(std::optional<Value>, stored);
        QFETCH(qint64, days);
        QCOMPARE(settingsWith(u"settings.notificationLeadDays"_s, stored).notificationLeadDays(), days);
    }

    void shouldReadTheSwitches()
    {
        QCOMPARE(settingsWith(u"settings.showMenuBadge"_s, false).showMenuBadge(), false);
        QCOMPARE(settingsWith(u"settings.showMenuBadge"_s, u"false"_s).showMenuBadge(), true);
        QCOMPARE(settingsWith(u"settings.notificationsEnabled"_s, true).notificationsEnabled(), true);
        QCOMPARE(settingsWith(u"settings.notificationsEnabled"_s, qint64{1}).notificationsEnabled(), false);
    }

    void shouldReadTheAppearance_data()
    {
        QTest::addColumn<std::optional<Value>>("stored");
        QTest::addColumn<Appearance>("appearance");
        const auto row = [](const char *name, const Value &stored, Appearance appearance) {
            QTest::newRow(name) << std::optional(stored) << appearance;
        };
        row("light", u"light"_s, Appearance::Light);
        row("dark", u"dark"_s, Appearance::Dark);
        row("system", u"system"_s, Appearance::System);
        row("another case", u"Dark"_s, Appearance::System);
        row("another text", u"blue"_s, Appearance::System);
        row("empty", QString(), Appearance::System);
        row("a number", qint64{2}, Appearance::System);
    }
    void shouldReadTheAppearance()
    {
        QFETCH(std::optional<Value>, stored);
        QFETCH(Appearance, appearance);
        QCOMPARE(settingsWith(u"settings.appearance"_s, stored).appearance(), appearance);
    }

    void shouldReadWhatItRemembersOfUpdates()
    {
        const Instant checked = *Instant::fromText("2026-03-18T12:00:00.250Z");
        m_defaults->values[u"settings.lastUpdateCheck"_s] = checked;
        m_defaults->values[u"settings.dismissedUpdateVersion"_s] = u"1.2"_s;
        const AppSettings settings(m_defaults);
        QVERIFY(settings.lastUpdateCheck() == checked);
        QCOMPARE(settings.dismissedUpdateVersion(), u"1.2"_s);
        QCOMPARE(m_defaults->values.size(), 2);
    }

    void shouldRemoveWhatIsNoMomentAndNoVersion()
    {
        m_defaults->values[u"settings.lastUpdateCheck"_s] = u"2026-03-18"_s;
        m_defaults->values[u"settings.dismissedUpdateVersion"_s] = qint64{2};
        const AppSettings settings(m_defaults);
        QVERIFY(!settings.lastUpdateCheck());
        QVERIFY(!settings.dismissedUpdateVersion());
        QVERIFY(m_defaults->values.isEmpty());
    }

    void shouldWriteThrough()
    {
        const Instant checked = *Instant::fromText("2026-03-18T12:00:00Z");
        AppSettings settings(m_defaults);
        settings.setRefreshInterval(RefreshInterval::OneHour);
        settings.setNotificationsEnabled(true);
        settings.setNotificationLeadDays(20);
        settings.setShowMenuBadge(false);
        settings.setAppearance(Appearance::Dark);
        settings.setLastUpdateCheck(checked);
        settings.setDismissedUpdateVersion(u"2.0"_s);
        const QMap<QString, Value> expected{
            {u"settings.refreshInterval"_s, qint64{3600}},
            {u"settings.notificationsEnabled"_s, true},
            {u"settings.notificationLeadDays"_s, qint64{14}},
            {u"settings.showMenuBadge"_s, false},
            {u"settings.appearance"_s, u"dark"_s},
            {u"settings.lastUpdateCheck"_s, checked},
            {u"settings.dismissedUpdateVersion"_s, u"2.0"_s},
        };
        QVERIFY(m_defaults->values == expected);
        QCOMPARE(settings.notificationLeadDays(), 14);

        settings.setNotificationLeadDays(-1);
        QCOMPARE(settings.notificationLeadDays(), 0);
        settings.setLastUpdateCheck(std::nullopt);
        settings.setDismissedUpdateVersion(std::nullopt);
        QVERIFY(!m_defaults->values.contains(u"settings.lastUpdateCheck"_s));
        QVERIFY(!m_defaults->values.contains(u"settings.dismissedUpdateVersion"_s));

        const AppSettings again(m_defaults);
        QCOMPARE(again.refreshInterval(), RefreshInterval::OneHour);
        QCOMPARE(again.appearance(), Appearance::Dark);
        QCOMPARE(again.notificationLeadDays(), 0);
    }

    void shouldTellBeforeItChanges()
    {
        AppSettings settings(m_defaults);
        QList<qint64> seen;
        connect(&settings, &AppSettings::aboutToChange, this,
            [&] { seen.append(settings.notificationLeadDays()); });
        settings.setNotificationLeadDays(5);
        settings.setNotificationLeadDays(99);
        settings.setRefreshInterval(RefreshInterval::FiveMinutes);
        settings.setNotificationsEnabled(true);
        settings.setShowMenuBadge(false);
        settings.setAppearance(Appearance::Light);
        settings.setLastUpdateCheck(Instant());
        settings.setDismissedUpdateVersion(u"1"_s);
        QCOMPARE(seen, (QList<qint64>{3, 5, 14, 14, 14, 14, 14, 14}));
    }

    void shouldNameTheIntervals()
    {
        QStringList titles;
        for (const RefreshInterval interval : refreshIntervals)
            titles.append(titleOf(interval));
        QCOMPARE(titles, (QStringList{u"5 minutes"_s, u"15 minutes"_s, u"30 minutes"_s, u"1 hour"_s}));
        QVERIFY(!refreshIntervalFromSeconds(901));
        QCOMPARE(durationOf(RefreshInterval::FiveMinutes).count(), 300);
    }
};

ORBITLEDGE_TEST_MAIN(AppSettingsTest)
#include "AppSettingsTest.moc"
