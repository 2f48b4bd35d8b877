#include "ui/kit/TabularText.h"

#include "support/Pixels.h"
#include "support/WidgetTestMain.h"

#include <QFontMetricsF>
#include <QPainter>

using namespace orbitledge::testing;
using namespace orbitledge::ui;
using namespace Qt::StringLiterals;

namespace {

QFont figures()
{
    QFont font(u"Inter"_s);
    font.setPixelSize(40);
    return font;
}

qreal widthOf(const QString &text)
{
    return TabularText(text, figures()).size().width();
}

QImage drawn(const QString &text, Qt::LayoutDirection direction)
{
    const TabularText line(text, figures(), direction);
    QImage image(line.size().toSize() + QSize(2, 2), QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    line.draw(painter, {1, 1});
    return image;
}

bool hasInk(const QImage &image, int fromX, int toX)
{
    const QImage part = image.copy(fromX, 0, toX - fromX, image.height());
    return highestContrast(part, Qt::white) > 4;
}

} // namespace

class TabularTextTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldGiveEachDigitTheSameAdvance_data()
    {
        QTest::addColumn<QString>("narrow");
        QTest::addColumn<QString>("wide");
        QTest::newRow("latin") << u"1111"_s << u"0864"_s;
        QTest::newRow("an amount") << u"$1,111.11"_s << u"$8,046.80"_s;
        QTest::newRow("the sign behind") << u"11,11 €"_s << u"48,06 €"_s;
        QTest::newRow("between letters") << u"a1b1c"_s << u"a8b4c"_s;
        QTest::newRow("alone") << u"1"_s << u"0"_s;
        QTest::newRow("arabic") << u"\u0661\u0661\u066B\u0661"_s << u"\u0663\u0664\u066B\u0668"_s;
        QTest::newRow("beyond the first plane") << u"\U0001D7CF\U0001D7CF"_s << u"\U0001D7D2\U0001D7D6"_s;
        QTest::newRow("after hebrew") << u"\u05D0\u05D1 11"_s << u"\u05D0\u05D1 48"_s;
    }
    void shouldGiveEachDigitTheSameAdvance()
    {
        QFETCH(QString, narrow);
        QFETCH(QString, wide);
        QCOMPARE_LT(std::abs(widthOf(narrow) - widthOf(wide)), 0.1);
    }

    void shouldNeedToDoSo()
    {
        const QFontMetricsF metrics(figures());
        QCOMPARE_GT(metrics.horizontalAdvance(u"0864"_s) - metrics.horizontalAdvance(u"1111"_s), 8);
    }

    void shouldLeaveOtherTextAsItIs()
    {
        const QString text = u"Northlight"_s;
        QCOMPARE_LT(std::abs(widthOf(text) - QFontMetricsF(figures()).horizontalAdvance(text)), 0.1);
        QCOMPARE(widthOf(QString()), 0);
        QCOMPARE_GT(TabularText(QString(), figures()).size().height(), 20);
    }

    void shouldPutADigitInTheMiddleOfItsAdvance()
    {
        // What is between the two ones is twice what is beside one.
        const QImage image = drawn(u"0101"_s, Qt::LeftToRight);
        const int advance = qRound(widthOf(u"0"_s));
        const QImage one = image.copy(1 + advance, 0, advance, image.height());
        int first = -1;
        int last = -1;
        for (int x = 0; x < one.width(); ++x) {
            if (!hasInk(one, x, x + 1))
                continue;
            first = first < 0 ? x : first;
            last = x;
        }
        QCOMPARE_GE(first, 0);
        // The glyph has bearings of its own, hence the allowance.
        QCOMPARE_LE(std::abs(first - (advance - 1 - last)), advance / 5);
    }

    void shouldKeepWholeTextInsideItsWidthWhicheverWayItReads_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<Qt::LayoutDirection>("direction");
        QTest::newRow("left to right") << u"$18.04"_s << Qt::LeftToRight;
        QTest::newRow("right to left") << u"$18.04"_s << Qt::RightToLeft;
        QTest::newRow("hebrew by itself") << u"\u05D0\u05D1 14"_s << Qt::LayoutDirectionAuto;
        QTest::newRow("arabic digits") << u"\u0661\u0664 \u20AC"_s << Qt::RightToLeft;
    }
    void shouldKeepWholeTextInsideItsWidthWhicheverWayItReads()
    {
        QFETCH(QString, text);
        QFETCH(Qt::LayoutDirection, direction);
        const QImage image = drawn(text, direction);
        QVERIFY(hasInk(image, 0, image.width() / 3));
        QVERIFY(hasInk(image, image.width() * 2 / 3, image.width()));
    }

    void shouldReadDigitsFromTheLeftInTextFromTheRight()
    {
        // The word stands at the right, and the number reads as it does alone.
        const QImage both = drawn(u"\u05D0\u05D0 18"_s, Qt::RightToLeft);
        const auto differenceFrom = [&both](const QString &number) {
            const QImage alone = drawn(number, Qt::LeftToRight);
            int different = 0;
            for (int x = 2; x < alone.width() - 2; ++x)
                different += hasInk(both, x, x + 1) == hasInk(alone, x, x + 1) ? 0 : 1;
            return different;
        };
        QCOMPARE_LT(differenceFrom(u"18"_s), differenceFrom(u"81"_s) / 2);
    }
};

ORBITLEDGE_WIDGET_TEST_MAIN(TabularTextTest)
#include "TabularTextTest.moc"
