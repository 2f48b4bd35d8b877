#include "soak/SoakDesk.h"

#include "support/HttpExchange.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace orbitledge::testing {

using namespace Qt::StringLiterals;

namespace {

const QString programName = u"app.orbitledge.Orbitledge"_s;
const QString programPath = u"/app/orbitledge/Orbitledge"_s;
const QString keyringName = u"org.freedesktop.secrets"_s;
constexpr int startPatience = 60'000; // milliseconds; a sanitizer, on a busy machine
constexpr std::size_t mostCommands = 3;

/// Signals go to processes that were started here.
QDBusMessage methodOf(
    const QString &name, const QString &path, const QString &interface, const QString &method)
{
    QDBusMessage message = QDBusMessage::createMethodCall(name, path, interface, method);
    message.setAutoStartService(false);
    return message;
}

FaultProxy::Weather weatherOf(SoakPlan::Step step)
{
    using Step = SoakPlan::Step;
    using Weather = FaultProxy::Weather;
    switch (step) {
    case Step::WeatherRefusing:
        return Weather::Refusing;
    case Step::WeatherMute:
        return Weather::Mute;
    case Step::WeatherReset:
        return Weather::Reset;
    case Step::WeatherCutOff:
        return Weather::CutOff;
    case Step::WeatherSlow:
        return Weather::Slow;
    case Step::WeatherGarbage:
        return Weather::Garbage;
    case Step::WeatherUnauthorized:
        return Weather::Unauthorized;
    case Step::WeatherTooMany:
        return Weather::TooMany;
    case Step::WeatherBroken:
        return Weather::Broken;
    case Step::WeatherFickle:
        return Weather::Fickle;
    default:
        return Weather::Good;
    }
}

} // namespace

SoakDesk::SoakDesk()
{
    bringUpSession();
    m_session.signIn();
    m_notifications.emplace(m_session.lab().environment(), path(u"monitor.log"_s));
    m_pings.emplace(m_session.lab().environment().value(u"DBUS_SESSION_BUS_ADDRESS"_s),
        PingWatch::Target{programName, programPath},
        PingWatch::Target{u"app.orbitledge.Bare"_s, u"/app/orbitledge/Bare"_s});
    start();
}

SoakDesk::~SoakDesk()
{
    m_pings.reset();
    for (Command &command : m_givenCommands) {
        command.process->kill();
        command.process->waitForFinished();
    }
}

void SoakDesk::bringUpSession()
{
    const QString clock = QStringLiteral(ORBITLEDGE_LIBFAKETIME);
    if (!QFile::exists(clock))
        qFatal("%s is not there", qPrintable(clock));
    m_proxy.setService(m_session.service().port());
    m_session.set("ORBITLEDGE_API_URL", m_proxy.url().toString());
    m_session.set("LD_PRELOAD", clock);
    m_session.set("FAKETIME_TIMESTAMP_FILE", path(u"clock"_s));
    m_session.set("FAKETIME_CACHE_DURATION", u"1"_s);
    m_session.set("FAKETIME_DONT_FAKE_MONOTONIC", u"1"_s);
    m_session.set("FAKETIME_DISABLE_SHM", u"1"_s);
    m_session.set("NO_FAKE_STAT", u"1"_s);
    // What is freed is given back soon, so that memory that grows can be told from memory that is held back.
    // The library for the clock comes before the sanitizer's.
    m_session.set("ASAN_OPTIONS",
        u"quarantine_size_mb=1:thread_local_quarantine_size_kb=64:verify_asan_link_order=0"_s);
    setClock(0);
    wantReminders();
    m_session.lab().startProgram(u"bare"_s, QStringLiteral(ORBITLEDGE_BARE_PROGRAM), {},
        [this] { return m_session.lab().isOnBus(u"app.orbitledge.Bare"_s); });
    m_session.desk().startWindowManager(XfceDesk::Compositing::Off);
    m_session.desk().startBar();
    m_dunst.start();
    m_cookie = HttpExchange(m_session.service().port())
                   .signIn(QString(DemoService::email), QString(DemoService::password));
    if (m_cookie.isEmpty())
        qFatal("the service does not let anybody in");
}

