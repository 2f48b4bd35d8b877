#include "support/CommandHarness.h"
#include "support/TestMain.h"

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

class DeliverRemindersCommandTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldTellHowItEnded_data()
    {
        QTest::addColumn<NotificationDelivery>("delivery");
        QTest::addColumn<ExitCode>("exitCode");
        QTest::addColumn<QByteArray>("errors");
        QTest::newRow("shown") << NotificationDelivery::Done << ExitCode::Success << ""_ba;
        QTest::newRow("somebody else does it")
            << NotificationDelivery::Elsewhere << ExitCode::Success << ""_ba;
        QTest::newRow("nobody shows them")
            << NotificationDelivery::NoDisplay << ExitCode::Failure
            << "orbitledge: Reminders are due, but nothing on this desktop shows notifications at the moment.\n"_ba;
        QTest::newRow("unreadable")
            << NotificationDelivery::Unreadable << ExitCode::Failure
            << "orbitledge: The reminders that wait to be shown cannot be read or written.\n"_ba;
    }

    void shouldTellHowItEnded()
    {
        QFETCH(const NotificationDelivery, delivery);
        QFETCH(const ExitCode, exitCode);
        QFETCH(const QByteArray, errors);
        CommandHarness harness;
        harness.delivery = delivery;
        QCOMPARE(harness.run({"deliver-reminders"}), exitCode);
        QCOMPARE(harness.output, ""_ba);
        QCOMPARE(harness.errors, errors);
    }

    void shouldExplainItself()
    {
        CommandHarness harness;
        QCOMPARE(harness.run({"deliver-reminders", "--help"}), ExitCode::Success);
        QVERIFY(harness.output.startsWith("Usage: orbitledge deliver-reminders\n"));
        QCOMPARE(harness.run({"--help"}), ExitCode::Success);
        QVERIFY(harness.output.contains("deliver-reminders"));
    }

    void shouldRefuseArguments_data()
    {
        QTest::addColumn<QByteArray>("argument");
        QTest::addColumn<QByteArray>("errors");
        QTest::newRow("an option") << "--now"_ba
                                   << "orbitledge: deliver-reminders: the option \"--now\" is not known\n"_ba;
        QTest::newRow("a word") << "all"_ba
                                << "orbitledge: deliver-reminders: \"all\" was not expected\n"_ba;
    }

    void shouldRefuseArguments()
    {
        QFETCH(const QByteArray, argument);
        QFETCH(const QByteArray, errors);
        CommandHarness harness;
        QCOMPARE(harness.run({"deliver-reminders", argument}), ExitCode::Usage);
        QCOMPARE(harness.errors, errors);
    }
};

ORBITLEDGE_TEST_MAIN(DeliverRemindersCommandTest)
#include "DeliverRemindersCommandTest.moc"
