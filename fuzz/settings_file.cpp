#include "Require.h"
#include "platform/linux/SettingsFile.h"
#include "state/AppSettings.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

using namespace orbitledge;
using namespace Qt::StringLiterals;

namespace {

/// In memory where there is such a folder, since each input is a file.
QString folder()
{
    static const QTemporaryDir made(
        QFile::exists(u"/dev/shm"_s) ? u"/dev/shm/settings-XXXXXX"_s : QTemporaryDir().path());
    return made.path();
}

} // namespace

// The file of settings as the program finds it: everything can be asked for, and what is then changed is
// kept.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static int count = 0;
    static char name[] = "settings"; // NOLINT(modernize-avoid-c-arrays): as main has it
    static char *words[] = {name, nullptr}; // NOLINT(modernize-avoid-c-arrays)
    static int wordCount = 1;
    static const QCoreApplication application(wordCount, words);

    const QString path = folder() + u"/settings.json"_s;
    QFile::remove(path);
    QFile file(path);
    fuzz::require(file.open(QFile::WriteOnly), "there is room for a file");
    file.write(reinterpret_cast<const char *>(data), static_cast<qint64>(size));
    file.close();

    const auto settings = std::make_shared<SettingsFile>(path.toStdString());
    AppSettings app(settings);
    const qint64 days = app.notificationLeadDays();
    app.setNotificationLeadDays(days);
    fuzz::require(app.notificationLeadDays() == days, "what was read can be chosen");
    app.setAppearance(app.appearance());
    app.setRefreshInterval(app.refreshInterval());
    app.setLastUpdateCheck(app.lastUpdateCheck());
    app.setDismissedUpdateVersion(app.dismissedUpdateVersion());
    settings->setValue(u"added"_s, QString::number(++count));
    fuzz::require(settings->synchronise(), "settings are kept");
    const SettingsFile again(path.toStdString());
    fuzz::require(again.value(u"added"_s) == settings->value(u"added"_s), "what was kept is found");
    return 0;
}
