#include "ui/kit/Typography.h"

#include "support/WidgetTestMain.h"
#include "ui/kit/Field.h"
#include "ui/kit/ThemedLabel.h"

#include <QFontMetricsF>
#include <QHBoxLayout>

using namespace orbitledge::ui;
using namespace Qt::StringLiterals;

class TypographyTest : public QObject {
    Q_OBJECT

private:
    static qreal pixelsOf(const QFont &font, const QWidget &widget)
    {
        return font.pointSizeF() * widget.logicalDpiY() / 72;
    }

private Q_SLOTS:
    void shouldKeepTheTextScaleInItsRange_data()
    {
        QTest::addColumn<double>("asked");
        QTest::addColumn<double>("given");
        QTest::newRow("as designed") << 1.0 << 1.0;
        QTest::newRow("between") << 1.35 << 1.35;
        QTest::newRow("largest") << 2.0 << 2.0;
        QTest::newRow("too small") << 0.5 << 1.0;
        QTest::newRow("too large") << 9.0 << 2.0;
    }
    void shouldKeepTheTextScaleInItsRange()
    {
        QFETCH(double, asked);
        QFETCH(double, given);
        QWidget window;
        auto *const child = new QWidget(&window);
        applyTextScale(window, asked);
        QCOMPARE_LT(std::abs(textScaleOf(*child) - given), 0.001);
        QCOMPARE(scaled(*child, 20), qRound(20 * given));
    }

    void shouldMeasureInPixels_data()
    {
        QTest::addColumn<double>("designSize");
        QTest::addColumn<double>("scale");
        QTest::newRow("base") << 13.0 << 1.0;
        QTest::newRow("half a pixel") << 10.5 << 1.0;
        QTest::newRow("scaled") << 12.0 << 1.5;
    }
    void shouldMeasureInPixels()
    {
        QFETCH(double, designSize);
        QFETCH(double, scale);
        QWidget window;
        applyTextScale(window, scale);
        const QFont font = fontOf(window, designSize, QFont::DemiBold, 1.7);
        QCOMPARE_LT(std::abs(pixelsOf(font, window) - designSize * scale), 0.01);
        QCOMPARE(font.weight(), QFont::DemiBold);
        QCOMPARE_LT(std::abs(font.letterSpacing() - 1.7 * scale), 0.02);
        QCOMPARE(font.family(), QApplication::font().family());
    }

    void shouldTellEveryComponentOfANewScale()
    {
        QWidget window;
        applyTextScale(window, 1);
        auto *const layout = new QHBoxLayout(&window);
        auto *const label = new ThemedLabel(u"Northlight Video"_s, &window);
        auto *const field = new Field(&window);
        layout->addWidget(label);
        layout->addWidget(field);
        window.show();
        const QSize labelBefore = label->sizeHint();
        const int fieldBefore = field->height();
        QCOMPARE(fieldBefore, 34);

        applyTextScale(window, 2);
        QCOMPARE_GT(label->sizeHint().width(), labelBefore.width() * 19 / 10);
        QTRY_COMPARE(field->height(), 68);
        QTRY_COMPARE_GE(label->width(), label->sizeHint().width());
        QCOMPARE_LT(std::abs(pixelsOf(field->font(), window) - 26), 0.01);
    }
};

ORBITLEDGE_WIDGET_TEST_MAIN(TypographyTest)
#include "TypographyTest.moc"
