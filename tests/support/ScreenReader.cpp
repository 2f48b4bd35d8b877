#include "support/ScreenReader.h"

#include "support/AccessibilityBusAddress.h"
#include "support/AccessibilityEvents.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QFile>
#include <QHash>
#include <QTest>

#include <algorithm>
#include <array>
#include <utility>

namespace orbitledge::testing {

using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 20'000; // milliseconds; only reached by what will never come

const QString registryName = u"org.a11y.atspi.Registry"_s;
const QString rootPath = u"/org/a11y/atspi/accessible/root"_s;
const QString nullPath = u"/org/a11y/atspi/null"_s;
const QString accessibleInterface = u"org.a11y.atspi.Accessible"_s;
const QString actionInterface = u"org.a11y.atspi.Action"_s;
const QString componentInterface = u"org.a11y.atspi.Component"_s;
const QString textInterface = u"org.a11y.atspi.Text"_s;
const QString valueInterface = u"org.a11y.atspi.Value"_s;

/// The states of AT-SPI in the order of their bits.
constexpr std::array stateNames{"invalid", "active", "armed", "busy", "checked", "collapsed", "defunct",
    "editable", "enabled", "expandable", "expanded", "focusable", "focused", "has tool tip", "horizontal",
    "iconified", "modal", "multi line", "multi selectable", "opaque", "pressed", "resizable", "selectable",
    "selected", "sensitive", "showing", "single line", "stale", "transient", "vertical", "visible",
    "manages descendants", "indeterminate", "required", "truncated", "animated", "invalid entry",
    "supports autocompletion", "selectable text", "is default", "visited", "checkable", "has popup",
    "read only"};

/// The roles of AT-SPI by their numbers, which are what a screen reader goes by. Those that nothing here can
/// have are left out.
QString roleName(uint number)
{
    static const QHash<uint, QString> names{{2, u"alert"_s}, {5, u"calendar"_s}, {7, u"check box"_s},
        {8, u"check menu item"_s}, {11, u"combo box"_s}, {12, u"date editor"_s}, {16, u"dialog"_s},
        {18, u"drawing area"_s}, {20, u"filler"_s}, {23, u"frame"_s}, {26, u"icon"_s}, {27, u"image"_s},
        {29, u"label"_s}, {31, u"list"_s}, {32, u"list item"_s}, {33, u"menu"_s}, {34, u"menu bar"_s},
        {35, u"menu item"_s}, {38, u"page tab list"_s}, {39, u"panel"_s}, {40, u"password text"_s},
        {41, u"popup menu"_s}, {42, u"progress bar"_s}, {43, u"push button"_s}, {44, u"radio button"_s},
        {48, u"scroll bar"_s}, {49, u"scroll pane"_s}, {50, u"separator"_s}, {51, u"slider"_s},
        {52, u"spin button"_s}, {54, u"status bar"_s}, {55, u"table"_s}, {56, u"table cell"_s},
        {61, u"text"_s}, {62, u"toggle button"_s}, {64, u"tool tip"_s}, {66, u"tree table"_s},
        {67, u"unknown"_s}, {69, u"window"_s}, {73, u"paragraph"_s}, {75, u"application"_s}, {79, u"entry"_s},
        {82, u"document frame"_s}, {83, u"heading"_s}, {85, u"section"_s}, {87, u"form"_s}, {88, u"link"_s},
        {98, u"list box"_s}, {99, u"grouping"_s}, {101, u"notification"_s}, {116, u"static"_s}};
    return names.value(number, u"role %1"_s.arg(number));
}

struct Reference {
    QString service;
    QString path;
};

Reference referenceIn(const QDBusArgument &argument)
{
    Reference reference;
    QDBusObjectPath path;
    argument.beginStructure();
    argument >> reference.service >> path;
    argument.endStructure();
    reference.path = path.path();
    return reference;
}

QList<Reference> referencesIn(const QDBusMessage &answer)
{
    QList<Reference> list;
    const auto argument = answer.arguments().value(0).value<QDBusArgument>();
    if (argument.currentType() != QDBusArgument::ArrayType)
        return list;
    argument.beginArray();
    while (!argument.atEnd())
        list.append(referenceIn(argument));
    argument.endArray();
    return list;
}

QStringList statesIn(const QDBusMessage &answer)
{
    QStringList states;
    const auto words = qdbus_cast<QList<uint>>(answer.arguments().value(0));
    for (std::size_t bit = 0; bit < stateNames.size(); ++bit) {
        const auto word = static_cast<qsizetype>(bit / 32);
        if (word < words.size() && ((words[word] >> (bit % 32)) & 1U) != 0)
            states.append(QString::fromLatin1(stateNames.at(bit)));
    }
    return states;
}

QRect rectIn(const QDBusMessage &answer)
{
    const auto argument = answer.arguments().value(0).value<QDBusArgument>();
    if (argument.currentType() != QDBusArgument::StructureType)
        return {};
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    argument.beginStructure();
    argument >> x >> y >> width >> height;
    argument.endStructure();
    return {x, y, width, height};
}

/// Names of what can be done, from a list of (name, description, key binding).
QStringList actionsIn(const QDBusMessage &answer)
{
    QStringList names;
    const auto argument = answer.arguments().value(0).value<QDBusArgument>();
    if (argument.currentType() != QDBusArgument::ArrayType)
        return names;
    argument.beginArray();
    while (!argument.atEnd()) {
        QString name;
        QString description;
        QString keys;
        argument.beginStructure();
        argument >> name >> description >> keys;
        argument.endStructure();
        names.append(name);
    }
    argument.endArray();
    return names;
}

/// Of a list of (kind of relation, list of references), those that it is labelled by.
QList<Reference> labelsIn(const QDBusMessage &answer)
{
    constexpr uint labelledBy = 2;
    QList<Reference> labels;
    const auto argument = answer.arguments().value(0).value<QDBusArgument>();
    if (argument.currentType() != QDBusArgument::ArrayType)
        return labels;
    argument.beginArray();
    while (!argument.atEnd()) {
        uint kind = 0;
        argument.beginStructure();
        argument >> kind;
        argument.beginArray();
        while (!argument.atEnd()) {
            const Reference target = referenceIn(argument);
            if (kind == labelledBy)
                labels.append(target);
        }
        argument.endArray();
        argument.endStructure();
    }
    argument.endArray();
    return labels;
}

bool isGood(const QDBusMessage &answer)
{
    return answer.type() == QDBusMessage::ReplyMessage;
}

QVariant variantIn(const QDBusMessage &answer)
{
    return isGood(answer) ? answer.arguments().value(0).value<QDBusVariant>().variant() : QVariant();
}

} // namespace

