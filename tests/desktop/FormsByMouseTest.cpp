// The forms of the whole program by the mouse, in both appearances. Where ORBITLEDGE_TEST_PICTURES names a
// folder, what was seen is kept there.

#include "support/Dunst.h"
#include "support/HttpExchange.h"
#include "support/TestMain.h"
#include "support/Typist.h"

#include <optional>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

class FormsByMouseTest : public QObject {
    Q_OBJECT

private:
    std::optional<ProgramDesk> m_desk;
    std::optional<ScreenReader> m_reader;
    QString m_appearance;

    void chooseAppearance(const QString &appearance)
    {
        m_appearance = appearance;
        const QString folder
            = m_desk->environment().value(u"XDG_CONFIG_HOME"_s) + u"/app.orbitledge.Orbitledge"_s;
        QFile file(folder + u"/settings.json"_s);
        if (!QDir().mkpath(folder) || !file.open(QIODevice::WriteOnly)
            || file.write("{\"settings.appearance\": \"" + appearance.toLatin1() + "\"}") < 0)
            qFatal("cannot write settings");
    }

    /// Where it stays: what is above it may only just have come or gone.
    void click(const QString &role, const QString &name)
    {
        QRect before;
        DesktopLab::await("something that stays in its place", [&] {
            const QRect now = m_reader->await(role, name).place;
            return std::exchange(before, now) == now;
        });
        m_desk->desk().click(before.center());
    }
    void type(const QString &text) { m_desk->lab().run(u"xdotool"_s, {u"type"_s, u"--"_s, text}); }

    /// Of the window in front, without the pointer.
    void keepWindow(const QString &name, const QString &title)
    {
        const QString folder = qEnvironmentVariable("ORBITLEDGE_TEST_PICTURES");
        if (folder.isEmpty())
            return;
        m_desk->desk().pointAt({1023, 767});
        // What was under the pointer is drawn as such for a moment more.
        QImage before;
        DesktopLab::await("a picture that stays", [&] {
            QImage now = m_desk->desk().screen();
            return std::exchange(before, now) == now;
        });
        const QList<Accessible> window = m_reader->readWindow(title);
        QVERIFY(!window.isEmpty());
        before.copy(window.constFirst().place).save(folder + u'/' + name + u'-' + m_appearance + u".png"_s);
    }

    [[nodiscard]] bool serviceHas(const QByteArray &name)
    {
        const HttpExchange http(m_desk->service().port());
        return http.get("/subscriptions", http.signIn(DemoService::email, DemoService::password))
            .body.contains(name);
    }

private Q_SLOTS:
    void init()
    {
        m_desk.emplace();
        m_reader.emplace(m_desk->lab());
        ScreenReader::addVariables(m_desk->environment());
        Dunst dunst(m_desk->lab());
        dunst.start();
        // What it is sent does not lie over what is looked at.
        m_desk->lab().run(u"dunstctl"_s, {u"set-paused"_s, u"true"_s});
        m_desk->desk().startWindowManager(XfceDesk::Compositing::Off);
    }
    void cleanup()
    {
        if (m_desk)
            m_desk->kill();
        m_reader.reset();
        m_desk.reset();
    }

    void shouldSignInAddAndSet_data()
    {
        QTest::addColumn<QString>("appearance");
        QTest::newRow("light") << u"light"_s;
        QTest::newRow("dark") << u"dark"_s;
    }
    void shouldSignInAddAndSet()
    {
        QFETCH(QString, appearance);
        chooseAppearance(appearance);
        m_desk->start();
        m_reader->awaitProgram(u"Orbitledge"_s);
        m_desk->awaitPanel(true);
        click(u"text"_s, u"Email"_s);
        m_reader->awaitFocus(u"text"_s, u"Email"_s);
        type(DemoService::email);
        click(u"password text"_s, u"Password"_s);
        m_reader->awaitFocus(u"password text"_s, u"Password"_s);
        type(u"orbit-ledge"_s);
        keepWindow(u"sign-in"_s, ProgramDesk::panelTitle());
        click(u"push button"_s, u"Sign in"_s);
        m_reader->await(u"alert"_s, u"Sign-in failed. The e-mail or the password is wrong."_s);
        keepWindow(u"sign-in-failure"_s, ProgramDesk::panelTitle());
        click(u"password text"_s, u"Password"_s);
        m_desk->desk().press(u"End"_s);
        type(u"r"_s);
        click(u"push button"_s, u"Sign in"_s);

        click(u"push button"_s, u"Add"_s);
        // What went wrong before does not.
        QVERIFY(!m_reader->find(
            u"alert"_s, u"Could not add subscription. The e-mail or the password is wrong."_s));
        m_reader->awaitFocus(u"text"_s, u"Service"_s);
        type(u"an"_s);
        m_reader->await(u"push button"_s, u"Use Lanternfish TV template"_s);
        keepWindow(u"suggestions"_s, ProgramDesk::panelTitle());
        click(u"push button"_s, u"Use Lanternfish TV template"_s);
        m_reader->awaitFocus(u"text"_s, u"Price"_s);
        m_reader->awaitGone(u"push button"_s, u"Use Hushed Piano template"_s);
        click(u"combo box"_s, u"Monthly"_s);
        click(u"list item"_s, u"Quarterly"_s);
        m_reader->await(u"combo box"_s, u"Quarterly"_s);
        keepWindow(u"quick-add"_s, ProgramDesk::panelTitle());
        QVERIFY(!serviceHas("Lanternfish TV"));
        click(u"push button"_s, u"Add subscription"_s);
        m_reader->await(u"push button"_s, u"Full calendar"_s);
        QVERIFY(serviceHas("Lanternfish TV"));

        click(u"push button"_s, u"Settings"_s);
        m_desk->desk().awaitActive(u"Orbitledge Settings"_s);
        for (const QString &choice : {u"Launch at login"_s, u"Enable notifications"_s}) {
            click(u"check box"_s, choice);
            DesktopLab::await(
                "the switch", [&] { return m_reader->await(u"check box"_s, choice).is(u"checked"); });
        }
        keepWindow(u"settings"_s, u"Orbitledge Settings"_s);
    }
};

ORBITLEDGE_TEST_MAIN(FormsByMouseTest)
#include "FormsByMouseTest.moc"