/// Of what renews within three days.
void SoakDesk::wantReminders()
{
    const QString folder = path(u"config/app.orbitledge.Orbitledge"_s);
    QFile file(folder + u"/settings.json"_s);
    if (!QDir().mkpath(folder) || !file.open(QIODevice::WriteOnly)
        || file.write(R"({"settings.notificationsEnabled":true,"settings.notificationLeadDays":3})") < 0)
        qFatal("the settings cannot be written");
}

void SoakDesk::note(const QString &problem)
{
    if (m_problem.isEmpty())
        m_problem = problem;
}

// ---- the program -----------------------------------------------------------------------------------------

bool SoakDesk::isRunning() const
{
    return m_session.program() && m_session.program()->state() == QProcess::Running;
}

QByteArray SoakDesk::words() const
{
    QFile file(const_cast<SoakDesk *>(this)->path(u"program-%1.err"_s.arg(m_lives)));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void SoakDesk::start()
{
    ++m_lives;
    m_proxy.beginLife();
    m_session.start({u"--background"_s}, path(u"program-%1.err"_s.arg(m_lives)));
    m_pings->setProcess(process());
    if (!QTest::qWaitFor(
            [this] { return !isRunning() || m_session.lab().isOnBus(programName); }, startPatience))
        note(u"it does not come up"_s);
}

void SoakDesk::kill()
{
    m_pings->setProcess(0);
    if (!isRunning())
        return; // which is found out elsewhere
    m_session.kill();
    m_notifications->recordKill();
    ++m_kills;
    // Until the bus knows, a start could be taken for a second one.
    (void)QTest::qWaitFor([this] { return !m_session.lab().isOnBus(programName); }, startPatience);
}

void SoakDesk::quit()
{
    m_pings->setProcess(0);
    ask(u"quit"_s);
    QProcess *const program = m_session.program();
    if (!QTest::qWaitFor([&] { return program->state() == QProcess::NotRunning; }, startPatience)) {
        note(u"it does not end when it is asked to"_s);
    } else if (program->exitStatus() != QProcess::NormalExit || program->exitCode() != 0) {
        note(u"it ended with %1"_s.arg(program->exitCode()));
    }
    m_notifications->recordEnd();
}

void SoakDesk::ask(const QString &action)
{
    QDBusMessage message = methodOf(programName, programPath, u"org.freedesktop.Application"_s,
        action.isEmpty() ? u"Activate"_s : u"ActivateAction"_s);
    if (!action.isEmpty())
        message << action << QVariant(QVariantList());
    message << QVariantMap();
    m_session.lab().bus().send(message);
}

/// As the bar does it.
void SoakDesk::clickIcon()
{
    const QString prefix = u"org.kde.StatusNotifierItem-%1-"_s.arg(process());
    const QDBusReply<QStringList> names = m_session.lab().bus().interface()->registeredServiceNames();
    for (const QString &name : names.value()) {
        if (name.startsWith(prefix)) {
            QDBusMessage message
                = methodOf(name, u"/StatusNotifierItem"_s, u"org.kde.StatusNotifierItem"_s, u"Activate"_s);
            message << 1000 << 10;
            m_session.lab().bus().send(message);
            return;
        }
    }
}

// ---- commands --------------------------------------------------------------------------------------------

QByteArrayList SoakDesk::secrets() const
{
    QByteArrayList secrets = m_proxy.credentials();
    secrets.append(QByteArray(DemoService::password.data()));
    return secrets;
}

void SoakDesk::give(const QStringList &arguments, const QByteArray &input)
{
    collectCommands();
    if (m_givenCommands.size() >= mostCommands)
        return; // an impatient person, but not that much
    Command command{.process = std::make_unique<QProcess>(),
        .name = arguments.constFirst(),
        .begin = NotificationLog::now()};
    command.process->setProcessEnvironment(m_session.environment());
    command.process->setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
    command.process->start(QStringLiteral(ORBITLEDGE_PROGRAM), arguments);
    command.process->write(input);
    command.process->closeWriteChannel();
    m_givenCommands.push_back(std::move(command));
}

bool SoakDesk::collectCommands()
{
    constexpr qint64 patience = 300'000; // it may wait for another one, and for a keyring
    for (auto command = m_givenCommands.begin(); command != m_givenCommands.end();) {
        if (command->process->state() == QProcess::NotRunning) {
            take(*command);
            command = m_givenCommands.erase(command);
            continue;
        }
        if (NotificationLog::now() - command->begin > patience)
            note(u"\"%1\" does not end"_s.arg(command->name));
        ++command;
    }
    return m_givenCommands.empty();
}

void SoakDesk::take(Command &command)
{
    QProcess &process = *command.process;
    ++m_commands;
    const QByteArray errors = process.readAllStandardError();
    const QByteArray output = process.readAllStandardOutput();
    const bool isRefusal = process.exitCode() == 1;
    m_refusals += isRefusal ? 1 : 0;
    if (process.exitStatus() != QProcess::NormalExit || (!isRefusal && process.exitCode() != 0))
        note(u"\"%1\" ended with %2: %3"_s.arg(command.name)
                .arg(process.exitCode())
                .arg(QString::fromUtf8(errors)));
    for (const QByteArray &line : errors.split('\n')) {
        if (!line.isEmpty() && !line.startsWith("orbitledge: "))
            note(u"\"%1\" said: %2"_s.arg(command.name, QString::fromUtf8(errors)));
    }
    const QByteArrayList kept = secrets();
    for (const QByteArray &secret : kept) {
        if (errors.contains(secret) || output.contains(secret))
            note(u"\"%1\" told a secret"_s.arg(command.name));
    }
    constexpr qint64 late = 5000; // where the program goes on with it
    if (command.name == u"sign-out")
        m_notifications->recordForgetting({command.begin, NotificationLog::now() + late});
}

// ---- what is around it -----------------------------------------------------------------------------------

void SoakDesk::setWeather(SoakPlan::Step step)
{
    m_proxy.setWeather(weatherOf(step));
}

void SoakDesk::bringServiceBack()
{
    DemoService &service = m_session.service();
    if (service.isRunning()) {
        service.resume();
        return;
    }
    const QString today = QDate::currentDate().toString(Qt::ISODate);
    if (!service.start(service.dataFolder(), {u"--today"_s, today}))
        qFatal("no service: %s", qPrintable(service.problem()));
    m_proxy.setService(service.port());
}

void SoakDesk::lockKeyring()
{
    QDBusMessage message = methodOf(
        keyringName, u"/org/freedesktop/secrets"_s, u"org.freedesktop.Secret.Service"_s, u"Lock"_s);
    message << QVariant::fromValue(
        QList<QDBusObjectPath>{QDBusObjectPath(u"/org/freedesktop/secrets/collection/login"_s)});
    m_session.lab().bus().send(message);
}

void SoakDesk::bringKeyringBack()
{
    if (m_session.lab().isOnBus(keyringName))
        m_session.lab().killKeyring();
    m_session.lab().startKeyring(DesktopLab::Keyring::Unlocked);
}

void SoakDesk::bringDaemonBack()
{
    if (m_isDaemonPaused)
        m_dunst.resume();
    else if (!m_isDaemonThere)
        m_dunst.start();
    m_isDaemonPaused = false;
    m_isDaemonThere = true;
}

/// Of the program and the commands: so many days from now.
void SoakDesk::setClock(int days)
{
    const QString name = path(u"clock"_s);
    QFile file(name + u".new"_s);
    const QByteArray offset = (days < 0 ? "" : "+") + QByteArray::number(days) + "d\n";
    if (!file.open(QIODevice::WriteOnly) || file.write(offset) < 0)
        qFatal("the clock cannot be set");
    file.close();
    if (::rename(file.fileName().toLocal8Bit().constData(), name.toLocal8Bit().constData()) != 0)
        qFatal("the clock cannot be set");
}

void SoakDesk::replyToPrompt(const QStringList &how)
{
    QProcess search;
    search.setProcessEnvironment(m_session.lab().environment());
    search.start(u"xdotool"_s,
        QStringList{u"search"_s, u"--onlyvisible"_s, u"--class"_s, u"gcr-prompter"_s, u"windowfocus"_s}
            + how);
    search.waitForFinished();
}

void SoakDesk::addElsewhere()
{
    const HttpExchange service(m_session.service().port());
    const QByteArray name = "soak " + QByteArray::number(++m_added);
    const QByteArray day = QDate::currentDate().addDays(1).toString(Qt::ISODate).toUtf8();
    const auto answer = service.post("/subscriptions",
        R"({"name":")" + name + R"(","cost":1,"billing_cycle":"monthly","next_billing_date":")" + day + "\"}",
        m_cookie);
    if (answer.status != 201)
        qFatal("the service does not take a subscription: %d", answer.status);
    const QJsonObject object = QJsonDocument::fromJson(answer.body).object();
    const QString id = object.contains(u"id"_s) ? object[u"id"_s].toString()
                                                : object[u"subscription"_s][u"id"_s].toString();
    m_elsewhere.push_back(id.toLatin1());
    constexpr std::size_t most = 25;
    if (m_elsewhere.size() <= most)
        return;
    service.post("/subscriptions/" + m_elsewhere.front() + "/cancel", "{}", m_cookie);
    m_elsewhere.pop_front();
}

