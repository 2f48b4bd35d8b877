#include "locale/Collation.h"

#include "support/TestMain.h"
#include "support/Times.h"

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

class CollationTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldOrderNamesAsPeopleDo_data()
    {
        QTest::addColumn<QByteArray>("locale");
        QTest::addColumn<QList<QString>>("names");
        const auto row = [](const char *name, const char *locale, const QList<QString> &names) {
            QTest::newRow(name) << QByteArray(locale) << names;
        };
        row("case does not part words", "en_US", {u"adobe"_s, u"Amazon"_s, u"apple"_s, u"Zoom"_s});
        row("empty comes first", "en_US", {u""_s, u" "_s, u"1"_s, u"a"_s});
        row("digits before letters", "en_US", {u"1Password"_s, u"7-Zip"_s, u"Adobe"_s});
        row("an accent counts after the letters", "en_US",
            {u"resume"_s, u"résumé"_s, u"resumes"_s, u"résumés"_s});
        row("accented letters stand with their own in English", "en_US",
            {u"Angel"_s, u"Ångström"_s, u"Zebra"_s});
        row("accented letters come last in Swedish", "sv_SE",
            {u"Angel"_s, u"Zebra"_s, u"Ångström"_s, u"Ärlig"_s, u"Östra"_s});
        row("umlauts stand with their own in German", "de_DE",
            {u"Apfel"_s, u"Äpfel"_s, u"Banane"_s, u"Ofen"_s, u"Öfen"_s, u"Zebra"_s});
        row("umlauts stand as two letters in a phone book", "de_DE@collation=phonebook",
            {u"Ad"_s, u"Äd"_s, u"Af"_s});
        row("ch comes after h in Czech", "cs_CZ", {u"cukr"_s, u"hrad"_s, u"chata"_s, u"jablko"_s});
    }
    void shouldOrderNamesAsPeopleDo()
    {
        QFETCH(QByteArray, locale);
        QFETCH(QList<QString>, names);
        const Collation collation(localeNamed(locale));
        for (qsizetype i = 1; i < names.size(); ++i) {
            const QString &first = names[i - 1];
            const QString &second = names[i];
            QVERIFY2(collation.sortKey(first) < collation.sortKey(second),
                qPrintable(first + u" does not come before "_s + second));
        }
    }

    void shouldTakeUpperAndLowerCaseAsTheSame_data()
    {
        QTest::addColumn<QString>("left");
        QTest::addColumn<QString>("right");
        QTest::newRow("ASCII") << u"netflix"_s << u"NetFlix"_s;
        QTest::newRow("accented") << u"ÉTÉ"_s << u"été"_s;
        QTest::newRow("Cyrillic") << u"ЯНДЕКС"_s << u"яндекс"_s;
        QTest::newRow("composed and decomposed") << u"Café"_s << u"cafe\u0301"_s;
        QTest::newRow("full-width") << u"ＡＢＣ"_s << u"abc"_s;
    }
    void shouldTakeUpperAndLowerCaseAsTheSame()
    {
        QFETCH(QString, left);
        QFETCH(QString, right);
        const Collation collation(localeNamed("en_US"));
        QCOMPARE(collation.sortKey(left), collation.sortKey(right));
    }

    void shouldTellAccentsApart()
    {
        const Collation collation(localeNamed("en_US"));
        QVERIFY(collation.sortKey(u"e"_s) != collation.sortKey(u"é"_s));
        QVERIFY(collation.sortKey(u"o"_s) != collation.sortKey(u"ö"_s));
    }

    void shouldKeepTheOrderOfNamesOfAnyLength()
    {
        // Keys have room for short names; around its end, and beyond it, nothing may be cut off.
        const Collation collation(localeNamed("en_US"));
        QByteArray previous = collation.sortKey(QString());
        for (int length = 1; length <= 600; ++length) {
            const QString stem(length - 1, u'x');
            const QByteArray lower = collation.sortKey(stem + u'x');
            const QByteArray upper = collation.sortKey(stem + u'X');
            const QByteArray higher = collation.sortKey(stem + u'y');
            QVERIFY(previous < lower);
            QCOMPARE(upper, lower);
            QVERIFY(lower < higher);
            previous = lower;
        }
        QVERIFY(previous.size() > 128);
    }

    void shouldReadPastANullCharacter()
    {
        const Collation collation(localeNamed("en_US"));
        const QString stem = u"a"_s + QChar(u'\0');
        QVERIFY(collation.sortKey(stem + u'b') < collation.sortKey(stem + u'c'));
    }

    void shouldFollowTheCollationsLocaleAlone()
    {
        const Locale mixed{.dates = "sv_SE", .money = "sv_SE", .collation = "en_US"};
        const Collation collation(mixed);
        QVERIFY(collation.sortKey(u"Ångström"_s) < collation.sortKey(u"Zebra"_s));
    }
};

ORBITLEDGE_TEST_MAIN(CollationTest)
#include "CollationTest.moc"
