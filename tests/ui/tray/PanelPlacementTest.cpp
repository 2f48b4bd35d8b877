#include "ui/tray/PanelPlacement.h"

#include "support/TestMain.h"

using namespace orbitledge::ui;
using namespace Qt::StringLiterals;

namespace {

constexpr QSize panelSize(360, 480);

QList<ScreenArea> one(const QRect &available)
{
    return {{.geometry = QRect(0, 0, 1920, 1080), .available = available}};
}

/// A second one to the right, lower, with a bar of its own at the bottom.
QList<ScreenArea> two()
{
    return {
        {.geometry = QRect(0, 0, 1920, 1080), .available = QRect(0, 30, 1920, 1050)},
        {.geometry = QRect(1920, 200, 1280, 1024), .available = QRect(1920, 200, 1280, 984)},
    };
}

/// Left of the first one, where coordinates are negative.
QList<ScreenArea> twoWithOneAtTheLeft()
{
    return {
        {.geometry = QRect(0, 0, 1920, 1080), .available = QRect(0, 0, 1920, 1080)},
        {.geometry = QRect(-1280, -100, 1280, 1024), .available = QRect(-1250, -100, 1250, 1024)},
    };
}

} // namespace

class PanelPlacementTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldStandBesideTheBar_data()
    {
        QTest::addColumn<QList<ScreenArea>>("screens");
        QTest::addColumn<QRect>("icon");
        QTest::addColumn<QPoint>("pointer");
        QTest::addColumn<QPoint>("expected");

        const QRect none;
        const QPoint elsewhere(5, 5);
        const QRect belowTop(0, 30, 1920, 1050);
        const QRect aboveBottom(0, 0, 1920, 1040);
        const QRect rightOfLeft(48, 0, 1872, 1080);
        const QRect leftOfRight(0, 0, 1872, 1080);
        const QRect whole(0, 0, 1920, 1080);

        QTest::newRow("top") << one(belowTop) << QRect(1000, 4, 22, 22) << elsewhere << QPoint(830, 34);
        QTest::newRow("bottom") << one(aboveBottom) << QRect(1000, 1049, 22, 22) << elsewhere
                                << QPoint(830, 1040 - 4 - 480);
        QTest::newRow("left") << one(rightOfLeft) << QRect(13, 500, 22, 22) << elsewhere << QPoint(52, 270);
        QTest::newRow("right") << one(leftOfRight) << QRect(1885, 500, 22, 22) << elsewhere
                               << QPoint(1872 - 4 - 360, 270);

        QTest::newRow("top, near the right end")
            << one(belowTop) << QRect(1894, 4, 22, 22) << elsewhere << QPoint(1556, 34);
        QTest::newRow("top, near the left end")
            << one(belowTop) << QRect(2, 4, 22, 22) << elsewhere << QPoint(4, 34);
        QTest::newRow("left, near the bottom")
            << one(rightOfLeft) << QRect(13, 1050, 22, 22) << elsewhere << QPoint(52, 1080 - 4 - 480);
        QTest::newRow("right, near the top")
            << one(leftOfRight) << QRect(1885, 3, 22, 22) << elsewhere << QPoint(1508, 4);

        QTest::newRow("bars at the top and the bottom, icon at the bottom")
            << one(QRect(0, 30, 1920, 1010)) << QRect(1000, 1049, 22, 22) << elsewhere
            << QPoint(830, 1040 - 4 - 480);
        QTest::newRow("in the corner of two bars, deeper in the upper one")
            << one(QRect(0, 30, 1900, 1050)) << QRect(1895, 4, 22, 22) << elsewhere << QPoint(1536, 34);

        QTest::newRow("a bar that keeps no room, top")
            << one(whole) << QRect(1000, 4, 22, 22) << elsewhere << QPoint(830, 30);
        QTest::newRow("a bar that keeps no room, bottom")
            << one(whole) << QRect(1000, 1054, 22, 22) << elsewhere << QPoint(830, 1054 - 4 - 480);
        QTest::newRow("a bar that keeps no room, left")
            << one(whole) << QRect(4, 500, 22, 22) << elsewhere << QPoint(30, 270);
        QTest::newRow("a bar that keeps no room, right")
            << one(whole) << QRect(1894, 500, 22, 22) << elsewhere << QPoint(1894 - 4 - 360, 270);

        QTest::newRow("pointer only, top") << one(belowTop) << none << QPoint(1010, 12) << QPoint(830, 34);
        QTest::newRow("pointer only, bottom")
            << one(aboveBottom) << none << QPoint(1010, 1060) << QPoint(830, 1040 - 4 - 480);
        QTest::newRow("pointer in the last row")
            << one(aboveBottom) << none << QPoint(1919, 1079) << QPoint(1556, 1040 - 4 - 480);
        QTest::newRow("pointer in the middle")
            << one(belowTop) << none << QPoint(900, 500) << QPoint(720, 505);

        QTest::newRow("the second screen's bar")
            << two() << QRect(3160, 1190, 22, 22) << elsewhere << QPoint(3200 - 4 - 360, 1184 - 4 - 480);
        QTest::newRow("the first screen's bar")
            << two() << QRect(1890, 4, 22, 22) << elsewhere << QPoint(1556, 34);
        QTest::newRow("negative coordinates")
            << twoWithOneAtTheLeft() << QRect(-1276, 300, 22, 22) << elsewhere << QPoint(-1246, 70);
        QTest::newRow("beyond all screens")
            << two() << none << QPoint(4000, 5000) << QPoint(3200 - 4 - 360, 1184 - 4 - 480);
        QTest::newRow("where no screen is, above the second")
            << two() << none << QPoint(2500, 100) << QPoint(2320, 204);
        // What is 3840 x 2160 in pixels, at 2 and at 1.5 of them to the point.
        QTest::newRow("scale 2") << one(belowTop) << QRect(1000, 4, 11, 11) << elsewhere << QPoint(825, 34);
        QTest::newRow("scale 1.5") << QList<ScreenArea>{{QRect(0, 0, 2560, 1440), QRect(0, 0, 2560, 1413)}}
                                   << QRect(2500, 1419, 15, 15) << elsewhere << QPoint(2196, 1413 - 4 - 480);

        QTest::newRow("a screen that is too low")
            << QList<ScreenArea>{{QRect(0, 0, 800, 400), QRect(0, 0, 800, 370)}} << QRect(700, 375, 20, 20)
            << elsewhere << QPoint(436, 0);
        QTest::newRow("a screen that just fits")
            << QList<ScreenArea>{{QRect(0, 0, 360, 510), QRect(0, 30, 360, 480)}} << QRect(300, 5, 20, 20)
            << elsewhere << QPoint(0, 30);
        QTest::newRow("no screen") << QList<ScreenArea>{} << QRect(1, 1, 2, 2) << elsewhere << QPoint(0, 0);
    }
    void shouldStandBesideTheBar()
    {
        QFETCH(const QList<ScreenArea>, screens);
        QFETCH(const QRect, icon);
        QFETCH(const QPoint, pointer);
        QFETCH(const QPoint, expected);
        const PanelAnchor anchor{icon.isNull() ? std::nullopt : std::optional(icon), pointer};
        QCOMPARE(placePanel(anchor, screens, panelSize), expected);
    }

    void shouldLieOnItsScreenWhereverTheIconIs()
    {
        const auto isWithin
            = [](const QRect &panel, const ScreenArea &screen) { return screen.available.contains(panel); };
        for (const QList<ScreenArea> &screens : {two(), twoWithOneAtTheLeft()}) {
            for (int y = -150; y < 1300; y += 7) {
                for (int x = -1300; x < 3300; x += 11) {
                    const QRect panel(placePanel({QRect(x, y, 22, 22), {}}, screens, panelSize), panelSize);
                    QVERIFY(isWithin(panel, screens[0]) != isWithin(panel, screens[1]));
                }
            }
        }
    }

    void shouldLeaveWhatIsBesideABar_data()
    {
        QTest::addColumn<QRect>("bar");
        QTest::addColumn<QRect>("expected");
        QTest::newRow("top") << QRect(1920, 200, 1280, 31) << QRect(1920, 231, 1280, 993);
        QTest::newRow("bottom") << QRect(1920, 1193, 1280, 31) << QRect(1920, 200, 1280, 993);
        QTest::newRow("left") << QRect(1920, 200, 31, 1024) << QRect(1951, 200, 1249, 1024);
        QTest::newRow("right") << QRect(3169, 200, 31, 1024) << QRect(1920, 200, 1249, 1024);
        QTest::newRow("top, in the middle only") << QRect(2400, 200, 300, 48) << QRect(1920, 248, 1280, 976);
        QTest::newRow("left, in the middle only")
            << QRect(1920, 600, 48, 300) << QRect(1968, 200, 1232, 1024);
        QTest::newRow("bottom, away from the edge")
            << QRect(1930, 1170, 1260, 44) << QRect(1920, 200, 1280, 970);
        QTest::newRow("known already") << QRect(1920, 169, 1280, 31) << QRect(1920, 200, 1280, 1024);
        QTest::newRow("on another screen") << QRect(0, 0, 1920, 31) << QRect(1920, 200, 1280, 1024);
    }
    void shouldLeaveWhatIsBesideABar()
    {
        QFETCH(const QRect, bar);
        QTEST(beside(bar, QRect(1920, 200, 1280, 1024)), "expected");
    }
};

ORBITLEDGE_TEST_MAIN(PanelPlacementTest)
#include "PanelPlacementTest.moc"
