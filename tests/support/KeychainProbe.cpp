/// A program that uses the desktop's keyring as it is told on its standard input, one command a line, the
/// fields separated by spaces and each but the first percent-encoded:
///
///     read NUMBER SERVICE ACCOUNT
///     write NUMBER SERVICE ACCOUNT LABEL SECRET
///     remove NUMBER SERVICE ACCOUNT allowed|forbidden
///     destroy
///
/// It does not wait for one operation before it starts the next. When one ended, it says "NUMBER STATUS" and,
/// for what was read, the secret. At the end of its input, or after "quit", it says "stretch TIME WAIT" and
/// ends: the longest time in milliseconds for which it was kept from its event loop, and for how long it had
/// to wait for a processor all in all.
///
/// Arguments: the time limit of an operation, and how long a service may take to come up, in milliseconds.

#include "platform/linux/keychain/DesktopKeychain.h"
#include "support/CommandInput.h"
#include "support/StretchWatch.h"

#include <QCoreApplication>

#include <iostream>

using namespace orbitledge;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

void say(const QByteArray &line)
{
    std::cout << line.constData() << std::endl; // flushed, as somebody waits for it
}

void sayStatus(const QByteArray &number, KeychainStatus status)
{
    say(number + ' ' + QByteArray::number(static_cast<qint32>(status)));
}

class Probe {
public:
    explicit Probe(KeychainPatience patience)
        : m_keychain(std::make_unique<DesktopKeychain>(patience))
    {
    }

    void obey(const QList<QByteArray> &words)
    {
        const auto text = [&](qsizetype index) {
            return QString::fromUtf8(QByteArray::fromPercentEncoding(words.value(index)));
        };
        const KeychainItem item{.service = text(2), .account = text(3), .label = text(4)};
        const QByteArray &number = words.value(1);
        if (words[0] == "read")
            read(number, item);
        else if (words[0] == "write")
            write(number, item, QByteArray::fromPercentEncoding(words.value(5)));
        else if (words[0] == "remove")
            remove(number, item,
                words.value(4) == "allowed" ? KeychainPrompt::Allowed : KeychainPrompt::Forbidden);
        else if (words[0] == "destroy")
            m_keychain.reset();
        else if (words[0] == "quit")
            QCoreApplication::quit();
        else
            qFatal("unknown command %s", words[0].constData());
    }

private:
    QCoro::Task<> read(QByteArray number, KeychainItem item)
    {
        const auto secret = co_await m_keychain->read(item);
        if (secret)
            say(number + " 0 " + secret->toPercentEncoding());
        else
            sayStatus(number, secret.error());
    }

    QCoro::Task<> write(QByteArray number, KeychainItem item, QByteArray secret)
    {
        const KeychainStatus status = co_await m_keychain->write(item, secret);
        sayStatus(number, status);
    }

    QCoro::Task<> remove(QByteArray number, KeychainItem item, KeychainPrompt prompt)
    {
        const KeychainStatus status = co_await m_keychain->remove(item, prompt);
        sayStatus(number, status);
    }

    std::unique_ptr<DesktopKeychain> m_keychain;
};

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    Probe probe({.answer = std::chrono::milliseconds(arguments.value(1, u"20000"_s).toInt()),
        .serviceStart = std::chrono::milliseconds(arguments.value(2, u"5000"_s).toInt())});

    const testing::StretchWatch watch;
    const testing::CommandInput input(
        [&probe](const auto &words) { probe.obey(words); }, [] { QCoreApplication::quit(); });
    const int status = QCoreApplication::exec();
    say("stretch " + QByteArray::number(watch.longestMilliseconds()) + ' '
        + QByteArray::number(watch.processorWaitMilliseconds()));
    return status;
}
