#include "ui/panel/QuickAddView.h"

#include "support/AccessibleTree.h"
#include "support/PanelScenes.h"
#include "support/WidgetTestMain.h"
#include "ui/kit/CompactIconButton.h"
#include "ui/kit/DateField.h"
#include "ui/kit/Field.h"
#include "ui/kit/PlainButton.h"
#include "ui/kit/PrimaryButton.h"
#include "ui/kit/Typography.h"
#include "ui/panel/ErrorLine.h"
#include "ui/panel/PanelAccessibility.h"
#include "ui/panel/PanelView.h"
#include "ui/panel/SuggestionButton.h"

#include <QComboBox>
#include <QScrollArea>
#include <QWheelEvent>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace orbitledge::ui;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

APIError refused(const QString &message = u"The service does not know this currency."_s)
{
    return APIError::RequestFailed{422, message};
}

/// The form in a window, for somebody who is signed in.
struct Form {
    StoreDesk desk;
    std::shared_ptr<FakeIntervalTimer> timer = std::make_shared<FakeIntervalTimer>();
    QWidget window;
    QPointer<QuickAddView> view;
    CompactIconButton *closing = nullptr;
    Field *name = nullptr;
    Field *price = nullptr;
    Field *currency = nullptr;
    QComboBox *cycle = nullptr;
    DateField *renewal = nullptr;
    ErrorLine *error = nullptr;
    PlainButton *cancel = nullptr;
    PrimaryButton *button = nullptr;
    /// What was read out.
    QStringList alerts;

    explicit Form(const std::function<void(StoreDesk &)> &prepare = nullptr)
    {
        if (prepare)
            prepare(desk);
        desk.makeSignedIn();
        desk.store->setQuickAddPresented(true);
        installPanelAccessibility();
        applyTextScale(window, 1);
        window.resize(PanelView::panelSize);
        view = new QuickAddView(*desk.store, nullptr, timer, &window);
        view->resize(window.size());
        closing = view->findChild<CompactIconButton *>();
        name = field(u"Service"_s);
        price = field(u"Price"_s);
        currency = field(u"Currency"_s);
        cycle = view->findChild<QComboBox *>();
        renewal = view->findChild<DateField *>();
        error = view->findChild<ErrorLine *>();
        cancel = view->findChild<PlainButton *>();
        button = view->findChild<PrimaryButton *>();
        QObject::connect(error, &ErrorLine::announced, [this](const QString &text) { alerts.append(text); });
    }
    Q_DISABLE_COPY_MOVE(Form)
    ~Form() { delete view; }

    [[nodiscard]] Field *field(const QString &accessibleName) const
    {
        const QList<Field *> fields = view->findChildren<Field *>();
        for (Field *const candidate : fields) {
            if (candidate->accessibleName() == accessibleName)
                return candidate;
        }
        return nullptr;
    }

    void show()
    {
        window.show();
        QApplication::setActiveWindow(&window);
        QCoreApplication::processEvents();
    }

    /// What could be sent.
    void fill() const
    {
        name->setText(u"Tidewater Music"_s);
        price->setText(u"10,99"_s);
        timer->stop();
    }

    [[nodiscard]] bool isPresented() const { return desk.store->state().isQuickAddPresented; }

    void suggest(const QList<SubscriptionTemplate> &templates)
    {
        desk.api->isQuick = true;
        desk.api->templates = templates;
        QCoro::waitFor(desk.store->searchTemplates(u"abc"_s));
        desk.api->isQuick = false;
        desk.api->calls.clear();
        QCoreApplication::processEvents();
    }

    [[nodiscard]] QList<SuggestionButton *> suggestions() const
    {
        QList<SuggestionButton *> seen;
        const QList<SuggestionButton *> all = view->findChildren<SuggestionButton *>();
        for (SuggestionButton *const suggestion : all) {
            if (suggestion->isVisible())
                seen.append(suggestion);
        }
        return seen;
    }

    /// And the fetch behind it.
    void answer(const tl::expected<Subscription, APIError> &subscription)
    {
        desk.api->subscription = subscription;
        desk.api->answer(u"create"_s);
        desk.api->isQuick = true;
        desk.api->answerAll();
        desk.settle();
        desk.api->isQuick = false;
    }
};

QWidget *focused()
{
    return QApplication::focusWidget();
}

} // namespace

class QuickAddViewTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // ---- what it begins with ----

    void shouldBeginEmpty()
    {
        Form form;
        form.show();
        const QuickAddDraft expected{
            .name = {},
            .price = {},
            .currency = u"EUR"_s,
            .billingCycle = u"monthly"_s,
            .renewalDate = {2026, 3, 18},
        };
        QCOMPARE(form.view->draft(), expected);
        QVERIFY(!form.button->isEnabled());
        QVERIFY(!form.error->isVisible());
        QVERIFY(form.suggestions().isEmpty());
        QTRY_COMPARE(focused(), form.name);
    }

    void shouldBeginWithTheDayThatItIsForThePerson()
    {
        Form form([](StoreDesk &desk) {
            desk.zone = "Pacific/Auckland"; // where it is the 19th
        });
        QCOMPARE(form.view->draft().renewalDate, (LocalDate{2026, 3, 19}));
    }

    void shouldWriteDaysAsTheRegionDoes_data()
    {
        QTest::addColumn<QByteArray>("locale");
        QTest::addColumn<QString>("text");
        QTest::newRow("United States") << QByteArray("en_US") << u"Mar 18, 2026"_s;
        QTest::newRow("United Kingdom") << QByteArray("en_GB") << u"18 Mar 2026"_s;
        QTest::newRow("Spain") << QByteArray("es_ES") << u"18 de mar de 2026"_s;
        QTest::newRow("Hungary") << QByteArray("hu_HU") << u"2026. márc. 18."_s;
        QTest::newRow("Japan") << QByteArray("ja_JP") << u"2026年3月18日"_s;
    }
    void shouldWriteDaysAsTheRegionDoes()
    {
        QFETCH(QByteArray, locale);
        QFETCH(QString, text);
        Form form([&](StoreDesk &desk) {
            desk.calendar = [&] { return Calendar(zoneNamed("UTC"), localeNamed(locale)); };
        });
        QCOMPARE(form.renewal->text(), text);
        QCOMPARE(form.view->draft().renewalDate, (LocalDate{2026, 3, 18}));
    }

    // ---- suggestions ----

    void shouldSearchWhenSomebodyPausesToType()
    {
        Form form;
        form.show();
        QTest::keyClicks(form.name, u"N"_s);
        QVERIFY(!form.timer->running);
        QTest::keyClicks(form.name, u"e"_s);
        QCOMPARE(form.timer->running, std::optional(300ms));
        QTest::keyClicks(form.name, u"t"_s);
        QVERIFY(form.desk.api->calls.isEmpty());
        form.timer->elapse();
        QCOMPARE(form.desk.api->calls, QStringList{u"search Net 10"_s});
        QVERIFY(!form.timer->running);
    }

    void shouldSearchOnceForAllThatIsTypedWithinThePause()
    {
        Form form;
        form.show();
        int starts = 0;
        for (const QChar letter : u"Northlight"_s) {
            QTest::keyClick(form.name, letter.toLatin1());
            starts += form.timer->running ? 1 : 0;
        }
        QCOMPARE(starts, 9);
        form.timer->elapse();
        form.timer->elapse();
        QCOMPARE(form.desk.api->calls, QStringList{u"search Northlight 10"_s});
    }

    void shouldSearchForTheNameWithoutBlanksAround()
    {
        Form form;
        form.name->setText(u"  Tide water "_s);
        form.timer->elapse();
        QCOMPARE(form.desk.api->calls, QStringList{u"search Tide water 10"_s});
    }

    void shouldNotSearchForWhatWasErased()
    {
        Form form;
        form.name->setText(u"Tide"_s);
        QVERIFY(form.timer->running);
        form.name->setText(u" T "_s);
        QVERIFY(!form.timer->running);
        QVERIFY(form.desk.api->calls.isEmpty());
    }

    void shouldLetTheLastSearchCount()
    {
        Form form;
        form.show();
        form.name->setText(u"Ti"_s);
        form.timer->elapse();
        form.name->setText(u"Tid"_s);
        form.timer->elapse();
        QCOMPARE(form.desk.api->waiting().size(), 2);
        form.desk.api->templates = sampleTemplates(2);
        form.desk.api->answerAt(1);
        form.desk.settle();
        QCOMPARE(form.suggestions().size(), 2);
        form.desk.api->templates = sampleTemplates(5);
        form.desk.api->answerAt(0);
        form.desk.settle();
        QCOMPARE(form.suggestions().size(), 2);
    }

    void shouldNotSearchAfterItWasClosed()
    {
        Form form;
        form.show();
        form.name->setText(u"Tide"_s);
        QTest::keyClick(form.name, Qt::Key_Escape);
        QVERIFY(!form.timer->running);
        Q_EMIT form.timer->elapsed(); // as if it had been on its way
        QVERIFY(form.desk.api->calls.isEmpty());
    }

    void shouldNotSearchAfterItWasClosedByOthers()
    {
        Form form;
        form.show();
        form.name->setText(u"Tide"_s);
        form.desk.store->setQuickAddPresented(false);
        QVERIFY(!form.timer->running);
        Q_EMIT form.timer->elapsed();
        QVERIFY(form.desk.api->calls.isEmpty());
    }

    void shouldOfferFiveSuggestions()
    {
        Form form;
        form.show();
        QList<SubscriptionTemplate> seven = sampleTemplates(5);
        seven += sampleTemplates(2);
        form.suggest(seven);
        QCOMPARE(form.suggestions().size(), 5);
        QCOMPARE(form.suggestions().at(0)->accessibleName(), u"Use Tidewater Music template"_s);
        QCOMPARE(form.suggestions().at(1)->accessibleName(), u"Use Tidy Notes template"_s);
        form.suggest(sampleTemplates(1));
        QCOMPARE(form.suggestions().size(), 1);
        form.suggest({});
        QVERIFY(form.suggestions().isEmpty());
    }

    void shouldTakeASuggestion()
    {
        Form form;
        form.show();
        QList<SubscriptionTemplate> found = sampleTemplates(2);
        found[1].typicalMonthlyCost = decimal(u"4.50"_s);
        found[1].availableBillingCycles = QList<QString>{u"Yearly"_s};
        form.suggest(found);
        QTest::mouseClick(form.suggestions().at(1), Qt::LeftButton);
        const QuickAddDraft expected{
            .name = u"Tidy Notes"_s,
            .price = u"4.5"_s,
            .currency = u"EUR"_s,
            .billingCycle = u"yearly"_s,
            .renewalDate = {2026, 3, 18},
        };
        QCOMPARE(form.view->draft(), expected);
        QCOMPARE(focused(), form.price);
        QVERIFY(form.button->isEnabled());
    }

    void shouldKeepThePriceThatWasTyped()
    {
        Form form;
        form.show();
        form.price->setText(u"10,99"_s);
        form.cycle->setCurrentIndex(2);
        QList<SubscriptionTemplate> found = sampleTemplates(1);
        found[0].availableBillingCycles = QList<QString>{u"daily"_s};
        form.suggest(found);
        QTest::mouseClick(form.suggestions().at(0), Qt::LeftButton);
        QCOMPARE(form.price->text(), u"10,99"_s);
        QCOMPARE(form.view->draft().billingCycle, u"weekly"_s);
    }

    // ---- what can be sent ----

    void shouldOnlyTakeWhatCanBeSent_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("price");
        QTest::addColumn<QString>("currency");
        QTest::addColumn<bool>("isPossible");
        const QString some = u"Tidewater Music"_s;
        QTest::newRow("all there") << some << u"9.99"_s << u"EUR"_s << true;
        QTest::newRow("a decimal comma") << some << u"9,99"_s << u"EUR"_s << true;
        QTest::newRow("a name of blanks") << u"  "_s << u"9.99"_s << u"EUR"_s << false;
        QTest::newRow("no price") << some << QString() << u"EUR"_s << false;
        QTest::newRow("zero") << some << u"0,00"_s << u"EUR"_s << false;
        QTest::newRow("below zero") << some << u"-1"_s << u"EUR"_s << false;
        QTest::newRow("no number") << some << u"9.99abc"_s << u"EUR"_s << false;
        QTest::newRow("two letters") << some << u"9.99"_s << u"EU"_s << false;
        QTest::newRow("four letters") << some << u"9.99"_s << u"EURO"_s << false;
    }
    void shouldOnlyTakeWhatCanBeSent()
    {
        QFETCH(QString, name);
        QFETCH(QString, price);
        QFETCH(QString, currency);
        QFETCH(bool, isPossible);
        Form form;
        form.show();
        form.name->setText(name);
        form.price->setText(price);
        form.currency->setText(currency);
        QCOMPARE(form.button->isEnabled(), isPossible);
        QTest::keyClick(form.price, Qt::Key_Return);
        QTest::mouseClick(form.button, Qt::LeftButton);
        QCOMPARE(form.desk.api->requests.size(), isPossible ? 1 : 0);
        QVERIFY(form.isPresented());
    }

    void shouldSendWhatWasTypedAndClose()
    {
        Form form;
        form.show();
        form.name->setText(u" Tidewater Music "_s);
        form.price->setText(u"10,99"_s);
        form.currency->setText(u"usd"_s);
        form.cycle->setCurrentIndex(3);
        form.renewal->setDate({2026, 12, 31});
        QTest::mouseClick(form.button, Qt::LeftButton);
        const CreateSubscriptionRequest expected{
            .name = u"Tidewater Music"_s,
            .cost = decimal(u"10.99"_s),
            .currency = u"usd"_s,
            .billingCycle = u"quarterly"_s,
            .nextBillingDate = LocalDate{2026, 12, 31},
            .categoryID = {},
            .trialEndDate = {},
            .trialNotificationDays = {},
        };
        QCOMPARE(form.desk.api->requests, QList{expected});
        QVERIFY(form.isPresented());
        QVERIFY(form.button->isBusy());
        QCOMPARE(form.button->text(), u"Adding…"_s);
        form.answer(sampleSubscription(9));
        QVERIFY(!form.isPresented());
        QVERIFY(!form.button->isBusy());
        QVERIFY(form.desk.api->calls.contains(u"fetchSubscriptions"_s));
    }

    void shouldSubmitOnce()
    {
        Form form;
        form.show();
        form.fill();
        QTest::keyClick(form.price, Qt::Key_Return);
        QTest::keyClick(form.price, Qt::Key_Return);
        QTest::keyClick(form.name, Qt::Key_Enter);
        QTest::mouseClick(form.button, Qt::LeftButton);
        QTest::keyClick(form.button, Qt::Key_Return);
        form.button->click();
        form.view->submit();
        QVERIFY(!form.view->canSubmit());
        QCOMPARE(form.desk.api->requests.size(), 1);
        form.answer(tl::make_unexpected(refused()));
        QTest::keyClick(form.price, Qt::Key_Return);
        QCOMPARE(form.desk.api->requests.size(), 2);
    }

    void shouldSubmitOnReturnWhereverTheKeyboardIs()
    {
        Form form;
        form.show();
        form.fill();
        form.suggest({});
        int submissions = 0;
        for (QWidget *const control : std::initializer_list<QWidget *>{
                 form.name, form.price, form.currency, form.cycle, form.renewal, form.button}) {
            control->setFocus(Qt::TabFocusReason);
            QTest::keyClick(focused(), Qt::Key_Return);
            QCOMPARE(form.desk.api->requests.size(), ++submissions);
            form.answer(tl::make_unexpected(refused()));
        }
        form.cancel->setFocus();
        QTest::keyClick(focused(), Qt::Key_Return);
        QCOMPARE(form.desk.api->requests.size(), submissions);
        QVERIFY(!form.isPresented());
    }

    void shouldKeepWhatWasTypedWhenItFails()
    {
        Form form;
        form.show();
        form.fill();
        form.cycle->setCurrentIndex(1);
        form.renewal->setDate({2027, 1, 2});
        const QuickAddDraft draft = form.view->draft();
        form.price->setFocus();
        form.view->submit();
        form.answer(tl::make_unexpected(refused()));
        QVERIFY(form.isPresented());
        QCOMPARE(form.view->draft(), draft);
        QCOMPARE(focused(), form.price);
        QVERIFY(form.button->isEnabled());
        QCOMPARE(form.button->text(), u"Add subscription"_s);
    }

    void shouldSayWhatWentWrong()
    {
        Form form;
        form.show();
        form.fill();
        for (int i = 1; i <= 2; ++i) {
            form.view->submit();
            QVERIFY(!form.error->isVisible());
            form.answer(tl::make_unexpected(refused(u"Not now."_s)));
            QVERIFY(form.error->isVisible());
            QCOMPARE(form.alerts.size(), i);
            QCOMPARE(form.alerts.last(), u"Could not add subscription. Not now."_s);
        }
        QVERIFY(
            accessibleTreeOf(*form.view).contains(u"AlertMessage: Could not add subscription. Not now."_s));
    }

    void shouldSayWhenItAppearsWhatWentWrongBefore()
    {
        Form form;
        form.desk.api->profile = tl::make_unexpected(refused(u"Out of order."_s));
        form.desk.api->isQuick = true;
        QCoro::waitFor(form.desk.store->refresh());
        QVERIFY(form.alerts.isEmpty());
        form.show();
        QCOMPARE(form.alerts, QStringList{u"Could not add subscription. Out of order."_s});
        QTRY_COMPARE(focused(), form.name);
    }

    void shouldLeaveSigningOutToTheStore()
    {
        Form form;
        form.show();
        form.fill();
        form.view->submit();
        form.answer(tl::make_unexpected(APIError(APIError::Unauthorized{})));
        QCOMPARE(form.desk.store->state().authState, AuthState::SignedOut);
        QCOMPARE(form.desk.store->state().errorMessage, u"Your session expired. Please sign in again."_s);
        QVERIFY(form.alerts.isEmpty());
    }

    // ---- closing ----

    void shouldCloseWithoutCreating_data()
    {
        QTest::addColumn<std::function<void(Form &)>>("close");
        const auto row = [](const char *name, const std::function<void(Form &)> &close) {
            QTest::newRow(name) << close;
        };
        row("the button", [](Form &form) { QTest::mouseClick(form.closing, Qt::LeftButton); });
        row("cancel", [](Form &form) { QTest::mouseClick(form.cancel, Qt::LeftButton); });
        row("Escape in a field", [](Form &form) { QTest::keyClick(form.price, Qt::Key_Escape); });
        row("Escape in the day", [](Form &form) { QTest::keyClick(form.renewal, Qt::Key_Escape); });
        row("Escape in the cycle", [](Form &form) { QTest::keyClick(form.cycle, Qt::Key_Escape); });
        row("Escape on the button", [](Form &form) { QTest::keyClick(form.button, Qt::Key_Escape); });
    }
    void shouldCloseWithoutCreating()
    {
        QFETCH(std::function<void(Form &)>, close);
        Form form;
        form.show();
        form.fill();
        close(form);
        QVERIFY(!form.isPresented());
        form.view->submit(); // as a key that comes behind might
        QVERIFY(form.desk.api->calls.isEmpty());
    }

    void shouldNotCloseTheNextFormWhenItIsDone()
    {
        StoreDesk desk;
        desk.makeSignedIn();
        PanelView panel(*desk.store, localeNamed("en_US"), nullptr);
        panel.resize(PanelView::panelSize);
        panel.show();
        desk.store->setQuickAddPresented(true);
        typeInto(panel, u"Service"_s, u"Tidewater Music"_s);
        typeInto(panel, u"Price"_s, u"5"_s);
        pressIn(panel, u"Add subscription"_s);
        const QPointer<QuickAddView> first = panel.findChild<QuickAddView *>();
        QVERIFY(panel.takeEscape());
        QCOMPARE(panel.screen(), PanelScreen::Timeline);
        desk.store->setQuickAddPresented(true);
        QTRY_VERIFY(!first);
        const QuickAddView *const second = panel.findChild<QuickAddView *>();
        QVERIFY(second->draft().name.isEmpty());
        desk.api->subscription = sampleSubscription(9);
        desk.api->isQuick = true;
        desk.api->answerAll();
        desk.settle();
        QCOMPARE(desk.store->state().subscriptions.size(), 3); // as the service lists them
        QVERIFY(desk.store->state().isQuickAddPresented);
        QCOMPARE(panel.screen(), PanelScreen::QuickAdd);
    }

    void shouldBeAnotherOneEachTime_data()
    {
        QTest::addColumn<bool>("isHidden");
        QTest::newRow("while the panel is open") << false;
        QTest::newRow("while the panel is closed") << true;
    }
    void shouldBeAnotherOneEachTime()
    {
        QFETCH(bool, isHidden);
        StoreDesk desk;
        desk.makeSignedIn();
        PanelView panel(*desk.store, localeNamed("en_US"), nullptr);
        panel.show();
        desk.store->setQuickAddPresented(true);
        typeInto(panel, u"Service"_s, u"Tidewater Music"_s);
        const QPointer<QuickAddView> first = panel.findChild<QuickAddView *>();
        panel.setVisible(!isHidden);
        desk.store->setQuickAddPresented(false);
        desk.store->setQuickAddPresented(true);
        panel.show();
        QTRY_VERIFY(!first);
        QCOMPARE(panel.findChild<QuickAddView *>()->draft().name, QString());
    }

    void shouldKeepWhatWasTypedWhileThePanelIsClosed()
    {
        StoreDesk desk;
        desk.makeSignedIn();
        PanelView panel(*desk.store, localeNamed("en_US"), nullptr);
        panel.show();
        desk.store->setQuickAddPresented(true);
        typeInto(panel, u"Service"_s, u"Tidewater Music"_s);
        panel.hide();
        panel.show();
        QCOMPARE(panel.findChild<QuickAddView *>()->draft().name, u"Tidewater Music"_s);
    }

    void shouldGoWhileItCreates_data()
    {
        QTest::addColumn<bool>("succeeds");
        QTest::newRow("in the end it succeeds") << true;
        QTest::newRow("in the end it fails") << false;
    }
    void shouldGoWhileItCreates()
    {
        QFETCH(bool, succeeds);
        Form form;
        form.show();
        form.fill();
        form.view->submit();
        form.timer->start(1s);
        delete form.view;
        QVERIFY(!form.timer->running);
        form.answer(succeeds ? tl::expected<Subscription, APIError>(sampleSubscription(9))
                             : tl::make_unexpected(refused()));
        QVERIFY(form.isPresented());
        QCOMPARE(form.desk.store->state().errorMessage.has_value(), !succeeds);
    }

    // ---- the keyboard, and other ways in ----

    void shouldAddByTheKeyboardAlone()
    {
        Form form;
        form.show();
        form.suggest(sampleTemplates(2));
        QTRY_COMPARE(focused(), form.name);
        QTest::keyClicks(focused(), u"Tid"_s);
        QTest::keyClick(focused(), Qt::Key_Tab);
        QTest::keyClick(focused(), Qt::Key_Tab);
        QCOMPARE(focused(), form.suggestions().at(1));
        QTest::keyClick(focused(), Qt::Key_Return);
        QVERIFY(form.desk.api->requests.isEmpty());
        QCOMPARE(focused(), form.price);
        QTest::keyClick(focused(), Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(focused(), u"12,5"_s);
        QTest::keyClick(focused(), Qt::Key_Tab);
        QTest::keyClick(focused(), Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(focused(), u"CHF"_s);
        QTest::keyClick(focused(), Qt::Key_Tab);
        QTest::keyClick(focused(), Qt::Key_Down);
        QTest::keyClick(focused(), Qt::Key_Tab);
        QTest::keyClick(focused(), Qt::Key_Up); // the month, which is what the region begins with
        QTest::keyClick(focused(), Qt::Key_Return);
        const CreateSubscriptionRequest expected{
            .name = u"Tidy Notes"_s,
            .cost = decimal(u"12.5"_s),
            .currency = u"CHF"_s,
            .billingCycle = u"yearly"_s,
            .nextBillingDate = LocalDate{2026, 4, 18},
            .categoryID = {},
            .trialEndDate = {},
            .trialNotificationDays = {},
        };
        QCOMPARE(form.desk.api->requests, QList{expected});
    }

    void shouldLeadTheKeyboardFromAboveToBelow()
    {
        Form form;
        form.show();
        form.fill();
        form.suggest(sampleTemplates(2));
        QTRY_COMPARE(focused(), form.name);
        for (QWidget *const next :
            std::initializer_list<QWidget *>{form.suggestions().at(0), form.suggestions().at(1), form.price,
                form.currency, form.cycle, form.renewal, form.cancel, form.button, form.closing, form.name}) {
            QTest::keyClick(focused(), Qt::Key_Tab);
            QCOMPARE(focused(), next);
            // Of a day, the keyboard visits month, day and year.
            if (next == form.renewal) {
                QTest::keyClick(focused(), Qt::Key_Tab);
                QTest::keyClick(focused(), Qt::Key_Tab);
                QCOMPARE(focused(), next);
            }
        }
    }

    void shouldHaveNamesForEverything()
    {
        Form form;
        form.show();
        form.suggest(sampleTemplates(1));
        const QStringList tree = accessibleTreeOf(*form.view);
        for (const QString &part : {u"Heading: New subscription"_s, u"Button: Close Quick Add"_s,
                 u"EditableText: Service"_s, u"Button: Use Tidewater Music template"_s,
                 u"EditableText: Price"_s, u"EditableText: Currency"_s, u"ComboBox: Monthly"_s,
                 u"SpinBox: Next renewal"_s, u"Button: Cancel"_s, u"Button: Add subscription"_s})
            QVERIFY2(tree.contains(part), qPrintable(part + u" is not among\n"_s + tree.join(u'\n')));
    }

    void shouldSayWhatTheCycleIsFor()
    {
        const Form form;
        QCOMPARE(form.cycle->accessibleName(), u"Billing cycle"_s);
        QAccessibleInterface *const picker = QAccessible::queryAccessibleInterface(form.cycle);
        const auto relations = picker->relations(QAccessible::Label);
        QCOMPARE(relations.size(), 1);
        QCOMPARE(relations.first().first->text(QAccessible::Name), u"Billing cycle"_s);
    }

    void shouldNotChangeWhatSomebodyScrollsOver()
    {
        Form form;
        form.show();
        const QuickAddDraft before = form.view->draft();
        for (QWidget *const control : std::initializer_list<QWidget *>{form.cycle, form.renewal}) {
            control->setFocus();
            QWheelEvent event(QPointF(5, 5), control->mapToGlobal(QPointF(5, 5)), QPoint(), QPoint(0, -120),
                Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
            QCoreApplication::sendEvent(control, &event);
        }
        QCOMPARE(form.view->draft(), before);
    }

    // ---- its room ----

    void shouldFitInLargeLetters_data()
    {
        QTest::addColumn<qreal>("scale");
        QTest::newRow("1") << 1.0;
        QTest::newRow("1.5") << 1.5;
        QTest::newRow("2") << 2.0;
    }
    void shouldFitInLargeLetters()
    {
        QFETCH(qreal, scale);
        Form form;
        applyTextScale(form.window, scale);
        form.show();
        form.fill();
        form.suggest(sampleTemplates(5));
        form.view->submit();
        form.answer(tl::make_unexpected(refused()));
        const QWidget *const content = form.view->findChild<QScrollArea *>()->widget();
        QCOMPARE_LE(content->width(), 360);
        const QList<QWidget *> parts = content->findChildren<QWidget *>();
        for (const QWidget *const part : parts) {
            if (!part->isVisible() || part->isWindow() || qobject_cast<const QLineEdit *>(part) != nullptr)
                continue;
            const QRect place(part->mapTo(content, QPoint()), part->size());
            QVERIFY(content->rect().contains(place));
            if (part->sizePolicy().hasHeightForWidth())
                QCOMPARE_GE(part->height(), part->heightForWidth(part->width()));
        }
        for (const QWidget *const button : std::initializer_list<const QWidget *>{form.cancel, form.button}) {
            QVERIFY(
                form.window.rect().contains(QRect(button->mapTo(&form.window, QPoint()), button->size())));
            QCOMPARE_GE(button->width(), button->sizeHint().width());
        }
        QTRY_VERIFY(form.window.rect().contains(
            QRect(form.error->mapTo(&form.window, QPoint()), form.error->size())));
    }

    void shouldBeginAllTextsInOneLine()
    {
        Form form;
        form.show();
        form.fill();
        const auto startOf = [&](QLineEdit *text) {
            text->home(false);
            const QRectF cursor = text->inputMethodQuery(Qt::ImCursorRectangle).toRectF();
            return text->mapTo(form.view, cursor.center().toPoint()).x();
        };
        QCOMPARE(startOf(form.renewal->findChild<QLineEdit *>()), startOf(form.name));
        QCOMPARE(startOf(form.price), startOf(form.name));
    }

    void shouldNotHaveSuggestionsLieOnEachOther()
    {
        Form form;
        form.show();
        form.suggest(sampleTemplates(5));
        const QList<SuggestionButton *> suggestions = form.suggestions();
        for (qsizetype i = 0; i < suggestions.size(); ++i) {
            for (qsizetype j = 0; j < i; ++j)
                QVERIFY(!suggestions[i]->geometry().intersects(suggestions[j]->geometry()));
        }
        QVERIFY(suggestions[1]->x() > suggestions[0]->x());
        QCOMPARE(suggestions[1]->y(), suggestions[0]->y());
        QVERIFY(suggestions[4]->y() > suggestions[0]->y());
        form.window.setLayoutDirection(Qt::RightToLeft);
        QCoreApplication::processEvents();
        QVERIFY(suggestions[1]->x() < suggestions[0]->x());
    }
};

ORBITLEDGE_WIDGET_TEST_MAIN(QuickAddViewTest)
#include "QuickAddViewTest.moc"