QString Accessible::text() const
{
    QString line = u"%1 \"%2\""_s.arg(role, name);
    if (value)
        line += u" = \"%1\""_s.arg(*value);
    if (!description.isEmpty())
        line += u" (%1)"_s.arg(description);
    if (!labels.isEmpty())
        line += u" labelled by %1"_s.arg(labels.join(u", "_s));
    if (!actions.isEmpty())
        line += u" does %1"_s.arg(actions.join(u", "_s));
    return line + u" [%1]"_s.arg(states.join(u", "_s));
}

/// The connection, and what is asked over it. Questions of one thing go out together.
struct ScreenReader::Bus {
    QDBusConnection connection;
    AccessibilityEvents events;

    explicit Bus(QDBusConnection connected)
        : connection(std::move(connected))
    {
        if (!connection.isConnected())
            qFatal("cannot connect to the accessibility bus");
        events.listenTo(connection);
    }

    QDBusMessage call(const QString &service, const QString &path, const QString &interface,
        const QString &method, const QVariantList &arguments = {}) const
    {
        return connection.call(message(service, path, interface, method, arguments));
    }
    QDBusPendingCall ask(const QString &service, const QString &path, const QString &interface,
        const QString &method, const QVariantList &arguments = {}) const
    {
        return connection.asyncCall(message(service, path, interface, method, arguments));
    }
    QDBusPendingCall askProperty(
        const QString &service, const QString &path, const QString &interface, const QString &name) const
    {
        return ask(service, path, u"org.freedesktop.DBus.Properties"_s, u"Get"_s, {interface, name});
    }
    static QDBusMessage answerOf(QDBusPendingCall question)
    {
        question.waitForFinished();
        return question.reply();
    }

