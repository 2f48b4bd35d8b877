#include "platform/linux/application/RunningApplication.h"

#include "platform/linux/bus/SessionBusCall.h"
#include "support/DesktopLab.h"
#include "support/TestMain.h"

#include <QDBusConnectionInterface>
#include <QDBusVirtualObject>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QString applicationId = u"app.orbitledge.Test"_s;
/// Where an answer is to come, and where it has to be waited for in vain.
constexpr auto patience = 30s;
constexpr auto shortPatience = 1s;

/// Has the program's name, and does something of its own with what it is asked.
class Stranger final : public QDBusVirtualObject {
public:
    using Manner = std::function<void(Stranger &, const QDBusMessage &)>;

    Stranger(const QDBusConnection &bus, Manner manner)
        : m_bus(bus)
        , m_manner(std::move(manner))
    {
        m_bus.registerVirtualObject(u"/"_s, this, QDBusConnection::SubPath);
        m_bus.registerService(applicationId);
    }
    ~Stranger() override
    {
        m_bus.unregisterService(applicationId);
        m_bus.unregisterObject(u"/"_s, QDBusConnection::UnregisterTree);
    }
    Q_DISABLE_COPY_MOVE(Stranger)

    QDBusConnection &bus() { return m_bus; }

    [[nodiscard]] QString introspect(const QString & /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection & /*connection*/) override
    {
        m_manner(*this, message);
        return true;
    }

private:
    QDBusConnection m_bus;
    Manner m_manner;
};

void doIt(Stranger &stranger, const QDBusMessage &message)
{
    stranger.bus().send(message.createReply());
}

void refuse(Stranger &stranger, const QDBusMessage &message)
{
    stranger.bus().send(message.createErrorReply(QDBusError::AccessDenied, u"Not today."_s));
}

void sayNothing(Stranger & /*stranger*/, const QDBusMessage & /*message*/) { }

void goAway(Stranger &stranger, const QDBusMessage & /*message*/)
{
    stranger.bus().unregisterService(applicationId);
}

} // namespace

Q_DECLARE_METATYPE(Stranger::Manner)

class RunningApplicationTest : public QObject {
    Q_OBJECT

    std::unique_ptr<DesktopLab> m_lab;

private Q_SLOTS:
    void initTestCase()
    {
        m_lab = std::make_unique<DesktopLab>();
        m_lab->adoptBus();
        QVERIFY(QCoro::waitFor(reachSessionBus()));
    }
    void cleanupTestCase() { m_lab.reset(); }

    void shouldTellHowItTakesThatAPageIsToBeOpened_data()
    {
        QTest::addColumn<Stranger::Manner>("manner");
        QTest::addColumn<PageOpening>("outcome");
        QTest::addColumn<std::chrono::milliseconds>("limit");
        const auto row = [](const char *name, Stranger::Manner manner, PageOpening outcome,
                             std::chrono::milliseconds limit) {
            QTest::newRow(name) << std::move(manner) << outcome << limit;
        };
        row("does it", doIt, PageOpening::Done, patience);
        row("refuses", refuse, PageOpening::Refused, patience);
        row("says nothing", sayNothing, PageOpening::Mute, shortPatience);
        row("goes away", goAway, PageOpening::Absent, shortPatience);
        row("is not there", nullptr, PageOpening::Absent, patience);
    }
    void shouldTellHowItTakesThatAPageIsToBeOpened()
    {
        QFETCH(const Stranger::Manner, manner);
        QFETCH(const PageOpening, outcome);
        QFETCH(const std::chrono::milliseconds, limit);
        std::unique_ptr<Stranger> stranger;
        if (manner)
            stranger = std::make_unique<Stranger>(m_lab->bus(), manner);
        const RunningApplication program(applicationId, limit);
        QCOMPARE(QCoro::waitFor(program.openReminder(u"https://example.com/a"_s, {})), outcome);
    }

    /// The bus knows that the call is lost, though somebody has the name.
    void shouldNotWaitForWhoGaveTheNameToAnother()
    {
        const QString name = u"the one that goes"_s;
        std::unique_ptr<Stranger> first;
        first = std::make_unique<Stranger>(QDBusConnection::connectToBus(m_lab->busAddress(), name),
            [&](Stranger & /*stranger*/, const QDBusMessage & /*message*/) {
                QTimer::singleShot(0, this, [&] {
                    first.reset();
                    QDBusConnection::disconnectFromBus(name);
                });
            });
        QDBusConnection next = m_lab->bus();
        QVERIFY(next.interface()
                ->registerService(applicationId, QDBusConnectionInterface::QueueService)
                .isValid());
        const RunningApplication program(applicationId, 30s);
        QCOMPARE(QCoro::waitFor(program.openReminder(u"https://example.com/a"_s, {})), PageOpening::Absent);
        QVERIFY(next.unregisterService(applicationId));
    }

    void shouldTellWhyItDoesNotDoWhatIsAsked()
    {
        const auto ask = [](std::chrono::milliseconds limit = patience) {
            const RunningApplication program(applicationId, limit);
            return QCoro::waitFor(program.request(ApplicationAction::Open, {}));
        };
        const auto refusal = [&](std::chrono::milliseconds limit) {
            const auto answer = ask(limit);
            return answer ? QString() : answer.error();
        };
        QCOMPARE(ask(), (tl::expected<bool, QString>(false)));
        {
            const Stranger stranger(m_lab->bus(), doIt);
            QCOMPARE(ask(), (tl::expected<bool, QString>(true)));
        }
        {
            const Stranger stranger(m_lab->bus(), refuse);
            QCOMPARE(refusal(patience), u"Not today."_s);
        }
        {
            const Stranger stranger(m_lab->bus(), sayNothing);
            QCOMPARE(refusal(shortPatience),
                u"Orbitledge is running, but does not answer. End it, then try again."_s);
        }
    }
};

ORBITLEDGE_TEST_MAIN(RunningApplicationTest)
#include "RunningApplicationTest.moc"
