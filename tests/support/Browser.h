#pragma once

#include <QByteArray>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QString>
#include <QStringList>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QThread>
#include <QUrl>

#include <memory>
#include <optional>

namespace orbitledge::testing {

/// A real browser without a window, for tests of what a person does on a page: Chromium, driven by
/// chromedriver through the WebDriver protocol of the W3C.
///
///     Browser browser;
///     QVERIFY2(browser.start(), qPrintable(browser.problem()));
///     QVERIFY(browser.open(service.baseUrl().resolved(QUrl(u"/login"_s))));
///     QVERIFY(browser.type(u"#email"_s, u"ada@example.com"_s));
///     QVERIFY(browser.follow(u"#sign-in"_s));
///     QCOMPARE(browser.path(), u"/calendar"_s);
///
/// Elements are named by CSS selectors; the first that matches is meant, and is waited for. What fails
/// returns false or nothing, and `problem` says why. Each browser has an empty profile of its own, in a
/// temporary folder, and ends with the object. A test that uses this links Qt6::Network.
class Browser {
public:
    Browser() = default;
    ~Browser() { stop(); }
    Q_DISABLE_COPY_MOVE(Browser)

    /// Whether this machine has what is needed.
    static bool isInstalled() { return !driverProgram().isEmpty() && !browserProgram().isEmpty(); }

    bool start()
    {
        stop();
        m_profile = std::make_unique<QTemporaryDir>();
        m_driver = std::make_unique<QProcess>();
        m_driver->setProcessChannelMode(QProcess::MergedChannels);
        // Whatever the browser itself wants to keep must not touch the user's folders.
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), m_profile->path());
        m_driver->setProcessEnvironment(environment);
        m_driver->start(driverProgram(), {QStringLiteral("--port=0")});
        if (!readDriverPort())
            return false;
        const auto session = request("POST", QStringLiteral("/session"), capabilities(), startLimit);
        m_session = session ? session->toObject()[QLatin1StringView("sessionId")].toString() : QString();
        return !m_session.isEmpty();
    }

    void stop()
    {
        if (!m_driver)
            return;
        if (!m_session.isEmpty())
            (void)command("DELETE", {});
        m_session.clear();
        m_driver->terminate();
        if (!m_driver->waitForFinished(stopLimit)) {
            m_driver->kill();
            m_driver->waitForFinished(stopLimit);
        }
        m_driver.reset();
        m_profile.reset();
    }

    /// Why the last call failed.
    [[nodiscard]] QString problem() const { return m_problem; }

    bool open(const QUrl &url)
    {
        return command(
            "POST", QStringLiteral("/url"), {{QStringLiteral("url"), QString::fromLatin1(url.toEncoded())}})
            .has_value();
    }

    [[nodiscard]] QUrl url() { return QUrl(text(command("GET", QStringLiteral("/url")))); }
    [[nodiscard]] QString path() { return url().path(); }
    [[nodiscard]] QString title() { return text(command("GET", QStringLiteral("/title"))); }
    [[nodiscard]] QString source() { return text(command("GET", QStringLiteral("/source"))); }

    /// Types into a field as a person does, after what is in it.
    bool type(const QString &selector, const QString &keys)
    {
        return onElement("POST", selector, QStringLiteral("/value"), {{QStringLiteral("text"), keys}})
            .has_value();
    }
    /// Empties a field first.
    bool replace(const QString &selector, const QString &keys)
    {
        return onElement("POST", selector, QStringLiteral("/clear")).has_value() && type(selector, keys);
    }
    /// A click that stays on the page.
    bool click(const QString &selector)
    {
        return onElement("POST", selector, QStringLiteral("/click")).has_value();
    }
    /// A click that leads to another page (or to this one anew), which is waited for.
    bool follow(const QString &selector)
    {
        // The browser says that it has clicked before it leaves; only the mark tells the pages apart.
        if (!evaluate(QStringLiteral("window.isThePageBefore = true")) || !click(selector))
            return false;
        QElapsedTimer waited;
        waited.start();
        while (waited.elapsed() < commandLimit) {
            const auto arrived = evaluate(
                QStringLiteral("return !window.isThePageBefore && document.readyState === 'complete'"));
            if (arrived && arrived->toBool())
                return true;
            QThread::msleep(10);
        }
        m_problem = selector + QStringLiteral(" led nowhere");
        return false;
    }

    /// What a person reads; absent where there is no such element.
    std::optional<QString> textOf(const QString &selector)
    {
        return optionalText(onElement("GET", selector, QStringLiteral("/text")));
    }
    /// A live property such as "value".
    std::optional<QString> propertyOf(const QString &selector, const QString &name)
    {
        return optionalText(onElement("GET", selector, QStringLiteral("/property/") + name));
    }
    std::optional<QString> attributeOf(const QString &selector, const QString &name)
    {
        return optionalText(onElement("GET", selector, QStringLiteral("/attribute/") + name));
    }
    /// How many elements match now; nothing is waited for.
    qsizetype count(const QString &selector)
    {
        const auto found = command("POST", QStringLiteral("/execute/sync"),
            {{QStringLiteral("script"),
                 QStringLiteral("return document.querySelectorAll(arguments[0]).length")},
                {QStringLiteral("args"), QJsonArray{selector}}});
        return found ? found->toInteger() : 0;
    }

    /// Runs a script in the page and gives what it returns. The page itself need not allow scripts.
    std::optional<QJsonValue> evaluate(const QString &script)
    {
        return command("POST", QStringLiteral("/execute/sync"),
            {{QStringLiteral("script"), script}, {QStringLiteral("args"), QJsonArray()}});
    }

    /// A cookie's value, HttpOnly ones included.
    std::optional<QString> cookie(const QString &name)
    {
        const auto found = command("GET", QStringLiteral("/cookie/") + name);
        if (!found)
            return std::nullopt;
        return found->toObject()[QLatin1StringView("value")].toString();
    }

    /// What the page is shown in, in CSS pixels, and whether it is asked for its dark colours.
    bool show(int width, int height, bool dark = false)
    {
        const QJsonObject scheme{{QStringLiteral("name"), QStringLiteral("prefers-color-scheme")},
            {QStringLiteral("value"), dark ? QStringLiteral("dark") : QStringLiteral("light")}};
        return chromium(QStringLiteral("Emulation.setEmulatedMedia"),
                   {{QStringLiteral("features"), QJsonArray{scheme}}})
            && chromium(QStringLiteral("Emulation.setDeviceMetricsOverride"),
                {{QStringLiteral("width"), width}, {QStringLiteral("height"), height},
                    {QStringLiteral("deviceScaleFactor"), 1}, {QStringLiteral("mobile"), false}});
    }

    /// The page as it looks now, as PNG.
    QByteArray screenshot()
    {
        return QByteArray::fromBase64(text(command("GET", QStringLiteral("/screenshot"))).toLatin1());
    }