    [[nodiscard]] QString nameOf(const QString &service, const QString &path) const
    {
        return variantIn(answerOf(askProperty(service, path, accessibleInterface, u"Name"_s))).toString();
    }
    [[nodiscard]] QString roleOf(const QString &service, const QString &path) const
    {
        const QDBusMessage answer = call(service, path, accessibleInterface, u"GetRole"_s);
        return isGood(answer) ? roleName(answer.arguments().value(0).toUInt()) : QString();
    }
    [[nodiscard]] QList<Reference> childrenOf(const QString &service, const QString &path) const
    {
        return referencesIn(call(service, path, accessibleInterface, u"GetChildren"_s));
    }

    [[nodiscard]] std::optional<QString> valueOf(
        const QString &service, const QString &path, const QStringList &interfaces) const
    {
        if (interfaces.contains(textInterface)) {
            const QDBusMessage answer = call(service, path, textInterface, u"GetText"_s, {0, -1});
            if (isGood(answer))
                return answer.arguments().value(0).toString();
        }
        if (interfaces.contains(valueInterface)) {
            const QVariant number
                = variantIn(answerOf(askProperty(service, path, valueInterface, u"CurrentValue"_s)));
            if (number.isValid())
                return QString::number(number.toDouble());
        }
        return std::nullopt;
    }

    [[nodiscard]] Accessible readOne(const QString &service, const QString &path) const
    {
        const auto ask = [&](const QString &interface, const QString &method, const QVariantList &arguments) {
            return this->ask(service, path, interface, method, arguments);
        };
        const auto role = ask(accessibleInterface, u"GetRole"_s, {});
        const auto name = askProperty(service, path, accessibleInterface, u"Name"_s);
        const auto description = askProperty(service, path, accessibleInterface, u"Description"_s);
        const auto states = ask(accessibleInterface, u"GetState"_s, {});
        const auto relations = ask(accessibleInterface, u"GetRelationSet"_s, {});
        const auto interfaces = ask(accessibleInterface, u"GetInterfaces"_s, {});
        constexpr uint onTheScreen = 0;
        const auto place = ask(componentInterface, u"GetExtents"_s, {onTheScreen});

        Accessible read;
        const QDBusMessage roleAnswer = answerOf(role);
        if (!isGood(roleAnswer))
            return read;
        read.path = path;
        read.role = roleName(roleAnswer.arguments().value(0).toUInt());
        read.name = variantIn(answerOf(name)).toString();
        read.description = variantIn(answerOf(description)).toString();
        read.states = statesIn(answerOf(states));
        read.place = rectIn(answerOf(place));
        for (const Reference &label : labelsIn(answerOf(relations)))
            read.labels.append(nameOf(label.service, label.path));
        const QStringList known = answerOf(interfaces).arguments().value(0).toStringList();
        if (known.contains(actionInterface))
            read.actions = actionsIn(call(service, path, actionInterface, u"GetActions"_s));
        read.value = valueOf(service, path, known);
        return read;
    }

    void readBelow(
        const QString &service, const Accessible &parent, Extent extent, QList<Accessible> &list) const
    {
        constexpr int bottomless = 64;
        if (parent.depth > bottomless)
            qFatal("the tree has no bottom");
        for (const Reference &child : childrenOf(service, parent.path)) {
            if (child.path == nullPath)
                continue;
            Accessible read = readOne(service, child.path);
            if (!read.exists() || (extent == Extent::Showing && !read.is(u"showing")))
                continue;
            read.depth = parent.depth + 1;
            read.window = parent.depth == 0 ? read.name : parent.window;
            list.append(read);
            readBelow(service, read, extent, list);
        }
    }

private:
    static QDBusMessage message(const QString &service, const QString &path, const QString &interface,
        const QString &method, const QVariantList &arguments)
    {
        QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
        message.setArguments(arguments);
        return message;
    }
};

