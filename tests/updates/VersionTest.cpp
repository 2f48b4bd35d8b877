#include "updates/Version.h"

#include "support/TestMain.h"

using namespace orbitledge;
using namespace Qt::StringLiterals;

class VersionTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldRank_data()
    {
        QTest::addColumn<QString>("lower");
        QTest::addColumn<QString>("higher");
        const auto row = [](const char *lower, const char *higher) {
            QTest::addRow("%s below %s", lower, higher)
                << QString::fromUtf8(lower) << QString::fromUtf8(higher);
        };
        // Section 11 of Semantic Versioning 2.0.0
        row("1.0.0", "2.0.0");
        row("2.0.0", "2.1.0");
        row("2.1.0", "2.1.1");
        row("1.0.0-alpha", "1.0.0");
        row("1.0.0-alpha", "1.0.0-alpha.1");
        row("1.0.0-alpha.1", "1.0.0-alpha.beta");
        row("1.0.0-alpha.beta", "1.0.0-beta");
        row("1.0.0-beta", "1.0.0-beta.2");
        row("1.0.0-beta.2", "1.0.0-beta.11");
        row("1.0.0-beta.11", "1.0.0-rc.1");
        row("1.0.0-rc.1", "1.0.0");
        // And beyond
        row("1.9", "1.10");
        row("1.2.0-beta.2", "1.2.0-beta.10");
        row("1.2.0-beta.2", "1.2.0");
        row("1.2-rc", "1.2.0.1");
        row("v1.2", "V1.3");
        row("1.0.0-99999999999999999999", "1.0.0-100000000000000000000");
        row("1.0.0-999", "1.0.0-a");
        row("1.0.0-A", "1.0.0-a");
        row("1.0.0-a-b", "1.0.0-b-a");
        row("", "0.0.1");
        row("nonsense", "1");
        row("1.0.0-", "1.0.0");
        row("2147483647", "2147483648");
        row("1", "99999999999999999999999");
        row("0.99.99", "1");
        row("1.9.0", "1.9.9");
        row("0.9", "0.19");
        row("9223372036854775806", "9223372036854775807");
        row("9223372036854775799", "9223372036854775800");
        row("922337203685477580", "9223372036854775800");
        row("1.0.0-0", "1.0.0-1");
        row("1.0.0-9", "1.0.0-10");
        row("1.0.0-0", "1.0.0-a");
        row("1.0.0-9", "1.0.0-a");
        row("1.0.0-09", "1.0.0-10");
        row("1.0.0-19", "1.0.0-20");
        row("1.0.0-5/", "1.0.0-5:");
        row("1.0.0-99", "1.0.0-1:");
        row("1.0.0-99", "1.0.0-1/");
        row("1.0.0-a.1", "1.0.0-b");
        row("1.0.0-rc.1", "1.0.0-rc.2");
        row("1.0.0-rc.1+2", "1.0.0+1");
        row("1.0.0-alpha.1", "1.0.0-alpha.1.0");
        row("1.0.0-alpha", "1.0.0-alpha.");
        row("1.0.0--1", "1.0.0-a");
        row("1.0.0-1", "1.0.0--1");
        row("1.0.0-beta", "1.0.0-\u00E9");
        row("-1", "0");
    }
    void shouldRank()
    {
        QFETCH(QString, lower);
        QFETCH(QString, higher);
        const Version a = Version::fromText(lower);
        const Version b = Version::fromText(higher);
        QVERIFY(a < b);
        QVERIFY(b > a);
        QVERIFY(a != b);
    }

    void shouldBeEqual_data()
    {
        QTest::addColumn<QString>("left");
        QTest::addColumn<QString>("right");
        const auto row = [](const char *left, const char *right) {
            QTest::addRow("%s is %s", left, right) << QString::fromUtf8(left) << QString::fromUtf8(right);
        };
        row("v1.2", "1.2.0");
        row("1.2.0+5", "1.2.0");
        row("1.2.0+5-rc", "1.2.0");
        row(" 1.2.0\n", "1.2");
        row("1.2.0-rc.1+exp.sha", "1.2.0-rc.1");
        row("1..2", "1.0.2");
        row("1.2.", "1.2");
        row("1.2x", "1.2");
        row("1.x.2", "1.0.2");
        row("01.002", "1.2");
        row("1.0-007", "1.0-7");
        row("", "0");
        row("v", "0.0.0");
        row("+", "");
        row("vv2", "0");
        row("1,5", "1");
        row("0x10", "0");
        row("1e3", "1");
        row("1 .2", "1.2");
        row("1. 2", "1.0");
        row("\u0661.2", "0.2");
        row(".1", "0.1");
        row("...", "0");
        row("1.0.0.0.0", "1");
        row("9223372036854775807", "9223372036854775808");
        row("1.0-rc.01", "1.0-rc.1");
        row("1.0-0", "1.0-00");
        row("+5", "0");
        row("+5.1", "0");
        row("V1.2", "1.2");
        row("1:5", "1");
        row("1/5", "1");
    }
    void shouldBeEqual()
    {
        QFETCH(QString, left);
        QFETCH(QString, right);
        QVERIFY(Version::fromText(left) == Version::fromText(right));
    }

    void shouldOrderTheExampleOfSemanticVersioning()
    {
        const QStringList texts{u"1.0.0-alpha"_s, u"1.0.0-alpha.1"_s, u"1.0.0-alpha.beta"_s, u"1.0.0-beta"_s,
            u"1.0.0-beta.2"_s, u"1.0.0-beta.11"_s, u"1.0.0-rc.1"_s, u"1.0.0"_s};
        for (qsizetype i = 0; i < texts.size(); ++i) {
            for (qsizetype j = 0; j < texts.size(); ++j)
                QVERIFY((Version::fromText(texts[i]) <=> Version::fromText(texts[j])) == (i <=> j));
        }
    }

    void shouldReadItsParts()
    {
        const Version version = Version::fromText(u"vv1.2b.3-rc.-.4-5+6"_s);
        QCOMPARE(version.core(), (QList<qint64>{0, 2, 3}));
        QCOMPARE(version.preRelease(), (QStringList{u"rc"_s, u"-"_s, u"4-5"_s}));
    }

    void shouldSurviveAnything()
    {
        QString text;
        for (int i = 0; i < 20'000; ++i)
            text += QChar(u"0123456789.-+vV \u0663x"[i * 7919 % 17]);
        const Version version = Version::fromText(text);
        QVERIFY(version == version);
        QVERIFY(!(version < Version::fromText(text)));
    }
};

ORBITLEDGE_TEST_MAIN(VersionTest)
#include "VersionTest.moc"