// ---- a person --------------------------------------------------------------------------------------------

QString SoakDesk::focusedTitle()
{
    QProcess query;
    query.setProcessEnvironment(m_session.lab().environment());
    query.start(u"xdotool"_s, {u"getwindowfocus"_s, u"getwindowname"_s});
    query.waitForFinished();
    return QString::fromUtf8(query.readAllStandardOutput()).trimmed();
}

bool SoakDesk::isPanelReady(int patience)
{
    return QTest::qWaitFor([this] { return focusedTitle() == ProgramDesk::panelTitle(); }, patience);
}

void SoakDesk::press(const QStringList &keys)
{
    m_session.lab().run(u"xdotool"_s, QStringList{u"key"_s} + keys);
}

void SoakDesk::cancelFirst()
{
    if (!isPanelReady(0))
        return;
    press({u"Tab"_s, u"Home"_s, u"Right"_s, u"Right"_s, u"Return"_s});
    constexpr int patience = 1000;
    if (QTest::qWaitFor([this] { return focusedTitle().startsWith(u"Cancel "); }, patience))
        press({u"Tab"_s, u"Return"_s});
}

void SoakDesk::addByForm()
{
    ask(u"quick-add"_s);
    constexpr int patience = 2000;
    if (!isPanelReady(patience))
        return;
    m_session.lab().run(u"xdotool"_s, {u"type"_s, u"--"_s, u"formed %1"_s.arg(++m_added)});
    press({u"Tab"_s, u"4"_s, u"period"_s, u"5"_s, u"Return"_s});
}