namespace {

QString freshConnectionName()
{
    static int count = 0;
    return u"screen-reader-%1"_s.arg(++count);
}

/// A bus makes its socket before it answers there.
QDBusConnection connectionTo(const QString &address)
{
    QDBusConnection connection{QString()};
    DesktopLab::await("the accessibility bus", [&] {
        connection = QDBusConnection::connectToBus(address, freshConnectionName());
        return connection.isConnected();
    });
    return connection;
}

/// A bus that only accessibility uses, as sessions start it for themselves. It is a child of the lab, so that
/// it ends with the test whatever happens; desktops have a launcher between, which may leave it behind.
QString startBus(DesktopLab &lab)
{
    const QString socket = lab.path(u"runtime/accessibility"_s);
    const QString address = u"unix:path="_s + socket;
    // The registry, which this bus starts, asks for the address.
    lab.startProgram(u"accessibility bus"_s, u"env"_s,
        {u"AT_SPI_BUS_ADDRESS="_s + address, u"dbus-daemon"_s,
            u"--config-file=/usr/share/defaults/at-spi2/accessibility.conf"_s, u"--nofork"_s,
            u"--nopidfile"_s, u"--address="_s + address},
        [&] { return QFile::exists(socket); });
    return address;
}

} // namespace

ScreenReader::ScreenReader(DesktopLab &lab)
{
    const QString address = startBus(lab);
    m_bus = std::make_unique<Bus>(connectionTo(address));
    m_address = std::make_unique<AccessibilityBusAddress>(lab.bus(), address);
    for (const QString &kind : {u"object:"_s, u"focus:"_s, u"window:"_s}) {
        const QDBusMessage answer = m_bus->call(
            registryName, u"/org/a11y/atspi/registry"_s, registryName, u"RegisterEvent"_s, {kind});
        if (!isGood(answer))
            qFatal("cannot listen to %s: %s", qPrintable(kind), qPrintable(answer.errorMessage()));
    }
}

ScreenReader::~ScreenReader()
{
    const QString name = m_bus->connection.name();
    m_bus.reset();
    QDBusConnection::disconnectFromBus(name);
}

void ScreenReader::addVariables(QProcessEnvironment &environment)
{
    // Without it the toolkit waits for a switch that desktops keep in their settings.
    environment.insert(u"QT_LINUX_ACCESSIBILITY_ALWAYS_ON"_s, u"1"_s);
    QString leaks = environment.value(u"LSAN_OPTIONS"_s);
    environment.insert(
        u"LSAN_OPTIONS"_s, leaks.replace(u"lsan-desktop.supp"_s, u"lsan-screen-reader.supp"_s));
}

void ScreenReader::awaitProgram(const QString &name)
{
    DesktopLab::await("the program on the accessibility bus", [&] {
        for (const Reference &program : m_bus->childrenOf(registryName, rootPath)) {
            if (m_bus->nameOf(program.service, program.path) == name) {
                m_service = program.service;
                return true;
            }
        }
        return false;
    });
    forgetEvents();
}

QList<Accessible> ScreenReader::read(Extent extent)
{
    QList<Accessible> list;
    Accessible application;
    application.path = rootPath;
    m_bus->readBelow(m_service, application, extent, list);
    return list;
}

QList<Accessible> ScreenReader::readWindow(const QString &title)
{
    QList<Accessible> list = read();
    list.removeIf([&](const Accessible &accessible) { return accessible.window != title; });
    return list;
}

std::optional<Accessible> ScreenReader::find(const QString &role, const QString &name, const QString &window)
{
    const QList<Accessible> all = read();
    const auto found = std::ranges::find_if(all, [&](const Accessible &accessible) {
        return accessible.role == role && accessible.name == name
            && (window.isEmpty() || accessible.window == window);
    });
    return found != all.end() ? std::optional(*found) : std::nullopt;
}

