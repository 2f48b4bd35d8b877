#include "ui/panel/SubscriptionRow.h"

#include "platform/OneShot.h"
#include "support/PanelScenes.h"
#include "support/Pixels.h"
#include "support/WidgetTestMain.h"
#include "ui/kit/CompactIconButton.h"
#include "ui/kit/Palette.h"
#include "ui/kit/ProgressIndicator.h"
#include "ui/kit/Typography.h"
#include "ui/panel/PanelAccessibility.h"
#include "ui/panel/PanelTexts.h"
#include "ui/panel/RowMeasures.h"

#include <QAccessible>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>

#include <optional>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace orbitledge::ui;
using namespace Qt::StringLiterals;

class SubscriptionRowTest : public QObject {
    Q_OBJECT

private:
    struct Desk {
        QWidget window;
        SubscriptionRow *row;
        QStringList calls;
        std::vector<std::shared_ptr<OneShot<bool>>> waiting;
        PanelTexts texts{localeNamed("en_US")};

        Desk()
            : row(new SubscriptionRow({
                                          .openInWeb = [this](QUuid) { calls.append(u"open"_s); },
                                          .cancel = [this](QUuid) { return held(u"cancel"_s); },
                                          .uncancel = [this](QUuid) { return held(u"uncancel"_s); },
                                      },
                  nullptr, &window))
        {
            installPanelAccessibility();
            applyTextScale(window, 1);
            applyColorScheme(window, ColorScheme::Light);
            window.setAutoFillBackground(true);
            window.resize(360, 100);
            row->setGeometry(0, 0, 360, 44);
            window.show();
            window.activateWindow();
            if (!QTest::qWaitForWindowActive(&window))
                qFatal("the window does not become active");
            // The first window of all is entered without the pointer having moved, and what it came over then
            // is left only once it was moved there.
            for (const QPoint place : {QPoint(60, 20), QPoint(350, 90)})
                QTest::mouseMove(&window, place);
        }
        ~Desk() { answerAll(); }

        void answerAll()
        {
            for (const auto &answer : std::exchange(waiting, {}))
                answer->settle(true);
            QCoreApplication::processEvents();
        }

        void show(const Subscription &subscription, std::optional<qint64> days = 1)
        {
            row->setContent(
                rowOf({.subscription = SubscriptionRef({subscription}, 0), .daysUntilRenewal = days},
                    u"USD"_s, texts.dates, texts.money));
        }
        void show() { show(SampleSubscription(u"Tidewater Music"_s).costs(u"10.99"_s)); }

        template <typename Widget> [[nodiscard]] Widget *part(const QString &name = QString()) const
        {
            for (Widget *const widget : row->findChildren<Widget *>()) {
                if ((name.isEmpty() || widget->accessibleName() == name) && widget->isVisible())
                    return widget;
            }
            return nullptr;
        }
        [[nodiscard]] bool hasButton(const QString &name) const
        {
            return part<CompactIconButton>(name) != nullptr;
        }
        [[nodiscard]] QMessageBox *question() const { return window.findChild<QMessageBox *>(); }
        void answerQuestion(const QString &text) const
        {
            for (QAbstractButton *const button : question()->buttons()) {
                if (button->text() == text)
                    return button->click();
            }
            qFatal("the question has no such answer");
        }

    private:
        // A free coroutine of the test's life.
        QCoro::Task<void> held(QString call)
        {
            calls.append(call);
            auto answer = std::make_shared<OneShot<bool>>();
            waiting.push_back(answer);
            (void)co_await answer->settled();
        }
    };

    std::optional<Desk> m_desk;

private Q_SLOTS:
    void init() { m_desk.emplace(); }
    void cleanup() { m_desk.reset(); }

    void shouldOpenThePageWhereItIsClicked()
    {
        m_desk->show();
        QTest::mouseClick(m_desk->row, Qt::LeftButton, {}, {60, 20});
        QCOMPARE(m_desk->calls, QStringList{u"open"_s});
    }

