#include "support/CommandHarness.h"
#include "support/TestMain.h"

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

class PanelCommandTest : public QObject {
    Q_OBJECT

private:
    std::optional<CommandHarness> m_harness;

private Q_SLOTS:
    void init()
    {
        m_harness.emplace();
        m_harness->variables.insert("DISPLAY", ":0");
    }

    void shouldTurnIntoTheProgramWithWindows()
    {
        m_harness->run({});
        QVERIFY(m_harness->desktopArguments == std::vector<QByteArray>{});
        for (const char *option : {"--background", "--quick-add", "--settings", "--quit"}) {
            m_harness->run({option});
            QVERIFY(m_harness->desktopArguments == std::vector<QByteArray>{option});
        }
        // It has come back, so there was none.
        QCOMPARE(m_harness->run({}), ExitCode::Failure);
        QCOMPARE(
            m_harness->errors, "orbitledge: /usr/libexec/orbitledge-desktop: No such file or directory\n"_ba);
    }

    void shouldNotTryWithoutADesktop()
    {
        m_harness->variables.remove("DISPLAY");
        QCOMPARE(m_harness->run({}), ExitCode::Failure);
        QVERIFY(!m_harness->desktopArguments);
        QCOMPARE(m_harness->errors,
            "orbitledge: there is no desktop here to open a window on; \"orbitledge --help\" lists what "
            "works "
            "without\n"_ba);
        m_harness->variables.insert("WAYLAND_DISPLAY", "wayland-0");
        m_harness->run({});
        QVERIFY(m_harness->desktopArguments);
    }

    void shouldRefuseWhatItDoesNotKnow()
    {
        QCOMPARE(m_harness->run({"--background", "now"}), ExitCode::Usage);
        QCOMPARE(m_harness->errors, "orbitledge: \"now\" was not expected\n"_ba);
        QVERIFY(!m_harness->desktopArguments);
    }
};

ORBITLEDGE_TEST_MAIN(PanelCommandTest)
#include "PanelCommandTest.moc"
