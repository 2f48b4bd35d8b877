#include "locale/Graphemes.h"

#include "support/TestMain.h"

#include <rapidcheck.h>

#include <string>

using namespace orbitledge;
using namespace Qt::StringLiterals;

class GraphemesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldKeepTogetherWhatPeopleSeeAsOneCharacter_data()
    {
        QTest::addColumn<QList<QString>>("clusters");
        QTest::newRow("empty") << QList<QString>{};
        QTest::newRow("ASCII") << QList<QString>{u"a"_s, u" "_s, u"~"_s};
        QTest::newRow("composed accents") << QList<QString>{u"é"_s, u"t"_s, u"é"_s};
        QTest::newRow("combining mark") << QList<QString>{u"e\u0301"_s, u"t"_s};
        QTest::newRow("several marks") << QList<QString>{u"e\u0301\u0323\u0308"_s, u"x"_s};
        QTest::newRow("mark without a letter") << QList<QString>{u"\u0301"_s};
        QTest::newRow("carriage return and line feed") << QList<QString>{u"a"_s, u"\r\n"_s, u"b"_s};
        QTest::newRow("line feed and carriage return") << QList<QString>{u"\n"_s, u"\r"_s};
        QTest::newRow("beyond the first plane") << QList<QString>{u"\U0001F389"_s, u"\U00020000"_s};
        QTest::newRow("family") << QList<QString>{u"👨\u200D👩\u200D👧\u200D👦"_s, u"!"_s};
        QTest::newRow("skin tone") << QList<QString>{u"👍🏽"_s, u"👍"_s};
        QTest::newRow("flags") << QList<QString>{u"🇩🇪"_s, u"🇫🇷"_s};
        QTest::newRow("half a flag") << QList<QString>{u"🇩🇪"_s, u"🇫"_s};
        QTest::newRow("keycap") << QList<QString>{u"1\uFE0F\u20E3"_s, u"2"_s};
        QTest::newRow("Hangul syllables") << QList<QString>{u"한"_s, u"글"_s};
        QTest::newRow("Hangul letters that form a syllable")
            << QList<QString>{u"\u1112\u1161\u11AB"_s, u"\u1100\u1173\u11AF"_s};
        QTest::newRow("Devanagari vowel sign") << QList<QString>{u"\u0915\u093F"_s, u"\u0924"_s};
        QTest::newRow("Thai with a tone mark") << QList<QString>{u"\u0E17\u0E35\u0E48"_s};
    }
    void shouldKeepTogetherWhatPeopleSeeAsOneCharacter()
    {
        QFETCH(QList<QString>, clusters);
        QList<QString> found;
        for (const Grapheme &grapheme : graphemesOf(clusters.join(QString())))
            found.append(grapheme.text);
        QCOMPARE(found, clusters);
    }

    void shouldKnowTheColumnsOfACharacter_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("columns");
        QTest::newRow("ASCII") << u"a"_s << 1;
        QTest::newRow("no-break space") << u"\u00A0"_s << 1;
        QTest::newRow("accented") << u"é"_s << 1;
        QTest::newRow("with a combining mark") << u"e\u0301"_s << 1;
        QTest::newRow("combining mark alone") << u"\u0301"_s << 0;
        QTest::newRow("enclosing mark alone") << u"\u20DD"_s << 0;
        QTest::newRow("zero width space") << u"\u200B"_s << 0;
        QTest::newRow("byte order mark") << u"\uFEFF"_s << 0;
        QTest::newRow("direction mark") << u"\u200F"_s << 0;
        QTest::newRow("vowel sign that takes room") << u"\u0915\u093F"_s << 1;
        QTest::newRow("Han") << u"漢"_s << 2;
        QTest::newRow("Han beyond the first plane") << u"\U00020000"_s << 2;
        QTest::newRow("kana") << u"あ"_s << 2;
        QTest::newRow("half-width kana") << u"ｱ"_s << 1;
        QTest::newRow("full-width letter") << u"Ａ"_s << 2;
        QTest::newRow("full-width space") << u"\u3000"_s << 2;
        QTest::newRow("Hangul") << u"한"_s << 2;
        QTest::newRow("Hangul of three letters") << u"\u1112\u1161\u11AB"_s << 2;
        QTest::newRow("emoji") << u"🎉"_s << 2;
        QTest::newRow("family") << u"👨\u200D👩\u200D👧\u200D👦"_s << 2;
        QTest::newRow("flag") << u"🇩🇪"_s << 2;
        QTest::newRow("half a flag") << u"🇫"_s << 2;
        QTest::newRow("symbol drawn as text") << u"\u2764"_s << 1;
        QTest::newRow("symbol asked for as text") << u"\u2764\uFE0E"_s << 1;
        QTest::newRow("symbol asked for as emoji") << u"\u2764\uFE0F"_s << 2;
        QTest::newRow("keycap") << u"1\uFE0F\u20E3"_s << 2;
        QTest::newRow("width depends on the surroundings") << u"\u00B1"_s << 1;
    }
    void shouldKnowTheColumnsOfACharacter()
    {
        QFETCH(QString, text);
        QFETCH(int, columns);
        const auto graphemes = graphemesOf(text);
        QCOMPARE(graphemes.size(), 1);
        QCOMPARE(graphemes.first().columns, columns);
    }

    void shouldLoseNothingOfAnyText()
    {
        QVERIFY(rc::check("the clusters, one after the other, are the text", [] {
            // Halves of surrogate pairs and unassigned characters may turn up anywhere.
            const auto units = *rc::gen::container<std::u16string>(
                rc::gen::weightedOneOf<char16_t>({{2, rc::gen::inRange<char16_t>(0x20, 0x7F)},
                    {2, rc::gen::arbitrary<char16_t>()}, {2, rc::gen::inRange<char16_t>(0xD800, 0xE000)},
                    {2, rc::gen::element<char16_t>(u'\u200D', u'\uFE0F', u'\u0301', u'\r', u'\n', u'\0')}}));
            const QString text = QString::fromStdU16String(units);
            QString joined;
            for (const Grapheme &grapheme : graphemesOf(text)) {
                RC_ASSERT(!grapheme.text.isEmpty());
                RC_ASSERT(grapheme.columns >= 0);
                RC_ASSERT(grapheme.columns <= 2);
                joined += grapheme.text;
            }
            RC_ASSERT(joined == text);
        }));
    }
};

ORBITLEDGE_TEST_MAIN(GraphemesTest)
#include "GraphemesTest.moc"