private:
    static constexpr int startLimit = 60'000;
    static constexpr int commandLimit = 30'000;
    static constexpr int stopLimit = 10'000;

    static QString driverProgram() { return QStandardPaths::findExecutable(QStringLiteral("chromedriver")); }
    static QString browserProgram() { return QStandardPaths::findExecutable(QStringLiteral("chromium")); }

    [[nodiscard]] QJsonObject capabilities() const
    {
        const QJsonObject options{{QStringLiteral("binary"), browserProgram()},
            {QStringLiteral("args"),
                QJsonArray{QStringLiteral("--headless=new"),
                    // It runs as root in containers, where its own sandbox cannot.
                    QStringLiteral("--no-sandbox"), QStringLiteral("--disable-dev-shm-usage"),
                    QStringLiteral("--disable-gpu"), QStringLiteral("--no-first-run"),
                    // It must not ask anybody anything.
                    QStringLiteral("--disable-background-networking"),
                    QStringLiteral("--disable-component-update"), QStringLiteral("--disable-sync"),
                    QStringLiteral("--lang=en-US"),
                    QStringLiteral("--user-data-dir=") + m_profile->filePath(QStringLiteral("profile"))}}};
        const QJsonObject wanted{{QStringLiteral("browserName"), QStringLiteral("chrome")},
            {QStringLiteral("goog:chromeOptions"), options},
            // How long an element is waited for.
            {QStringLiteral("timeouts"), QJsonObject{{QStringLiteral("implicit"), 20'000}}}};
        return {{QStringLiteral("capabilities"), QJsonObject{{QStringLiteral("alwaysMatch"), wanted}}}};
    }

    /// The driver tells its port in a line such as "… was started successfully on port 40123."
    bool readDriverPort()
    {
        const QByteArray words("on port ");
        QByteArray output;
        QElapsedTimer waited;
        waited.start();
        while (waited.elapsed() < startLimit) {
            if (!m_driver->waitForReadyRead(startLimit) && m_driver->state() == QProcess::NotRunning)
                break;
            output += m_driver->readAll();
            const auto start = output.indexOf("started successfully");
            const auto at = start < 0 ? -1 : output.indexOf(words, start);
            if (at < 0 || output.indexOf('\n', at) < 0)
                continue;
            const QByteArray rest = output.mid(at + words.size());
            m_port = rest.left(rest.indexOf('.')).toUShort();
            return m_port != 0;
        }
        m_problem = QStringLiteral("chromedriver did not start: ") + QString::fromUtf8(output);
        return false;
    }

    /// One exchange over a connection of its own. The toolkit's network access needs a running event loop;
    /// this need not.
    std::optional<QJsonValue> request(
        const QByteArray &method, const QString &path, const QJsonObject &body, int limit = commandLimit)
    {
        QTcpSocket socket;
        socket.connectToHost(QStringLiteral("127.0.0.1"), m_port);
        if (!socket.waitForConnected(limit)) {
            m_problem = QStringLiteral("chromedriver does not answer: ") + socket.errorString();
            return std::nullopt;
        }
        const QByteArray content = method == "POST" ? QJsonDocument(body).toJson(QJsonDocument::Compact) : "";
        socket.write(method + ' ' + path.toUtf8()
            + " HTTP/1.1\r\nHost: 127.0.0.1:" + QByteArray::number(m_port)
            + "\r\nConnection: close\r\nContent-Type: application/json\r\nContent-Length: "
            + QByteArray::number(content.size()) + "\r\n\r\n" + content);
        QByteArray answer;
        QElapsedTimer waited;
        waited.start();
        while (waited.elapsed() < limit && !isComplete(answer) && socket.waitForReadyRead(limit))
            answer += socket.readAll();
        const auto end = answer.indexOf("\r\n\r\n");
        const QJsonObject object = QJsonDocument::fromJson(answer.mid(end + 4)).object();
        const QJsonValue value = object[QLatin1StringView("value")];
        if (end < 0 || object.isEmpty() || value.toObject().contains(QLatin1StringView("error"))) {
            m_problem = path + QStringLiteral(": ")
                + (value.isObject() ? value[QLatin1StringView("message")].toString()
                                    : QStringLiteral("no answer"));
            return std::nullopt;
        }
        return value;
    }

    static bool isComplete(const QByteArray &answer)
    {
        const auto end = answer.indexOf("\r\n\r\n");
        if (end < 0)
            return false;
        const QByteArray head = answer.left(end).toLower();
        const QByteArray name("content-length:");
        const auto at = head.indexOf(name);
        const auto length
            = at < 0 ? 0 : head.mid(at + name.size()).split('\r').first().trimmed().toLongLong();
        return answer.size() >= end + 4 + length;
    }

    std::optional<QJsonValue> command(
        const QByteArray &method, const QString &path, const QJsonObject &body = {})
    {
        return request(method, QStringLiteral("/session/") + m_session + path, body);
    }

    std::optional<QJsonValue> onElement(
        const QByteArray &method, const QString &selector, const QString &path, const QJsonObject &body = {})
    {
        const auto found = command("POST", QStringLiteral("/element"),
            {{QStringLiteral("using"), QStringLiteral("css selector")}, {QStringLiteral("value"), selector}});
        if (!found)
            return std::nullopt;
        // The one key of the answer is a constant of the standard.
        const QJsonObject reference = found->toObject();
        return reference.isEmpty()
            ? std::nullopt
            : command(method, QStringLiteral("/element/") + reference.begin()->toString() + path, body);
    }

    bool chromium(const QString &name, const QJsonObject &parameters)
    {
        return command("POST", QStringLiteral("/goog/cdp/execute"),
            {{QStringLiteral("cmd"), name}, {QStringLiteral("params"), parameters}})
            .has_value();
    }

    static QString text(const std::optional<QJsonValue> &value)
    {
        return value ? value->toString() : QString();
    }
    static std::optional<QString> optionalText(const std::optional<QJsonValue> &value)
    {
        return value && value->isString() ? std::optional(value->toString()) : std::nullopt;
    }

    std::unique_ptr<QTemporaryDir> m_profile;
    std::unique_ptr<QProcess> m_driver;
    quint16 m_port = 0;
    QString m_session;
    QString m_problem;
};

} // namespace orbitledge::testing
