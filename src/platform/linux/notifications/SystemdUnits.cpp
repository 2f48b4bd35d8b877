#include "platform/linux/notifications/SystemdUnits.h"

#include <algorithm>
#include <array>

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

/// What decides which data the program finds, which service it asks, and which day it is.
constexpr std::array variables{"XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME",
    "ORBITLEDGE_API_URL", "ORBITLEDGE_WEB_URL", "TZ"};

bool isControl(char character)
{
    const auto code = static_cast<unsigned char>(character);
    return code < 0x20 || code == 0x7f;
}

QByteArray escapedByte(char character)
{
    return "\\x" + QByteArray(1, character).toHex();
}

/// One word of a list of words, whatever is in it.
QByteArray quoted(const QByteArray &text)
{
    const bool isUtf8 = text.isValidUtf8(); // a unit file has to be
    QByteArray word = "\"";
    for (const char character : text) {
        if (character == '%')
            word += "%%"; // or it would stand for something
        else if (character == '"' || character == '\\')
            word += QByteArray("\\") + character;
        else if (isControl(character) || (!isUtf8 && static_cast<unsigned char>(character) >= 0x80))
            word += escapedByte(character);
        else
            word += character;
    }
    return word + '"';
}

/// systemd passes over a variable with another value, and the program would go and use other data.
bool isValueForSystemd(const QByteArray &value)
{
    const auto isForbidden
        = [](char character) { return isControl(character) && character != '\t' && character != '\n'; };
    return value.isValidUtf8() && std::ranges::none_of(value, isForbidden);
}

/// systemd takes no quotation marks, backslashes or control characters in the name of what it executes, but
/// in arguments. The colon keeps it from putting variables in for "$NAME".
QByteArray commandLine(const QByteArray &program)
{
    const auto isSpecial
        = [](char character) { return isControl(character) || QByteArrayView("\"'\\").contains(character); };
    if (std::ranges::any_of(program, isSpecial))
        return R"(:/bin/sh -c "exec \"$0\" \"$@\"" )" + quoted(program) + " deliver-reminders";
    return ':' + quoted(program) + " deliver-reminders";
}

/// A whole second, not before `next`, and within what systemd can express: it knows no year after 2199, and
/// for a timer a date of 0 is none.
Instant elapseFor(Instant next)
{
    constexpr qint64 firstSecond = 86'400;
    constexpr qint64 lastSecond = 7'258'118'399; // 2199-12-31 23:59:59
    const qint64 milliseconds = next.millisecondsSinceEpoch();
    const qint64 seconds = milliseconds / 1000 + (milliseconds % 1000 > 0 ? 1 : 0);
    return Instant::fromSecondsSinceEpoch(std::clamp(seconds, firstSecond, lastSecond));
}

QByteArray calendarEvent(Instant elapse)
{
    QByteArray text = elapse.text();
    text.chop(1);
    return text.replace('T', ' ') + " UTC";
}

} // namespace

tl::expected<SystemdUnits, QString> unitsForReminders(Instant next, const std::filesystem::path &program,
    const std::function<QByteArray(const char *)> &variable)
{
    if (!program.is_absolute())
        return tl::make_unexpected(u"it is not known where the program is"_s);

    QByteArray environment;
    for (const char *const name : variables) {
        const QByteArray value = variable(name);
        if (!isValueForSystemd(value)) {
            return tl::make_unexpected(
                u"the variable %1 has a value that systemd does not take"_s.arg(QLatin1StringView(name)));
        }
        // What the session has and this process has not is taken away as well: it would be other data again.
        environment += value.isEmpty() ? QByteArray("UnsetEnvironment=") + name + '\n'
                                       : "Environment=" + quoted(QByteArray(name) + '=' + value) + '\n';
    }

    const Instant elapse = elapseFor(next);
    const QByteArray origin
        = "# Written by Orbitledge while a reminder is due to come, and taken away by it.\n";
    return SystemdUnits{
        .elapse = elapse,
        .service = origin
            + "[Unit]\n"
              "Description=Deliver the reminders of Orbitledge\n\n"
              "[Service]\n"
              "Type=oneshot\n"
              // Who waits for clicks on what was shown stays behind.
              "KillMode=process\n"
            + environment + "ExecStart=" + commandLine(QByteArray::fromStdString(program.native())) + '\n',
        .timer = origin
            + "[Unit]\n"
              "Description=When the next reminder of Orbitledge is due\n\n"
              "[Timer]\n"
              "OnCalendar="
            + calendarEvent(elapse)
            + "\n"
              "AccuracySec=1s\n"
              "Persistent=true\n\n"
              "[Install]\n"
              "WantedBy=timers.target\n",
    };
}

} // namespace orbitledge
