// The whole program as a screen reader finds it: over the accessibility bus, with a real keyboard.

#include "support/ProgramDesk.h"
#include "support/ScreenReader.h"
#include "support/TestMain.h"

#include <optional>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

class PanelAccessibilityTest : public QObject {
    Q_OBJECT

private:
    std::optional<ProgramDesk> m_desk;
    std::optional<ScreenReader> m_reader;

    void start()
    {
        m_desk->start();
        m_reader->awaitProgram(u"Orbitledge"_s);
    }

private Q_SLOTS:
    void init()
    {
        m_desk.emplace();
        m_reader.emplace(m_desk->lab());
        m_desk->set("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", u"1"_s);
        m_desk->desk().startWindowManager(XfceDesk::Compositing::Off);
    }
    void cleanup()
    {
        if (m_desk)
            m_desk->kill();
        m_reader.reset();
        m_desk.reset();
    }

    void shouldTakeAScreenReaderThroughTheSignInForm()
    {
        start();
        m_reader->awaitFocus(u"text"_s, u"Email"_s);
        m_desk->desk().press(u"a"_s);
        m_desk->desk().press(u"Return"_s);
        m_reader->awaitFocus(u"password text"_s, u"Password"_s);
        const Accessible email = m_reader->await(u"text"_s, u"Email"_s);
        QCOMPARE(email.value, u"a"_s);
        QVERIFY(email.is(u"editable"));
        m_reader->awaitEvent(u"state-changed"_s, u"focused"_s, u"Password"_s);
        const Accessible page = m_reader->await(u"push button"_s, u"Open Orbitledge on the web"_s);
        QVERIFY(m_reader->act(page, u"Press"_s));
        DesktopLab::await("the page", [&] { return !m_desk->openedPages().isEmpty(); });
    }
};

ORBITLEDGE_TEST_MAIN(PanelAccessibilityTest)
#include "PanelAccessibilityTest.moc"
