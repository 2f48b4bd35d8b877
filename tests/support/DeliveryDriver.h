#pragma once

#include "model/Instant.h"
#include "support/DesktopLab.h"
#include "support/ProgramEnd.h"

#include <QMap>
#include <QProcess>
#include <QUrl>

#include <sys/prctl.h>

#include <csignal>
#include <optional>

namespace orbitledge::testing {

/// Tells a delivery-probe in a desktop session what to arrange. Operations only start; their results are
/// waited for: an empty text for success, or else the sentence.
class DeliveryDriver {
public:
    explicit DeliveryDriver(const QProcessEnvironment &environment,
        std::chrono::milliseconds patience = std::chrono::seconds(20),
        const QString &program = QStringLiteral("/usr/bin/true"))
    {
        m_probe.setProcessEnvironment(environment);
        m_probe.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_probe.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
        m_probe.start(
            QStringLiteral(ORBITLEDGE_DELIVERY_PROBE), {program, QString::number(patience.count())});
        if (!m_probe.waitForStarted())
            qFatal("cannot start the probe");
    }

    ~DeliveryDriver() { endAtOnce(m_probe); }

    int startArranging(std::optional<Instant> next)
    {
        m_probe.write("arrange " + QByteArray::number(++m_count) + ' '
            + (next ? QByteArray::number(next->millisecondsSinceEpoch()) : QByteArray("never")) + '\n');
        return m_count;
    }
    void destroyDelivery() { m_probe.write("destroy\n"); }

    QString result(int number)
    {
        DesktopLab::await("an operation to end", [&] {
            receive();
            return m_results.contains(number);
        });
        return m_results.value(number);
    }

    QString arrange(std::optional<Instant> next) { return result(startArranging(next)); }

    /// In the order in which they ended.
    [[nodiscard]] QList<int> ended() const { return m_ended; }

    /// Ends the probe in good order. For how long, in milliseconds, was it kept from its event loop?
    double longestStretch()
    {
        m_probe.closeWriteChannel();
        DesktopLab::await("the probe to end", [&] {
            receive();
            return m_probe.state() == QProcess::NotRunning && m_stretch.has_value();
        });
        if (m_probe.exitStatus() != QProcess::NormalExit || m_probe.exitCode() != 0)
            qFatal("the probe failed");
        return m_stretch.value();
    }

private:
    void receive()
    {
        while (m_probe.canReadLine()) {
            const QList<QByteArray> words = m_probe.readLine().trimmed().split(' ');
            if (words[0] == "stretch") {
                m_stretch = words.value(1).toDouble();
                continue;
            }
            const int number = words[0].toInt();
            m_ended.append(number);
            m_results.insert(
                number, words.value(1) == "ok" ? QString() : QUrl::fromPercentEncoding(words.value(1)));
        }
    }

    QProcess m_probe;
    int m_count = 0;
    QMap<int, QString> m_results;
    QList<int> m_ended;
    std::optional<double> m_stretch;
};

} // namespace orbitledge::testing
