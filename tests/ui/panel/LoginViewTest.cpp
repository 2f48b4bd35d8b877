#include "ui/panel/LoginView.h"

#include "support/AccessibleTree.h"
#include "support/StoreDesk.h"
#include "support/WidgetTestMain.h"
#include "ui/kit/Field.h"
#include "ui/kit/PlainButton.h"
#include "ui/kit/PrimaryButton.h"
#include "ui/kit/Typography.h"
#include "ui/panel/ErrorLine.h"
#include "ui/panel/PanelAccessibility.h"

#include <QScrollArea>
#include <QVBoxLayout>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace orbitledge::ui;
using namespace Qt::StringLiterals;

namespace {

APIError wrong(const QString &message = u"The e-mail or the password is wrong."_s)
{
    return APIError::Unauthorized{message};
}

/// A view in a window, for somebody who is signed out.
struct Form {
    StoreDesk desk;
    QWidget window;
    QPointer<LoginView> view;
    Field *email = nullptr;
    Field *password = nullptr;
    PrimaryButton *button = nullptr;
    PlainButton *web = nullptr;
    ErrorLine *error = nullptr;
    /// What was read out.
    QStringList alerts;

    explicit Form(const std::optional<APIError> &earlierFailure = std::nullopt)
    {
        desk.api->hasSession = false;
        desk.make();
        QCoro::waitFor(desk.store->start());
        if (earlierFailure) {
            desk.api->profile = tl::make_unexpected(*earlierFailure);
            desk.api->isQuick = true;
            (void)QCoro::waitFor(desk.store->signIn({}, {}));
            desk.api->isQuick = false;
            desk.api->calls.clear();
            desk.api->credentials.clear();
        }
        installPanelAccessibility();
        applyTextScale(window, 1);
        view = new LoginView(*desk.store);
        auto *const layout = new QVBoxLayout(&window);
        layout->setContentsMargins({});
        layout->addWidget(view);
        window.resize(360, 480);
        const QList<Field *> fields = view->findChildren<Field *>();
        email = fields.value(0);
        password = fields.value(1);
        button = view->findChild<PrimaryButton *>();
        web = view->findChild<PlainButton *>();
        error = view->findChild<ErrorLine *>();
        QObject::connect(error, &ErrorLine::announced, [this](const QString &text) { alerts.append(text); });
    }
    Q_DISABLE_COPY_MOVE(Form)
    ~Form() { delete view; }

    void show()
    {
        window.show();
        QApplication::setActiveWindow(&window);
        QCoreApplication::processEvents();
    }

    void type(const QString &address, const QString &word) const
    {
        email->setText(address);
        password->setText(word);
    }

    /// Until the store has nothing to do any more.
    void answer(const tl::expected<UserProfile, APIError> &profile)
    {
        desk.api->profile = profile;
        desk.api->answer(u"signIn"_s);
        desk.settle();
    }
};

} // namespace

class LoginViewTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldOnlyTakeWhatCouldSignIn_data()
    {
        QTest::addColumn<QString>("email");
        QTest::addColumn<QString>("password");
        QTest::addColumn<bool>("isPossible");
        QTest::newRow("nothing") << QString() << QString() << false;
        QTest::newRow("no password") << u"ada@example.com"_s << QString() << false;
        QTest::newRow("no e-mail") << QString() << u"secret"_s << false;
        QTest::newRow("an e-mail of blanks") << u" \u00a0 "_s << u"secret"_s << false;
        QTest::newRow("a password of blanks") << u"ada@example.com"_s << u"  "_s << true;
        QTest::newRow("both") << u"ada@example.com"_s << u"secret"_s << true;
        QTest::newRow("no e-mail at all, which the service will say") << u"ada"_s << u"secret"_s << true;
    }
    void shouldOnlyTakeWhatCouldSignIn()
    {
        QFETCH(QString, email);
        QFETCH(QString, password);
        QFETCH(bool, isPossible);
        Form form;
        form.show();
        form.type(email, password);
        QCOMPARE(form.button->isEnabled(), isPossible);
        QTest::keyClick(form.password, Qt::Key_Return);
        QTest::mouseClick(form.button, Qt::LeftButton);
        QCOMPARE(form.desk.api->calls.count(u"signIn"_s), isPossible ? 1 : 0);
    }

    void shouldSendWhatWasTyped_data()
    {
        QTest::addColumn<QString>("email");
        QTest::addColumn<QString>("password");
        QTest::addColumn<QString>("sentEmail");
        QTest::newRow("plain") << u"ada@example.com"_s << u"secret"_s << u"ada@example.com"_s;
        QTest::newRow("blanks around the e-mail")
            << u"  ada@example.com\u2003"_s << u"secret"_s << u"ada@example.com"_s;
        QTest::newRow("blanks within the e-mail")
            << u" ada  l@example.com "_s << u"x"_s << u"ada  l@example.com"_s;
        QTest::newRow("capitals") << u"ADA@Example.com"_s << u"x"_s << u"ADA@Example.com"_s;
        QTest::newRow("a password of blanks") << u"a@b"_s << u"   "_s << u"a@b"_s;
        QTest::newRow("blanks around the password") << u"a@b"_s << u" x y "_s << u"a@b"_s;
        QTest::newRow("another script") << u"a@b"_s << u"пароль 🔑"_s << u"a@b"_s;
    }
    void shouldSendWhatWasTyped()
    {
        QFETCH(QString, email);
        QFETCH(QString, password);
        QFETCH(QString, sentEmail);
        Form form;
        form.show();
        form.type(email, password);
        QTest::mouseClick(form.button, Qt::LeftButton);
        QCOMPARE(form.desk.api->credentials, (QList<std::pair<QString, QString>>{{sentEmail, password}}));
    }

    void shouldSignInByTheKeyboardAlone()
    {
        Form form;
        form.show();
        QTRY_COMPARE(QApplication::focusWidget(), form.email);
        QTest::keyClicks(QApplication::focusWidget(), u"ada@example.com"_s);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QVERIFY(form.desk.api->calls.isEmpty());
        QCOMPARE(QApplication::focusWidget(), form.password);
        QTest::keyClicks(QApplication::focusWidget(), u"secret"_s);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QCOMPARE(form.desk.api->credentials,
            (QList<std::pair<QString, QString>>{{u"ada@example.com"_s, u"secret"_s}}));
    }

    void shouldLeadTheKeyboardFromAboveToBelow()
    {
        Form form;
        form.show();
        form.type(u"ada@example.com"_s, u"secret"_s);
        QTRY_COMPARE(QApplication::focusWidget(), form.email);
        for (QWidget *const next :
            std::initializer_list<QWidget *>{form.password, form.button, form.web, form.email}) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            QCOMPARE(QApplication::focusWidget(), next);
        }
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
        QCOMPARE(QApplication::focusWidget(), form.web);
    }

    void shouldSubmitOnce()
    {
        Form form;
        form.show();
        form.type(u"ada@example.com"_s, u"secret"_s);
        QTest::keyClick(form.password, Qt::Key_Return);
        QTest::keyClick(form.password, Qt::Key_Return);
        QTest::mouseClick(form.button, Qt::LeftButton);
        QTest::keyClick(form.button, Qt::Key_Return);
        QTest::keyClick(form.button, Qt::Key_Space);
        form.button->click();
        form.view->submit();
        QCOMPARE(form.desk.api->calls, QStringList{u"signIn"_s});
        form.answer(tl::make_unexpected(wrong()));
        QCOMPARE(form.desk.api->calls, QStringList{u"signIn"_s});
        // And then again.
        QTest::keyClick(form.password, Qt::Key_Return);
        QCOMPARE(form.desk.api->calls.count(u"signIn"_s), 2);
    }

    void shouldShowThatItIsBusy()
    {
        Form form;
        form.show();
        form.type(u"ada@example.com"_s, u"secret"_s);
        QCOMPARE(form.button->text(), u"Sign in"_s);
        form.view->submit();
        QVERIFY(form.button->isBusy());
        QVERIFY(!form.view->canSubmit());
        QCOMPARE(form.button->text(), u"Signing in…"_s);
        form.answer(tl::make_unexpected(wrong()));
        QVERIFY(!form.button->isBusy());
        QVERIFY(form.view->canSubmit());
        QVERIFY(form.button->isEnabled());
        QCOMPARE(form.button->text(), u"Sign in"_s);
    }

    void shouldKeepWhatWasTypedWhenItFails()
    {
        Form form;
        form.show();
        form.type(u" ada@example.com "_s, u" secret "_s);
        form.password->setFocus();
        form.view->submit();
        form.answer(tl::make_unexpected(wrong()));
        QCOMPARE(form.email->text(), u" ada@example.com "_s);
        QCOMPARE(form.password->text(), u" secret "_s);
        QCOMPARE(QApplication::focusWidget(), form.password);
    }

    void shouldSayWhatWentWrong()
    {
        Form form;
        form.show();
        QVERIFY(!form.error->isVisible());
        form.type(u"ada@example.com"_s, u"secret"_s);
        form.view->submit();
        form.answer(tl::make_unexpected(wrong()));
        QVERIFY(form.error->isVisible());
        QCOMPARE(form.alerts, QStringList{u"Sign-in failed. The e-mail or the password is wrong."_s});
        QVERIFY(accessibleTreeOf(*form.view)
                .contains(u"AlertMessage: Sign-in failed. The e-mail or the password is wrong."_s));

        // Another one, and the same once more.
        for (int i = 0; i < 2; ++i) {
            form.view->submit();
            form.answer(tl::make_unexpected(wrong(u"Locked."_s)));
            QCOMPARE(form.alerts.size(), 2 + i);
            QCOMPARE(form.alerts.last(), u"Sign-in failed. Locked."_s);
        }

        form.desk.api->isQuick = true;
        QCoro::waitFor(form.desk.store->signOut());
        QVERIFY(!form.error->isVisible());
        QCOMPARE(form.alerts.size(), 3);
    }

    void shouldSayWhenItAppearsWhatWentWrongBefore()
    {
        Form form(wrong(u"Your session expired. Please sign in again."_s));
        QVERIFY(form.alerts.isEmpty());
        form.show();
        QVERIFY(form.error->isVisible());
        QCOMPARE(form.alerts, QStringList{u"Sign-in failed. Your session expired. Please sign in again."_s});
        QTRY_COMPARE(QApplication::focusWidget(), form.email);
    }

    void shouldGoOnWhereSomebodyWasWhenItComesBack()
    {
        Form form;
        form.show();
        form.password->setFocus();
        form.window.hide();
        form.show();
        QTRY_COMPARE(QApplication::focusWidget(), form.password);
    }

    void shouldSignIn()
    {
        Form form;
        form.show();
        form.type(u"ada@example.com"_s, u"secret"_s);
        form.view->submit();
        form.desk.api->isQuick = true;
        form.answer(sampleProfile());
        QCOMPARE(form.desk.store->state().authState, AuthState::SignedIn);
        QVERIFY(!form.error->isVisible());
    }

    void shouldOpenTheWeb()
    {
        Form form;
        form.show();
        form.web->setFocus();
        QTest::keyClick(form.web, Qt::Key_Return);
        QCOMPARE(form.desk.workspace->opened, QList{QUrl(u"https://example.com/login"_s)});
        QVERIFY(form.desk.api->calls.isEmpty());
    }

    void shouldHaveNamesForEverything()
    {
        Form form;
        form.show();
        QCOMPARE(accessibleTreeOf(*form.view),
            (QStringList{u"Heading: ORBITLEDGE"_s, u"StaticText: See what’s about to charge."_s,
                u"EditableText: Email"_s, u"EditableText: Password"_s, u"Button: Sign in"_s,
                u"Button: Open Orbitledge on the web"_s}));
    }

    void shouldNotTellThePassword()
    {
        Form form;
        form.show();
        form.type(u"ada@example.com"_s, u"correct horse"_s);
        QAccessibleInterface *const field = QAccessible::queryAccessibleInterface(form.password);
        QVERIFY(field->state().passwordEdit);
        for (int kind = QAccessible::Name; kind <= QAccessible::DebugDescription; ++kind) {
            const QString text = field->text(static_cast<QAccessible::Text>(kind));
            QVERIFY2(!text.contains(u"horse"_s), qPrintable(text));
        }
        QVERIFY(!field->textInterface()->text(0, 100).contains(u"horse"_s));
        QCOMPARE(form.password->echoMode(), QLineEdit::Password);
    }

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
        Form form(wrong(u"The service is not available at the moment. Please try again in a few minutes."_s));
        applyTextScale(form.window, scale);
        form.show();
        const QWidget *const content = form.view->findChild<QScrollArea *>()->widget();
        QCOMPARE_LE(content->width(), 360);
        const QList<QWidget *> parts = form.view->findChildren<QWidget *>();
        for (const QWidget *const part : parts) {
            const bool isPart = part->isVisible() && content->isAncestorOf(part);
            if (!isPart)
                continue;
            const QRect place(part->mapTo(content, QPoint()), part->size());
            QVERIFY(content->rect().contains(place));
            if (part->sizePolicy().hasHeightForWidth())
                QCOMPARE_GE(part->height(), part->heightForWidth(part->width()));
        }
    }

    void shouldShowWhatWentWrongAlsoWhereItHasToScroll()
    {
        Form form;
        applyTextScale(form.window, 2);
        form.show();
        form.type(u"ada@example.com"_s, u"secret"_s);
        form.view->submit();
        form.answer(tl::make_unexpected(wrong()));
        QTRY_VERIFY(form.window.rect().contains(
            QRect(form.error->mapTo(&form.window, QPoint()), form.error->size())));
    }

    void shouldGoWhileItSignsIn_data()
    {
        QTest::addColumn<bool>("succeeds");
        QTest::newRow("in the end it succeeds") << true;
        QTest::newRow("in the end it fails") << false;
    }
    void shouldGoWhileItSignsIn()
    {
        QFETCH(bool, succeeds);
        Form form;
        form.show();
        form.type(u"ada@example.com"_s, u"secret"_s);
        form.view->submit();
        delete form.view;
        form.desk.api->isQuick = true;
        form.answer(
            succeeds ? tl::expected<UserProfile, APIError>(sampleProfile()) : tl::make_unexpected(wrong()));
        QCOMPARE(form.desk.store->state().authState, succeeds ? AuthState::SignedIn : AuthState::SignedOut);
    }
};

ORBITLEDGE_WIDGET_TEST_MAIN(LoginViewTest)
#include "LoginViewTest.moc"
