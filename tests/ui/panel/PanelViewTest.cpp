#include "ui/panel/PanelView.h"

#include "support/PanelScenes.h"
#include "support/WidgetTestMain.h"
#include "ui/kit/ButtonBase.h"
#include "ui/kit/Palette.h"
#include "ui/kit/ThemedLabel.h"
#include "ui/kit/Typography.h"
#include "ui/panel/PanelBanner.h"
#include "ui/panel/QuickAddView.h"
#include "ui/panel/ScreenStack.h"
#include "ui/panel/SubscriptionList.h"
#include "ui/panel/WeekDayColumn.h"

#include <QAbstractSpinBox>
#include <QAccessible>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>

#include <optional>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace orbitledge::ui;
using namespace Qt::StringLiterals;

namespace {

const APIError offline = APIError::Transport{u"The Internet connection appears to be offline."_s};

const APIError unreadable = APIError::Decoding{u"Unreadable."_s};

/// The part of a widget that is not scrolled away.
QRect inView(const QWidget *widget)
{
    QRect seen = widget->rect();
    for (const QWidget *parent = widget->parentWidget(); parent != nullptr; parent = parent->parentWidget())
        seen &= QRect(widget->mapFrom(parent, QPoint()), parent->size());
    return seen;
}

/// Whether what lies above a widget may scroll it into view.
bool scrolls(const QWidget *widget)
{
    for (const QWidget *parent = widget->parentWidget(); parent != nullptr; parent = parent->parentWidget()) {
        if (qobject_cast<const QAbstractScrollArea *>(parent) != nullptr)
            return true;
    }
    return false;
}

/// One to type into, or to choose by; the part of another that is typed into counts with that.
bool isField(const QWidget *widget)
{
    return qobject_cast<const QComboBox *>(widget) != nullptr
        || qobject_cast<const QAbstractSpinBox *>(widget) != nullptr
        || (qobject_cast<const QLineEdit *>(widget) != nullptr
            && qobject_cast<const QAbstractSpinBox *>(widget->parentWidget()) == nullptr);
}

} // namespace

class PanelViewTest : public QObject {
    Q_OBJECT

private:
    std::optional<StoreDesk> m_desk;
    std::unique_ptr<PanelView> m_panel;

    void open(const QByteArray &locale = "en_US")
    {
        m_panel = std::make_unique<PanelView>(*m_desk->store, localeNamed(locale), nullptr);
        m_panel->resize(PanelView::panelSize);
        applyColorScheme(*m_panel, ColorScheme::Light);
        applyTextScale(*m_panel, 1);
        m_panel->show();
        activate(*m_panel);
    }
    static void activate(QWidget &window)
    {
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
    }

    [[nodiscard]] QStringList texts() const
    {
        QStringList texts;
        for (const ThemedLabel *label : m_panel->findChildren<ThemedLabel *>()) {
            if (label->isVisible())
                texts.append(label->text());
        }
        return texts;
    }
    [[nodiscard]] ButtonBase *button(const QString &name) const
    {
        for (ButtonBase *button : m_panel->findChildren<ButtonBase *>()) {
            const QString own
                = button->accessibleName().isEmpty() ? button->text() : button->accessibleName();
            if (button->isVisible() && own == name)
                return button;
        }
        return nullptr;
    }

    /// What a screen reader calls the one that has the keyboard; empty where none has.
    [[nodiscard]] static QString nameOfFocus()
    {
        const QAccessibleInterface *const seen
            = QAccessible::queryAccessibleInterface(QApplication::focusWidget());
        return seen != nullptr ? seen->text(QAccessible::Name) : QString();
    }

