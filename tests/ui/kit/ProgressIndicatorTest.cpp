#include "ui/kit/ProgressIndicator.h"

#include "support/Pixels.h"
#include "support/WidgetTestMain.h"

using namespace orbitledge::testing;
using namespace orbitledge::ui;

class ProgressIndicatorTest : public QObject {
    Q_OBJECT

private:
    static Style &style() { return *qobject_cast<Style *>(QApplication::style()); }

private Q_SLOTS:
    void cleanup() { style().setMotion(Style::Motion::Reduced); }

    void shouldTurnOnlyWhileItIsSeen()
    {
        style().setMotion(Style::Motion::Full);
        ProgressIndicator indicator;
        QVERIFY(!indicator.isTurning());
        indicator.show();
        QVERIFY(indicator.isTurning());
        const QImage first = pictureOf(indicator);
        QTRY_VERIFY(pictureOf(indicator) != first);
        indicator.hide();
        QVERIFY(!indicator.isTurning());
    }

    void shouldRestWhereMotionIsReduced()
    {
        ProgressIndicator indicator;
        indicator.show();
        QVERIFY(!indicator.isTurning());
        // It is seen nonetheless.
        const QImage image = pictureOf(indicator);
        QCOMPARE_GT(highestContrast(image, mostFrequentColor(image)), 3);
    }

    void shouldFollowAChangeOfMotion()
    {
        ProgressIndicator indicator;
        indicator.show();
        style().setMotion(Style::Motion::Full);
        QVERIFY(indicator.isTurning());
        style().setMotion(Style::Motion::Reduced);
        QVERIFY(!indicator.isTurning());
    }
};

ORBITLEDGE_WIDGET_TEST_MAIN(ProgressIndicatorTest)
#include "ProgressIndicatorTest.moc"
