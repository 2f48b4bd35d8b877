#include "locale/Locale.h"

#include "support/TestMain.h"

#include <QMap>

using namespace orbitledge;

class LocaleTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldAcceptTagsAndPosixNames_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QByteArray>("expected");
        const auto row = [](const char *name, const char *expected) {
            QTest::newRow(name) << QByteArray(name) << QByteArray(expected);
        };
        row("en-US", "en_US");
        row("en_US", "en_US");
        row("de", "de");
        row("de-CH", "de_CH");
        row("pt-br", "pt_BR");
        row("zh-Hant-TW", "zh_Hant_TW");
        row("es-419", "es_419");
        row("en_001", "en_001");
        row("de_CH.UTF-8", "de_CH");
        row("de_CH.utf8", "de_CH");
        row("de_DE@euro", "de_DE");
        row("de_DE.ISO-8859-15@euro", "de_DE");
        row("ca_ES@valencia", "ca_ES");
        row("sr_RS@latin", "sr_Latn_RS");
        row("sr_RS.UTF-8@latin", "sr_Latn_RS");
        row("sr@latin", "sr_Latn");
        row("uz_UZ@cyrillic", "uz_Cyrl_UZ");
        row("ks_IN@devanagari", "ks_Deva_IN");
        row("de_DE@collation=phonebook", "de_DE@collation=phonebook");
        row("de-DE-u-co-phonebk", "de_DE@collation=phonebook");
        row("C", "en_US");
        row("C.UTF-8", "en_US");
        row("POSIX", "en_US");
    }
    void shouldAcceptTagsAndPosixNames()
    {
        QFETCH(QByteArray, name);
        QFETCH(QByteArray, expected);
        const auto locale = Locale::named(name);
        QVERIFY(locale);
        QCOMPARE(locale->dates, expected);
        QCOMPARE(locale->money, expected);
        QCOMPARE(locale->collation, expected);
    }

    void shouldRefuseWhatNamesNoKnownLocale_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("null") << QByteArray();
        QTest::newRow("modifier alone") << QByteArray("@euro");
        QTest::newRow("encoding alone") << QByteArray(".UTF-8");
        QTest::newRow("region alone") << QByteArray("_US");
        QTest::newRow("hyphen alone") << QByteArray("-");
        QTest::newRow("hyphen at the end") << QByteArray("de-");
        QTest::newRow("blank inside") << QByteArray("de DE");
        QTest::newRow("line feed at the end") << QByteArray("de_DE\n");
        QTest::newRow("path") << QByteArray("../../etc/passwd");
        QTest::newRow("slash for the hyphen") << QByteArray("en/US");
        QTest::newRow("one letter") << QByteArray("a");
        QTest::newRow("extension without a key") << QByteArray("en-US-x");
        QTest::newRow("word") << QByteArray("english");
        QTest::newRow("unknown language") << QByteArray("zz");
        QTest::newRow("unknown language and region") << QByteArray("zz_ZZ");
        QTest::newRow("unknown language, known region") << QByteArray("xx-US");
        QTest::newRow("undetermined language") << QByteArray("und");
        QTest::newRow("region that is none") << QByteArray("en_XX9");
        QTest::newRow("unassigned region") << QByteArray("en_XX");
        QTest::newRow("region known to be unknown") << QByteArray("en-ZZ");
        QTest::newRow("C in lower case") << QByteArray("c");
    }
    void shouldRefuseWhatNamesNoKnownLocale()
    {
        QFETCH(QByteArray, name);
        QVERIFY(!Locale::named(name));
    }

    void shouldReadTheEnvironmentInTheOrderOfPosix_data()
    {
        QTest::addColumn<Variables>("variables");
        QTest::addColumn<QByteArray>("dates");
        QTest::addColumn<QByteArray>("money");
        QTest::addColumn<QByteArray>("collation");
        const auto row = [](const char *name, const Variables &variables, const char *dates,
                             const char *money, const char *collation) {
            QTest::newRow(name) << variables << QByteArray(dates) << QByteArray(money)
                                << QByteArray(collation);
        };
        row("nothing set", {}, "en_US", "en_US", "en_US");
        row("LANG alone", {{"LANG", "de_DE.UTF-8"}}, "de_DE", "de_DE", "de_DE");
        row("each category by itself",
            {{"LC_TIME", "de_DE.UTF-8"}, {"LC_MONETARY", "fr_FR.UTF-8"}, {"LC_COLLATE", "sv_SE.UTF-8"}},
            "de_DE", "fr_FR", "sv_SE");
        row("a category before LANG", {{"LC_TIME", "de_DE.UTF-8"}, {"LANG", "en_GB.UTF-8"}}, "de_DE", "en_GB",
            "en_GB");
        row("LC_ALL before all",
            {{"LC_ALL", "pt_BR.UTF-8"}, {"LC_TIME", "de_DE.UTF-8"}, {"LC_MONETARY", "fr_FR.UTF-8"},
                {"LC_COLLATE", "sv_SE.UTF-8"}, {"LANG", "en_GB.UTF-8"}},
            "pt_BR", "pt_BR", "pt_BR");
        row("empty is not set", {{"LC_ALL", ""}, {"LC_TIME", ""}, {"LANG", "de_DE.UTF-8"}}, "de_DE", "de_DE",
            "de_DE");
        row("an unknown LC_ALL is passed over", {{"LC_ALL", "tlh_QQ"}, {"LANG", "de_DE"}}, "de_DE", "de_DE",
            "de_DE");
        row("an unknown category is passed over", {{"LC_MONETARY", "nonsense"}, {"LANG", "de_DE"}}, "de_DE",
            "de_DE", "de_DE");
        row("all unknown", {{"LC_ALL", "zz_ZZ"}, {"LC_TIME", "?"}, {"LANG", "nonsense"}}, "en_US", "en_US",
            "en_US");
        row("C for all", {{"LC_ALL", "C.UTF-8"}, {"LANG", "de_DE.UTF-8"}}, "en_US", "en_US", "en_US");
        row("POSIX for one", {{"LC_COLLATE", "POSIX"}, {"LANG", "de_DE.UTF-8"}}, "de_DE", "de_DE", "en_US");
        row("other variables play no part",
            {{"LC_CTYPE", "de_DE.UTF-8"}, {"LC_MESSAGES", "fr_FR.UTF-8"}, {"LC_NUMERIC", "sv_SE.UTF-8"},
                {"LANGUAGE", "pt"}},
            "en_US", "en_US", "en_US");
    }
    void shouldReadTheEnvironmentInTheOrderOfPosix()
    {
        QFETCH(Variables, variables);
        QFETCH(QByteArray, dates);
        QFETCH(QByteArray, money);
        QFETCH(QByteArray, collation);
        const Locale locale
            = Locale::fromEnvironment([&](const char *name) { return variables.value(name); });
        QCOMPARE(locale.dates, dates);
        QCOMPARE(locale.money, money);
        QCOMPARE(locale.collation, collation);
    }

private:
    using Variables = QMap<QByteArray, QByteArray>;
};

ORBITLEDGE_TEST_MAIN(LocaleTest)
#include "LocaleTest.moc"
