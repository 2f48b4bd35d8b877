#include "state/LaunchAtLoginController.h"

#include "support/FakeLoginItemService.h"
#include "support/TestMain.h"

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

namespace {

/// What the controller shows, for comparisons.
struct Shown {
    bool isEnabled = false;
    bool requiresApproval = false;
    std::optional<QString> errorMessage;

    friend bool operator==(const Shown &, const Shown &) = default;
};

Shown shownBy(const LaunchAtLoginController &controller)
{
    return {controller.isEnabled(), controller.requiresApproval(), controller.errorMessage()};
}

} // namespace

class LaunchAtLoginControllerTest : public QObject {
    Q_OBJECT

private:
    std::shared_ptr<FakeLoginItemService> m_service;

private Q_SLOTS:
    void init() { m_service = std::make_shared<FakeLoginItemService>(); }

    void shouldShowTheStatus_data()
    {
        QTest::addColumn<LoginItemStatus>("status");
        QTest::addColumn<bool>("isEnabled");
        QTest::addColumn<bool>("requiresApproval");
        QTest::newRow("not registered") << LoginItemStatus::NotRegistered << false << false;
        QTest::newRow("enabled") << LoginItemStatus::Enabled << true << false;
        QTest::newRow("to be approved of") << LoginItemStatus::RequiresApproval << false << true;
        QTest::newRow("gone") << LoginItemStatus::NotFound << false << false;
    }
    void shouldShowTheStatus()
    {
        QFETCH(LoginItemStatus, status);
        QFETCH(bool, isEnabled);
        QFETCH(bool, requiresApproval);
        m_service->current = status;
        const LaunchAtLoginController fresh(m_service);
        QVERIFY(shownBy(fresh) == (Shown{isEnabled, requiresApproval, std::nullopt}));
        // And so where it becomes that later, whatever was before.
        for (const LoginItemStatus before : {LoginItemStatus::Enabled, LoginItemStatus::RequiresApproval}) {
            m_service->current = before;
            LaunchAtLoginController controller(m_service);
            m_service->current = status;
            controller.refreshStatus();
            QVERIFY(shownBy(controller) == (Shown{isEnabled, requiresApproval, std::nullopt}));
        }
        QVERIFY(m_service->log.isEmpty());
    }

    void shouldRegisterAndUnregister()
    {
        LaunchAtLoginController controller(m_service);
        QCoro::waitFor(controller.setEnabled(true));
        QVERIFY(shownBy(controller) == (Shown{true, false, std::nullopt}));
        QCoro::waitFor(controller.setEnabled(false));
        QVERIFY(shownBy(controller) == (Shown{false, false, std::nullopt}));
        QCOMPARE(m_service->log,
            (QStringList{u"register"_s, u"register done"_s, u"unregister"_s, u"unregister done"_s}));
    }

    void shouldShowThatApprovalIsMissing()
    {
        m_service->afterRegistering = LoginItemStatus::RequiresApproval;
        LaunchAtLoginController controller(m_service);
        QCoro::waitFor(controller.setEnabled(true));
        QVERIFY(shownBy(controller) == (Shown{false, true, std::nullopt}));
    }

    void shouldShowTheRealStateAfterAFailure_data()
    {
        QTest::addColumn<LoginItemStatus>("status");
        QTest::addColumn<bool>("wish");
        QTest::addColumn<bool>("isEnabled");
        QTest::newRow("not registered") << LoginItemStatus::NotRegistered << true << false;
        QTest::newRow("not unregistered") << LoginItemStatus::Enabled << false << true;
    }
    void shouldShowTheRealStateAfterAFailure()
    {
        QFETCH(LoginItemStatus, status);
        QFETCH(bool, wish);
        QFETCH(bool, isEnabled);
        m_service->current = status;
        m_service->failure = u"The disk is full."_s;
        LaunchAtLoginController controller(m_service);
        QCoro::waitFor(controller.setEnabled(wish));
        QVERIFY(shownBy(controller) == (Shown{isEnabled, false, u"The disk is full."_s}));
    }

    void shouldNoticeWhatChangedBesideAFailure()
    {
        LaunchAtLoginController controller(m_service);
        m_service->current = LoginItemStatus::RequiresApproval;
        m_service->failure = u"The disk is full."_s;
        QCoro::waitFor(controller.setEnabled(true));
        QVERIFY(shownBy(controller) == (Shown{false, true, u"The disk is full."_s}));
    }

