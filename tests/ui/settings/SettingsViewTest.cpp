#include "ui/settings/SettingsView.h"

#include "support/SettingsScenes.h"
#include "support/WidgetTestMain.h"
#include "ui/kit/Palette.h"
#include "ui/kit/ThemedLabel.h"
#include "ui/kit/Typography.h"
#include "ui/settings/NoteLabel.h"
#include "ui/settings/SettingsRow.h"
#include "ui/settings/SwitchRow.h"

#include <QAccessible>
#include <QClipboard>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSpinBox>
#include <QWheelEvent>
#include <QtTest/qtestspontaneevent.h>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace orbitledge::ui;
using namespace Qt::StringLiterals;

class SettingsViewTest : public QObject {
    Q_OBJECT

private:
    std::optional<StoreDesk> m_desk;
    std::unique_ptr<SettingsView> m_view;

    void open(qreal textScale = 1, const QByteArray &locale = "en_US")
    {
        m_view = std::make_unique<SettingsView>(*m_desk->store, localeNamed(locale), sampleAbout());
        if (locale.startsWith("ar"))
            m_view->setLayoutDirection(Qt::RightToLeft);
        applyColorScheme(*m_view, ui::ColorScheme::Light);
        applyTextScale(*m_view, textScale);
        m_view->resize(m_view->sizeHint());
        m_view->show();
        m_view->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_view.get()));
    }
    void openIn(const QString &scene)
    {
        for (const PanelScene &candidate : settingsScenes()) {
            if (candidate.name == scene)
                candidate.prepare(*m_desk);
        }
        QVERIFY(m_desk->store);
        open();
    }

    [[nodiscard]] QStringList texts() const
    {
        QStringList texts;
        for (const QWidget *widget : m_view->findChildren<QWidget *>()) {
            if (!widget->isVisible())
                continue;
            if (const auto *const label = qobject_cast<const ThemedLabel *>(widget))
                texts.append(label->text());
            else if (const auto *const note = qobject_cast<const QLabel *>(widget))
                texts.append(note->text());
        }
        return texts;
    }
    /// What is read out where it has the focus.
    static QString nameOf(QWidget *widget)
    {
        return widget->accessibleName().isEmpty()
            ? QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name)
            : widget->accessibleName();
    }
    template <typename Control> Control *control(const QString &name) const
    {
        for (Control *control : m_view->findChildren<Control *>()) {
            if (control->isVisible() && nameOf(control) == name)
                return control;
        }
        return nullptr;
    }
    [[nodiscard]] QPushButton *button(const QString &name) const { return control<QPushButton>(name); }
    [[nodiscard]] SwitchRow *toggle(const QString &name) const { return control<SwitchRow>(name); }
    [[nodiscard]] NoteLabel *note(const QString &text) const
    {
        for (NoteLabel *note : m_view->findChildren<NoteLabel *>()) {
            if (note->isVisible() && note->text() == text)
                return note;
        }
        return nullptr;
    }
    void choose(const QString &name, int index) const
    {
        auto *const box = control<QComboBox>(name);
        box->setFocus();
        box->setCurrentIndex(0);
        QTest::keyClick(box, Qt::Key_Home);
        for (int i = 0; i < index; ++i)
            QTest::keyClick(box, Qt::Key_Down);
    }
    [[nodiscard]] qsizetype plannings() const { return m_desk->center->calls.count(u"pending"_s); }

