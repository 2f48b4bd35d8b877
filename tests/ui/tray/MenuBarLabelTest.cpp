#include "ui/tray/MenuBarLabel.h"

#include "support/Pixels.h"
#include "support/WidgetTestMain.h"

#include <QPainter>

using namespace orbitledge::testing;
using namespace orbitledge::ui;
using namespace Qt::StringLiterals;

using Scheme = orbitledge::ui::ColorScheme;

namespace {

const QColor red = QColor::fromRgb(badgeRed);

QImage imageOf(const QString &badge, int side, Scheme colorScheme = Scheme::Light)
{
    return MenuBarLabel(badge, colorScheme).pixmap(side).toImage().convertToFormat(QImage::Format_ARGB32);
}

/// As it is seen on a bar of that colour.
QImage onBar(const QImage &icon, const QColor &bar)
{
    QImage image(icon.size(), QImage::Format_RGB32);
    image.fill(bar);
    QPainter(&image).drawImage(0, 0, icon);
    return image;
}

QRect placeOf(const QImage &image, const QColor &color)
{
    QRect place;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y) == color)
                place |= QRect(x, y, 1, 1);
        }
    }
    return place;
}

/// How much of the picture stands out from the bar, as a share.
double shareThatStandsOut(const QImage &image, const QColor &bar, double contrast)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            count += contrastOf(image.pixelColor(x, y), bar) >= contrast ? 1 : 0;
    }
    return static_cast<double>(count) / (image.width() * image.height());
}

void addSizes()
{
    QTest::addColumn<int>("side");
    for (const int side : MenuBarLabel::sizes)
        QTest::addRow("%d", side) << side;
}

} // namespace

class MenuBarLabelTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldHaveABadgeWhereThereIsSomethingToCount_data() { addSizes(); }
    void shouldHaveABadgeWhereThereIsSomethingToCount()
    {
        QFETCH(const int, side);
        QCOMPARE(placeOf(imageOf(QString(), side), red), QRect());
        for (const QString &text : {u"1"_s, u"9"_s, u"9+"_s}) {
            const QImage image = imageOf(text, side);
            QCOMPARE(image.size(), QSize(side, side));
            const QRect badge = placeOf(image, red);
            // In the corner at the top right, but for what is rounded off; the mark keeps the others.
            QCOMPARE_LE(badge.top(), 1);
            QCOMPARE_GE(badge.right(), side - 2);
            QCOMPARE_GE(badge.height(), side * 50 / 100);
            QCOMPARE_LE(badge.height(), side * 65 / 100);
            QCOMPARE_GE(badge.left(), side * 15 / 100);
        }
    }

    void shouldWriteInWhiteThatIsLegible_data() { addSizes(); }
    void shouldWriteInWhiteThatIsLegible()
    {
        QFETCH(const int, side);
        QCOMPARE_GE(contrastOf(Qt::white, red), 4.5);
        for (const QString &text : {u"1"_s, u"4"_s, u"8"_s, u"9+"_s}) {
            const QImage image = imageOf(text, side);
            const QRect badge = placeOf(image, red);
            QRect letters;
            for (int y = badge.top(); y <= badge.bottom(); ++y) {
                for (int x = badge.left(); x <= badge.right(); ++x) {
                    // White, or mostly so.
                    const QColor color = image.pixelColor(x, y);
                    if (color.alpha() == 255 && color.green() > 160)
                        letters |= QRect(x, y, 1, 1);
                }
            }
            // The letters have half of the badge's height, and lie within its red.
            QVERIFY2(letters.height() * 2 >= badge.height() - 1, qPrintable(text));
            QVERIFY2(badge.contains(letters), qPrintable(text));
            QVERIFY(std::abs(letters.center().y() - badge.center().y()) <= 1);
            QVERIFY(std::abs(letters.center().x() - badge.center().x()) <= 1);
        }
    }

    void shouldTellCountsApart()
    {
        QSet<QByteArray> pictures;
        for (const QString &text :
            {u"1"_s, u"2"_s, u"3"_s, u"4"_s, u"5"_s, u"6"_s, u"7"_s, u"8"_s, u"9"_s, u"9+"_s, QString()}) {
            const QImage image = imageOf(text, 22);
            pictures.insert(
                QByteArray(reinterpret_cast<const char *>(image.constBits()), image.sizeInBytes()));
        }
        QCOMPARE(pictures.size(), 11);
    }

    void shouldBeSeenOnAnyBar_data()
    {
        QTest::addColumn<Scheme>("colorScheme");
        QTest::addColumn<QColor>("bar");
        for (const Scheme colorScheme : {Scheme::Light, Scheme::Dark}) {
            const char *const name = colorScheme == Scheme::Light ? "light" : "dark";
            QTest::addRow("%s scheme, black bar", name) << colorScheme << QColor(Qt::black);
            QTest::addRow("%s scheme, dark bar", name) << colorScheme << QColor(0x30, 0x30, 0x34);
            QTest::addRow("%s scheme, grey bar", name) << colorScheme << QColor(0x80, 0x80, 0x80);
            QTest::addRow("%s scheme, light bar", name) << colorScheme << QColor(0xE8, 0xE8, 0xEA);
            QTest::addRow("%s scheme, white bar", name) << colorScheme << QColor(Qt::white);
        }
    }
    void shouldBeSeenOnAnyBar()
    {
        QFETCH(const Scheme, colorScheme);
        QFETCH(const QColor, bar);
        for (const int side : MenuBarLabel::sizes) {
            const QImage image = onBar(imageOf(QString(), side, colorScheme), bar);
            QVERIFY2(shareThatStandsOut(image, bar, 3) > 0.12, QByteArray::number(side));
        }
    }

    void shouldBeSharpAtEachSize_data() { addSizes(); }
    void shouldBeSharpAtEachSize()
    {
        QFETCH(const int, side);
        const QImage image = imageOf(u"3"_s, side);
        // The badge begins and ends with whole pixels: above nothing of it, below nothing of it.
        const QRect badge = placeOf(image, red);
        const int middle = badge.center().x();
        const int height = qRound(side * 0.6);
        const auto isRed = [&](int y) {
            const QColor color = image.pixelColor(middle, y);
            return color.alpha() > 200 && color.red() > 200 && color.green() < 100;
        };
        const auto hasRed = [&](int y) {
            const QColor color = image.pixelColor(middle, y);
            return color.alpha() > 10 && color.red() > color.green() + 10;
        };
        QVERIFY(isRed(0));
        QVERIFY(isRed(height - 1));
        QVERIFY(!hasRed(height));
        // Of the mark, strokes are at their full colour somewhere.
        QVERIFY(pixelsOf(image, colorOf(Tone::BlackAndWhite, Scheme::Light)) > 0);
    }

    void shouldBeDrawnForEachSize()
    {
        const QImage large = imageOf(u"3"_s, 64);
        for (const int side : {16, 22, 24, 32, 48})
            QVERIFY(imageOf(u"3"_s, side)
                != large.scaled(side, side, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    }

    void shouldGiveTraysEverySizeThatTheyAskFor()
    {
        const QIcon icon = MenuBarLabel(u"9+"_s).icon();
        QList<QSize> expected;
        for (const int side : MenuBarLabel::sizes)
            expected.append(QSize(side, side));
        QCOMPARE(icon.availableSizes(), expected);
        for (const int side : {16, 20, 22, 24, 26, 32, 48, 64}) {
            const QImage image = icon.pixmap(QSize(side, side)).toImage();
            QCOMPARE(image.convertToFormat(QImage::Format_ARGB32), imageOf(u"9+"_s, side));
        }
    }
};

ORBITLEDGE_WIDGET_TEST_MAIN(MenuBarLabelTest)
#include "MenuBarLabelTest.moc"
