#include "presentation/LogoContent.h"

#include "support/TestMain.h"

using namespace orbitledge;
using namespace Qt::StringLiterals;

class LogoContentTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldTakeTheInitialsOfTheFirstTwoWords_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("initials");
        const auto row = [](const QString &name, const QString &initials) {
            QTest::addRow("'%s'", qPrintable(name)) << name << initials;
        };
        row(u"Northlight Video"_s, u"NV"_s);
        row(u"One two three"_s, u"OT"_s);
        row(u"single"_s, u"S"_s);
        row(u""_s, u""_s);
        row(u"   "_s, u""_s);
        row(u"  two   blanks  "_s, u"TB"_s);
        row(u"Kettle & Bean"_s, u"K&"_s);
        row(u"a\ttab is no blank"_s, u"AI"_s);
        row(u"élan vital"_s, u"ÉV"_s);
        row(u"e\u0301lan"_s, u"E\u0301"_s);
        row(u"日本語 の庭"_s, u"日の"_s);
        row(u"👩‍👩‍👧 family"_s, u"👩‍👩‍👧F"_s);
        row(u"ßtrange"_s, u"SS"_s);
        row(u"7 days"_s, u"7D"_s);
    }
    void shouldTakeTheInitialsOfTheFirstTwoWords()
    {
        QFETCH(QString, name);
        QFETCH(QString, initials);
        QCOMPARE(logoOf(name, std::nullopt).initials, initials);
    }

    void shouldFetchOverHttpsOnly_data()
    {
        QTest::addColumn<QUrl>("url");
        QTest::addColumn<bool>("isFetched");
        const auto row = [](const char *url, bool isFetched) {
            QTest::newRow(url) << QUrl(QString::fromLatin1(url)) << isFetched;
        };
        row("https://example.com/logo.png", true);
        row("HTTPS://example.com/logo.png", true);
        row("http://example.com/logo.png", false);
        row("file:///etc/passwd", false);
        row("data:image/png;base64,AAAA", false);
        row("ftp://example.com/logo.png", false);
    }
    void shouldFetchOverHttpsOnly()
    {
        QFETCH(QUrl, url);
        QFETCH(bool, isFetched);
        QCOMPARE(logoOf(u"Name"_s, url).image.has_value(), isFetched);
        QVERIFY(!logoOf(u"Name"_s, std::nullopt).image);
    }

    void shouldHaveTheColourOfTheName()
    {
        QCOMPARE(logoOf(u"Northlight Video"_s, {}).tint.dark, brandColor(u"Northlight Video").dark);
        QCOMPARE(logoOf(u"Tidewater Music"_s, {}).tint.light, brandColor(u"Tidewater Music").light);
    }
};

ORBITLEDGE_TEST_MAIN(LogoContentTest)
#include "LogoContentTest.moc"