    /// The one that is shown; others may be on their way out.
    [[nodiscard]] QuickAddView *quickAdd() const
    {
        return qobject_cast<QuickAddView *>(m_panel->findChild<ScreenStack *>()->current());
    }
    /// Into the form that adds, and what was typed.
    QuickAddDraft typeThenLoseSession()
    {
        showList(*m_desk, sampleList());
        open();
        m_desk->store->setQuickAddPresented(true);
        typeInto(*m_panel, u"Service"_s, u"Tidewater Music"_s);
        typeInto(*m_panel, u"Price"_s, u"10,99"_s);
        typeInto(*m_panel, u"Currency"_s, u"CHF"_s);
        QuickAddDraft draft = quickAdd()->draft();
        pressIn(*m_panel, u"Add subscription"_s);
        m_desk->api->subscription = tl::make_unexpected(APIError(APIError::Unauthorized{}));
        m_desk->api->answerAll();
        m_desk->settle();
        if (m_panel->screen() != PanelScreen::SignIn)
            qFatal("the session goes on");
        return draft;
    }

private Q_SLOTS:
    void init() { m_desk.emplace(); }
    void cleanup()
    {
        m_panel.reset();
        m_desk.reset();
    }

    void shouldCheckTheSessionFirst()
    {
        m_desk->make();
        m_desk->store->start();
        m_desk->settle();
        open();
        QCOMPARE(m_panel->screen(), PanelScreen::CheckingSession);
        QCOMPARE(texts(), QStringList{u"Checking session…"_s});
        const QList<ThemedLabel *> labels = m_panel->findChildren<ThemedLabel *>();
        const auto label = std::ranges::find(labels, u"Checking session\u2026"_s, &ThemedLabel::text);
        QVERIFY(label != labels.end());
        QCOMPARE((*label)->accessibleName(), u"Checking your saved Orbitledge session"_s);
    }

    void shouldOfferAWayOutWhereTheSessionCannotBeChecked()
    {
        m_desk->make();
        failNext(*m_desk, offline);
        open();
        QCOMPARE(m_panel->screen(), PanelScreen::SessionRecovery);
        QVERIFY(texts().contains(u"Can’t reach Orbitledge"_s));
        QVERIFY(texts().contains(u"The Internet connection appears to be offline."_s));
        m_desk->api->calls.clear();
        button(u"Retry"_s)->click();
        m_desk->settle();
        QCOMPARE(m_desk->api->calls, (QStringList{u"fetchProfile"_s, u"fetchSubscriptions"_s}));
        QVERIFY(texts().contains(u"Orbitledge couldn’t check your saved session."_s));
        m_desk->api->answerAll();
        m_desk->settle();

        button(u"Sign in instead"_s)->click();
        m_desk->api->answerAll();
        m_desk->settle();
        QVERIFY(m_desk->api->calls.contains(u"signOut"_s));
        QCOMPARE(m_panel->screen(), PanelScreen::SignIn);
    }

    void shouldShowWhatIsAboutToCharge()
    {
        showList(*m_desk, sampleList());
        open();
        QCOMPARE(m_panel->screen(), PanelScreen::Timeline);
        const QStringList shown = texts();
        for (const QString &text : {u"March 2026"_s, u"$1,463.26"_s, u"/ month"_s, u"9 active"_s, u"$78.96"_s,
                 u"left to charge"_s, u"Partial total"_s, u"THIS WEEK"_s})
            QVERIFY2(shown.contains(text), qPrintable(text));
        const auto days = m_panel->findChildren<WeekDayColumn *>();
        QCOMPARE(days.size(), 7);
        QCOMPARE(days[3]->accessibleName(), u"Wednesday, March 18, 2026, 1 renewal"_s);
        QCOMPARE(days[5]->accessibleName(), u"Friday, March 20, 2026, 2 renewal"_s);
    }

