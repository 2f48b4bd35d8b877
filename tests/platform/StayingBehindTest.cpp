#include "platform/linux/StayingBehind.h"

#include <QByteArray>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>

using namespace orbitledge;

namespace {

/// A pipe whose writing end the child has as long as it lives.
struct LifeLine {
    std::array<int, 2> ends{};

    LifeLine()
    {
        if (::pipe2(ends.data(), O_CLOEXEC) != 0)
            qFatal("no pipe");
    }
    ~LifeLine()
    {
        ::close(ends[0]);
        dropWriting();
    }
    Q_DISABLE_COPY_MOVE(LifeLine)

    void dropWriting()
    {
        if (ends[1] >= 0)
            ::close(std::exchange(ends[1], -1));
    }
    void write(char letter) const { (void)!::write(ends[1], &letter, 1); }
    /// The next letter; 0 where all who could write have ended, and -1 where it takes too long.
    [[nodiscard]] int next() const
    {
        pollfd waiting{.fd = ends[0], .events = POLLIN, .revents = 0};
        constexpr int patience = 20'000;
        if (::poll(&waiting, 1, patience) != 1)
            return -1;
        char letter = 0;
        return ::read(ends[0], &letter, 1) == 1 ? letter : 0;
    }
};

} // namespace

/// Without an application object, since there must be one thread only.
class StayingBehindTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldComeBackWithTheAnswerWhileTheChildGoesOn()
    {
        LifeLine line;
        LifeLine start;
        const auto answer = runAndLeaveBehind([&](const auto &tell) {
            tell(42);
            line.write(static_cast<char>(start.next())); // not before the parent says so
        });
        QCOMPARE(answer, std::optional(42));
        line.dropWriting();
        start.write('x');
        QCOMPARE(line.next(), 'x');
        QCOMPARE(line.next(), 0);
    }

    void shouldHaveNoAnswerWhereTheChildEndsWithoutOne()
    {
        QCOMPARE(runAndLeaveBehind([](const auto & /*tell*/) { }), std::nullopt);
    }

    void shouldEndTheChildWithTheParentUntilItHasAnswered_data()
    {
        QTest::addColumn<bool>("hasAnswered");
        QTest::newRow("before") << false;
        QTest::newRow("after") << true;
    }
    void shouldEndTheChildWithTheParentUntilItHasAnswered()
    {
        QFETCH(bool, hasAnswered);
        LifeLine line;
        LifeLine stop;
        const pid_t parent = ::fork();
        if (parent == 0) {
            ::close(stop.ends[1]);
            (void)runAndLeaveBehind([&](const auto &tell) {
                if (hasAnswered)
                    tell(1);
                line.write('a');
                (void)stop.next();
                line.write('b');
            });
            (void)stop.next();
            ::_exit(0);
        }
        line.dropWriting();
        QCOMPARE(line.next(), 'a');
        ::kill(parent, SIGKILL);
        QCOMPARE(::waitpid(parent, nullptr, 0), parent);
        if (hasAnswered) {
            stop.dropWriting();
            QCOMPARE(line.next(), 'b');
        }
        QCOMPARE(line.next(), 0);
    }

    void shouldEndAsTheChildDoes()
    {
        const pid_t parent = ::fork();
        if (parent == 0) {
            (void)runAndLeaveBehind([](const auto & /*tell*/) { (void)::raise(SIGKILL); });
            ::_exit(0);
        }
        int status = 0;
        QCOMPARE(::waitpid(parent, &status, 0), parent);
        QVERIFY(WIFSIGNALED(status));
        QCOMPARE(WTERMSIG(status), SIGKILL);
    }
};

QTEST_APPLESS_MAIN(StayingBehindTest)
#include "StayingBehindTest.moc"
