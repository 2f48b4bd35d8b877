#include "platform/linux/bus/SessionBusSignal.h"

#include "platform/linux/bus/SessionBusCall.h"
#include "support/DesktopLab.h"
#include "support/TestMain.h"

#include <QDBusObjectPath>
#include <QDBusVariant>

#include <chrono>
#include <memory>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

namespace {

const QString path = u"/app/orbitledge/Test"_s;
const QString interface = u"app.orbitledge.Test"_s;

SessionBusSignal signalNamed(const QString &name, const QString &sender = QString())
{
    return {.sender = sender, .path = path, .interface = interface, .name = name};
}

/// Writes down what it hears.
class Listener : public QObject {
public:
    explicit Listener(QStringList &heard)
        : m_heard(heard)
    {
    }

    void hearText(const QString &text) { m_heard.append(text); }
    void hearNumber(uint number) { m_heard.append(QString::number(number)); }
    void hearMap(const QVariantMap &map) { m_heard.append(map.keys()); }
    void hearAll(uint number, bool isTrue, const QDBusObjectPath &object, const QDBusVariant &variant,
        const QDBusMessage &message)
    {
        m_heard.append({QString::number(number), isTrue ? u"true"_s : u"false"_s, object.path(),
            variant.variant().toString(), message.service()});
    }
    void hearAnything() { m_heard.append(u"anything"_s); }
    void hearMessage(const QDBusMessage &message) { m_heard.append(message.signature()); }
    void hearAndGo(const QString &text)
    {
        m_heard.append(text);
        delete this;
    }

private:
    QStringList &m_heard;
};

} // namespace

class SessionBusSignalTest : public QObject {
    Q_OBJECT

    std::unique_ptr<DesktopLab> m_lab;
    QStringList m_heard;
    QStringList m_end;
    std::unique_ptr<Listener> m_listener;

    /// The bus knows of it when this returns: it keeps the order of one caller only.
    template <typename Handler>
    static void hear(const SessionBusSignal &signal, Listener *listener, Handler handler)
    {
        hearSignal(signal, listener, handler);
        const QDBusMessage answer
            = QCoro::waitFor(callSessionBus(busMethod(u"GetId"_s), std::chrono::seconds(30)));
        QVERIFY(isAnswer(answer));
    }

    void send(const QString &name, const QVariantList &values) const
    {
        QDBusMessage signal = QDBusMessage::createSignal(path, interface, name);
        signal.setArguments(values);
        QVERIFY(m_lab->bus().send(signal));
    }

    /// Waits until what was sent before has come: the bus keeps the order of one sender.
    void awaitEnd()
    {
        Listener listener(m_end);
        hear(signalNamed(u"End"_s), &listener, &Listener::hearAnything);
        send(u"End"_s, {});
        QTRY_COMPARE(m_end, QStringList{u"anything"_s});
        m_end.clear();
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_lab = std::make_unique<DesktopLab>();
        m_lab->adoptBus();
        QVERIFY(QCoro::waitFor(reachSessionBus()));
    }
    void init()
    {
        m_heard.clear();
        m_listener = std::make_unique<Listener>(m_heard);
    }
    void cleanup() { m_listener.reset(); }
    void cleanupTestCase() { m_lab.reset(); }

    void shouldHandOverTheValuesAndTheMessage()
    {
        hear(signalNamed(u"Told"_s), m_listener.get(), &Listener::hearAll);
        send(u"Told"_s,
            {7U, true, QVariant::fromValue(QDBusObjectPath(u"/a/b"_s)),
                QVariant::fromValue(QDBusVariant(u"inner"_s))});
        awaitEnd();
        QCOMPARE(
            m_heard, (QStringList{u"7"_s, u"true"_s, u"/a/b"_s, u"inner"_s, m_lab->bus().baseService()}));
    }

