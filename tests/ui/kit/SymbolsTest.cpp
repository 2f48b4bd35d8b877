#include "ui/kit/Symbols.h"

#include "support/Pixels.h"
#include "support/WidgetTestMain.h"

#include <QDir>
#include <QFile>
#include <QPainter>
#include <QRegularExpression>
#include <QSet>
#include <QSvgRenderer>

using namespace orbitledge::testing;
using namespace orbitledge::ui;
using namespace Qt::StringLiterals;

namespace {

QString pathOf(Symbol symbol)
{
    return QStringLiteral(ORBITLEDGE_SYMBOLS "/%1.svg").arg(nameOf(symbol));
}

QByteArray fileOf(Symbol symbol)
{
    QFile file(pathOf(symbol));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QImage drawn(Symbol symbol, int side, qreal ratio, Qt::LayoutDirection direction = Qt::LeftToRight)
{
    QImage image(QSize(side, side) * ratio, QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setLayoutDirection(direction);
    paintSymbol(painter, symbol, QRectF(0, 0, side, side), Qt::black);
    return image;
}

} // namespace

class SymbolsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldBeDrawnOnOneGridWithOneWeight_data()
    {
        QTest::addColumn<Symbol>("symbol");
        for (const Symbol symbol : allSymbols)
            QTest::newRow(nameOf(symbol).data()) << symbol;
    }
    void shouldBeDrawnOnOneGridWithOneWeight()
    {
        QFETCH(Symbol, symbol);
        const QString text = QString::fromUtf8(fileOf(symbol));
        QVERIFY(text.contains(u"viewBox=\"0 0 24 24\""));
        QCOMPARE(text.count(u"stroke-width="), 1);
        QVERIFY(text.contains(u"stroke-width=\"1.75\" stroke-linecap=\"round\" stroke-linejoin=\"round\""));
        // No colour but the one that is replaced.
        QCOMPARE(text.count(u'#'), text.count(u"\"#000\""));
    }

    void shouldFillItsSquareAtEverySize_data() { shouldBeDrawnOnOneGridWithOneWeight_data(); }
    void shouldFillItsSquareAtEverySize()
    {
        QFETCH(Symbol, symbol);
        for (const int side : {12, 16, 20, 24, 28}) {
            for (const qreal ratio : {1.0, 1.5, 2.0}) {
                const QImage image = drawn(symbol, side, ratio);
                QCOMPARE_GT(highestContrast(image, Qt::white), 4.5);
                const QImage middle = image.copy(image.rect().adjusted(
                    image.width() / 4, image.height() / 4, -image.width() / 4, -image.height() / 4));
                QVERIFY(highestContrast(middle, Qt::white) > 4.5);
            }
        }
    }

    void shouldHaveAFileForEachNameAndNoOther()
    {
        QSet<QString> names;
        for (const Symbol symbol : allSymbols)
            names.insert(nameOf(symbol) + u".svg"_s);
        QCOMPARE(names.size(), static_cast<qsizetype>(allSymbols.size()));
        const QStringList files = QDir(QStringLiteral(ORBITLEDGE_SYMBOLS)).entryList(QDir::Files);
        QCOMPARE(QSet<QString>(files.begin(), files.end()), names);
    }

    void shouldLookAsItsFileSays_data() { shouldBeDrawnOnOneGridWithOneWeight_data(); }
    void shouldLookAsItsFileSays()
    {
        QFETCH(Symbol, symbol);
        QSvgRenderer renderer(pathOf(symbol));
        for (const int pixels : {48, 72, 101}) {
            QImage expected(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
            expected.fill(Qt::transparent);
            QPainter painter(&expected);
            painter.setRenderHint(QPainter::Antialiasing);
            renderer.render(&painter, expected.rect());
            painter.end();
            const QImage found = symbolPixmap(symbol, pixels, Qt::black, 1).toImage();
            QCOMPARE(found.convertToFormat(expected.format()), expected);
        }
    }

    void shouldPutStraightLinesOnWholePixels()
    {
        // The two lines of a plus are in the middle of an even number of pixels: each would be smeared over
        // two.
        const QImage image = drawn(Symbol::Plus, 16, 1);
        int dark = 0;
        for (int x = 0; x < image.width(); ++x)
            dark += qGray(image.pixel(x, image.height() / 2 - 4)) < 40 ? 1 : 0;
        QCOMPARE(dark, 1);
    }

    void shouldHaveTheColorItIsGiven()
    {
        const QColor color(0x0E, 0x74, 0x90);
        const QImage image = symbolPixmap(Symbol::Calendar, 24, color, 2).toImage();
        QCOMPARE(image.size(), QSize(48, 48));
        QCOMPARE(image.devicePixelRatio(), 2);
        QCOMPARE_GT(pixelsOf(image.convertToFormat(QImage::Format_ARGB32), color), 50);
    }

    void shouldKeepItsColorsApart()
    {
        const QImage black = symbolPixmap(Symbol::Bell, 16, Qt::black, 1).toImage();
        const QImage white = symbolPixmap(Symbol::Bell, 16, Qt::white, 1).toImage();
        QVERIFY(black != white);
        QCOMPARE(symbolPixmap(Symbol::Bell, 16, Qt::black, 1).toImage(), black);
    }

    void shouldTurnRoundWhatPointsAlongTheText()
    {
        const auto isMirrored = [](Symbol symbol) {
            return drawn(symbol, 24, 2, Qt::RightToLeft) == drawn(symbol, 24, 2).mirrored(true, false);
        };
        QVERIFY(isMirrored(Symbol::TurnBack));
        QVERIFY(isMirrored(Symbol::SignOut));
        QCOMPARE(drawn(Symbol::Search, 24, 2, Qt::RightToLeft), drawn(Symbol::Search, 24, 2));
    }

    void shouldStandWhereItIsPutWhateverTheScale()
    {
        for (const qreal ratio : {1.0, 1.5, 2.0}) {
            QImage image(QSize(60, 40) * ratio, QImage::Format_RGB32);
            image.setDevicePixelRatio(ratio);
            image.fill(Qt::white);
            QPainter painter(&image);
            painter.translate(10, 5);
            paintSymbol(painter, Symbol::Close, QRectF(20, 10, 16, 16), Qt::black);
            painter.end();
            const QRect place(QPointF(30 * ratio, 15 * ratio).toPoint(), (QSizeF(16, 16) * ratio).toSize());
            QImage outside = image;
            QPainter cover(&outside);
            cover.setWorldTransform(QTransform::fromScale(1 / ratio, 1 / ratio));
            cover.fillRect(place.adjusted(-1, -1, 1, 1), Qt::white);
            cover.end();
            QCOMPARE(highestContrast(outside, Qt::white), 1.0);
            QCOMPARE_GT(highestContrast(image.copy(place), Qt::white), 4.5);
        }
    }

    void shouldMakeIconsOfAnySize()
    {
        const QIcon icon = symbolIcon(Symbol::Mark, Qt::black);
        const QImage normal = icon.pixmap(QSize(22, 22), 2.0).toImage();
        const QImage disabled = icon.pixmap(QSize(22, 22), 2.0, QIcon::Disabled).toImage();
        QCOMPARE(normal.size(), QSize(44, 44));
        QVERIFY(normal != disabled);
    }
};

ORBITLEDGE_WIDGET_TEST_MAIN(SymbolsTest)
#include "SymbolsTest.moc"
