// The whole program in a real desktop: the icon in a real bar, a real keyring, the service, a mouse and a
// keyboard.

#include "state/CacheSnapshot.h"
#include "support/ProgramDesk.h"
#include "support/TestMain.h"
#include "timeline/EntryTexts.h"

#include <optional>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

class PanelProgramTest : public QObject {
    Q_OBJECT

private:
    std::optional<ProgramDesk> m_session;

    void awaitQuestion() { m_session->desk().awaitActive(u"Cancel Quiet Meadow?"_s); }

    [[nodiscard]] std::optional<Subscription> saved(const QString &name) const
    {
        QFile file(m_session->environment().value(u"XDG_DATA_HOME"_s)
            + u"/app.orbitledge.Orbitledge/subscription-snapshot-v1.json"_s);
        if (!file.open(QIODevice::ReadOnly))
            return std::nullopt;
        const auto snapshot = decodeCacheSnapshot(file.readAll());
        if (!snapshot)
            return std::nullopt;
        const auto found = std::ranges::find(snapshot->subscriptions, name, &Subscription::name);
        return found != snapshot->subscriptions.end() ? std::optional(*found) : std::nullopt;
    }
    void awaitCancelled(const QString &name, bool isThen)
    {
        DesktopLab::await("the change at the service", [&] {
            const auto subscription = saved(name);
            return subscription && isCancelled(*subscription) == isThen;
        });
    }

    /// A press while the row is still at work with the last change does nothing.
    void takeBack(const QString &name)
    {
        m_session->desk().pressUntil({u"Return"_s}, "the subscription to be taken back", [&] {
            const auto subscription = saved(name);
            return subscription && !isCancelled(*subscription);
        });
    }

private Q_SLOTS:
    void init() { m_session.emplace(); }
    void cleanup()
    {
        if (QTest::currentTestFailed())
            m_session->keepPicture(u"panel-failure"_s);
        m_session.reset();
    }

    void shouldShowAndChangeWhatIsAboutToCharge()
    {
        m_session->signIn();
        m_session->desk().startWindowManager(XfceDesk::Compositing::Off);
        m_session->desk().startBar();
        m_session->start({u"--background"_s});
        const QRect badge = m_session->desk().awaitBadge();
        QVERIFY(!m_session->isPanelOpen());
        m_session->desk().click(badge.center());
        m_session->awaitPanel(true);
        m_session->keepPicture(u"panel"_s);

        // The first row, by the keyboard.
        m_session->desk().press(u"Tab"_s);
        m_session->desk().press(u"Home"_s);
        m_session->desk().press(u"Return"_s);
        m_session->awaitPage();
        const auto first = saved(u"Quiet Meadow"_s);
        QVERIFY(first);
        QCOMPARE(m_session->openedPages().constFirst(),
            m_session->service().baseUrl().toEncoded() + "subscriptions/"
                + first->id.toByteArray(QUuid::WithoutBraces).toUpper() + "/edit");

        // Cancelled after a question whose first answer is no, and back again.
        m_session->desk().press(u"Right"_s);
        m_session->desk().press(u"Right"_s);
        m_session->desk().press(u"Return"_s);
        awaitQuestion();
        m_session->keepPicture(u"question"_s);
        m_session->desk().press(u"Escape"_s);
        m_session->desk().awaitActive(u"Orbitledge"_s);
        QVERIFY(m_session->isPanelOpen());
        QVERIFY(!isCancelled(*saved(u"Quiet Meadow"_s)));
        m_session->desk().press(u"Return"_s);
        awaitQuestion();
        m_session->desk().press(u"Tab"_s);
        m_session->desk().press(u"Return"_s);
        awaitCancelled(u"Quiet Meadow"_s, true);
        m_session->desk().awaitActive(u"Orbitledge"_s);
        m_session->keepPicture(u"cancelled"_s);
        takeBack(u"Quiet Meadow"_s);

        m_session->desk().press(u"Escape"_s);
        m_session->awaitPanel(false);
        m_session->desk().click(badge.center());
        m_session->awaitPanel(true);
        m_session->desk().click(badge.center());
        m_session->awaitPanel(false);

        // The bar comes back, and so does the icon.
        m_session->desk().killBar();
        m_session->desk().startBar();
        m_session->desk().click(m_session->desk().awaitBadge().center());
        m_session->awaitPanel(true);
        QVERIFY(m_session->quit());
    }

    void shouldBeAnOrdinaryWindowWhereThereIsNoTray()
    {
        m_session->signIn();
        m_session->desk().startWindowManager(XfceDesk::Compositing::Off);
        m_session->start({});
        m_session->awaitPanel(true);
        m_session->desk().press(u"Escape"_s);
        m_session->awaitPanel(false);
        QCOMPARE(m_session->program()->state(), QProcess::Running);
    }
};

ORBITLEDGE_TEST_MAIN(PanelProgramTest)
#include "PanelProgramTest.moc"
