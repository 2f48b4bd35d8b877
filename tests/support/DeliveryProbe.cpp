/// A program that has reminders delivered while it does not run, as it is told on its standard input, one
/// command a line:
///
///     arrange NUMBER MILLISECONDS|never
///     destroy
///
/// It does not wait for one operation before it starts the next. When one ended, it says "NUMBER ok", or
/// "NUMBER" and the percent-encoded sentence. After the end of its input and the last operation it says
/// "stretch TIME" and ends: the longest time in milliseconds for which it was kept from its event loop.
///
/// Arguments: the program to be started, and the time limit of an operation in milliseconds.

#include "platform/linux/PosixFileStore.h"
#include "platform/linux/XdgDirectories.h"
#include "platform/linux/notifications/SystemdDelivery.h"
#include "support/CommandInput.h"
#include "support/StretchWatch.h"

#include <QCoreApplication>
#include <QUrl>

#include <iostream>

using namespace orbitledge;
using namespace Qt::StringLiterals;

namespace {

void say(const QByteArray &line)
{
    std::cout << line.constData() << std::endl; // flushed, as somebody waits for it
}

class Probe {
public:
    explicit Probe(SystemdDelivery::Settings settings)
        : m_delivery(std::make_unique<SystemdDelivery>(std::move(settings)))
    {
    }

    void obey(const QList<QByteArray> &words)
    {
        if (words[0] == "arrange")
            arrange(words.value(1), words.value(2));
        else if (words[0] == "destroy")
            m_delivery.reset();
        else
            qFatal("unknown command %s", words[0].constData());
    }

    void finish()
    {
        m_isFinishing = true;
        if (m_pending == 0)
            QCoreApplication::quit();
    }

private:
    QCoro::Task<> arrange(QByteArray number, QByteArray when)
    {
        ++m_pending;
        std::optional<Instant> next;
        if (when != "never")
            next = Instant::fromMillisecondsSinceEpoch(when.toLongLong());
        const auto outcome = co_await m_delivery->arrange(next);
        say(number + ' ' + (outcome ? QByteArray("ok") : QUrl::toPercentEncoding(outcome.error())));
        --m_pending;
        if (m_isFinishing)
            finish();
    }

    std::unique_ptr<SystemdDelivery> m_delivery;
    int m_pending = 0;
    bool m_isFinishing = false;
};

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const auto variable = [](const char *name) { return qgetenv(name); };
    const XdgDirectories directories(variable);
    Probe probe({.applicationId = u"app.example.Reminders"_s,
        .programPath = arguments.value(1).toStdString(),
        .configurationFolder = directories.configuration().value(),
        .dataFolder = directories.data().value(),
        .variable = variable,
        .files = std::make_shared<PosixFileStore>(),
        .patience = std::chrono::milliseconds(arguments.value(2, u"20000"_s).toInt())});

    const testing::StretchWatch watch;
    const testing::CommandInput input(
        [&probe](const auto &words) { probe.obey(words); }, [&probe] { probe.finish(); });
    const int status = QCoreApplication::exec();
    say("stretch " + QByteArray::number(watch.longestMilliseconds()));
    return status;
}
