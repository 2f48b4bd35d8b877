// Signing in and adding subscriptions in the whole program, by the keyboard alone, against the real service.

#include "support/HttpExchange.h"
#include "support/TestMain.h"
#include "support/Typist.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <optional>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

class FormsProgramTest : public QObject {
    Q_OBJECT

private:
    std::optional<ProgramDesk> m_desk;
    std::optional<ScreenReader> m_reader;
    std::optional<Typist> m_typist;

    void start()
    {
        m_desk->start();
        m_reader->awaitProgram(u"Orbitledge"_s);
        m_desk->desk().awaitActive(u"Orbitledge"_s);
    }

    /// The costs, as the service writes them, of those that it has of this name.
    [[nodiscard]] QStringList costsOf(const QString &name)
    {
        const HttpExchange http(m_desk->service().port());
        const QByteArray cookie = http.signIn(DemoService::email, DemoService::password);
        const QJsonArray list = QJsonDocument::fromJson(http.get("/subscriptions", cookie).body).array();
        if (list.isEmpty())
            qFatal("the service has no list");
        QStringList costs;
        for (const QJsonValue entry : list) {
            if (entry[u"name"_s].toString() == name)
                costs.append(entry[u"cost"_s].toVariant().toString());
        }
        return costs;
    }
    void awaitCosts(const QString &name, const QStringList &costs)
    {
        DesktopLab::await("the service to have it", [&] { return costsOf(name) == costs; });
    }

    /// From the timeline.
    void openQuickAdd()
    {
        m_typist->use(u"Add"_s, u"shift+Tab"_s);
        m_reader->awaitFocus(u"text"_s, u"Service"_s);
    }
    void fill(const QString &name, const QString &price)
    {
        m_typist->typeAnew(name);
        m_typist->goTo(u"Price"_s);
        m_typist->typeAnew(price);
    }
    /// As somebody who presses twice: both before the service has answered, or the second would be for what
    /// is there after the form.
    void submitTwice()
    {
        m_desk->service().freeze();
        m_typist->press(u"Return"_s);
        m_typist->press(u"Return"_s);
        m_desk->service().resume();
    }
    /// Of what appears a screen reader reads out alerts and notifications.
    void awaitTold(const QString &text)
    {
        DesktopLab::await("what a screen reader is told", [&] {
            const QList<AccessibleEvent> events = m_reader->events();
            return std::ranges::any_of(events, [&](const AccessibleEvent &event) {
                return event.detail == u"showing"_s && event.number == 1 && event.name == text
                    && (event.role == u"alert"_s || event.role == u"notification"_s);
            });
        });
    }
    void awaitValue(const QString &field, const QString &value)
    {
        DesktopLab::await("what was typed", [&] {
            const auto found = m_reader->find(u"text"_s, field);
            return found && found->value == value;
        });
    }

private Q_SLOTS:
    void init()
    {
        m_desk.emplace();
        m_reader.emplace(m_desk->lab());
        m_typist.emplace(*m_desk, *m_reader);
        ScreenReader::addVariables(m_desk->environment());
        m_desk->desk().startWindowManager(XfceDesk::Compositing::Off);
        m_desk->desk().startBar();
    }
    void cleanup()
    {
        if (m_desk)
            m_desk->kill();
        m_typist.reset();
        m_reader.reset();
        m_desk.reset();
    }

    void shouldSignInAtTheSecondAttempt()
    {
        start();
        m_reader->awaitFocus(u"text"_s, u"Email"_s);
        m_typist->type(DemoService::email);
        m_typist->press(u"Return"_s);
        m_reader->awaitFocus(u"password text"_s, u"Password"_s);
        m_typist->type(u"wrong"_s);
        m_desk->keepPicture(u"sign-in"_s);

        // The same failure twice is told twice.
        const QString failure = u"Sign-in failed. The e-mail or the password is wrong."_s;
        for (int attempt = 0; attempt < 2; ++attempt) {
            m_reader->forgetEvents();
            m_typist->press(u"Return"_s);
            awaitTold(failure);
            m_reader->await(u"push button"_s, u"Sign in"_s);
        }
        m_desk->keepPicture(u"sign-in-failure"_s);
        m_reader->awaitFocus(u"password text"_s, u"Password"_s);

        m_typist->typeAnew(DemoService::password);
        submitTwice();
        m_reader->await(u"push button"_s, u"Add"_s);
        m_reader->awaitGone(u"password text"_s, u"Password"_s);
        QCOMPARE(m_desk->openedPages(), QByteArrayList());
    }

