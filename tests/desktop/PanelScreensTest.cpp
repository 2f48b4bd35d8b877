// Where the panel opens, and how it looks, on screens of other kinds than the one that most people have: more
// than one monitor, twice the pixels, hardly enough room.

#include "support/ProgramDesk.h"
#include "support/TestMain.h"

#include <cstdlib>
#include <optional>

using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

namespace {

using Edge = XfceDesk::Edge;

constexpr QSize logicalSize(360, 480);
constexpr int logicalGap = 4;

QString described(const QRect &rect)
{
    return u"%1x%2+%3+%4"_s.arg(rect.width()).arg(rect.height()).arg(rect.x()).arg(rect.y());
}

/// How often a colour changes hard between two pixels that a picture of half the size, enlarged, would show
/// as one.
int detailOf(const QImage &image)
{
    constexpr int hard = 120;
    const auto differs = [](QRgb one, QRgb other) { return std::abs(qGray(one) - qGray(other)) > hard; };
    int count = 0;
    for (int y = 0; y + 1 < image.height(); y += 2) {
        for (int x = 0; x + 1 < image.width(); x += 2) {
            count += differs(image.pixel(x, y), image.pixel(x + 1, y)) ? 1 : 0;
            count += differs(image.pixel(x, y), image.pixel(x, y + 1)) ? 1 : 0;
        }
    }
    return count;
}

/// As it would look if it had been drawn for half as many pixels.
QImage enlarged(const QImage &image)
{
    const QImage half = image.scaled(image.size() / 2, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return half.scaled(image.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

} // namespace

class PanelScreensTest : public QObject {
    Q_OBJECT

private:
    /// By what people tell programs that a point is two pixels.
    enum class Doubling { Variable, Resources, Settings };

    std::optional<ProgramDesk> m_session;

    void setDoubling(Doubling doubling)
    {
        switch (doubling) {
        case Doubling::Variable:
            m_session->set("QT_SCALE_FACTOR", u"2"_s);
            break;
        case Doubling::Resources:
            m_session->lab().run(u"xrdb"_s, {u"-nocpp"_s, u"-merge"_s}, "Xft.dpi: 192\n");
            break;
        case Doubling::Settings: {
            const QString file = m_session->lab().path(u"xsettings"_s);
            QFile settings(file);
            QVERIFY(settings.open(QIODevice::WriteOnly) && settings.write("Xft/DPI 196608\n") > 0);
            settings.close();
            m_session->lab().startProgram(u"xsettingsd"_s, u"xsettingsd"_s, {u"-c"_s, file}, [this] {
                return m_session->lab()
                    .run(u"sh"_s, {u"-c"_s, u"dump_xsettings || true"_s})
                    .contains("Xft/DPI");
            });
            break;
        }
        }
    }

    void startDesktop()
    {
        m_session->signIn();
        m_session->desk().startWindowManager(XfceDesk::Compositing::Off);
        m_session->desk().startBar();
    }
    /// Opens the panel by the icon, which is where this returns.
    QPoint openPanel()
    {
        m_session->start({u"--background"_s});
        const QPoint icon = m_session->desk().awaitBadge().center();
        m_session->desk().click(icon);
        m_session->awaitPanel(true);
        m_session->keepPicture(u"%1 %2"_s.arg(
            QLatin1StringView(QTest::currentTestFunction()), QLatin1StringView(QTest::currentDataTag())));
        return icon;
    }
    [[nodiscard]] QRect panelPlace() { return m_session->desk().placeOf({u"--name"_s, u"^Orbitledge$"_s}); }
    [[nodiscard]] QRect barPlace() { return m_session->desk().placeOf({u"--class"_s, u"xfce4-panel"_s}); }

    void verifyBeside(const QRect &panel, const QRect &bar, QPoint icon, Edge edge, int ratio)
    {
        // Beside the bar it is near the icon, which in the bar's corner is a little further out than it can
        // be.
        const bool isUpright = edge == Edge::Left || edge == Edge::Right;
        const int halfAnIcon = (isUpright ? bar.width() : bar.height()) / 2;
        const QMargins along = isUpright ? QMargins(bar.width(), halfAnIcon, bar.width(), halfAnIcon)
                                         : QMargins(halfAnIcon, bar.height(), halfAnIcon, bar.height());
        QVERIFY2(panel.marginsAdded(along).contains(icon), qPrintable(described(panel)));
        // The bar may end amid a point.
        const int gap = logicalGap * ratio;
        const QRect around = bar.marginsAdded({gap, gap, gap, gap});
        QVERIFY2(
            !panel.intersects(around), qPrintable(described(panel) + u" too near to "_s + described(bar)));
        QVERIFY2(panel.intersects(around.marginsAdded({ratio, ratio, ratio, ratio})),
            qPrintable(described(panel) + u" far from "_s + described(bar)));
    }

    void verifySharp(const QImage &image, int leastDetail)
    {
        const int detail = detailOf(image);
        QVERIFY2(detail >= leastDetail, qPrintable(QString::number(detail)));
        QVERIFY(detailOf(enlarged(image)) < detail / 4);
    }

private Q_SLOTS:
    void cleanup()
    {
        if (!m_session)
            return;
        if (QTest::currentTestFailed())
            m_session->keepPicture(u"screens-failure"_s);
        m_session.reset();
    }

    void shouldOpenBesideTheIconOnItsMonitor_data()
    {
        QTest::addColumn<QList<QRect>>("monitors");
        QTest::addColumn<int>("barMonitor");
        QTest::addColumn<Edge>("edge");
        // Of different heights, so that there is room on the screen that no monitor shows.
        const QList<QRect> besideEachOther{QRect(0, 0, 1024, 768), QRect(1024, 200, 1280, 720)};
        const QList<QRect> aboveEachOther{QRect(0, 0, 1280, 720), QRect(0, 720, 1024, 768)};
        const auto add = [](const char *name, const QList<QRect> &monitors, int barMonitor, Edge edge) {
            QTest::newRow(name) << monitors << barMonitor << edge;
        };
        add("first monitor, top", besideEachOther, 0, Edge::Top);
        add("first monitor, bottom", besideEachOther, 0, Edge::Bottom);
        add("first monitor, left", besideEachOther, 0, Edge::Left);
        add("first monitor, right, between the two", besideEachOther, 0, Edge::Right);
        add("second monitor, top, lower than the first one's", besideEachOther, 1, Edge::Top);
        add("second monitor, bottom", besideEachOther, 1, Edge::Bottom);
        add("second monitor, left, between the two", besideEachOther, 1, Edge::Left);
        add("second monitor, right", besideEachOther, 1, Edge::Right);
        add("upper monitor, bottom, between the two", aboveEachOther, 0, Edge::Bottom);
        add("lower monitor, top, between the two", aboveEachOther, 1, Edge::Top);
        add("lower monitor, right, within the upper one's width", aboveEachOther, 1, Edge::Right);
    }
    void shouldOpenBesideTheIconOnItsMonitor()
    {
        QFETCH(const QList<QRect>, monitors);
        QFETCH(const int, barMonitor);
        QFETCH(const Edge, edge);
        const QRect monitor = monitors.at(barMonitor);
        m_session.emplace(monitors, XfceDesk::Bar{.edge = edge, .monitor = monitor});
        startDesktop();
        const QPoint icon = openPanel();
        const QRect bar = barPlace();
        QVERIFY2(monitor.contains(bar), qPrintable(described(bar))); // and the icon with it
        QVERIFY(bar.contains(icon));
        const QRect panel = panelPlace();
        QCOMPARE(panel.size(), logicalSize);
        QVERIFY2(monitor.contains(panel), qPrintable(described(panel)));
        verifyBeside(panel, bar, icon, edge, 1);
    }

    void shouldBeDrawnForScreensOfTwicePixels_data()
    {
        QTest::addColumn<Doubling>("doubling");
        QTest::addColumn<Edge>("edge");
        QTest::newRow("by the toolkit's variable, top") << Doubling::Variable << Edge::Top;
        QTest::newRow("by the toolkit's variable, bottom") << Doubling::Variable << Edge::Bottom;
        QTest::newRow("by the server's resources, top") << Doubling::Resources << Edge::Top;
        QTest::newRow("by the server's resources, right") << Doubling::Resources << Edge::Right;
        QTest::newRow("by the desktop's settings, left") << Doubling::Settings << Edge::Left;
    }
    void shouldBeDrawnForScreensOfTwicePixels()
    {
        QFETCH(const Doubling, doubling);
        QFETCH(const Edge, edge);
        constexpr int iconSize = 44;
        const QRect monitor(0, 0, 2048, 1536);
        m_session.emplace(QList<QRect>{monitor},
            XfceDesk::Bar{.edge = edge, .monitor = monitor, .thickness = 60, .iconSize = iconSize});
        setDoubling(doubling);
        startDesktop();
        const QPoint icon = openPanel();
        const QRect bar = barPlace();
        const QRect panel = panelPlace();
        QCOMPARE(panel.size(), logicalSize * 2);
        QVERIFY2(monitor.contains(panel), qPrintable(described(panel)));
        verifyBeside(panel, bar, icon, edge, 2);

        const QImage screen = m_session->desk().screen();
        verifySharp(screen.copy(panel), 1000);
        const int side = iconSize + 4;
        verifySharp(screen.copy(QRect(icon - QPoint(side, side), QSize(side, side) * 2) & bar), 20);
    }

    void shouldOpenBesideTheIconOnASecondMonitorOfTwicePixels_data()
    {
        QTest::addColumn<Edge>("edge");
        QTest::newRow("top") << Edge::Top;
        QTest::newRow("bottom") << Edge::Bottom;
        QTest::newRow("left") << Edge::Left;
        QTest::newRow("right") << Edge::Right;
    }
    void shouldOpenBesideTheIconOnASecondMonitorOfTwicePixels()
    {
        QFETCH(const Edge, edge);
        const QRect monitor(1920, 120, 1920, 1080);
        m_session.emplace(QList<QRect>{QRect(0, 0, 1920, 1200), monitor},
            XfceDesk::Bar{.edge = edge, .monitor = monitor, .thickness = 60});
        setDoubling(Doubling::Resources);
        startDesktop();
        const QPoint icon = openPanel();
        const QRect panel = panelPlace();
        QCOMPARE(panel.size(), logicalSize * 2);
        QVERIFY2(monitor.contains(panel), qPrintable(described(panel)));
        verifyBeside(panel, barPlace(), icon, edge, 2);
    }

    void shouldFitOnASmallScreen_data()
    {
        QTest::addColumn<QSize>("screen");
        QTest::addColumn<Edge>("edge");
        QTest::newRow("top") << QSize(640, 31 + 4 + 480 + 4) << Edge::Top;
        QTest::newRow("bottom") << QSize(640, 4 + 480 + 4 + 31) << Edge::Bottom;
        QTest::newRow("left") << QSize(31 + 4 + 360 + 4, 600) << Edge::Left;
        QTest::newRow("right") << QSize(4 + 360 + 4 + 31, 600) << Edge::Right;
    }
    void shouldFitOnASmallScreen()
    {
        QFETCH(const QSize, screen);
        QFETCH(const Edge, edge);
        const QRect monitor({0, 0}, screen);
        m_session.emplace(QList<QRect>{monitor}, XfceDesk::Bar{.edge = edge, .monitor = monitor});
        startDesktop();
        const QPoint icon = openPanel();
        const QRect panel = panelPlace();
        QCOMPARE(panel.size(), logicalSize);
        QVERIFY2(monitor.contains(panel), qPrintable(described(panel)));
        verifyBeside(panel, barPlace(), icon, edge, 1);
    }

    void shouldBeginBesideTheBarOnAScreenThatIsTooSmall_data()
    {
        QTest::addColumn<QSize>("screen");
        QTest::addColumn<Edge>("edge");
        QTest::addColumn<QPoint>("corner");
        // The gaps go first, then what is at the end.
        QTest::newRow("room without gaps, top") << QSize(640, 31 + 480 + 1) << Edge::Top << QPoint(276, 32);
        QTest::newRow("too low, top") << QSize(640, 480) << Edge::Top << QPoint(276, 31);
        QTest::newRow("too low, bottom") << QSize(640, 480) << Edge::Bottom << QPoint(276, 0);
        QTest::newRow("too low, left") << QSize(640, 400) << Edge::Left << QPoint(35, 0);
        QTest::newRow("too narrow, left") << QSize(320, 600) << Edge::Left << QPoint(31, 116);
    }
    void shouldBeginBesideTheBarOnAScreenThatIsTooSmall()
    {
        QFETCH(const QSize, screen);
        QFETCH(const Edge, edge);
        QFETCH(const QPoint, corner);
        const QRect monitor({0, 0}, screen);
        m_session.emplace(QList<QRect>{monitor}, XfceDesk::Bar{.edge = edge, .monitor = monitor});
        startDesktop();
        openPanel();
        const QRect panel = panelPlace();
        QCOMPARE(panel.size(), logicalSize);
        QCOMPARE(panel.topLeft(), corner);
        m_session->desk().press(u"Escape"_s);
        m_session->awaitPanel(false);
    }
};

ORBITLEDGE_TEST_MAIN(PanelScreensTest)
#include "PanelScreensTest.moc"
