#include "model/json/Utf8.h"

#include "support/TestMain.h"

using namespace orbitledge;
using namespace Qt::StringLiterals;

class Utf8Test : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldFindHalvesOfSurrogatePairs_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<bool>("holds");
        const auto row = [](const char *name, const QByteArray &text, bool holds) {
            QTest::newRow(name) << text << holds;
        };
        row("nothing", "", false);
        row("letters", "abc", false);
        row("the last character before them", "\xED\x9F\xBF", false);
        row("the first of them", "\xED\xA0\x80", true);
        row("the last of them", "\xED\xBF\xBF", true);
        row("the first character behind them", "\xEE\x80\x80", false);
        row("one at the end", "abc\xED\xA0\x80", true);
        row("one behind characters that begin alike", "\xED\x95\x9C\xED\x9F\xBF\xED\xB0\x80", true);
        row("characters that begin alike", "\xED\x95\x9C\xED\x9F\xBF\xED\x80\x80", false);
        row("the first byte alone", "\xED", false);
        row("a character of four bytes with such a byte in it", "\xF0\x9D\xAD\xA0", false);
    }
    void shouldFindHalvesOfSurrogatePairs()
    {
        QFETCH(QByteArray, text);
        QFETCH(bool, holds);
        // In a place of its own, so that looking beyond the end is found out.
        const std::string exact = text.toStdString();
        QCOMPARE(json::holdsSurrogate(exact), holds);
    }

    void shouldNotLookBeyondTheEndForTheSecondHalfOfACharacter()
    {
        QVERIFY(!json::holdsSurrogate(std::string_view("\xED\xA0\x80", 1)));
    }

    void shouldKeepAByteOrderMarkAsACharacter()
    {
        QCOMPARE(json::fromUtf8("\xEF\xBB\xBF"
                                "a"),
            u"\uFEFFa"_s);
        QCOMPARE(json::fromUtf8("a\xEF\xBB\xBF"), u"a\uFEFF"_s);
        QCOMPARE(json::fromUtf8("\xC3\xA4"), u"\u00e4"_s);
        QCOMPARE(json::fromUtf8(""), QString());
    }
};

ORBITLEDGE_TEST_MAIN(Utf8Test)
#include "Utf8Test.moc"