    void shouldShowItsButtonsToThePointerAndTheKeyboard()
    {
        m_desk->show();
        QVERIFY(!m_desk->hasButton(u"Open Tidewater Music in Web"_s));
        QTest::mouseMove(m_desk->row, {50, 20});
        QTRY_VERIFY(m_desk->hasButton(u"Open Tidewater Music in Web"_s));
        QVERIFY(m_desk->hasButton(u"Cancel Tidewater Music"_s));
        QTest::mouseMove(&m_desk->window, {350, 90});
        QTRY_VERIFY(!m_desk->hasButton(u"Open Tidewater Music in Web"_s));

        m_desk->row->setFocus(Qt::TabFocusReason);
        QTRY_VERIFY(m_desk->hasButton(u"Open Tidewater Music in Web"_s));
        QVERIFY(m_desk->row->focusNextControl(true));
        QVERIFY(m_desk->hasButton(u"Open Tidewater Music in Web"_s));
        QVERIFY(m_desk->row->focusNextControl(true));
        QVERIFY(!m_desk->row->focusNextControl(true));
        QVERIFY(m_desk->row->hasFocusWithin());
        m_desk->window.setFocus();
        QTRY_VERIFY(!m_desk->hasButton(u"Open Tidewater Music in Web"_s));
    }