    void shouldTellAndRetryWhereTheFetchFailed()
    {
        showList(*m_desk, sampleList());
        open();
        QVERIFY(!m_panel->findChild<PanelBanner *>()->isVisible());
        failNext(*m_desk, offline);
        QVERIFY(m_panel->findChild<PanelBanner *>()->isVisible());
        QVERIFY(texts().contains(u"Offline — showing data from 9:41\u202fAM"_s));
        QVERIFY(texts().contains(u"$1,463.26"_s));
        m_desk->api->calls.clear();
        m_desk->api->profile = sampleAmerican();
        button(u"Retry"_s)->click();
        m_desk->settle();
        // Still offline, as far as is known.
        QVERIFY(button(u"Retry"_s) != nullptr);
        m_desk->api->answerAll();
        m_desk->settle();
        QVERIFY(!m_panel->findChild<PanelBanner *>()->isVisible());
        m_desk->store->refresh();
        m_desk->settle();
        QVERIFY(texts().contains(u"Updating cached subscriptions…"_s));
        QVERIFY(button(u"Retry"_s) == nullptr);
    }

    void shouldKeepTheKeyboardFromOthersWhileItRetries()
    {
        showList(*m_desk, sampleList());
        failNext(*m_desk, unreadable);
        open();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QCOMPARE(nameOfFocus(), u"Retry"_s);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QVERIFY(button(u"Retry"_s) == nullptr);
        for (int i = 0; i < 2; ++i)
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QCOMPARE(nameOfFocus(), u"Upcoming renewals"_s);
        QVERIFY(m_desk->workspace->opened.isEmpty());
        m_desk->api->profile = tl::make_unexpected(unreadable);
        m_desk->api->answerAll();
        m_desk->settle();
        QCOMPARE(nameOfFocus(), u"Retry"_s);
        // What went well leaves nothing to come back to.
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        m_desk->api->profile = sampleAmerican();
        m_desk->api->answerAll();
        m_desk->settle();
        QVERIFY(!m_panel->findChild<PanelBanner *>()->isVisible());
        QCOMPARE(nameOfFocus(), u"Upcoming renewals"_s);
        failNext(*m_desk, unreadable);
        QVERIFY(button(u"Retry"_s) != nullptr);
        QCOMPARE(nameOfFocus(), u"Upcoming renewals"_s);
    }

    void shouldBeginAnewWhereItIsOpenedWhileItRetries()
    {
        showList(*m_desk, sampleList());
        failNext(*m_desk, unreadable);
        open();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        m_panel->hide();
        m_panel->show();
        m_desk->api->profile = tl::make_unexpected(unreadable);
        m_desk->api->answerAll();
        m_desk->settle();
        QVERIFY(button(u"Retry"_s) != nullptr);
        QCOMPARE(m_panel->focusWidget()->accessibleName(), u"Upcoming renewals"_s);
    }

    void shouldNotTakeTheKeyboardBackFromWhereItWent()
    {
        showList(*m_desk, sampleList());
        failNext(*m_desk, unreadable);
        open();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QCOMPARE(nameOfFocus(), u"Northlight Video"_s);
        m_desk->api->profile = tl::make_unexpected(unreadable);
        m_desk->api->answerAll();
        m_desk->settle();
        QVERIFY(button(u"Retry"_s) != nullptr);
        QCOMPARE(nameOfFocus(), u"Northlight Video"_s);
    }

    void shouldInviteToAddTheFirst()
    {
        showList(*m_desk, {});
        open();
        QVERIFY(texts().contains(u"No subscriptions yet"_s));
        QVERIFY(texts().contains(u"Add your first renewal to see what’s charging next."_s));
        button(u"Add a subscription"_s)->click();
        QVERIFY(m_desk->store->state().isQuickAddPresented);
        QCOMPARE(m_panel->screen(), PanelScreen::QuickAdd);
    }