    void shouldAddFromTheCatalogue()
    {
        m_desk->signIn();
        start();
        openQuickAdd();
        m_typist->type(u"lantern"_s);
        m_reader->await(u"push button"_s, u"Use Lanternfish TV template"_s);
        m_desk->keepPicture(u"quick-add-suggestions"_s);
        m_typist->use(u"Use Lanternfish TV template"_s);
        const Accessible price = m_reader->awaitFocus(u"text"_s, u"Price"_s);
        awaitValue(u"Service"_s, u"Lanternfish TV"_s);
        QVERIFY(price.value && !price.value->isEmpty());
        const QString cost = *price.value;
        m_desk->keepPicture(u"quick-add-filled"_s);
        submitTwice();
        m_reader->awaitFocus(u"push button"_s, u"Add"_s);
        awaitCosts(u"Lanternfish TV"_s, {cost});
        m_reader->await(u"push button"_s, u"Lanternfish TV"_s);
    }

    void shouldAddByHandWithADecimalComma()
    {
        m_desk->signIn();
        start();
        openQuickAdd();
        fill(u"Corner Bakery"_s, u"9,99"_s);
        m_typist->goTo(u"Currency"_s);
        m_typist->typeAnew(u"CHF"_s);
        m_typist->goTo(u"Billing cycle"_s);
        m_typist->press(u"Down"_s);
        m_reader->await(u"combo box"_s, u"Yearly"_s);
        m_typist->goTo(u"Next renewal"_s);
        m_typist->press(u"Return"_s);
        m_reader->awaitFocus(u"push button"_s, u"Add"_s);
        awaitCosts(u"Corner Bakery"_s, {u"9.99"_s});
        m_reader->await(u"push button"_s, u"Corner Bakery"_s);
    }

    void shouldCreateNothingOnEscape()
    {
        m_desk->signIn();
        start();
        openQuickAdd();
        fill(u"Corner Bakery"_s, u"9,99"_s);
        m_typist->press(u"Escape"_s);
        m_reader->awaitFocus(u"push button"_s, u"Add"_s);
        m_reader->awaitGone(u"text"_s, u"Service"_s);
        QVERIFY(m_desk->desk().isWindowOpen(u"Orbitledge"_s));
        QCOMPARE(costsOf(u"Corner Bakery"_s), QStringList());
        // And begins anew.
        m_typist->press(u"space"_s);
        QCOMPARE(m_reader->awaitFocus(u"text"_s, u"Service"_s).value, QString());
    }

    void shouldKeepWhatWasTypedWhileTheServiceIsAway()
    {
        m_desk->signIn();
        start();
        m_reader->await(u"push button"_s, u"Quiet Meadow"_s);
        openQuickAdd();
        fill(u"Corner Bakery"_s, u"9,99"_s);
        const QString port = QString::number(m_desk->service().port());
        m_desk->service().kill();
        m_reader->forgetEvents();
        m_typist->press(u"Return"_s);
        const auto failure = [&]() -> std::optional<Accessible> {
            for (const Accessible &shown : m_reader->read()) {
                if (shown.name.startsWith(u"Could not add subscription. "))
                    return shown;
            }
            return std::nullopt;
        };
        DesktopLab::await("the failure", [&] { return failure().has_value(); });
        awaitTold(failure()->name);
        m_desk->keepPicture(u"quick-add-failure"_s);
        awaitValue(u"Service"_s, u"Corner Bakery"_s);
        awaitValue(u"Price"_s, u"9,99"_s);
        m_reader->awaitFocus(u"text"_s, u"Price"_s);

        QVERIFY2(m_desk->service().start({}, {u"--port"_s, port}), qPrintable(m_desk->service().problem()));
        m_typist->press(u"Return"_s);
        m_reader->awaitFocus(u"push button"_s, u"Add"_s);
        awaitCosts(u"Corner Bakery"_s, {u"9.99"_s});
    }
};

ORBITLEDGE_TEST_MAIN(FormsProgramTest)
#include "FormsProgramTest.moc"