    void shouldForgetAFailureWithTheNextChange()
    {
        m_service->failure = u"The disk is full."_s;
        LaunchAtLoginController controller(m_service);
        QCoro::waitFor(controller.setEnabled(true));
        controller.refreshStatus();
        QCOMPARE(controller.errorMessage(), u"The disk is full."_s);

        m_service->failure.reset();
        m_service->waits = true;
        const auto change = controller.setEnabled(true);
        QVERIFY(!controller.errorMessage());
        m_service->goOn();
        QCoro::waitFor(change);
        QVERIFY(shownBy(controller) == (Shown{true, false, std::nullopt}));
    }

    void shouldTellBeforeItChanges()
    {
        LaunchAtLoginController controller(m_service);
        QList<Shown> seen;
        connect(&controller, &LaunchAtLoginController::aboutToChange, this,
            [&] { seen.append(shownBy(controller)); });
        m_service->current = LoginItemStatus::Enabled;
        m_service->failure = u"The disk is full."_s;
        QCoro::waitFor(controller.setEnabled(false));
        const Shown before;
        const Shown failed{false, false, u"The disk is full."_s};
        const Shown after{true, false, u"The disk is full."_s};
        // The message twice, then the two of the status.
        QVERIFY(seen == (QList<Shown>{before, before, failed, after}));
        QVERIFY(shownBy(controller) == after);
    }

    void shouldCarryOutWishesOneAfterTheOther()
    {
        m_service->waits = true;
        LaunchAtLoginController controller(m_service);
        const auto first = controller.setEnabled(true);
        const auto second = controller.setEnabled(false);
        const auto third = controller.setEnabled(true);
        const auto last = controller.setEnabled(false);
        QStringList expected;
        for (const QString &name : {u"register"_s, u"unregister"_s, u"register"_s, u"unregister"_s}) {
            expected.append(name);
            QTRY_COMPARE(m_service->log, expected);
            m_service->goOn();
            expected.append(name + u" done"_s);
        }
        QCoro::waitFor(last);
        QVERIFY(first.isReady() && second.isReady() && third.isReady());
        QCOMPARE(m_service->log, expected);
        QVERIFY(shownBy(controller) == Shown{});
    }

    void shouldLetTheControllerGoMeanwhile()
    {
        m_service->waits = true;
        auto controller = std::make_unique<LaunchAtLoginController>(m_service);
        const auto first = controller->setEnabled(true);
        const auto second = controller->setEnabled(false);
        const auto third = controller->setEnabled(true);
        controller.reset();
        for (const auto *const task : {&first, &second, &third}) {
            m_service->goOn();
            QTRY_VERIFY(task->isReady());
        }
        QCOMPARE(m_service->log.last(), u"register done"_s);
        QCOMPARE(m_service->current, LoginItemStatus::Enabled);
    }

    void shouldLetTheServiceGoWithTheLastChange()
    {
        m_service->waits = true;
        auto controller = std::make_unique<LaunchAtLoginController>(m_service);
        const auto change = controller->setEnabled(true);
        controller.reset();
        const std::weak_ptr<FakeLoginItemService> service = m_service;
        m_service.reset();
        QVERIFY(!service.expired());
        service.lock()->goOn();
        QTRY_VERIFY(change.isReady());
    }

    void shouldOpenTheSettings()
    {
        LaunchAtLoginController controller(m_service);
        QCoro::waitFor(controller.openLoginItems());
        QCOMPARE(m_service->log, QStringList{u"open settings"_s});
        QVERIFY(!controller.errorMessage());
    }

    void shouldTellWhereTheSettingsDoNotOpen()
    {
        LaunchAtLoginController controller(m_service);
        m_service->hasSystemSettings = false;
        QCoro::waitFor(controller.openLoginItems());
        QCOMPARE(controller.errorMessage(),
            u"Could not open System Settings. Open it manually and look under Login Items."_s);
    }

    void shouldTellAfterItChanged()
    {
        LaunchAtLoginController controller(m_service);
        Shown last;
        connect(&controller, &LaunchAtLoginController::changed, this, [&] { last = shownBy(controller); });
        m_service->current = LoginItemStatus::RequiresApproval;
        controller.refreshStatus();
        QVERIFY(last == (Shown{false, true, std::nullopt}));
        m_service->failure = u"The disk is full."_s;
        QCoro::waitFor(controller.setEnabled(true));
        QVERIFY(last == (Shown{false, true, u"The disk is full."_s}));
    }
};

ORBITLEDGE_TEST_MAIN(LaunchAtLoginControllerTest)
#include "LaunchAtLoginControllerTest.moc"
