#pragma once

#include "platform/Keychain.h"
#include "support/DesktopLab.h"
#include "support/ProgramEnd.h"

#include <QFile>
#include <QMap>
#include <QProcess>

#include <sys/prctl.h>

#include <csignal>
#include <optional>

namespace orbitledge::testing {

/// Tells a keychain-probe in a desktop session what to do with the keyring. Operations only start; their
/// results are waited for.
class KeychainDriver {
public:
    struct Result {
        KeychainStatus status = KeychainStatus::Success;
        QByteArray secret;

        friend bool operator==(const Result &, const Result &) = default;
    };

    static Result secret(const QByteArray &bytes) { return {KeychainStatus::Success, bytes}; }
    static Result failure(KeychainStatus status) { return {status, {}}; }

    struct Patience {
        std::chrono::milliseconds answer = std::chrono::seconds(20);
        std::chrono::milliseconds serviceStart = std::chrono::seconds(5);
    };

    explicit KeychainDriver(const QProcessEnvironment &environment)
        : KeychainDriver(environment, Patience())
    {
    }

    KeychainDriver(const QProcessEnvironment &environment, Patience patience)
    {
        m_probe.setProcessEnvironment(environment);
        m_probe.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_probe.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
        m_probe.start(QStringLiteral(ORBITLEDGE_KEYCHAIN_PROBE),
            {QString::number(patience.answer.count()), QString::number(patience.serviceStart.count())});
        if (!m_probe.waitForStarted())
            qFatal("cannot start the probe");
    }

    ~KeychainDriver() { endAtOnce(m_probe); }

    int startReading(const KeychainItem &item) { return command("read", {item.service, item.account}); }
    int startWriting(const KeychainItem &item, const QByteArray &secret)
    {
        return command("write", {item.service, item.account, item.label}, ' ' + secret.toPercentEncoding());
    }
    int startRemoving(const KeychainItem &item, KeychainPrompt prompt)
    {
        return command("remove", {item.service, item.account},
            prompt == KeychainPrompt::Allowed ? " allowed" : " forbidden");
    }
    void destroyStore() { send("destroy"); }

    Result result(int number)
    {
        DesktopLab::await("an operation to end", [&] {
            receive();
            return m_results.contains(number);
        });
        return m_results.value(number);
    }
    bool hasEnded(int number)
    {
        receive();
        return m_results.contains(number);
    }
    /// In the order in which they ended.
    [[nodiscard]] QList<int> ended() const { return m_ended; }

    /// What the probe has in memory for itself alone, in KiB.
    [[nodiscard]] int memory() const
    {
        QFile status(QStringLiteral("/proc/%1/status").arg(m_probe.processId()));
        if (!status.open(QIODevice::ReadOnly))
            return -1;
        const QByteArray text = status.readAll();
        constexpr QByteArrayView name("RssAnon:");
        const qsizetype value = text.indexOf(name) + name.size();
        return text.mid(value, text.indexOf("kB", value) - value).trimmed().toInt();
    }

    Result read(const KeychainItem &item) { return result(startReading(item)); }
    KeychainStatus write(const KeychainItem &item, const QByteArray &secret)
    {
        return result(startWriting(item, secret)).status;
    }
    KeychainStatus remove(const KeychainItem &item, KeychainPrompt prompt)
    {
        return result(startRemoving(item, prompt)).status;
    }

    /// Ends the probe in good order. Did its event loop turn all the time? On a busy machine it may have to
    /// wait for another thread or the bus, who wait for a processor, but never for as long as for a silent
    /// service.
    bool ranSmoothly()
    {
        constexpr double busy = 50; // milliseconds, as the others
        constexpr double limit = 50;
        constexpr double limitWhereBusy = 300;
        send("quit");
        DesktopLab::await("the probe to end", [&] {
            receive();
            return m_probe.state() == QProcess::NotRunning && m_stretch.has_value();
        });
        if (m_probe.exitCode() == 0
            && *m_stretch <= (m_processorWait < busy ? limit + m_processorWait : limitWhereBusy))
            return true;
        qWarning("exit code %d; the event loop stood still for %.1f ms, and %.1f ms for want of a processor",
            m_probe.exitCode(), *m_stretch, m_processorWait);
        return false;
    }

private:
    int command(const QByteArray &word, const QStringList &fields, const QByteArray &rest = {})
    {
        QByteArray line = word + ' ' + QByteArray::number(++m_count);
        for (const QString &field : fields)
            line += ' ' + field.toUtf8().toPercentEncoding();
        send(line + rest);
        return m_count;
    }

    void send(const QByteArray &line) { m_probe.write(line + '\n'); }

    void receive()
    {
        while (m_probe.canReadLine()) {
            const QList<QByteArray> words = m_probe.readLine().trimmed().split(' ');
            if (words[0] == "stretch") {
                m_stretch = words.value(1).toDouble();
                m_processorWait = words.value(2).toDouble();
                continue;
            }
            const int number = words[0].toInt();
            m_ended.append(number);
            m_results.insert(number,
                {static_cast<KeychainStatus>(words.value(1).toInt()),
                    QByteArray::fromPercentEncoding(words.value(2))});
        }
    }

    QProcess m_probe;
    int m_count = 0;
    QMap<int, Result> m_results;
    QList<int> m_ended;
    std::optional<double> m_stretch;
    double m_processorWait = 0;
};

inline char *toString(const KeychainDriver::Result &result)
{
    return qstrdup(QByteArray::number(static_cast<qint32>(result.status)) + " \"" + result.secret + '"');
}

} // namespace orbitledge::testing

namespace orbitledge {

// Beside the type, where Qt Test looks for it.
inline char *toString(KeychainStatus status)
{
    return qstrdup(QByteArray::number(static_cast<qint32>(status)));
}

} // namespace orbitledge
