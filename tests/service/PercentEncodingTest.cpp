#include "service/PercentEncoding.h"

#include "support/TestMain.h"

#include <QUrl>

using namespace orbitledge;
using namespace Qt::StringLiterals;

class PercentEncodingTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldEncode_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("encoded");
        const auto row = [](const char *name, const QString &text, const char *encoded) {
            QTest::newRow(name) << text << QByteArray(encoded);
        };
        row("nothing", QString(), "");
        row("a word", u"netflix"_s, "netflix");
        row("a blank", u"a b"_s, "a%20b");
        row("a plus sign stays", u"a+b"_s, "a+b");
        row("what separates items", u"a&b=c"_s, "a%26b%3Dc");
        row("what ends a query", u"a#b"_s, "a%23b");
        row("what is encoded already", u"%20"_s, "%2520");
        row("control characters", u"\u0000\t\r\n\u007f"_s, "%00%09%0D%0A%7F");
        row("brackets and quotes", u"<>[]{}\"\\^`|"_s, "%3C%3E%5B%5D%7B%7D%22%5C%5E%60%7C");
        row("a letter of two bytes", u"\u00e9"_s, "%C3%A9");
        row("a letter and its accent", u"e\u0301"_s, "e%CC%81");
        row("a character of four bytes", u"\U0001F600"_s, "%F0%9F%98%80");
        row("half of a character", u"a"_s + QChar(0xD83D) + u"b"_s, "a?b");
    }
    void shouldEncode()
    {
        QFETCH(QString, text);
        QFETCH(QByteArray, encoded);
        QCOMPARE(percentEncodedQueryValue(text), encoded);
    }

    void shouldKeepTheseCharactersAndNoOthers()
    {
        const QByteArray kept
            = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789!$'()*+,-./:;?@_~";
        for (char16_t c = 0; c < 0x80; ++c) {
            const QByteArray encoded = percentEncodedQueryValue(QString(QChar(c)));
            const auto byte = static_cast<char>(c);
            if (kept.contains(byte))
                QCOMPARE(encoded, QByteArray(1, byte));
            else
                QCOMPARE(encoded, '%' + QByteArray(1, byte).toHex().toUpper());
        }
    }

    void shouldStayAsItIsInAnAddress()
    {
        QString everything;
        for (char16_t c = 0; c < 0x800; ++c)
            everything += QChar(c);
        const QByteArray path = "/search?q=" + percentEncodedQueryValue(everything) + "&limit=20";
        const QUrl url
            = QUrl(u"https://api.example.com/"_s).resolved(QUrl::fromEncoded(path, QUrl::StrictMode));
        QCOMPARE(url.toEncoded(), "https://api.example.com" + path);
    }
};

ORBITLEDGE_TEST_MAIN(PercentEncodingTest)
#include "PercentEncodingTest.moc"
