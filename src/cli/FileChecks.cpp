#include "cli/FileChecks.h"

#include "cli/DoctorVerdict.h"

namespace orbitledge {

using namespace Qt::StringLiterals;
using namespace findings;

namespace {

using enum CheckLevel;
using Detail = Check::Detail;

Verdict autostartVerdict(const Autostart &entry)
{
    const QString again = u"Switch \"Launch at login\" off and on again in the settings."_s;
    switch (entry.status) {
    case LoginItemStatus::NotRegistered:
        return {.level = Info, .state = "off", .text = u"off"_s, .advice = {}};
    case LoginItemStatus::RequiresApproval:
        return {.level = Info,
            .state = "switched-off",
            .text = u"switched off by the desktop, in %1"_s.arg(entry.file),
            .advice = u"Switch it on in your desktop's settings for what starts at login, if you want it."_s};
    case LoginItemStatus::NotFound:
        if (entry.program.isEmpty()) {
            return {.level = Warning,
                .state = "unreadable",
                .text = u"%1 names no program"_s.arg(entry.file),
                .advice = again};
        }
        return {.level = Warning,
            .state = "stale",
            .text = (entry.isProgramThere ? u"%1 does not start %2: it asks for something that is not there"_s
                                          : u"%1 starts %2, which is not there"_s)
                .arg(entry.file, entry.program),
            .advice = again};
    case LoginItemStatus::Enabled:
        break;
    }
    if (!entry.isThisProgram) {
        return {.level = Warning,
            .state = "other-program",
            .text = u"%1 starts another copy, %2"_s.arg(entry.file, entry.program),
            .advice = again};
    }
    return {.level = Ok, .state = "on", .text = u"on"_s, .advice = {}};
}

/// As chmod(1) takes it.
QString octal(int mode)
{
    constexpr int base = 8;
    constexpr int digits = 4;
    return QString::number(mode, base).rightJustified(digits, u'0');
}

bool isForOthers(int mode)
{
    constexpr int othersBits = 077;
    return (mode & othersBits) != 0;
}

Verdict folderVerdict(const Folder &folder)
{
    const QString &path = folder.path;
    const auto failure = [](const char *state, const QString &text, const QString &advice) {
        return Verdict{.level = Failure, .state = state, .text = text, .advice = advice};
    };
    switch (folder.state) {
    case Folder::State::Nowhere:
        return failure(
            "nowhere", u"the environment names no place for it"_s, u"Set HOME to your home folder."_s);
    case Folder::State::NotAFolder:
        return failure("not-a-folder", u"something that is no folder is in the way of %1"_s.arg(path),
            u"Move that away, so that the folder can be made."_s);
    case Folder::State::NotMade:
    case Folder::State::Made:
        break;
    }
    if (!folder.isOwn && !folder.isWritable) {
        return failure("foreign", u"%1 belongs to another user"_s.arg(path),
            u"Give it back to yourself with chown, which takes an administrator."_s);
    }
    if (!folder.isWritable) {
        return failure("not-writable", u"nothing can be written to %1"_s.arg(path),
            u"Allow yourself to write there, and see that the disk is neither full nor read-only."_s);
    }
    if (folder.state == Folder::State::NotMade) {
        return {.level = Ok,
            .state = "not-made",
            .text = u"%1 is made when it is needed"_s.arg(path),
            .advice = {}};
    }
    if (isForOthers(folder.mode)) {
        return {.level = Warning,
            .state = "not-private",
            .text = u"%1 can be entered by others (mode %2)"_s.arg(path, octal(folder.mode)),
            .advice = u"Run chmod 700 on it."_s};
    }
    return {.level = Ok, .state = "writable", .text = path, .advice = {}};
}

QString sizeText(qint64 bytes)
{
    constexpr qint64 step = 1024;
    if (bytes < step)
        return bytes == 1 ? u"1 byte"_s : u"%1 bytes"_s.arg(bytes);
    if (bytes < step * step)
        return u"%1 KiB"_s.arg(bytes / step);
    return u"%1 MiB"_s.arg(bytes / (step * step));
}

qint64 ageSeconds(const File &file, Instant now)
{
    constexpr qint64 millisecondsPerSecond = 1000;
    return (now.millisecondsSinceEpoch() - file.modified.millisecondsSinceEpoch()) / millisecondsPerSecond;
}

QString ageText(qint64 seconds)
{
    constexpr qint64 minute = 60;
    constexpr qint64 hour = 60 * minute;
    constexpr qint64 day = 24 * hour;
    const auto counted = [](qint64 count, const QString &unit) {
        return u"%1 %2%3 ago"_s.arg(count).arg(unit, count == 1 ? QString() : u"s"_s);
    };
    if (seconds < 0)
        return u"in the future, by this clock"_s;
    if (seconds < minute)
        return u"just now"_s;
    if (seconds < hour)
        return counted(seconds / minute, u"minute"_s);
    return seconds < day ? counted(seconds / hour, u"hour"_s) : counted(seconds / day, u"day"_s);
}

Verdict fileVerdict(const File &file, Instant now)
{
    const QString &path = file.path;
    switch (file.state) {
    case File::State::Missing:
        return {.level = Info, .state = "missing", .text = u"%1 is not there"_s.arg(path), .advice = {}};
    case File::State::Unreadable:
        return {.level = Warning,
            .state = "unreadable",
            .text = u"%1 cannot be read"_s.arg(path),
            .advice = u"Make it yours and readable for you, or move it away."_s};
    case File::State::Damaged:
        return {.level = Warning,
            .state = "damaged",
            .text = u"%1 is damaged"_s.arg(path),
            .advice = u"Move it away; Orbitledge makes a new one."_s};
    case File::State::Whole:
        break;
    }
    if (isForOthers(file.mode)) {
        return {.level = Warning,
            .state = "not-private",
            .text = u"others may read or change %1 (mode %2)"_s.arg(path, octal(file.mode)),
            .advice = u"Run chmod 600 on it."_s};
    }
    if (!file.isOwn) {
        return {.level = Warning,
            .state = "foreign",
            .text = u"%1 belongs to another user"_s.arg(path),
            .advice = u"Give it back to yourself with chown, which takes an administrator."_s};
    }
    const QString text
        = u"%1, %2, written %3"_s.arg(path, sizeText(file.size), ageText(ageSeconds(file, now)));
    return {.level = Ok, .state = "whole", .text = text, .advice = {}};
}

} // namespace

Check autostartCheck(const Autostart &entry)
{
    const bool hasProgram = !entry.program.isEmpty();
    return checkOf("autostart", u"Start at login"_s, autostartVerdict(entry),
        {{"file", entry.file}, {"program", hasProgram ? Detail(entry.program) : Detail()}});
}

Check folderCheck(const Folder &folder)
{
    const bool isMade = folder.state == Folder::State::Made;
    QByteArray subject = folder.subject;
    subject[0] = QChar(QLatin1Char(subject[0])).toUpper().toLatin1();
    const QString title = u"Folder for %1"_s.arg(QLatin1StringView(folder.subject));
    return checkOf(("folder" + subject).constData(), title, folderVerdict(folder),
        {{"path", folder.path}, {"writable", folder.isWritable},
            {"mode", isMade ? Detail(octal(folder.mode)) : Detail()}});
}

Check fileCheck(const File &file, Instant now)
{
    const bool isThere = file.state != File::State::Missing;
    const auto ifThere = [isThere](const Detail &detail) { return isThere ? detail : Detail(); };
    QByteArray subject = file.subject;
    subject[0] = QChar(QLatin1Char(subject[0])).toUpper().toLatin1();
    const QString title = u"File of %1"_s.arg(
        file.subject == "snapshot" ? u"saved data"_s : QString::fromLatin1(file.subject));
    return checkOf(("file" + subject).constData(), title, fileVerdict(file, now),
        {{"path", file.path}, {"size", ifThere(file.size)}, {"ageSeconds", ifThere(ageSeconds(file, now))},
            {"mode", ifThere(octal(file.mode))}});
}

} // namespace orbitledge
