#pragma once

#include "support/FaultServer.h"

#include <QProcess>
#include <QTemporaryDir>

namespace orbitledge::testing {

/// A certificate for 127.0.0.1 and localhost that signs itself, made anew by the command openssl: nobody but
/// who is told to trusts it.
class TestCertificate {
public:
    /// `subject` is the name in it, for instance "IP:127.0.0.1".
    explicit TestCertificate(const QString &subject = QStringLiteral("IP:127.0.0.1,DNS:localhost"))
    {
        const QStringList arguments{QStringLiteral("req"), QStringLiteral("-x509"), QStringLiteral("-newkey"),
            QStringLiteral("ec"), QStringLiteral("-pkeyopt"), QStringLiteral("ec_paramgen_curve:P-256"),
            QStringLiteral("-nodes"), QStringLiteral("-subj"), QStringLiteral("/CN=Test"),
            QStringLiteral("-addext"), QStringLiteral("subjectAltName=") + subject, QStringLiteral("-days"),
            QStringLiteral("2"), QStringLiteral("-keyout"), m_folder.filePath(QStringLiteral("key.pem")),
            QStringLiteral("-out"), m_folder.filePath(QStringLiteral("certificate.pem"))};
        QProcess openssl;
        openssl.start(QStringLiteral("openssl"), arguments);
        if (!openssl.waitForFinished() || openssl.exitCode() != 0)
            qFatal("openssl made no certificate: %s", openssl.readAllStandardError().constData());
    }

    [[nodiscard]] QByteArray file() const
    {
        return m_folder.filePath(QStringLiteral("certificate.pem")).toUtf8();
    }
    [[nodiscard]] FaultServer::Certificate forServer() const
    {
        return {file(), m_folder.filePath(QStringLiteral("key.pem")).toUtf8()};
    }

private:
    QTemporaryDir m_folder;
};

} // namespace orbitledge::testing