    void shouldLoseNoKeyToItsMotion()
    {
        m_desk->show();
        m_desk->window.setFocus();
        QTest::mouseMove(m_desk->row, {50, 20});
        QTRY_VERIFY(m_desk->hasButton(u"Open Tidewater Music in Web"_s));
        QTest::mouseMove(&m_desk->window, {350, 90});
        QTRY_VERIFY(!m_desk->hasButton(u"Open Tidewater Music in Web"_s));
        auto *const style = static_cast<Style *>(QApplication::style());
        style->setMotion(Style::Motion::Full);
        m_desk->row->setFocus(Qt::TabFocusReason);
        // One right after the other, before anything has moved.
        for (int i = 0; i < 2; ++i)
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Right);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        style->setMotion(Style::Motion::Reduced);
        QVERIFY(m_desk->question() != nullptr);
        QVERIFY(m_desk->calls.isEmpty());
    }

    void shouldOfferOnlyWhatCanBeDone()
    {
        m_desk->show(SampleSubscription(u"Old Gazette"_s).withStatus(u"cancelled"_s));
        m_desk->row->setFocus(Qt::TabFocusReason);
        QTRY_VERIFY(m_desk->hasButton(u"Uncancel Old Gazette"_s));
        m_desk->show(SampleSubscription(u"Puzzle Club"_s).withStatus(u"paused"_s));
        QVERIFY(m_desk->hasButton(u"Open Puzzle Club in Web"_s));
        int visible = 0;
        for (const CompactIconButton *button : m_desk->row->findChildren<CompactIconButton *>())
            visible += button->isVisible() ? 1 : 0;
        QCOMPARE(visible, 1);
    }

    void shouldAskBeforeItCancels()
    {
        m_desk->show();
        m_desk->row->requestMutation();
        QVERIFY(m_desk->question() != nullptr);
        QCOMPARE(m_desk->question()->text(), u"Cancel Tidewater Music?"_s);
        QCOMPARE(m_desk->question()->informativeText(),
            u"This marks the subscription as cancelled in Orbitledge. It does not contact the merchant."_s);
        QVERIFY(m_desk->calls.isEmpty());
        // The harmless answer is the one that Return and Escape give.
        QCOMPARE(m_desk->question()->defaultButton()->text(), u"Keep subscription"_s);
        QCOMPARE(m_desk->question()->escapeButton()->text(), u"Keep subscription"_s);
        // Not twice.
        m_desk->row->requestMutation();
        QCOMPARE(m_desk->window.findChildren<QMessageBox *>().size(), 1);

        m_desk->answerQuestion(u"Keep subscription"_s);
        QTRY_VERIFY(m_desk->question() == nullptr);
        QVERIFY(m_desk->calls.isEmpty());
        m_desk->row->requestMutation();
        m_desk->answerQuestion(u"Cancel subscription"_s);
        QCOMPARE(m_desk->calls, QStringList{u"cancel"_s});
        QVERIFY(m_desk->row->isWorking());
    }

    void shouldNotShowMarkupOfANameInTheQuestion()
    {
        m_desk->show(SampleSubscription(u"<b>Bold</b> & Co"_s));
        m_desk->row->requestMutation();
        QCOMPARE(m_desk->question()->textFormat(), Qt::PlainText);
    }

    void shouldDoOneThingAtATime()
    {
        m_desk->show(SampleSubscription(u"Old Gazette"_s).withStatus(u"cancelled"_s));
        m_desk->row->requestMutation();
        m_desk->row->requestMutation();
        QCOMPARE(m_desk->calls, QStringList{u"uncancel"_s});
        QVERIFY(m_desk->row->isWorking());
        QVERIFY(m_desk->part<ProgressIndicator>() != nullptr);
        m_desk->answerAll();
        QVERIFY(!m_desk->row->isWorking());
        QTRY_VERIFY(m_desk->part<ProgressIndicator>() == nullptr);
        m_desk->row->requestMutation();
        QCOMPARE(m_desk->calls.size(), 2);
    }

    void shouldNotTakeTheEndOfAnothersChangeForItsOwn()
    {
        m_desk->show(SampleSubscription(u"Old Gazette"_s).withStatus(u"cancelled"_s));
        m_desk->row->requestMutation();
        m_desk->show(SampleSubscription(u"Older Gazette"_s).withStatus(u"cancelled"_s));
        QVERIFY(!m_desk->row->isWorking());
        m_desk->row->requestMutation();
        QVERIFY(m_desk->row->isWorking());
        m_desk->waiting[0]->settle(true);
        m_desk->waiting.erase(m_desk->waiting.begin());
        QCoreApplication::processEvents();
        QVERIFY(m_desk->row->isWorking());
    }

    void shouldMayBeDestroyedWhileItWorks()
    {
        m_desk->show(SampleSubscription(u"Old Gazette"_s).withStatus(u"cancelled"_s));
        m_desk->row->requestMutation();
        delete m_desk->row;
        m_desk->answerAll();
    }

    void shouldKeepItsQuestionOverARefresh()
    {
        m_desk->show();
        m_desk->row->requestMutation();
        m_desk->show();
        QVERIFY(m_desk->question() != nullptr);
        m_desk->show(SampleSubscription(u"Somebody else"_s));
        QTRY_VERIFY(m_desk->question() == nullptr);
    }

    void shouldOfferTheSameInItsMenu()
    {
        m_desk->show();
        const auto entries = [this] {
            m_desk->row->openContextMenu(m_desk->window.mapToGlobal(QPoint(10, 10)));
            auto *const menu = m_desk->row->findChild<QMenu *>();
            QStringList texts;
            for (const QAction *action : menu->actions())
                texts.append(action->text());
            return texts;
        };
        QCOMPARE(entries(), (QStringList{u"Open in Web"_s, u"Cancel…"_s}));
        m_desk->row->findChild<QMenu *>()->actions()[1]->trigger();
        QVERIFY(m_desk->question() != nullptr);
        m_desk->show(SampleSubscription(u"Old Gazette"_s).withStatus(u"cancelled"_s));
        QCOMPARE(entries(), (QStringList{u"Open in Web"_s, u"Uncancel"_s}));
        m_desk->row->findChild<QMenu *>()->actions()[1]->trigger();
        m_desk->row->findChild<QMenu *>()->actions()[0]->trigger();
        QCOMPARE(m_desk->calls, (QStringList{u"uncancel"_s, u"open"_s}));
        m_desk->show(SampleSubscription(u"Puzzle Club"_s).withStatus(u"paused"_s));
        QCOMPARE(entries(), QStringList{u"Open in Web"_s});
    }

    void shouldTellAssistiveTechnologyWhatItIs()
    {
        m_desk->show();
        QAccessibleInterface *const seen = QAccessible::queryAccessibleInterface(m_desk->row);
        QCOMPARE(seen->role(), QAccessible::Button);
        QCOMPARE(seen->text(QAccessible::Name), u"Tidewater Music"_s);
        QCOMPARE(seen->text(QAccessible::Value), u"$10.99, Mar 14 · Monthly, urgent renewal"_s);
        QCOMPARE(seen->text(QAccessible::Help), u"Opens this subscription in Orbitledge"_s);
        QCOMPARE(seen->text(QAccessible::Description),
            u"$10.99, Mar 14 · Monthly, urgent renewal. Opens this subscription in Orbitledge"_s);
        QAccessibleActionInterface *const actions = seen->actionInterface();
        QVERIFY(actions->actionNames().contains(u"Cancel Tidewater Music"_s));
        actions->doAction(QAccessibleActionInterface::pressAction());
        QTRY_COMPARE(m_desk->calls, QStringList{u"open"_s});
        actions->doAction(u"Cancel Tidewater Music"_s);
        QVERIFY(m_desk->question() != nullptr);
    }

    void shouldDoForAssistiveTechnologyWhatTheKeyboardDoes()
    {
        m_desk->show();
        QAccessibleActionInterface *const actions
            = QAccessible::queryAccessibleInterface(m_desk->row)->actionInterface();
        QVERIFY(actions->actionNames().contains(QAccessibleActionInterface::showMenuAction()));
        actions->doAction(QAccessibleActionInterface::showMenuAction());
        auto *const menu = m_desk->row->findChild<QMenu *>();
        QVERIFY(menu != nullptr);
        QTRY_VERIFY(menu->isVisible());
        menu->close();
        actions->doAction(QAccessibleActionInterface::setFocusAction());
        QVERIFY(m_desk->row->hasFocus());

        // What it is read out as is what it does, where the toolkit has no word for it.
        QCOMPARE(actions->localizedActionName(u"Cancel Tidewater Music"_s), u"Cancel Tidewater Music"_s);
        QVERIFY(!actions->localizedActionName(QAccessibleActionInterface::pressAction()).isEmpty());
    }

    void shouldMarkUrgencyAtItsEdge_data()
    {
        QTest::addColumn<qint64>("days");
        QTest::addColumn<QString>("status");
        QTest::addColumn<QColor>("color");
        const QColor ground = colorOf(Tone::Paper, ColorScheme::Light);
        QTest::newRow("urgent") << qint64{3} << u"active"_s << colorOf(Tone::Red, ColorScheme::Light);
        QTest::newRow("overdue") << qint64{-2} << u"active"_s << colorOf(Tone::Red, ColorScheme::Light);
        QTest::newRow("soon") << qint64{7} << u"active"_s << colorOf(Tone::Amber, ColorScheme::Light);
        QTest::newRow("later") << qint64{8} << u"active"_s << ground;
        QTest::newRow("paused") << qint64{0} << u"paused"_s << ground;
    }
    void shouldMarkUrgencyAtItsEdge()
    {
        QFETCH(qint64, days);
        QFETCH(QString, status);
        QFETCH(QColor, color);
        m_desk->show(SampleSubscription().withStatus(status), days);
        QCOMPARE(pictureOf(*m_desk->row).pixelColor(1, 22).name(), color.name());
        m_desk->row->setLayoutDirection(Qt::RightToLeft);
        QCOMPARE(pictureOf(*m_desk->row).pixelColor(358, 22).name(), color.name());
    }

    void shouldLetTheNameGiveWayAndNeverTheMoney()
    {
        // The cost is drawn whole: with a name that reaches it and without, its picture is the same.
        const auto costPicture = [this](const QString &name) {
            m_desk->show(SampleSubscription(name).costs(u"12345678.90"_s));
            return pictureOf(*m_desk->row).copy(240, 0, 120, 44);
        };
        QCOMPARE(costPicture(u"A very long name that goes on and on until there is no room at all"_s),
            costPicture(u"A"_s));
    }
};

ORBITLEDGE_WIDGET_TEST_MAIN(SubscriptionRowTest)
#include "SubscriptionRowTest.moc"
