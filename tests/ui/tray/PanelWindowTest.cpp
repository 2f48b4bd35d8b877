#include "ui/tray/PanelWindow.h"

#include "support/Pixels.h"
#include "support/WidgetTestMain.h"
#include "ui/kit/Palette.h"
#include "ui/kit/Typography.h"

#include <QDialog>
#include <QLineEdit>
#include <QMenu>
#include <QSignalSpy>
#include <QVBoxLayout>

using namespace orbitledge::testing;
using namespace orbitledge::ui;
using namespace Qt::StringLiterals;

namespace {

constexpr int longerThanGrace = 400; // milliseconds

struct Panel {
    QLineEdit *field = new QLineEdit;
    std::unique_ptr<PanelWindow> window;
    QWidget elsewhere;

    explicit Panel(PanelWindow::Manner manner = PanelWindow::Manner::Popup)
    {
        auto *const content = new QWidget;
        auto *const layout = new QVBoxLayout(content);
        layout->addWidget(field);
        layout->addStretch();
        window = std::make_unique<PanelWindow>(content);
        applyColorScheme(*window, orbitledge::ui::ColorScheme::Light);
        window->setManner(manner);
        elsewhere.setGeometry(0, 0, 100, 100);
        elsewhere.show();
    }

    void open()
    {
        window->showAt({.icon = std::nullopt, .pointer = {400, 0}});
        focus(*window);
    }
    /// As a window manager does.
    static void focus(QWidget &widget)
    {
        QApplication::setActiveWindow(&widget);
        widget.windowHandle()->requestActivate();
        QCoreApplication::processEvents();
    }
    void leave() { focus(elsewhere); }
    void movePointerIn() const
    {
        QEnterEvent enter(QPointF(9, 9), QPointF(9, 9), QPointF(9, 9));
        QCoreApplication::sendEvent(window.get(), &enter);
    }
    [[nodiscard]] bool closesByItself() const
    {
        return QTest::qWaitFor([this] { return !window->isVisible(); });
    }
    [[nodiscard]] bool staysOpen() const
    {
        return !QTest::qWaitFor([this] { return !window->isVisible(); }, longerThanGrace);
    }
    void toggle() const { window->toggle({.icon = std::nullopt, .pointer = {400, 0}}); }
};

} // namespace

class PanelWindowTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldHaveOneSize_data()
    {
        QTest::addColumn<PanelWindow::Manner>("manner");
        QTest::newRow("popup") << PanelWindow::Manner::Popup;
        QTest::newRow("window") << PanelWindow::Manner::Window;
    }
    void shouldHaveOneSize()
    {
        QFETCH(const PanelWindow::Manner, manner);
        Panel panel(manner);
        applyTextScale(*panel.window, 2);
        panel.open();
        QCOMPARE(panel.window->size(), QSize(360, 480));
        panel.window->resize(500, 500);
        QCOMPARE(panel.window->size(), QSize(360, 480));
        QCOMPARE(panel.window->windowTitle(), u"Orbitledge"_s);
        QCOMPARE(panel.window->windowFlags().testFlag(Qt::FramelessWindowHint),
            manner == PanelWindow::Manner::Popup);
    }

    void shouldTellEachTimeItIsShown()
    {
        Panel panel;
        const QSignalSpy shown(panel.window.get(), &PanelWindow::shown);
        const QSignalSpy hidden(panel.window.get(), &PanelWindow::hidden);
        panel.open();
        panel.open();
        QCOMPARE(shown.count(), 1);
        panel.toggle();
        QCOMPARE(hidden.count(), 1);
        panel.toggle();
        QCOMPARE(shown.count(), 2);
    }

    void shouldChangeItsMannerAtTheNextShowing()
    {
        Panel panel(PanelWindow::Manner::Window);
        panel.open();
        panel.window->setManner(PanelWindow::Manner::Popup);
        QVERIFY(!panel.window->windowFlags().testFlag(Qt::FramelessWindowHint));
        QVERIFY(panel.window->isVisible());
        panel.toggle();
        panel.toggle();
        QVERIFY(panel.window->windowFlags().testFlag(Qt::FramelessWindowHint));
        QVERIFY(panel.window->isVisible());
        QCOMPARE(panel.field->window(), panel.window.get());
    }

    // ---- keys ----

    void shouldCloseAtEscapeUnlessSomethingTakesIt()
    {
        Panel panel;
        int taken = 1;
        panel.window->setTakesEscape([&taken] { return taken-- > 0; });
        panel.open();
        panel.field->setFocus();
        QTest::keyClick(panel.field, Qt::Key_Escape);
        QVERIFY(panel.window->isVisible());
        QTest::keyClick(panel.field, Qt::Key_Escape);
        QVERIFY(!panel.window->isVisible());
    }

    void shouldKnowTheKeysForClosingAndQuitting()
    {
        Panel panel;
        const QSignalSpy quit(panel.window.get(), &PanelWindow::quitRequested);
        panel.open();
        panel.field->setFocus();
        QTest::keyClick(panel.field, Qt::Key_Q, Qt::ControlModifier);
        QCOMPARE(quit.count(), 1);
        QVERIFY(panel.window->isVisible());
        QTest::keyClick(panel.field, Qt::Key_W, Qt::ControlModifier);
        QVERIFY(!panel.window->isVisible());
    }

    // ---- turning to something else ----

    void shouldCloseWhenSomebodyLeavesIt()
    {
        Panel panel;
        panel.open();
        panel.movePointerIn();
        QElapsedTimer elapsed;
        elapsed.start();
        panel.leave();
        QVERIFY(panel.closesByItself());
        QVERIFY(elapsed.elapsed() >= 140); // there is a grace; timers may come a twentieth early
    }

    void shouldStayWhereThePointerWasNeverInIt()
    {
        Panel panel;
        panel.open();
        panel.leave();
        QVERIFY(panel.staysOpen());
    }

    void shouldStayWhereItNeverHadTheFocus()
    {
        // Some window managers keep the focus where it is.
        Panel panel;
        panel.open();
        panel.movePointerIn();
        panel.toggle();
        Panel::focus(panel.elsewhere);
        panel.window->show();
        panel.movePointerIn();
        QCOMPARE(QApplication::activeWindow(), &panel.elsewhere);
        QVERIFY(panel.staysOpen());
    }

    void shouldStayWhereTheFocusComesBackAtOnce()
    {
        Panel panel;
        panel.open();
        panel.movePointerIn();
        panel.leave();
        Panel::focus(*panel.window);
        QVERIFY(panel.staysOpen());
    }

    void shouldStayAsAWindow()
    {
        Panel panel(PanelWindow::Manner::Window);
        panel.open();
        panel.movePointerIn();
        panel.leave();
        QVERIFY(panel.staysOpen());
    }

    void shouldStayWhileADialogOfOursIsOpen()
    {
        Panel panel;
        panel.open();
        panel.movePointerIn();
        QDialog dialog(panel.window.get());
        dialog.setModal(true);
        dialog.show();
        Panel::focus(dialog);
        QVERIFY(panel.staysOpen());
        dialog.hide();
        Panel::focus(*panel.window);
        QVERIFY(panel.staysOpen());
        panel.leave();
        QVERIFY(panel.closesByItself());
    }

    void shouldStayWhileAMenuOfOursIsOpen()
    {
        Panel panel;
        panel.open();
        panel.movePointerIn();
        QMenu menu(panel.window.get());
        menu.addAction(u"Undo"_s);
        menu.popup({10, 10});
        panel.leave();
        QVERIFY(panel.staysOpen());
        menu.close();
    }

    // ---- the click on the icon ----

    void shouldStayClosedAfterTheClickThatTookTheFocus()
    {
        Panel panel;
        panel.open();
        panel.movePointerIn();
        // The click itself comes last.
        bool hasCome = false;
        const auto click = [&] {
            panel.toggle();
            hasCome = true;
        };
        connect(panel.window.get(), &PanelWindow::hidden, panel.window.get(), click,
            Qt::ConnectionType(Qt::QueuedConnection | Qt::SingleShotConnection));
        panel.leave();
        QTRY_VERIFY(hasCome);
        QVERIFY(!panel.window->isVisible());
        panel.toggle();
        QVERIFY(panel.window->isVisible());
    }

    void shouldCloseAtTheClickThatComesWithinTheGrace()
    {
        Panel panel;
        panel.open();
        panel.movePointerIn();
        panel.leave();
        panel.toggle();
        QVERIFY(!panel.window->isVisible());
        panel.toggle();
        QVERIFY(panel.window->isVisible());
    }

    void shouldComeBackWhereItWasMinimized()
    {
        Panel panel(PanelWindow::Manner::Window);
        panel.open();
        panel.window->showMinimized();
        QTRY_VERIFY(panel.window->isMinimized());
        panel.open();
        QTRY_VERIFY(!panel.window->isMinimized());
        QVERIFY(panel.window->isVisible());
        panel.window->showMinimized();
        QTRY_VERIFY(panel.window->isMinimized());
        panel.toggle();
        QTRY_VERIFY(!panel.window->isMinimized());
        QVERIFY(panel.window->isVisible());
    }

    void shouldStayAsItIsWhereTheIconComesWhileItIsOpen()
    {
        Panel panel(PanelWindow::Manner::Window);
        panel.open();
        panel.movePointerIn();
        panel.window->setManner(PanelWindow::Manner::Popup);
        panel.leave();
        QVERIFY(panel.staysOpen());
        Panel popup;
        popup.open();
        popup.movePointerIn();
        popup.window->setManner(PanelWindow::Manner::Window);
        popup.leave();
        QVERIFY(popup.closesByItself());
    }

    void shouldOpenAtAClickThatComesLater()
    {
        Panel panel;
        panel.open();
        panel.movePointerIn();
        panel.leave();
        QVERIFY(panel.closesByItself());
        QElapsedTimer elapsed;
        elapsed.start();
        QTRY_VERIFY(elapsed.elapsed() > 320);
        panel.toggle();
        QVERIFY(panel.window->isVisible());
    }

    // ---- how it looks ----

    void shouldHaveALineAroundIt()
    {
        Panel panel(PanelWindow::Manner::Window);
        panel.open();
        const QImage picture = pictureOf(*panel.window);
        const QColor paper = colorOf(Tone::Paper, orbitledge::ui::ColorScheme::Light);
        const QColor line = over(colorOf(Tone::Stroke, orbitledge::ui::ColorScheme::Light), paper);
        for (const QPoint &place : {QPoint(180, 0), QPoint(180, 479), QPoint(0, 240), QPoint(359, 240)})
            QVERIFY(std::abs(qGray(picture.pixel(place)) - qGray(line.rgb())) <= 1);
        QCOMPARE(picture.pixelColor(180, 478), paper);
    }

    void shouldHaveRoundCornersWhereItMay()
    {
        Panel panel;
        panel.open();
        QVERIFY(panel.window->testAttribute(Qt::WA_TranslucentBackground));
        QImage picture(panel.window->size(), QImage::Format_ARGB32_Premultiplied);
        picture.fill(Qt::transparent);
        panel.window->render(&picture, {}, {}, QWidget::DrawWindowBackground | QWidget::DrawChildren);
        for (const QPoint &corner : {QPoint(0, 0), QPoint(359, 0), QPoint(0, 479), QPoint(359, 479)})
            QCOMPARE(qAlpha(picture.pixel(corner)), 0);
        QCOMPARE(qAlpha(picture.pixel(6, 6)), 255);
        QCOMPARE(qAlpha(picture.pixel(180, 0)), 255);
    }
};

ORBITLEDGE_WIDGET_TEST_MAIN(PanelWindowTest)
#include "PanelWindowTest.moc"
