#include "cli/DoctorReport.h"

#include "cli/Terminal.h"
#include "model/json/JsonWriter.h"

#include <algorithm>

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

QLatin1StringView levelName(CheckLevel level)
{
    switch (level) {
    case CheckLevel::Ok:
        return "ok"_L1;
    case CheckLevel::Info:
        return "info"_L1;
    case CheckLevel::Missing:
        return "missing"_L1;
    case CheckLevel::Warning:
        return "warning"_L1;
    case CheckLevel::Failure:
        break;
    }
    return "failure"_L1;
}

QList<Check> failuresIn(const QList<Check> &checks)
{
    QList<Check> failures;
    std::ranges::copy_if(checks, std::back_inserter(failures),
        [](const Check &check) { return check.level == CheckLevel::Failure; });
    return failures;
}

QString summary(const QList<Check> &checks)
{
    const QList<Check> failures = failuresIn(checks);
    if (failures.isEmpty())
        return u"Everything that Orbitledge needs is there.\n"_s;
    QStringList titles;
    for (const Check &check : failures)
        titles.append(check.title);
    return u"What Orbitledge needs is not all there: %1.\n"_s.arg(titles.join(u", "_s));
}

struct DetailWriter {
    json::JsonWriter &writer;

    void operator()(std::monostate /*absent*/) const { writer.null(); }
    void operator()(bool value) const { writer.boolean(value); }
    void operator()(qint64 value) const { writer.number(value); }
    void operator()(const QString &value) const { writer.string(value); }
    void operator()(const QStringList &values) const { json::write(writer, values); }
};

void writeCheck(json::JsonWriter &writer, const Check &check)
{
    writer.key(std::string_view(check.subject.constData(), static_cast<std::size_t>(check.subject.size())));
    writer.beginObject();
    writer.key("level");
    writer.string(levelName(check.level));
    writer.key("state");
    writer.string(QLatin1StringView(check.state));
    writer.key("text");
    writer.string(check.text);
    writer.key("advice");
    if (check.advice.isEmpty())
        writer.null();
    else
        writer.string(check.advice);
    for (const auto &[key, detail] : check.details) {
        writer.key(std::string_view(key.constData(), static_cast<std::size_t>(key.size())));
        std::visit(DetailWriter{writer}, detail);
    }
    writer.endObject();
}

} // namespace

bool isHealthy(const QList<Check> &checks)
{
    return failuresIn(checks).isEmpty();
}

QString doctorText(const OwnFacts &own, const QList<Check> &checks)
{
    constexpr int levelWidth = 9; // the longest of them, and two blanks
    int titleWidth = 0;
    for (const Check &check : checks)
        titleWidth = std::max(titleWidth, displayWidth(check.title));
    titleWidth += 2;

    QString text = u"Orbitledge %1 (build %2)\n\n"_s.arg(own.version, own.build);
    for (const Check &check : checks) {
        text += padded(levelName(check.level), levelWidth, Align::Left)
            + padded(check.title, titleWidth, Align::Left) + check.text + u'\n';
        if (!check.advice.isEmpty())
            text += QString(levelWidth + titleWidth, u' ') + check.advice + u'\n';
    }
    return text + u'\n' + summary(checks);
}

QByteArray doctorJson(const OwnFacts &own, const QList<Check> &checks)
{
    json::JsonWriter writer;
    writer.beginObject();
    writer.key("version");
    writer.string(own.version);
    writer.key("build");
    writer.string(own.build);
    writer.key("healthy");
    writer.boolean(isHealthy(checks));
    for (const Check &check : checks)
        writeCheck(writer, check);
    writer.endObject();
    return writer.take() + '\n';
}

} // namespace orbitledge
