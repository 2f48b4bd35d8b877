#include "ui/tray/WindowActivation.h"

#include "support/WidgetTestMain.h"

#include <QWidget>

using namespace orbitledge::ui;
using namespace Qt::StringLiterals;

class WindowActivationTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldKnowWhenThePersonClicked_data()
    {
        QTest::addColumn<QString>("startupId");
        QTest::addColumn<quint32>("time");
        QTest::newRow("a launcher's") << u"xfce4-panel-123-desk-app_TIME4711"_s << 4711U;
        QTest::newRow("the last one counts") << u"a_TIME1_b_TIME2"_s << 2U;
        QTest::newRow("late") << u"a_TIME4294967295"_s << 4294967295U;
        QTest::newRow("too late") << u"a_TIME4294967296"_s << 0U;
        QTest::newRow("no number") << u"a_TIMEx"_s << 0U;
        QTest::newRow("a token of Wayland") << u"8d2f1c"_s << 0U;
        QTest::newRow("nothing") << QString() << 0U;
    }
    void shouldKnowWhenThePersonClicked()
    {
        QFETCH(QString, startupId);
        QFETCH(quint32, time);
        QCOMPARE(timeOfStartupId(startupId), time);
    }

    void shouldBringAWindowForward()
    {
        QWidget window;
        window.show();
        QWidget other;
        other.show();
        other.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&other));
        bringForward(window, QString());
        QVERIFY(QTest::qWaitForWindowActive(&window));
    }

    void shouldHandTheTokenToTheToolkit()
    {
        QWidget window;
        window.show();
        bringForward(window, u"8d2f1c"_s);
        QCOMPARE(qgetenv("XDG_ACTIVATION_TOKEN"), "8d2f1c"_ba);
        // None does not take away one that was not used yet.
        bringForward(window, QString());
        QCOMPARE(qgetenv("XDG_ACTIVATION_TOKEN"), "8d2f1c"_ba);
        qunsetenv("XDG_ACTIVATION_TOKEN");
    }
};

ORBITLEDGE_WIDGET_TEST_MAIN(WindowActivationTest)
#include "WindowActivationTest.moc"
