#include "cli/Terminal.h"

#include "support/TestMain.h"

using namespace orbitledge;
using namespace Qt::StringLiterals;

class TerminalTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldCountTheColumnsThatATerminalGives_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("columns");
        QTest::newRow("nothing") << u""_s << 0;
        QTest::newRow("ASCII") << u"Music"_s << 5;
        QTest::newRow("precomposed accent") << u"Caf\u00E9"_s << 4;
        QTest::newRow("combining accent") << u"Cafe\u0301"_s << 4;
        QTest::newRow("several marks on one letter") << u"a\u0301\u0323\u0308"_s << 1;
        QTest::newRow("wide characters") << u"潮の音楽"_s << 8;
        QTest::newRow("full-width letters") << u"ＡＢ"_s << 4;
        QTest::newRow("half-width katakana") << u"ｱｲ"_s << 2;
        QTest::newRow("emoji") << u"🎧"_s << 2;
        QTest::newRow("family joined to one") << u"👩‍👩‍👧"_s << 2;
        QTest::newRow("flag") << u"🇩🇪"_s << 2;
        QTest::newRow("text symbol made an emoji") << u"❤\uFE0F"_s << 2;
        QTest::newRow("decomposed Hangul") << u"\u1112\u1161\u11AB"_s << 2;
        QTest::newRow("zero-width joiner alone") << u"\u200D"_s << 0;
        QTest::newRow("Arabic with vowel signs") << u"مَرْحَبًا"_s << 5;
        QTest::newRow("ellipsis") << u"…"_s << 1;
    }
    void shouldCountTheColumnsThatATerminalGives()
    {
        QFETCH(QString, text);
        QFETCH(int, columns);
        QCOMPARE(displayWidth(text), columns);
    }

    void shouldMakeTextFromOutsideSafeToPrint_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("plain") << u"Tidewater Music"_s << u"Tidewater Music"_s;
        QTest::newRow("escape sequence") << u"\u001B[31mred"_s << u"\uFFFD[31mred"_s;
        QTest::newRow("8-bit control") << u"a\u009Bb"_s << u"a\uFFFDb"_s;
        QTest::newRow("line feed and tab") << u"a\nb\tc"_s << u"a\uFFFDb\uFFFDc"_s;
        QTest::newRow("line separator") << u"a\u2028b\u2029c"_s << u"a\uFFFDb\uFFFDc"_s;
        QTest::newRow("zero") << u"a\0b"_s << u"a\uFFFDb"_s;
        QTest::newRow("direction override") << u"a\u202Eb\u202C"_s << u"ab"_s;
        QTest::newRow("direction isolate") << u"a\u2067b\u2069"_s << u"ab"_s;
        QTest::newRow("marks that numbers need stay") << u"\u200E\u061C5"_s << u"\u200E\u061C5"_s;
    }
    void shouldMakeTextFromOutsideSafeToPrint()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QCOMPARE(printable(text), expected);
    }

    void shouldSetApartWhatRunsFromRightToLeft_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("isSetApart");
        QTest::newRow("nothing") << u""_s << false;
        QTest::newRow("Latin letters and digits") << u"Disk space 24"_s << false;
        QTest::newRow("wide characters") << u"潮の音楽 🎧"_s << false;
        QTest::newRow("Hebrew") << u"מוזיקה"_s << true;
        QTest::newRow("Arabic behind Latin letters") << u"Radio راديو"_s << true;
        QTest::newRow("Arabic digits") << u"٩٫٩٩ €"_s << true;
        QTest::newRow("letters beyond the basic plane") << u"\U0001E900"_s << true;
    }
    void shouldSetApartWhatRunsFromRightToLeft()
    {
        QFETCH(QString, text);
        QFETCH(bool, isSetApart);
        QCOMPARE(isolated(text), isSetApart ? u'\u2068' + text + u'\u2069' : text);
    }

    void shouldCutTextBetweenCharactersOnly_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("width");
        QTest::addColumn<QString>("expected");
        QTest::newRow("fits") << u"Music"_s << 5 << u"Music"_s;
        QTest::newRow("one too long") << u"Musics"_s << 5 << u"Musi…"_s;
        QTest::newRow("a wide one would not fit in half") << u"潮の音楽"_s << 6 << u"潮の…"_s;
        QTest::newRow("marks stay with their letter") << u"e\u0301e\u0301e\u0301"_s << 2 << u"e\u0301…"_s;
        QTest::newRow("nothing fits") << u"Music"_s << 1 << u"…"_s;
    }
    void shouldCutTextBetweenCharactersOnly()
    {
        QFETCH(QString, text);
        QFETCH(int, width);
        QFETCH(QString, expected);
        const QString cut = elided(text, width);
        QCOMPARE(cut, expected);
        QVERIFY(displayWidth(cut) <= width);
    }

    void shouldFillUpByColumnsAndNotByCharacters()
    {
        QCOMPARE(padded(u"潮"_s, 4, Align::Left), u"潮  "_s);
        QCOMPARE(padded(u"e\u0301"_s, 3, Align::Right), u"  e\u0301"_s);
        QCOMPARE(padded(u"too long"_s, 3, Align::Left), u"too long"_s);
    }

    void shouldSwitchAStyleOffAgain()
    {
        QCOMPARE(styled(u"x"_s, Style::Red), u"\u001B[31mx\u001B[0m"_s);
        QCOMPARE(styled(u"x"_s, Style::Plain), u"x"_s);
        QCOMPARE(styled(u""_s, Style::Bold), u""_s);
    }
};

ORBITLEDGE_TEST_MAIN(TerminalTest)
#include "TerminalTest.moc"