    void shouldGoFromTopToBottomByTheKeyboard()
    {
        m_desk->releases->manifest = sampleRelease(u"1.4.2"_s);
        showList(*m_desk, sampleList());
        failNext(*m_desk, offline);
        open();
        QStringList names;
        for (int i = 0; i < 9; ++i) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            names.append(nameOfFocus());
        }
        QCOMPARE(names,
            (QStringList{u"Retry"_s, u"Northlight Video"_s, u"Open Northlight Video in Web"_s,
                u"Cancel Northlight Video"_s, u"Open the download page for version 1.4.2"_s,
                u"Dismiss the version 1.4.2 update notice"_s, u"Add"_s, u"Full calendar"_s, u"Settings"_s}));
    }

    void shouldGiveTheKeyboardBackToTheAddButton()
    {
        showList(*m_desk, sampleList());
        open();
        button(u"Add"_s)->click();
        QCOMPARE(m_panel->screen(), PanelScreen::QuickAdd);
        QVERIFY(m_panel->takeEscape());
        QCOMPARE(m_panel->screen(), PanelScreen::Timeline);
        QVERIFY(button(u"Add"_s)->hasFocus());
        // There is nothing more to close.
        QVERIFY(!m_panel->takeEscape());
    }

    void shouldOpenPagesOfTheWebApplication()
    {
        showList(*m_desk, sampleList());
        open();
        button(u"Full calendar"_s)->click();
        SubscriptionRow *const row = m_panel->findChild<SubscriptionList *>()->rows().first();
        row->click();
        m_desk->settle();
        const QString id = sampleList().first().id.toString(QUuid::WithoutBraces).toUpper();
        QCOMPARE(m_desk->workspace->opened,
            (QList<QUrl>{QUrl(u"https://example.com/calendar"_s),
                QUrl(u"https://example.com/subscriptions/"_s + id + u"/edit"_s)}));
    }

    void shouldOpenTheSettings()
    {
        showList(*m_desk, sampleList());
        open();
        QSignalSpy requested(m_panel.get(), &PanelView::settingsRequested);
        button(u"Settings"_s)->click();
        QCOMPARE(requested.size(), 1);
        QTest::keyClick(m_panel.get(), Qt::Key_Comma, Qt::ControlModifier);
        QTRY_COMPARE(requested.size(), 2); // a shortcut presses the button for a moment
    }

    void shouldLeadToTheSettingsFromEveryScreen_data() { sceneRows(false); }
    void shouldLeadToTheSettingsFromEveryScreen()
    {
        QFETCH(int, scene);
        panelScenes()[std::size_t(scene)].prepare(*m_desk);
        open();
        const QSignalSpy requested(m_panel.get(), &PanelView::settingsRequested);
        QTest::keyClick(m_panel.get(), Qt::Key_Comma, Qt::ControlModifier);
        QTRY_COMPARE(requested.size(), 1);
        QCoreApplication::processEvents();
        QCOMPARE(requested.size(), 1);
    }

    void shouldLeadOutByAMenuWhereNothingElseDoes()
    {
        m_desk->api->hasSession = false;
        m_desk->make();
        QCoro::waitFor(m_desk->store->start());
        open();
        const QSignalSpy settings(m_panel.get(), &PanelView::settingsRequested);
        const QSignalSpy quit(m_panel.get(), &PanelView::quitRequested);
        for (int choice = 1; choice <= 2; ++choice) {
            // As the menu key does, on what has the keyboard.
            QWidget *const place = button(u"Open Orbitledge on the web"_s);
            place->setFocus();
            QContextMenuEvent event(
                QContextMenuEvent::Keyboard, QPoint(5, 5), place->mapToGlobal(QPoint(5, 5)));
            QCoreApplication::sendEvent(place, &event);
            auto *const menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
            QVERIFY(menu != nullptr);
            QStringList words;
            for (const QAction *action : menu->actions())
                words.append(action->text() + u' ' + action->shortcut().toString());
            QCOMPARE(words, (QStringList{u"Settings Ctrl+,"_s, u"Quit Ctrl+Q"_s}));
            for (int i = 0; i < choice; ++i)
                QTest::keyClick(menu, Qt::Key_Down);
            QTest::keyClick(menu, Qt::Key_Return);
        }
        QCOMPARE(settings.size(), 1);
        QCOMPARE(quit.size(), 1);
    }

    void shouldGoOnWithTheFormAfterSigningInAgain_data()
    {
        QTest::addColumn<bool>("isHidden");
        QTest::newRow("while the panel is open") << false;
        QTest::newRow("while the panel is closed") << true;
    }
    void shouldGoOnWithTheFormAfterSigningInAgain()
    {
        QFETCH(bool, isHidden);
        const QuickAddDraft draft = typeThenLoseSession();
        m_panel->setVisible(!isHidden);
        m_desk->api->isQuick = true;
        QVERIFY(QCoro::waitFor(m_desk->store->signIn(u"a@b"_s, u"c"_s)));
        m_panel->show();
        QCOMPARE(m_panel->screen(), PanelScreen::QuickAdd);
        QCOMPARE(quickAdd()->draft(), draft);
        // It is there once.
        QVERIFY(m_panel->takeEscape());
        m_desk->store->setQuickAddPresented(true);
        QTRY_COMPARE(m_panel->findChildren<QuickAddView *>().size(), 1);
        QCOMPARE(quickAdd()->draft().name, QString());
    }

    void shouldNotShowSomebodyElseWhatWasTyped()
    {
        typeThenLoseSession();
        UserProfile other = sampleAmerican();
        other.id = QUuid::createUuid();
        m_desk->api->profile = other;
        m_desk->api->isQuick = true;
        QVERIFY(QCoro::waitFor(m_desk->store->signIn(u"other@b"_s, u"c"_s)));
        QCOMPARE(m_panel->screen(), PanelScreen::Timeline);
        m_desk->store->setQuickAddPresented(true);
        QCOMPARE(quickAdd()->draft().name, QString());
    }

    void shouldCloseTheFormOfWhoSignsOut()
    {
        showList(*m_desk, sampleList());
        open();
        m_desk->store->setQuickAddPresented(true);
        typeInto(*m_panel, u"Service"_s, u"Tidewater Music"_s);
        m_desk->api->isQuick = true;
        QCoro::waitFor(m_desk->store->signOut());
        QCOMPARE(m_panel->screen(), PanelScreen::SignIn);
        QVERIFY(QCoro::waitFor(m_desk->store->signIn(u"a@b"_s, u"c"_s)));
        QCOMPARE(m_panel->screen(), PanelScreen::Timeline);
        m_desk->store->setQuickAddPresented(true);
        QCOMPARE(quickAdd()->draft().name, QString());
    }

    void shouldOfferANewerVersion()
    {
        m_desk->releases->manifest = sampleRelease(u"1.4.2"_s);
        showList(*m_desk, sampleList());
        open();
        QVERIFY(texts().contains(u"Version 1.4.2 is available"_s));
        button(u"Open the download page for version 1.4.2"_s)->click();
        m_desk->settle();
        QCOMPARE(m_desk->workspace->opened, QList<QUrl>{QUrl(u"https://example.com/download"_s)});
        button(u"Dismiss the version 1.4.2 update notice"_s)->click();
        QVERIFY(!texts().contains(u"Version 1.4.2 is available"_s));
        QCOMPARE(m_desk->settings->dismissedUpdateVersion(), u"1.4.2"_s);
    }

    void shouldCostNothingWhileItIsHidden()
    {
        showList(*m_desk, sampleList());
        open();
        m_panel->hide();
        const QStringList before
            = m_panel->findChild<SubscriptionList *>()->rows().first()->content().name.split(u'-');
        QList<Subscription> renamed = sampleList();
        renamed[0].name = u"Renamed"_s;
        m_desk->api->subscriptions = renamed;
        m_desk->api->isQuick = true;
        QCoro::waitFor(m_desk->store->refresh());
        QCOMPARE(m_panel->findChild<SubscriptionList *>()->rows().first()->content().name, before.first());
        m_panel->show();
        QCOMPARE(m_panel->findChild<SubscriptionList *>()->rows().first()->content().name, u"Renamed"_s);
    }

    void shouldFollowTheStoreThroughAllScreens()
    {
        m_desk->api->hasSession = false;
        m_desk->make();
        open();
        QCOMPARE(m_panel->screen(), PanelScreen::CheckingSession);
        QCoro::waitFor(m_desk->store->start());
        QCOMPARE(m_panel->screen(), PanelScreen::SignIn);
        m_desk->api->isQuick = true;
        m_desk->api->profile = sampleAmerican();
        m_desk->api->subscriptions = sampleList();
        QCOMPARE(nameOfFocus(), u"Email"_s);
        (void)QCoro::waitFor(m_desk->store->signIn(u"a@b"_s, u"c"_s));
        QCOMPARE(m_panel->screen(), PanelScreen::Timeline);
        QCOMPARE(nameOfFocus(), u"Upcoming renewals"_s);
        QCoro::waitFor(m_desk->store->signOut());
        QCOMPARE(m_panel->screen(), PanelScreen::SignIn);
        QCOMPARE(nameOfFocus(), u"Email"_s);
        m_desk->settle();
    }

    void shouldBeginAboveEverythingHoweverTheListComes_data()
    {
        QTest::addColumn<bool>("isEarly");
        QTest::newRow("while another window has the keyboard") << true;
        QTest::newRow("under somebody's eyes") << false;
    }
    void shouldBeginAboveEverythingHoweverTheListComes()
    {
        QFETCH(const bool, isEarly);
        m_desk->make();
        m_desk->store->start();
        m_desk->settle();
        open();
        QCOMPARE(m_panel->screen(), PanelScreen::CheckingSession);
        QWidget other;
        if (isEarly) {
            other.show();
            activate(other);
        }
        m_desk->api->profile = sampleAmerican();
        m_desk->api->subscriptions = sampleList();
        m_desk->api->answerAll();
        m_desk->settle();
        m_desk->api->answerAll();
        m_desk->settle();
        QCOMPARE(m_panel->screen(), PanelScreen::Timeline);
        QCOMPARE(m_panel->isActiveWindow(), !isEarly);
        activate(*m_panel);
        QCOMPARE(nameOfFocus(), u"Upcoming renewals"_s);
    }

    void shouldTellWhatDoesNotWorkWhileNobodyIsSignedIn()
    {
        const QString notice = u"There is no session bus, so signing in and reminders will not work."_s;
        m_desk->api->hasSession = false;
        m_desk->make();
        open();
        QCoro::waitFor(m_desk->store->start());
        QCOMPARE(m_panel->screen(), PanelScreen::SignIn);
        QVERIFY(!texts().contains(notice));
        const auto *const screens = m_panel->findChild<ScreenStack *>();
        QCOMPARE(screens->geometry(), m_panel->rect());
        m_panel->setNotice(notice);
        QVERIFY(texts().contains(notice));
        for (const double scale : {1.0, 2.0}) {
            applyTextScale(*m_panel, scale);
            QCoreApplication::processEvents();
            const QList<ThemedLabel *> labels = m_panel->findChildren<ThemedLabel *>();
            const auto label = std::ranges::find(labels, notice, &ThemedLabel::text);
            QVERIFY(label != labels.end());
            const QRect place((*label)->mapTo(m_panel.get(), QPoint()), (*label)->size());
            QVERIFY(m_panel->rect().contains(place));
            QVERIFY(place.height() >= (*label)->heightForWidth(place.width()));
        }
        m_desk->api->isQuick = true;
        m_desk->api->profile = sampleAmerican();
        m_desk->api->subscriptions = sampleList();
        (void)QCoro::waitFor(m_desk->store->signIn(u"a@b"_s, u"c"_s));
        QCOMPARE(m_panel->screen(), PanelScreen::Timeline);
        QVERIFY(!texts().contains(notice));
        QCoreApplication::processEvents();
        QCOMPARE(screens->geometry(), m_panel->rect());
        m_desk->settle();
    }

    void shouldBeThereAtOnceWhenItIsOpened()
    {
        auto *const style = static_cast<Style *>(QApplication::style());
        style->setMotion(Style::Motion::Full);
        showList(*m_desk, sampleList());
        open();
        // Nothing of another screen lies over it.
        const QImage opened = m_panel->grab().toImage();
        QTest::qWait(250); // longer than screens take to change
        QCOMPARE(opened, m_panel->grab().toImage());
        // While it is looked at, screens fade into each other.
        m_desk->store->setQuickAddPresented(true);
        QVERIFY(m_panel->findChild<ScreenStack *>()->isChanging());
        QTRY_VERIFY(!m_panel->findChild<ScreenStack *>()->isChanging());
        style->setMotion(Style::Motion::Reduced);
        m_desk->store->setQuickAddPresented(false);
        QVERIFY(!m_panel->findChild<ScreenStack *>()->isChanging());
    }

    void shouldGiveEverythingThatTakesFocusAName_data() { sceneRows(false); }
    void shouldGiveEverythingThatTakesFocusAName()
    {
        QFETCH(int, scene);
        panelScenes()[std::size_t(scene)].prepare(*m_desk);
        open();
        for (QWidget *widget : m_panel->findChildren<QWidget *>()) {
            // What hands the keyboard on is a part of another one.
            if (!widget->isVisible() || widget->focusPolicy() == Qt::NoFocus
                || widget->focusProxy() != nullptr || qobject_cast<SubscriptionList *>(widget) != nullptr)
                continue;
            const QAccessibleInterface *const seen = QAccessible::queryAccessibleInterface(widget);
            QVERIFY2(seen != nullptr && !seen->text(QAccessible::Name).isEmpty(),
                widget->metaObject()->className());
            QVERIFY(seen->role() != QAccessible::NoRole && seen->role() != QAccessible::Client);
        }
    }

    void shouldBringWhatHasTheKeyboardIntoView_data() { sceneRows(false); }
    void shouldBringWhatHasTheKeyboardIntoView()
    {
        QFETCH(int, scene);
        panelScenes()[std::size_t(scene)].prepare(*m_desk);
        open();
        applyTextScale(*m_panel, 2);
        QCoreApplication::processEvents();
        // Round more than once, so that it goes up as well.
        for (int i = 0; i < 30 && QApplication::focusWidget() != nullptr; ++i) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            const QWidget *const focused = QApplication::focusWidget();
            const QRect seen = inView(focused);
            QVERIFY2(seen == focused->rect(),
                qPrintable(u"%1: %2 of %3"_s.arg(nameOfFocus()).arg(seen.height()).arg(focused->height())));
        }
    }

    void shouldStayWhereItIsScrolledToWhereItsWindowComesBack()
    {
        showList(*m_desk, sampleList());
        open();
        applyTextScale(*m_panel, 2);
        m_desk->store->setQuickAddPresented(true);
        QCoreApplication::processEvents();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
        QScrollBar *const bar = quickAdd()->findChild<QScrollArea *>()->verticalScrollBar();
        QTRY_VERIFY(bar->maximum() > 200);
        bar->setValue(bar->maximum());
        QVERIFY(inView(QApplication::focusWidget()).isEmpty());
        QWidget other;
        other.show();
        activate(other);
        activate(*m_panel);
        QVERIFY(QApplication::focusWidget() != nullptr);
        QCOMPARE(bar->value(), bar->maximum());
    }

    void shouldCutNothingOffAndLayNothingOverAnother_data() { sceneRows(true); }
    void shouldCutNothingOffAndLayNothingOverAnother()
    {
        QFETCH(int, scene);
        QFETCH(qreal, textScale);
        QFETCH(QByteArray, locale);
        const PanelScene shown = panelScenes()[std::size_t(scene)];
        m_desk->calendar = [&] { return Calendar(zoneNamed("UTC"), localeNamed(locale)); };
        shown.prepare(*m_desk);
        open(locale);
        m_panel->setLayoutDirection(locale.startsWith("ar") ? Qt::RightToLeft : Qt::LeftToRight);
        applyTextScale(*m_panel, textScale);
        if (shown.act)
            shown.act(*m_panel, *m_desk);
        QCoreApplication::processEvents();
        QCOMPARE(m_panel->size(), PanelView::panelSize);
        QCOMPARE(m_panel->findChild<ScreenStack *>()->size(), PanelView::panelSize);
        QList<QWidget *> things;
        for (QWidget *widget : m_panel->findChildren<QWidget *>()) {
            if (widget->isVisible()
                && (qobject_cast<ThemedLabel *>(widget) != nullptr
                    || qobject_cast<ButtonBase *>(widget) != nullptr
                    || qobject_cast<WeekDayColumn *>(widget) != nullptr || isField(widget)))
                things.append(widget);
        }
        QVERIFY(!things.isEmpty());
        for (const QWidget *widget : std::as_const(things)) {
            const QByteArray who = widget->metaObject()->className() + QByteArray(" ")
                + (qobject_cast<const ThemedLabel *>(widget) != nullptr
                        ? static_cast<const ThemedLabel *>(widget)->text().toUtf8()
                        : widget->accessibleName().toUtf8());
            const QRect place(widget->mapTo(m_panel.get(), QPoint()), widget->size());
            QVERIFY2(place.left() >= 0 && place.right() < 360, who.constData());
            if (!scrolls(widget))
                QVERIFY2(place.top() >= 0 && place.bottom() < 480, who.constData());
            // It has the room that it needs, unless it knows how to do with less.
            const auto *const label = qobject_cast<const ThemedLabel *>(widget);
            if (label != nullptr && label->look().overflow == ThemedLabel::Overflow::Wrap)
                QVERIFY2(widget->height() >= label->heightForWidth(widget->width()), who.constData());
            else if (label != nullptr && label->look().overflow == ThemedLabel::Overflow::Keep)
                QVERIFY2(widget->width() >= widget->sizeHint().width()
                        && widget->height() >= widget->sizeHint().height(),
                    who.constData());
            else if (label == nullptr && qobject_cast<const SubscriptionRow *>(widget) == nullptr)
                QVERIFY2(widget->width() >= widget->minimumSizeHint().width()
                        && widget->height() >= widget->minimumSizeHint().height(),
                    who.constData());
            for (const QWidget *other : std::as_const(things)) {
                if (other <= widget || other->parentWidget() != widget->parentWidget())
                    continue;
                QVERIFY2(!other->geometry().intersects(widget->geometry()),
                    (who + " over " + other->metaObject()->className()).constData());
            }
        }
    }

private:
    static void sceneRows(bool inAllManners)
    {
        QTest::addColumn<int>("scene");
        QTest::addColumn<qreal>("textScale");
        QTest::addColumn<QByteArray>("locale");
        const auto scenes = panelScenes();
        for (int i = 0; i < int(scenes.size()); ++i) {
            const QByteArray name = scenes[std::size_t(i)].name.toLatin1();
            QTest::newRow(name.constData()) << i << 1.0 << QByteArray("en_US");
            if (!inAllManners)
                continue;
            for (const qreal scale : {1.25, 1.5, 2.0})
                QTest::addRow("%s at %g", name.constData(), scale) << i << scale << QByteArray("en_US");
            for (const char *locale : {"de_DE", "ar_EG", "ja_JP"}) {
                for (const qreal scale : {1.0, 2.0})
                    QTest::addRow("%s at %g in %s", name.constData(), scale, locale)
                        << i << scale << QByteArray(locale);
            }
        }
    }
};

ORBITLEDGE_WIDGET_TEST_MAIN(PanelViewTest)
#include "PanelViewTest.moc"