void SoakDesk::perform(const SoakPlan::Move &move)
{
    using Step = SoakPlan::Step;
    constexpr int mostDays = 3;
    const int days = 1 + move.choice % mostDays;
    switch (move.step) {
    case Step::ServiceKilled:
        m_session.service().kill();
        m_proxy.setService(0);
        break;
    case Step::ServiceFrozen:
        m_session.service().freeze();
        break;
    case Step::ServiceBack:
        bringServiceBack();
        break;
    case Step::KeyringKilled:
        m_session.lab().killKeyring();
        break;
    case Step::KeyringPaused:
        m_session.lab().pauseKeyring();
        break;
    case Step::KeyringLocked:
        lockKeyring();
        break;
    case Step::KeyringBack:
        bringKeyringBack();
        break;
    case Step::PromptAnswered:
        replyToPrompt({u"type"_s, u"--"_s, DesktopLab::keyringPassword() + u'\n'});
        break;
    case Step::PromptDismissed:
        replyToPrompt({u"key"_s, u"Escape"_s});
        break;
    case Step::DaemonKilled:
        m_dunst.kill();
        m_isDaemonThere = false;
        break;
    case Step::DaemonPaused:
        m_dunst.pause();
        m_isDaemonPaused = true;
        break;
    case Step::DaemonBack:
        bringDaemonBack();
        break;
    case Step::NotificationsClosed:
        m_dunst.closeAll();
        break;
    case Step::BarKilled:
        m_session.desk().killBar();
        m_isBarThere = false;
        break;
    case Step::BarBack:
        m_session.desk().startBar();
        m_isBarThere = true;
        break;
    case Step::ClockForward:
        setClock(days);
        break;
    case Step::ClockBack:
        setClock(-days);
        break;
    case Step::ClockRight:
        setClock(0);
        break;
    case Step::PanelOpened:
        ask({});
        break;
    case Step::IconClicked:
        clickIcon();
        break;
    case Step::EscapePressed:
        press({u"Escape"_s});
        break;
    case Step::SettingsOpened:
        ask(u"settings"_s);
        break;
    case Step::Refreshed:
        give({u"refresh"_s});
        break;
    case Step::FirstCancelled:
        cancelFirst();
        break;
    case Step::FirstUncancelled:
        if (isPanelReady(0))
            press({u"Tab"_s, u"Home"_s, u"Right"_s, u"Right"_s, u"Return"_s});
        break;
    case Step::QuickAdded:
        addByForm();
        break;
    case Step::AddedElsewhere:
        addElsewhere();
        break;
    case Step::StatusAsked:
        give({u"status"_s});
        break;
    case Step::TimelineAsked:
        give({u"timeline"_s});
        break;
    case Step::SignedIn:
        give({u"sign-in"_s, QString(DemoService::email)}, QByteArray(DemoService::password.data()) + '\n');
        break;
    case Step::SignedOut:
        give({u"sign-out"_s});
        break;
    case Step::Killed:
        kill();
        start();
        break;
    case Step::QuitAndStarted:
        quit();
        start();
        break;
    default:
        setWeather(move.step);
        break;
    }
}

void SoakDesk::heal()
{
    m_proxy.setWeather(FaultProxy::Weather::Good);
    setClock(0);
    bringServiceBack();
    bringKeyringBack();
    // A new one, which is told of: one that is only heard again is found at the next attempt, up to an hour
    // later.
    m_isDaemonPaused = false;
    if (m_isDaemonThere)
        m_dunst.kill();
    m_dunst.start();
    m_isDaemonThere = true;
    if (!m_isBarThere)
        m_session.desk().startBar();
    m_isBarThere = true;
    replyToPrompt({u"key"_s, u"Escape"_s});
    constexpr int patience = 300'000;
    if (!QTest::qWaitFor([this] { return collectCommands(); }, patience))
        note(u"commands do not end"_s);
    give({u"sign-in"_s, QString(DemoService::email)}, QByteArray(DemoService::password.data()) + '\n');
    const int refusals = m_refusals;
    if (!QTest::qWaitFor([this] { return collectCommands(); }, patience) || m_refusals != refusals)
        note(u"nobody can sign in when everything is well again"_s);
}

} // namespace orbitledge::testing
