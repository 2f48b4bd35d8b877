#include "presentation/BannerContent.h"

#include "support/SampleRecords.h"
#include "support/TestMain.h"
#include "support/Times.h"

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

class BannerContentTest : public QObject {
    Q_OBJECT

private:
    static std::optional<BannerContent> banner(
        const AppState &state, const char *locale = "en_US", const QByteArray &zone = "Europe/Berlin")
    {
        DateFormatter dates(localeNamed(locale));
        return bannerOf(state, dates, *TimeZone::named(zone));
    }

private Q_SLOTS:
    void shouldSayNothingWhereAllIsWell()
    {
        AppState state;
        QVERIFY(!banner(state));
        state.authState = AuthState::SignedIn;
        state.lastUpdatedAt = at("2026-03-18T08:41:00Z");
        QVERIFY(!banner(state));
        state.refreshState = RefreshState::Loading; // which has a screen of its own
        QVERIFY(!banner(state));
    }

    void shouldTellWhatMattersMost()
    {
        AppState state;
        state.errorMessage = u"internal server error"_s;
        const BannerContent error{BannerContent::Kind::Error, u"internal server error"_s};
        QVERIFY(banner(state) == error);
        QVERIFY(error.canRetry());

        state.refreshState = RefreshState::Refreshing;
        const BannerContent updating{BannerContent::Kind::Updating, u"Updating cached subscriptions…"_s};
        QVERIFY(banner(state) == updating);
        QVERIFY(!updating.canRetry());

        state.isOffline = true;
        const BannerContent offline{
            BannerContent::Kind::Offline, u"Offline — retry when you’re connected."_s};
        QVERIFY(banner(state) == offline);
        QVERIFY(offline.canRetry());
    }

    void shouldTellSinceWhenTheDataAreOld_data()
    {
        QTest::addColumn<QByteArray>("locale");
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<QString>("time");
        const auto row = [](const char *locale, const char *zone, const QString &time) {
            QTest::addRow("%s in %s", locale, zone) << QByteArray(locale) << QByteArray(zone) << time;
        };
        row("en_US", "Europe/Berlin", u"9:41\u202fAM"_s);
        row("en_US", "America/New_York", u"4:41\u202fAM"_s);
        row("en_US", "Asia/Kathmandu", u"2:26\u202fPM"_s);
        row("de_DE", "Europe/Berlin", u"09:41"_s);
        row("en_GB", "Europe/London", u"08:41"_s);
        row("ja_JP", "Asia/Tokyo", u"17:41"_s);
        row("ar_EG", "Africa/Cairo", u"١٠:٤١ ص"_s);
    }
    void shouldTellSinceWhenTheDataAreOld()
    {
        QFETCH(QByteArray, locale);
        QFETCH(QByteArray, zone);
        QFETCH(QString, time);
        AppState state;
        state.isOffline = true;
        state.lastUpdatedAt = at("2026-03-18T08:41:59Z");
        QString message = banner(state, locale.constData(), zone)->message;
        QCOMPARE(message, u"Offline — showing data from "_s + time);
    }
};

ORBITLEDGE_TEST_MAIN(BannerContentTest)
#include "BannerContentTest.moc"