    void shouldHandOverWhatHasParts()
    {
        hear(signalNamed(u"Told"_s), m_listener.get(), &Listener::hearMap);
        send(u"Told"_s, {QVariantMap{{u"one"_s, 1}, {u"two"_s, 2}}});
        awaitEnd();
        QCOMPARE(m_heard, (QStringList{u"one"_s, u"two"_s}));
    }

    void shouldPassOverOtherTypes_data()
    {
        QTest::addColumn<QVariantList>("values");
        QTest::newRow("nothing") << QVariantList();
        QTest::newRow("a number") << QVariantList{7U};
        QTest::newRow("a map") << QVariantList{QVariantMap{{u"key"_s, 1}}};
        QTest::newRow("a list") << QVariantList{QStringList{u"text"_s}};
        QTest::newRow("a variant") << QVariantList{QVariant::fromValue(QDBusVariant(u"text"_s))};
        QTest::newRow("too much") << QVariantList{u"text"_s, u"text"_s};
    }
    void shouldPassOverOtherTypes()
    {
        QFETCH(QVariantList, values);
        hear(signalNamed(u"Told"_s), m_listener.get(), &Listener::hearText);
        send(u"Told"_s, values);
        send(u"Told"_s, {u"right"_s});
        awaitEnd();
        QCOMPARE(m_heard, QStringList{u"right"_s});
    }

    void shouldPassOverANumberThatIsSigned()
    {
        hear(signalNamed(u"Told"_s), m_listener.get(), &Listener::hearNumber);
        send(u"Told"_s, {1});
        send(u"Told"_s, {2U});
        awaitEnd();
        QCOMPARE(m_heard, QStringList{u"2"_s});
    }

    void shouldHearWhateverComesAlongWhereNoValueIsTaken()
    {
        hear(signalNamed(u"Told"_s), m_listener.get(), &Listener::hearAnything);
        hear(signalNamed(u"Told"_s), m_listener.get(), &Listener::hearMessage);
        send(u"Told"_s, {});
        send(u"Told"_s, {QVariantMap{{u"key"_s, 1}}});
        awaitEnd();
        m_heard.sort();
        QCOMPARE(m_heard, (QStringList{QString(), u"anything"_s, u"anything"_s, u"a{sv}"_s}));
    }

    void shouldHearOnlyWhatItListensTo()
    {
        hear(signalNamed(u"Told"_s), m_listener.get(), &Listener::hearText);
        send(u"Other"_s, {u"other"_s});
        awaitEnd();
        QCOMPARE(m_heard, QStringList());
    }

    void shouldHearOnlyTheSenderThatIsNamed()
    {
        hear(signalNamed(u"Told"_s, u":1.4711"_s), m_listener.get(), &Listener::hearText);
        send(u"Told"_s, {u"of another"_s});
        awaitEnd();
        QCOMPARE(m_heard, QStringList());
        hear(signalNamed(u"Told"_s, m_lab->bus().baseService()), m_listener.get(), &Listener::hearText);
        send(u"Told"_s, {u"of the right one"_s});
        awaitEnd();
        QCOMPARE(m_heard, QStringList{u"of the right one"_s});
    }

    void shouldEndWithTheReceiver()
    {
        hear(signalNamed(u"Told"_s), m_listener.get(), &Listener::hearText);
        send(u"Told"_s, {u"before"_s});
        awaitEnd();
        m_listener.reset();
        send(u"Told"_s, {u"after"_s});
        awaitEnd();
        QCOMPARE(m_heard, QStringList{u"before"_s});
    }

    void shouldLetTheReceiverGoOverASignal()
    {
        hear(signalNamed(u"Told"_s), m_listener.release(), &Listener::hearAndGo);
        send(u"Told"_s, {u"first"_s});
        send(u"Told"_s, {u"second"_s});
        awaitEnd();
        QCOMPARE(m_heard, QStringList{u"first"_s});
    }
};

ORBITLEDGE_TEST_MAIN(SessionBusSignalTest)
#include "SessionBusSignalTest.moc"
