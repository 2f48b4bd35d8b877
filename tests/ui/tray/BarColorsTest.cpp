#include "ui/tray/BarColors.h"

#include "support/TestMain.h"

using namespace orbitledge::ui;

class BarColorsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldGoWithTheWindowsWhereBarsDo_data()
    {
        QTest::addColumn<QByteArray>("desktops");
        QTest::addColumn<bool>("goesWithWindows");
        QTest::newRow("none") << QByteArray() << false;
        QTest::newRow("Plasma") << QByteArray("KDE") << true;
        QTest::newRow("LXQt") << QByteArray("LXQt") << true;
        QTest::newRow("a variant of Plasma") << QByteArray("Lomiri:KDE") << true;
        QTest::newRow("GNOME") << QByteArray("GNOME") << false;
        QTest::newRow("Ubuntu") << QByteArray("ubuntu:GNOME") << false;
        QTest::newRow("Xfce") << QByteArray("XFCE") << false;
        QTest::newRow("a name within another") << QByteArray("NOTKDE") << false;
    }
    void shouldGoWithTheWindowsWhereBarsDo()
    {
        QFETCH(const QByteArray, desktops);
        QFETCH(const bool, goesWithWindows);
        QCOMPARE(barColorScheme(desktops, ColorScheme::Dark), ColorScheme::Dark);
        QCOMPARE(barColorScheme(desktops, ColorScheme::Light) == ColorScheme::Light, goesWithWindows);
    }
};

ORBITLEDGE_TEST_MAIN(BarColorsTest)
#include "BarColorsTest.moc"
