#include "platform/linux/bus/NameOwner.h"

#include "platform/linux/bus/SessionBusCall.h"
#include "support/DesktopLab.h"
#include "support/TestMain.h"

#include <memory>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto longEnough = 30s;

const QString name = u"app.orbitledge.Test"_s;

} // namespace

class NameOwnerTest : public QObject {
    Q_OBJECT

    std::unique_ptr<DesktopLab> m_lab;

private Q_SLOTS:
    void initTestCase()
    {
        m_lab = std::make_unique<DesktopLab>();
        m_lab->adoptBus();
        QVERIFY(QCoro::waitFor(reachSessionBus()));
    }
    void cleanup() { m_lab->bus().unregisterService(name); }
    void cleanupTestCase() { m_lab.reset(); }

    void shouldTellWhoHasAName()
    {
        QVERIFY(m_lab->bus().registerService(name));
        QCOMPARE(QCoro::waitFor(nameOwner(name, longEnough)).value(), m_lab->bus().baseService());
        QVERIFY(QCoro::waitFor(hasNameOwner(name, longEnough)).value());
    }

    void shouldTellThatNobodyHasAName()
    {
        QCOMPARE(QCoro::waitFor(nameOwner(name, longEnough)).value(), QString());
        QVERIFY(!QCoro::waitFor(hasNameOwner(name, longEnough)).value());
    }

    void shouldTellWhetherAConnectionIsThere()
    {
        QVERIFY(QCoro::waitFor(hasNameOwner(m_lab->bus().baseService(), longEnough)).value());
        QVERIFY(!QCoro::waitFor(hasNameOwner(u":1.4711"_s, longEnough)).value());
    }

    void shouldTellThatTheBusIsSilent()
    {
        m_lab->pauseBus();
        const auto owner = QCoro::waitFor(nameOwner(name, 50ms));
        const auto isThere = QCoro::waitFor(hasNameOwner(name, 50ms));
        m_lab->resumeBus();
        QVERIFY(!owner);
        QVERIFY(isSilence(owner.error()));
        QVERIFY(!isThere);
        QVERIFY(isSilence(isThere.error()));
    }
};

ORBITLEDGE_TEST_MAIN(NameOwnerTest)
#include "NameOwnerTest.moc"
