#include "locale/TextCase.h"

#include "support/TestMain.h"

using namespace orbitledge;
using namespace Qt::StringLiterals;

class TextCaseTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldCapitaliseEachWord_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("empty") << u""_s << u""_s;
        QTest::newRow("lower case") << u"monthly"_s << u"Monthly"_s;
        QTest::newRow("upper case") << u"PAUSED"_s << u"Paused"_s;
        QTest::newRow("mixed case") << u"iPhone"_s << u"Iphone"_s;
        QTest::newRow("one letter") << u"x"_s << u"X"_s;
        QTest::newRow("two words") << u"on hold"_s << u"On Hold"_s;
        QTest::newRow("blanks stay") << u"  on   hold "_s << u"  On   Hold "_s;
        QTest::newRow("underscore ends a word") << u"past_due"_s << u"Past_Due"_s;
        QTest::newRow("hyphen ends a word") << u"bi-weekly"_s << u"Bi-Weekly"_s;
        QTest::newRow("digit ends a word") << u"every2weeks"_s << u"Every2Weeks"_s;
        QTest::newRow("digits and letters") << u"3rd party"_s << u"3Rd Party"_s;
        QTest::newRow("full stop ends a word") << u"e.g."_s << u"E.G."_s;
        QTest::newRow("typographic apostrophe stays within") << u"can’t pay"_s << u"Can’t Pay"_s;
        QTest::newRow("straight apostrophe stays within") << u"CAN'T"_s << u"Can't"_s;
        QTest::newRow("quotation marks") << u"'paused'"_s << u"'Paused'"_s;
        QTest::newRow("no letters") << u"123 -_! "_s << u"123 -_! "_s;
        QTest::newRow("accented first letter") << u"éTÉ"_s << u"Été"_s;
        QTest::newRow("combining marks stay in the word") << u"e\u0301TE\u0301"_s << u"E\u0301te\u0301"_s;
        QTest::newRow("sharp s first") << u"ßa"_s << u"Ssa"_s;
        QTest::newRow("sharp s within") << u"STRAßE"_s << u"Straße"_s;
        QTest::newRow("a letter with a title case of its own") << u"\u01C6ep"_s << u"\u01C5ep"_s;
        QTest::newRow("Greek with its final sigma") << u"ΟΔΟΣ"_s << u"Οδος"_s;
        QTest::newRow("Cyrillic") << u"активна ПАУЗА"_s << u"Активна Пауза"_s;
        QTest::newRow("beyond the first plane") << u"\U00010428\U00010429"_s << u"\U00010400\U00010429"_s;
        QTest::newRow("i in any locale") << u"INACTIVE istanbul"_s << u"Inactive Istanbul"_s;
        QTest::newRow("letters without case") << u"有効 的"_s << u"有効 的"_s;
        QTest::newRow("emoji between words") << u"on🎉HOLD"_s << u"On🎉Hold"_s;
    }
    void shouldCapitaliseEachWord()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QCOMPARE(capitalised(text), expected);
    }

    void shouldLeaveABrokenSurrogateAsItIs()
    {
        const QString broken = u"a"_s + QChar(0xD800) + u"b"_s;
        QCOMPARE(capitalised(broken), u"A"_s + QChar(0xD800) + u"B"_s);
    }
};

ORBITLEDGE_TEST_MAIN(TextCaseTest)
#include "TextCaseTest.moc"
