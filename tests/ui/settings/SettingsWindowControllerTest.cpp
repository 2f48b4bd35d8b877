#include "ui/settings/SettingsWindowController.h"

#include "support/SettingsScenes.h"
#include "support/WidgetTestMain.h"
#include "ui/kit/Typography.h"
#include "ui/settings/SettingsView.h"
#include "ui/settings/SettingsWindow.h"

#include <QScreen>
#include <QSignalSpy>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace orbitledge::ui;
using namespace Qt::StringLiterals;

class SettingsWindowControllerTest : public QObject {
    Q_OBJECT

private:
    std::optional<StoreDesk> m_desk;
    std::shared_ptr<AppStore> m_store;
    std::unique_ptr<SettingsWindowController> m_controller;
    int m_dressed = 0;
    qreal m_textScale = 1;

    void make()
    {
        m_controller = std::make_unique<SettingsWindowController>(SettingsWindowController::Parts{
            .store = m_store,
            .defaults = m_desk->defaults,
            .locale = localeNamed("en_US"),
            .about = sampleAbout(),
            .dress =
                [this](QWidget *window) {
                    ++m_dressed;
                    applyTextScale(*window, m_textScale);
                },
        });
    }
    void show()
    {
        m_controller->show();
        QVERIFY(QTest::qWaitForWindowActive(m_controller->window()));
    }

private Q_SLOTS:
    void init()
    {
        m_dressed = 0;
        m_textScale = 1;
        m_desk.emplace();
        showList(*m_desk, sampleList());
        m_desk->settle();
        m_store = std::move(m_desk->store);
        make();
    }
    void cleanup()
    {
        m_controller.reset();
        m_store.reset();
        m_desk.reset();
    }

    void shouldMakeTheWindowWhenItIsFirstAskedFor()
    {
        QVERIFY(m_controller->window() == nullptr);
        show();
        QCOMPARE(m_controller->window()->windowTitle(), u"Orbitledge Settings"_s);
        QCOMPARE(m_controller->window()->size(), QSize(460, 620));
        QCOMPARE(m_dressed, 1);
        const QPoint middle = m_controller->window()->frameGeometry().center();
        const QPoint wanted = m_controller->window()->screen()->availableGeometry().center();
        QVERIFY((middle - wanted).manhattanLength() <= 24);
    }

    void shouldShowTheSameWindowAgain()
    {
        show();
        SettingsWindow *const first = m_controller->window();
        m_controller->show();
        QCOMPARE(m_controller->window(), first);
        first->close();
        QVERIFY(!first->isVisible());
        show();
        QCOMPARE(m_controller->window(), first);
        QVERIFY(first->isVisible());
        first->showMinimized();
        m_controller->show();
        QVERIFY(!first->isMinimized());
        QCOMPARE(m_dressed, 1);
    }

    void shouldCloseByTheKeyboard_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("modifiers");
        QTest::newRow("Escape") << int(Qt::Key_Escape) << int(Qt::NoModifier);
        QTest::newRow("Ctrl+W") << int(Qt::Key_W) << int(Qt::ControlModifier);
    }
    void shouldCloseByTheKeyboard()
    {
        QFETCH(int, key);
        QFETCH(int, modifiers);
        show();
        QTest::keyClick(m_controller->window(), Qt::Key(key), Qt::KeyboardModifiers(modifiers));
        QVERIFY(!m_controller->window()->isVisible());
    }

    void shouldQuitByTheKeyboard()
    {
        show();
        QSignalSpy quit(m_controller.get(), &SettingsWindowController::quitRequested);
        QTest::keyClick(m_controller->window(), Qt::Key_Q, Qt::ControlModifier);
        QCOMPARE(quit.size(), 1);
    }

    void shouldBeWhereItWasInTheNextRun()
    {
        show();
        m_controller->window()->setGeometry(70, 90, 500, 560);
        m_controller->window()->close();
        QVERIFY(m_desk->defaults->read<QString>(u"window.OrbitledgeSettingsWindow"_s).has_value());
        make();
        show();
        QCOMPARE(m_controller->window()->geometry(), QRect(70, 90, 500, 560));

        // Also where it was not closed before the end.
        m_controller->window()->setGeometry(40, 50, 480, 500);
        m_controller.reset();
        make();
        show();
        QCOMPARE(m_controller->window()->geometry(), QRect(40, 50, 480, 500));
    }

    void shouldTakeNoPlacementThatIsNone_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::newRow("empty") << QString();
        QTest::newRow("no placement") << u"somewhere"_s;
        QTest::newRow("cut off") << u"40 50 480"_s;
        QTest::newRow("too large a number") << u"40 50 99999999999 500"_s;
        QTest::newRow("on a screen that is gone") << u"5000 50 480 500"_s;
    }
    void shouldTakeNoPlacementThatIsNone()
    {
        QFETCH(QString, stored);
        m_desk->defaults->setValue(u"window.OrbitledgeSettingsWindow"_s, stored);
        show();
        QCOMPARE(m_controller->window()->size(), QSize(460, 620));
    }

    void shouldBeBroughtBackWhereTheScreenBecameSmaller()
    {
        m_desk->defaults->setValue(u"window.OrbitledgeSettingsWindow"_s, u"-100 300 480 780"_s);
        show();
        const QRect room = m_controller->window()->screen()->availableGeometry();
        QVERIFY(room.contains(m_controller->window()->geometry()));
        QCOMPARE(m_controller->window()->height(), 780);
    }

    void shouldStayOnTheScreenInLargeLetters()
    {
        m_textScale = 2;
        show();
        const QRect room = m_controller->window()->screen()->availableGeometry();
        QVERIFY(room.contains(m_controller->window()->geometry()));
        QVERIFY(m_controller->window()->width() > 460);
    }

    void shouldAskThePlatformEachTimeThatItBecomesActive()
    {
        show();
        m_desk->settle();
        QWidget other;
        other.show();
        other.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&other));
        m_desk->loginItem->current = LoginItemStatus::Enabled;
        m_desk->center->currentSettings.authorization = NotificationAuthorization::Denied;
        QVERIFY(!m_store->launchAtLogin().isEnabled());
        m_controller->window()->activateWindow();
        QTRY_VERIFY(m_store->launchAtLogin().isEnabled());
        QTRY_COMPARE(m_store->state().notificationAuthorization, NotificationAuthorization::Denied);
    }
};

ORBITLEDGE_WIDGET_TEST_MAIN(SettingsWindowControllerTest)
#include "SettingsWindowControllerTest.moc"