Accessible ScreenReader::await(const QString &role, const QString &name, const QString &window)
{
    std::optional<Accessible> found;
    if (!QTest::qWaitFor([&] { return (found = find(role, name, window)).has_value(); }, patience))
        qFatal("waited in vain for: %s \"%s\"\nthere is:\n%s", qPrintable(role), qPrintable(name),
            qPrintable(textOf(read())));
    return *found;
}

void ScreenReader::awaitGone(const QString &role, const QString &name, const QString &window)
{
    if (!QTest::qWaitFor([&] { return !find(role, name, window); }, patience))
        qFatal("did not go: %s \"%s\"", qPrintable(role), qPrintable(name));
}

Accessible ScreenReader::focused()
{
    Accessible found;
    for (const Accessible &accessible : read()) {
        const bool isWindow = accessible.role == u"frame" || accessible.role == u"window"
            || accessible.role == u"dialog" || accessible.role == u"alert";
        // What hands the keyboard on to something within it says that it has it, too.
        if (accessible.is(u"focused") && !isWindow)
            found = accessible;
    }
    return found;
}

Accessible ScreenReader::awaitFocus(const QString &role, const QString &name)
{
    Accessible found;
    const auto isThere = [&] {
        found = focused();
        return found.role == role && found.name == name;
    };
    if (!QTest::qWaitFor(isThere, patience))
        qFatal("the keyboard did not come to: %s \"%s\", but is at: %s", qPrintable(role), qPrintable(name),
            qPrintable(found.text()));
    return found;
}

Accessible ScreenReader::readAgain(const Accessible &accessible)
{
    Accessible now = m_bus->readOne(m_service, accessible.path);
    now.depth = accessible.depth;
    now.window = accessible.window;
    return now;
}

bool ScreenReader::act(const Accessible &accessible, const QString &action)
{
    const QStringList names
        = actionsIn(m_bus->call(m_service, accessible.path, actionInterface, u"GetActions"_s));
    const auto index = static_cast<int>(names.indexOf(action));
    if (index < 0)
        qFatal("%s does not do %s", qPrintable(accessible.text()), qPrintable(action));
    const QDBusMessage answer
        = m_bus->call(m_service, accessible.path, actionInterface, u"DoAction"_s, {index});
    return isGood(answer) && answer.arguments().value(0).toBool();
}

QList<AccessibleEvent> ScreenReader::events() const
{
    QList<AccessibleEvent> list;
    for (AccessibleEvent event : m_bus->events.of(m_service)) {
        event.name = m_bus->nameOf(m_service, event.path);
        event.role = m_bus->roleOf(m_service, event.path);
        list.append(event);
    }
    return list;
}

void ScreenReader::forgetEvents()
{
    m_bus->events.forget();
}

AccessibleEvent ScreenReader::awaitEvent(const QString &kind, const QString &detail, const QString &name)
{
    AccessibleEvent found;
    const auto isTold = [&] {
        const QList<AccessibleEvent> all = events();
        const auto place = std::ranges::find_if(all, [&](const AccessibleEvent &event) {
            return event.kind == kind && event.detail == detail && event.name == name;
        });
        if (place == all.end())
            return false;
        found = *place;
        return true;
    };
    if (!QTest::qWaitFor(isTold, patience)) {
        QStringList lines;
        for (const AccessibleEvent &event : events())
            lines.append(u"%1:%2 %3 of %4 \"%5\""_s.arg(
                event.kind, event.detail, QString::number(event.number), event.role, event.name));
        qFatal("was not told: %s:%s of \"%s\", but:\n%s", qPrintable(kind), qPrintable(detail),
            qPrintable(name), qPrintable(lines.join(u'\n')));
    }
    return found;
}

QString ScreenReader::textOf(const QList<Accessible> &accessibles)
{
    QStringList lines;
    for (const Accessible &accessible : accessibles)
        lines.append(QString(2 * (accessible.depth - 1), u' ') + accessible.text());
    return lines.join(u'\n');
}

} // namespace orbitledge::testing