private Q_SLOTS:
    void init() { m_desk.emplace(); }
    void cleanup()
    {
        m_view.reset();
        m_desk.reset();
    }

    void shouldShowWhatIsSet()
    {
        m_desk->settings->setRefreshInterval(RefreshInterval::OneHour);
        m_desk->settings->setShowMenuBadge(false);
        m_desk->settings->setAppearance(Appearance::Dark);
        m_desk->settings->setNotificationLeadDays(0);
        openIn(u"well"_s);
        QStringList intervals;
        auto *const refresh = control<QComboBox>(u"Refresh"_s);
        for (int i = 0; i < refresh->count(); ++i)
            intervals.append(refresh->itemText(i));
        QCOMPARE(intervals, (QStringList{u"5 minutes"_s, u"15 minutes"_s, u"30 minutes"_s, u"1 hour"_s}));
        QCOMPARE(refresh->currentText(), u"1 hour"_s);
        QVERIFY(!toggle(u"Show urgent-renewal badge"_s)->isChecked());
        QCOMPARE(control<QComboBox>(u"Appearance"_s)->currentText(), u"Dark"_s);
        QVERIFY(toggle(u"Launch at login"_s)->isChecked());
        QVERIFY(toggle(u"Enable notifications"_s)->isChecked());
        QCOMPARE(control<QSpinBox>(u"Remind me"_s)->text(), u"0 days before"_s);
        const QStringList shown = texts();
        for (const QString &text : {u"General"_s, u"Renewal reminders"_s, u"Account"_s, u"About"_s,
                 u"Notifications are delivered at 09:00 local time."_s, u"Signed in as"_s,
                 sampleAmerican().email, u"Version"_s, u"1.0.0 (100)"_s, u"API"_s, u"api.example.com"_s,
                 u"Orbitledge checks for a new version on launch and roughly every six hours."_s})
            QVERIFY2(shown.contains(text), qPrintable(text));
    }

    void shouldKeepQuietWhereAllIsWell()
    {
        openIn(u"well"_s);
        for (const QString &text : texts())
            QVERIFY2(!text.contains(u"macOS"_s), qPrintable(text));
        for (const QString &name : {u"Open Login Items"_s, u"Open Notification Settings"_s, u"Get 1.4.2"_s})
            QVERIFY(button(name) == nullptr);
    }

    void shouldKeepWhatIsChosen()
    {
        openIn(u"well"_s);
        choose(u"Refresh"_s, 2);
        QCOMPARE(m_desk->settings->refreshInterval(), RefreshInterval::ThirtyMinutes);
        choose(u"Appearance"_s, 1);
        QCOMPARE(m_desk->settings->appearance(), Appearance::Light);
        toggle(u"Show urgent-renewal badge"_s)->click();
        QVERIFY(!m_desk->settings->showMenuBadge());
    }

    void shouldFollowWhatIsSetElsewhere()
    {
        openIn(u"well"_s);
        m_desk->settings->setRefreshInterval(RefreshInterval::FiveMinutes);
        m_desk->settings->setNotificationLeadDays(1);
        QCOMPARE(control<QComboBox>(u"Refresh"_s)->currentText(), u"5 minutes"_s);
        QCOMPARE(control<QSpinBox>(u"Remind me"_s)->text(), u"1 day before"_s);
    }

    void shouldFollowWhenItIsShownAgainWhatWasSetWhileItWasHidden()
    {
        openIn(u"well"_s);
        m_view->hide();
        m_desk->settings->setAppearance(Appearance::Dark);
        m_desk->settings->setShowMenuBadge(false);
        m_view->show();
        QCOMPARE(control<QComboBox>(u"Appearance"_s)->currentText(), u"Dark"_s);
        QVERIFY(!toggle(u"Show urgent-renewal badge"_s)->isChecked());
    }

    void shouldPlanAnewWithEachChangeOfTheLeadDays()
    {
        openIn(u"well"_s);
        auto *const days = control<QSpinBox>(u"Remind me"_s);
        QCOMPARE(days->minimum(), 0);
        QCOMPARE(days->maximum(), 14);
        days->setFocus();
        const QStringList sentences{u"2 days before"_s, u"1 day before"_s, u"0 days before"_s};
        for (const QString &sentence : sentences) {
            const qsizetype before = plannings();
            QTest::keyClick(days, Qt::Key_Down);
            QCOMPARE(days->text(), sentence);
            QCOMPARE(m_desk->settings->notificationLeadDays(), days->value());
            m_desk->settle();
            QCOMPARE(plannings(), before + 1);
        }
        days->selectAll();
        QTest::keyClicks(days, u"14"_s);
        m_desk->settle();
        QCOMPARE(m_desk->settings->notificationLeadDays(), 14);
    }

    void shouldNotPutBackWhatSomebodyTypesOver()
    {
        openIn(u"well"_s);
        auto *const days = control<QSpinBox>(u"Remind me"_s);
        days->setFocus();
        days->selectAll();
        QTest::keyClick(days, Qt::Key_Delete);
        const QString text = days->text();
        m_desk->settings->setShowMenuBadge(!m_desk->settings->showMenuBadge());
        m_desk->settle();
        QCOMPARE(days->text(), text);
        QTest::keyClicks(days, u"1"_s);
        QCOMPARE(m_desk->settings->notificationLeadDays(), 1);
    }

    void shouldComeBackAsItWasWhereItWasOnlyOutOfSight()
    {
        openIn(u"well"_s);
        auto *const days = control<QSpinBox>(u"Remind me"_s);
        days->setFocus();
        QShowEvent show;
        QSpontaneKeyEvent::setSpontaneous(&show);
        qApp->notify(m_view.get(), &show);
        QVERIFY(days->hasFocus());
        m_view->hide();
        m_view->show();
        QVERIFY(m_view->focusWidget() != days);
    }

    void shouldRemoveRemindersWhereTheyAreTurnedOff()
    {
        openIn(u"well"_s);
        QVERIFY(!m_desk->center->requests.isEmpty());
        toggle(u"Enable notifications"_s)->click();
        m_desk->settle();
        QVERIFY(!m_desk->settings->notificationsEnabled());
        QVERIFY(!toggle(u"Enable notifications"_s)->isChecked());
        QVERIFY(m_desk->center->requests.isEmpty());
    }

    void shouldAskAndPlanWhereRemindersAreTurnedOn()
    {
        m_desk->center->currentSettings.authorization = NotificationAuthorization::Authorized;
        showList(*m_desk, sampleList());
        m_desk->settle();
        open();
        toggle(u"Enable notifications"_s)->click();
        m_desk->settle();
        QVERIFY(m_desk->settings->notificationsEnabled());
        QVERIFY(m_desk->center->options.testFlag(NotificationOption::Alert));
        QVERIFY(!m_desk->center->requests.isEmpty());
    }

    void shouldTurnBackWhereThePersonSaysNo()
    {
        openIn(u"denied"_s);
        QVERIFY(texts().contains(
            u"macOS is blocking notifications for Orbitledge, so no reminders will appear."_s));
        toggle(u"Enable notifications"_s)->click();
        m_desk->settle();
        QVERIFY(!toggle(u"Enable notifications"_s)->isChecked());
        QVERIFY(note(
            u"macOS denied notifications for Orbitledge. Allow them in System Settings, then try again."_s));
    }

    void shouldTurnBackWhereNobodyCanBeAsked()
    {
        openIn(u"denied"_s);
        m_desk->center->permission = tl::make_unexpected(NotificationError{u"Nobody is there."_s});
        toggle(u"Enable notifications"_s)->click();
        m_desk->settle();
        QVERIFY(!toggle(u"Enable notifications"_s)->isChecked());
        QVERIFY(note(u"Could not request permission: Nobody is there."_s));
    }

    void shouldCarryOutTheLastWishWhilePermissionIsAskedFor()
    {
        m_desk->center->currentSettings.authorization = NotificationAuthorization::Authorized;
        showList(*m_desk, sampleList());
        m_desk->settle();
        open();
        m_desk->center->isSlowToDecide = true;
        SwitchRow *const reminders = toggle(u"Enable notifications"_s);
        reminders->click();
        QCOMPARE(m_desk->center->undecidedCount(), 1);
        m_desk->settings->setShowMenuBadge(false); // something else changes meanwhile
        QVERIFY(reminders->isChecked());
        reminders->click();
        QCOMPARE(m_desk->center->undecidedCount(), 1);
        m_desk->center->decideAll();
        m_desk->settle();
        QVERIFY(!m_desk->settings->notificationsEnabled());
        QVERIFY(!reminders->isChecked());
        QVERIFY(m_desk->center->requests.isEmpty());
    }

    void shouldTellWhichRemindersWaitAndWhyOthersFailed()
    {
        openIn(u"failing"_s);
        const QStringList shown = texts();
        for (const QString &text :
            {u"macOS limits how many reminders an app can queue, so the 30 furthest-out renewals are "
             "scheduled later, as nearer ones pass."_s,
                u"macOS rejected some reminders: The disk is full."_s,
                u"Could not send a test notification: The disk is full."_s,
                u"The login item could not be saved: The disk is full."_s})
            QVERIFY2(shown.contains(text), qPrintable(text));
    }

    void shouldLetMessagesBeCopied()
    {
        openIn(u"failing"_s);
        for (const QString &text : {u"macOS rejected some reminders: The disk is full."_s,
                 u"Could not send a test notification: The disk is full."_s}) {
            NoteLabel *const message = note(text);
            message->setFocus(Qt::TabFocusReason);
            QTest::keyClick(message, Qt::Key_A, Qt::ControlModifier);
            QCOMPARE(message->selectedText(), text);
            QTest::keyClick(message, Qt::Key_C, Qt::ControlModifier);
            QCOMPARE(QGuiApplication::clipboard()->text(), text);
        }
    }

    void shouldSendATest()
    {
        openIn(u"well"_s);
        QPushButton *const test = button(u"Send Test Notification"_s);
        test->click();
        m_desk->settle();
        NoteLabel *const message = note(u"Test notification sent \u2014 it should appear in a moment."_s);
        QVERIFY(message);
        // Where the person is looking, in the same group.
        QCOMPARE(message->parentWidget(), test->parentWidget());
        const auto *const viewport = m_view->findChild<QScrollArea *>()->viewport();
        QTRY_VERIFY(viewport->rect().contains(QRect(message->mapTo(viewport, QPoint()), message->size())));
    }

    void shouldRevealAMessageThatIsOutOfSight()
    {
        openIn(u"denied"_s);
        m_view->resize(m_view->minimumSizeHint());
        QScrollArea *const scroll = m_view->findChild<QScrollArea *>();
        scroll->verticalScrollBar()->setValue(0);
        m_desk->workspace->hasNotificationSettings = false;
        button(u"Open Notification Settings"_s)->setFocus();
        button(u"Open Notification Settings"_s)->click();
        m_desk->settle();
        NoteLabel *const message
            = note(u"Could not open System Settings. Open it manually and look under Notifications."_s);
        QVERIFY(message);
        QTRY_VERIFY(scroll->viewport()->rect().contains(
            QRect(message->mapTo(scroll->viewport(), QPoint()), message->size())));
    }

    void shouldStayWhereThePersonIsWhenAMessageComesUpElsewhere()
    {
        openIn(u"well"_s);
        m_view->resize(m_view->minimumSizeHint());
        QScrollArea *const scroll = m_view->findChild<QScrollArea *>();
        control<QComboBox>(u"Refresh"_s)->setFocus();
        scroll->verticalScrollBar()->setValue(0);
        m_desk->center->refuse
            = [](const NotificationRequest &) { return std::optional(u"The disk is full."_s); };
        m_desk->store->synchroniseReminders();
        m_desk->settle();
        QVERIFY(note(u"macOS rejected some reminders: The disk is full."_s));
        QCoreApplication::processEvents();
        QCOMPARE(scroll->verticalScrollBar()->value(), 0);
    }

    void shouldTellWhereNothingWasDecidedYet()
    {
        openIn(u"signed-out"_s);
        QVERIFY(texts().contains(
            u"macOS has not granted notification permission yet, so no reminders will appear."_s));
        QVERIFY(button(u"Open Notification Settings"_s) == nullptr);
    }

    void shouldStartAtLoginOrTellWhyNot()
    {
        openIn(u"well"_s);
        SwitchRow *const launch = toggle(u"Launch at login"_s);
        launch->click();
        m_desk->settle();
        QCOMPARE(m_desk->loginItem->current, LoginItemStatus::NotRegistered);
        QVERIFY(!launch->isChecked());
        m_desk->loginItem->failure = u"The disk is full."_s;
        launch->click();
        m_desk->settle();
        QVERIFY(!launch->isChecked());
        NoteLabel *const failure = note(u"The disk is full."_s);
        QVERIFY(failure);
        QCOMPARE(failure->parentWidget(), launch->parentWidget());
        m_desk->loginItem->failure.reset();
        m_desk->loginItem->afterRegistering = LoginItemStatus::RequiresApproval;
        launch->click();
        m_desk->settle();
        QVERIFY(!launch->isChecked());
        QVERIFY(!note(u"The disk is full."_s));
        QVERIFY(note(u"macOS requires approval for this login item."_s));
        button(u"Open Login Items"_s)->click();
        QCOMPARE(m_desk->loginItem->log.last(), u"open settings"_s);
        m_desk->loginItem->hasSystemSettings = false;
        button(u"Open Login Items"_s)->click();
        m_desk->settle();
        QVERIFY(note(u"Could not open System Settings. Open it manually and look under Login Items."_s));
    }

    void shouldShowTheWishWhileTheLoginItemChanges()
    {
        openIn(u"well"_s);
        m_desk->loginItem->waits = true;
        SwitchRow *const launch = toggle(u"Launch at login"_s);
        launch->click();
        m_desk->settings->setShowMenuBadge(false);
        QVERIFY(!launch->isChecked());
        m_desk->loginItem->failure = u"The disk is full."_s;
        m_desk->loginItem->goOn();
        QTRY_VERIFY(launch->isChecked());
    }

    void shouldReadThePlatformsStateAnew()
    {
        openIn(u"well"_s);
        m_desk->loginItem->current = LoginItemStatus::RequiresApproval;
        m_desk->center->currentSettings.authorization = NotificationAuthorization::Denied;
        m_view->askPlatform();
        m_desk->settle();
        QVERIFY(!toggle(u"Launch at login"_s)->isChecked());
        QVERIFY(button(u"Open Login Items"_s));
        QVERIFY(button(u"Open Notification Settings"_s));
    }

    void shouldOpenPagesOfTheWebApplication()
    {
        openIn(u"denied"_s);
        QVERIFY(texts().contains(u"Version 1.4.2 is ready to download."_s));
        button(u"Open Orbitledge"_s)->click();
        button(u"Get 1.4.2"_s)->click();
        m_desk->settle();
        QCOMPARE(m_desk->workspace->opened,
            (QList<QUrl>{QUrl(u"https://example.com/"_s), QUrl(u"https://example.com/download"_s)}));
    }

    void shouldLookForUpdatesEachTime()
    {
        openIn(u"well"_s);
        QVERIFY(note(u"Last checked Mar 18, 9:41\u202fAM"_s));
        m_desk->releases->isSlow = true;
        m_desk->releases->manifest = sampleRelease(u"1.4.2"_s);
        const int before = m_desk->releases->fetches;
        m_desk->clock->set(at("2026-03-18T09:42:00Z"));
        QPushButton *const check = button(u"Check for Updates"_s);
        check->click();
        check->click(); // which is under way
        QCOMPARE(m_desk->releases->fetches, before + 1);
        QVERIFY(note(u"Checking\u2026"_s));
        m_desk->releases->answerAll();
        m_desk->settle();
        QVERIFY(note(u"Last checked Mar 18, 9:42\u202fAM"_s));
        QVERIFY(button(u"Get 1.4.2"_s));
        m_desk->releases->isSlow = false;
        check->click();
        QCOMPARE(m_desk->releases->fetches, before + 2);
        m_desk->settle();
    }

    void shouldSignOut()
    {
        openIn(u"well"_s);
        m_desk->api->isQuick = true;
        QPushButton *const signOut = button(u"Sign Out"_s);
        signOut->setFocus();
        signOut->click();
        m_desk->settle();
        QCOMPARE(m_desk->store->state().authState, AuthState::SignedOut);
        QVERIFY(button(u"Sign Out"_s) == nullptr);
        QVERIFY(!texts().contains(u"Signed in as"_s));
        QVERIFY(button(u"Open Orbitledge"_s)->hasFocus());
    }

    void shouldQuit()
    {
        openIn(u"signed-out"_s);
        QSignalSpy quit(m_view.get(), &SettingsView::quitRequested);
        button(u"Quit Orbitledge"_s)->click();
        QCOMPARE(quit.size(), 1);
    }

    void shouldNotBeSetByTheWheelThatScrolls()
    {
        openIn(u"well"_s);
        for (QWidget *field : {static_cast<QWidget *>(control<QComboBox>(u"Refresh"_s)),
                 static_cast<QWidget *>(control<QSpinBox>(u"Remind me"_s))}) {
            field->setFocus();
            QWheelEvent turn(QPointF(5, 5), field->mapToGlobal(QPointF(5, 5)), QPoint(), QPoint(0, -120),
                Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
            // Only those of a real wheel go on to parents.
            QSpontaneKeyEvent::setSpontaneous(&turn);
            qApp->notify(field, &turn);
        }
        QCOMPARE(m_desk->settings->refreshInterval(), RefreshInterval::FifteenMinutes);
        QCOMPARE(m_desk->settings->notificationLeadDays(), 3);
        const QScrollBar *const bar = m_view->findChild<QScrollArea *>()->verticalScrollBar();
        QVERIFY2(bar->value() > 0, QByteArray::number(bar->maximum()).constData());
    }

    void shouldGoThroughEverythingWithTab()
    {
        openIn(u"denied"_s);
        QStringList names;
        do {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            names.append(nameOf(QApplication::focusWidget()));
        } while (names.size() < 30 && (names.size() < 2 || names.last() != names.first()));
        QCOMPARE(names,
            (QStringList{u"Refresh"_s, u"Show urgent-renewal badge"_s, u"Appearance"_s, u"Launch at login"_s,
                u"Open Login Items"_s, u"Enable notifications"_s, u"Open Notification Settings"_s,
                u"Remind me"_s, u"Send Test Notification"_s,
                u"macOS denied notifications for Orbitledge. Allow them in System Settings, then try again."_s,
                u"Open Orbitledge"_s, u"Sign Out"_s, u"Quit Orbitledge"_s, u"Get 1.4.2"_s,
                u"Check for Updates"_s, u"Refresh"_s}));
    }

    void shouldTellAssistiveTechnologyWhatThingsAre()
    {
        openIn(u"well"_s);
        const auto *const badge
            = QAccessible::queryAccessibleInterface(toggle(u"Show urgent-renewal badge"_s));
        QCOMPARE(badge->role(), QAccessible::CheckBox);
        QVERIFY(badge->state().checkable && badge->state().checked);
        const auto *const days = QAccessible::queryAccessibleInterface(control<QSpinBox>(u"Remind me"_s));
        QCOMPARE(days->role(), QAccessible::SpinBox);
        QCOMPARE(days->text(QAccessible::Value), u"3 days before"_s);
        auto *const refresh = QAccessible::queryAccessibleInterface(control<QComboBox>(u"Refresh"_s));
        const auto labels = refresh->relations(QAccessible::Label);
        QCOMPARE(labels.size(), 1);
        QCOMPARE(labels.first().first->text(QAccessible::Name), u"Refresh"_s);
    }

    void shouldBeginNumbersWhereTextsBegin()
    {
        openIn(u"well"_s);
        auto *const text = control<QSpinBox>(u"Remind me"_s)->findChild<QLineEdit *>();
        const auto cursor
            = [&] { return text->inputMethodQuery(Qt::ImCursorRectangle).toRectF().center().x(); };
        const qreal quarter = text->width() / 4.0;
        for (int i = 0; i < 2; ++i) {
            m_view->setLayoutDirection(Qt::LeftToRight);
            QCoreApplication::processEvents();
            text->home(false);
            QCOMPARE_LT(cursor(), quarter);
            m_view->setLayoutDirection(Qt::RightToLeft);
            QCoreApplication::processEvents();
            text->end(false);
            QCOMPARE_GT(cursor(), 3 * quarter);
        }
    }

    void shouldCutNothingOff_data()
    {
        QTest::addColumn<int>("scene");
        QTest::addColumn<qreal>("textScale");
        QTest::addColumn<bool>("isNarrow");
        QTest::addColumn<QByteArray>("locale");
        const auto scenes = settingsScenes();
        for (int i = 0; i < int(scenes.size()); ++i) {
            for (const qreal scale : {1.0, 1.5, 2.0}) {
                const QByteArray name = scenes[std::size_t(i)].name.toLatin1();
                QTest::addRow("%s at %g", name.constData(), scale)
                    << i << scale << false << QByteArray("en_US");
                QTest::addRow("%s at %g, narrow", name.constData(), scale)
                    << i << scale << true << QByteArray("en_US");
            }
            for (const char *locale : {"de_DE", "ar_EG", "ja_JP"})
                QTest::addRow("%s at 2 in %s", scenes[std::size_t(i)].name.toLatin1().constData(), locale)
                    << i << 2.0 << false << QByteArray(locale);
        }
    }
    void shouldCutNothingOff()
    {
        QFETCH(int, scene);
        QFETCH(qreal, textScale);
        QFETCH(bool, isNarrow);
        QFETCH(QByteArray, locale);
        m_desk->calendar = [&] { return Calendar(zoneNamed("UTC"), localeNamed(locale)); };
        settingsScenes()[std::size_t(scene)].prepare(*m_desk);
        open(textScale, locale);
        if (isNarrow)
            m_view->resize(m_view->minimumSizeHint());
        QCoreApplication::processEvents();
        int seen = 0;
        for (const QWidget *widget : m_view->findChildren<QWidget *>()) {
            const auto *const label = qobject_cast<const ThemedLabel *>(widget);
            const auto *const note = qobject_cast<const QLabel *>(widget);
            const auto *const button = qobject_cast<const QAbstractButton *>(widget);
            const bool isField = qobject_cast<const QComboBox *>(widget) != nullptr
                || qobject_cast<const QSpinBox *>(widget) != nullptr;
            if (!widget->isVisible() || (!label && !note && !button && !isField))
                continue;
            ++seen;
            const QByteArray who = widget->metaObject()->className() + QByteArray(" ")
                + (label       ? label->text()
                        : note ? note->text()
                               : widget->accessibleName())
                      .toUtf8();
            const QRect place(widget->mapTo(m_view.get(), QPoint()), widget->size());
            QVERIFY2(place.left() >= 0 && place.right() < m_view->width(), who.constData());
            if (widget->hasHeightForWidth())
                QVERIFY2(widget->height() >= widget->heightForWidth(widget->width()), who.constData());
            else
                QVERIFY2(widget->width() >= widget->minimumSizeHint().width()
                        && widget->height() >= widget->minimumSizeHint().height(),
                    who.constData());
            const int right = widget->parentWidget()->width();
            QVERIFY2(widget->geometry().right() < right, who.constData());
        }
        QVERIFY(seen > 20);
    }
};

ORBITLEDGE_WIDGET_TEST_MAIN(SettingsViewTest)
#include "SettingsViewTest.moc"
