#include "timeline/BrandColor.h"

#include "support/TestMain.h"

#include <rapidcheck.h>

#include <vector>

using namespace orbitledge;
using namespace Qt::StringLiterals;

namespace {

/// The hash in wide integers and by division, so that neither overflow nor masking can hide in it.
std::size_t indexByDivision(const std::vector<char32_t> &scalars)
{
    quint64 hash = 0;
    for (const char32_t scalar : scalars)
        hash = (hash * 31 + scalar) % 2'147'483'648U;
    return hash % 6;
}

} // namespace

class BrandColorTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldFindAColorByTheNamesScalars_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("expected");
        QTest::newRow("empty") << u""_s << 0;
        // 'A' is 65, 65 mod 6 is 5.
        QTest::newRow("one letter") << u"A"_s << 5;
        // 65 × 31 + 66 = 2081, mod 6 is 5; the other way round 66 × 31 + 65 = 2111, also 5.
        QTest::newRow("two letters") << u"AB"_s << 5;
        // 97 × 31 + 98 = 3105, mod 6 is 3: case counts.
        QTest::newRow("two letters in lower case") << u"ab"_s << 3;
        // U+1F400 is 128000, mod 6 is 2; as two surrogates it would be 1772387, mod 6 is 5.
        QTest::newRow("beyond the first plane") << u"\U0001F400"_s << 2;
        // U+00E9 is 233, mod 6 is 5; as "e" and U+0301 it is 101 × 31 + 769 = 3900, mod 6 is 0.
        QTest::newRow("composed") << u"\u00E9"_s << 5;
        QTest::newRow("decomposed") << u"e\u0301"_s << 0;
        // 3468423552256, mod 6 is 4; its lower 31 bits are 237460736, mod 6 is 2.
        QTest::newRow("kept to 31 bits") << u"zzzzzzzz"_s << 2;
    }
    void shouldFindAColorByTheNamesScalars()
    {
        QFETCH(QString, name);
        QFETCH(int, expected);
        QCOMPARE(brandIndex(name), static_cast<std::size_t>(expected));
    }

    void shouldAgreeWithTheHashInWideIntegers()
    {
        QVERIFY(rc::check("the index is that of the hash in wide integers", [] {
            const auto scalars = *rc::gen::container<std::vector<char32_t>>(
                rc::gen::oneOf(rc::gen::inRange<char32_t>(0x20, 0x7F),
                    rc::gen::inRange<char32_t>(0x80, 0xD800), rc::gen::inRange<char32_t>(0xE000, 0x110000)));
            const QString name = QString::fromUcs4(scalars.data(), static_cast<qsizetype>(scalars.size()));
            RC_ASSERT(brandIndex(name) == indexByDivision(scalars));
        }));
    }

    void shouldHaveSixPairsOfColors()
    {
        QStringList colors;
        for (const BrandColor &color : brandPalette)
            colors << color.dark << color.light;
        QCOMPARE(colors,
            QStringList({u"#67E8F9"_s, u"#0E7490"_s, u"#B7FF4A"_s, u"#4D7C0F"_s, u"#FFB44C"_s, u"#B45309"_s,
                u"#FF6B6B"_s, u"#C0272D"_s, u"#A78BFA"_s, u"#6D28D9"_s, u"#60A5FA"_s, u"#1D4ED8"_s}));
    }

    void shouldTakeTheColorAtTheNamesIndex()
    {
        QCOMPARE(brandColor(u"").dark, "#67E8F9"_L1);
        QCOMPARE(brandColor(u"A").dark, "#60A5FA"_L1);
        QCOMPARE(brandColor(u"A").light, "#1D4ED8"_L1);
    }
};

ORBITLEDGE_TEST_MAIN(BrandColorTest)
#include "BrandColorTest.moc"
