#include "platform/linux/SettingsFile.h"

#include "support/TestMain.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <sys/stat.h>

#include <optional>

using namespace orbitledge;
using namespace Qt::StringLiterals;

using Value = UserDefaults::Value;

class SettingsFileTest : public QObject {
    Q_OBJECT

private:
    std::optional<QTemporaryDir> m_folder;

    [[nodiscard]] QString path() const { return m_folder->filePath(u"made/here/settings.json"_s); }
    [[nodiscard]] std::filesystem::path fsPath() const { return path().toStdString(); }

    [[nodiscard]] QByteArray content() const
    {
        QFile file(path());
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
    }
    void write(const QByteArray &bytes) const
    {
        QVERIFY(QDir().mkpath(QFileInfo(path()).path()));
        QFile file(path());
        QVERIFY(file.open(QFile::WriteOnly));
        QCOMPARE(file.write(bytes), bytes.size());
    }

private Q_SLOTS:
    void init() { m_folder.emplace(); }

    void shouldGiveBackEachTypeAsItWas()
    {
        const QMap<QString, Value> values{
            {u"an.integer"_s, qint64{-900}},
            {u"another.integer"_s, qint64{0}},
            {u"a.bool"_s, false},
            {u"a.text"_s, u"900, \"true\" \u00e4\U0001F600\n"_s},
            {u"an.empty.text"_s, QString(u""_s)},
            {u"a.date"_s, *Instant::fromText("2026-03-18T12:00:00.250Z")},
            {u"an.old.date"_s, *Instant::fromText("1913-03-18T12:00:00Z")},
            {u"texts"_s, QStringList{u"b"_s, u"a"_s, QString(u""_s)}},
            {u"one.text"_s, QStringList{u"a"_s}},
            {u"no.texts"_s, QStringList()},
        };
        {
            SettingsFile file(fsPath());
            for (auto it = values.begin(); it != values.end(); ++it)
                file.setValue(it.key(), it.value());
        }
        const SettingsFile file(fsPath());
        for (auto it = values.begin(); it != values.end(); ++it)
            QVERIFY2(file.value(it.key()) == it.value(), qUtf8Printable(it.key()));
        QVERIFY(!file.value(u"another"_s));
        QVERIFY(!file.read<bool>(u"an.integer"_s));
        QVERIFY(!file.read<qint64>(u"a.bool"_s));
        QCOMPARE(file.read<qint64>(u"an.integer"_s), -900);
    }

    void shouldRemoveKeys()
    {
        SettingsFile file(fsPath());
        file.setValue(u"a"_s, true);
        QVERIFY(file.synchronise());
        file.remove(u"a"_s);
        file.remove(u"b"_s);
        QVERIFY(file.synchronise());
        QVERIFY(!SettingsFile(fsPath()).value(u"a"_s));
    }

    void shouldNotTouchTheFileForWhatItHolds()
    {
        SettingsFile file(fsPath());
        const QList<Value> values{qint64{1}, true, u"text"_s, QStringList{u"a"_s}, QStringList(),
            *Instant::fromText("2026-03-18T12:00:00.250Z")};
        for (qsizetype i = 0; i < values.size(); ++i)
            file.setValue(QString::number(i), values[i]);
        QVERIFY(file.synchronise());
        // The toolkit replaces the file whenever it writes.
        struct stat before{};
        QCOMPARE(::stat(fsPath().c_str(), &before), 0);
        for (qsizetype i = 0; i < values.size(); ++i)
            file.setValue(QString::number(i), values[i]);
        QVERIFY(file.synchronise());
        struct stat after{};
        QCOMPARE(::stat(fsPath().c_str(), &after), 0);
        QCOMPARE(after.st_ino, before.st_ino);
        QCOMPARE(after.st_mtim.tv_nsec, before.st_mtim.tv_nsec);
        // What looks alike and is another type is another value.
        file.setValue(u"0"_s, true);
        QVERIFY(file.synchronise());
        QCOMPARE(SettingsFile(fsPath()).read<bool>(u"0"_s), true);
    }

    void shouldBeReadableByItsOwnerAlone()
    {
        {
            SettingsFile file(fsPath());
            file.setValue(u"a"_s, true);
        }
        const auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther
            | QFile::ExeGroup | QFile::ExeOther;
        QVERIFY(!(QFile::permissions(path()) & others));
        QVERIFY(!(QFile::permissions(QFileInfo(path()).path()) & others));
        // Also one that was open to all before.
        QVERIFY(QFile::setPermissions(path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther));
        {
            SettingsFile file(fsPath());
            file.setValue(u"a"_s, false);
        }
        QVERIFY(!(QFile::permissions(path()) & others));
    }

    void shouldTakeWhatIsNoneForEmpty_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("nothing") << ""_ba;
        QTest::newRow("garbage") << QByteArray(5000, '\xff');
        QTest::newRow("cut off") << "{\"a\":tru"_ba;
        QTest::newRow("a list") << "[1,2,3]"_ba;
        QTest::newRow("wrong types")
            << "{\"a\":null,\"b\":1.5,\"c\":[1],\"d\":{\"date\":\"never\"},\"e\":1e300}"_ba;
    }
    void shouldTakeWhatIsNoneForEmpty()
    {
        QFETCH(QByteArray, bytes);
        write(bytes);
        SettingsFile file(fsPath());
        for (const char *key : {"a", "b", "c", "d", "e"})
            QVERIFY(!file.value(QString::fromLatin1(key)));
        file.setValue(u"f"_s, true);
        QVERIFY(file.synchronise());
        QCOMPARE(SettingsFile(fsPath()).read<bool>(u"f"_s), true);
    }

    void shouldMergeWhatTwoProcessesWrite()
    {
        SettingsFile first(fsPath());
        SettingsFile second(fsPath());
        first.setValue(u"a"_s, qint64{1});
        QVERIFY(first.synchronise());
        second.setValue(u"b"_s, qint64{2});
        QVERIFY(second.synchronise());
        const SettingsFile third(fsPath());
        QCOMPARE(third.read<qint64>(u"a"_s), 1);
        QCOMPARE(third.read<qint64>(u"b"_s), 2);
    }

    void shouldKeepTheOldFileWhereTheDiskIsFull()
    {
        // A disk of a few pages, in a namespace of its own.
        const QString script
            = u"mount -t tmpfs -o size=64k none '%1' && exec '%2' --on-full-disk '%1/settings.json'"_s.arg(
                m_folder->path(), QCoreApplication::applicationFilePath());
        QProcess process;
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(u"unshare"_s, {u"-rm"_s, u"sh"_s, u"-c"_s, script});
        QVERIFY(process.waitForFinished());
        if (process.exitCode() == 1)
            QSKIP("no mount namespaces here");
        QCOMPARE(process.exitCode(), 0);
    }

    void shouldGoOnWhereNothingCanBeWritten()
    {
        SettingsFile file("/proc/no-such-folder/settings.json");
        file.setValue(u"a"_s, true);
        QVERIFY(!file.synchronise());
        QCOMPARE(file.read<bool>(u"a"_s), true);
    }
};

namespace {

/// Fills the disk and tries to write more. 0 where the old file stayed whole and the value is still there.
int writeOnFullDisk(const QString &path)
{
    const auto contentOf = [&path] {
        QFile file(path);
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
    };
    std::optional<SettingsFile> file(path.toStdString());
    file->setValue(u"a"_s, u"old"_s);
    if (!file->synchronise())
        return 2;
    const QByteArray before = contentOf();
    QFile filler(QFileInfo(path).path() + u"/filler"_s);
    if (!filler.open(QFile::WriteOnly | QFile::Unbuffered))
        return 3;
    while (filler.write(QByteArray(1024, 'x')) == 1024) { }
    file->setValue(u"a"_s, QString(20'000, u'n'));
    if (file->synchronise())
        return 4;
    if (file->read<QString>(u"a"_s) != QString(20'000, u'n'))
        return 5;
    if (contentOf() != before || before.isEmpty())
        return 6;
    // With room again it is written with the next thing that is set, also where that changes nothing.
    if (!filler.remove())
        return 7;
    file->setValue(u"a"_s, QString(20'000, u'n'));
    file.reset();
    return contentOf().size() > 20'000 ? 0 : 8;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc == 3 && qstrcmp(argv[1], "--on-full-disk") == 0) {
        const QCoreApplication application(argc, argv);
        return writeOnFullDisk(QString::fromLocal8Bit(argv[2]));
    }
    return orbitledge::testing::runTest<SettingsFileTest>(argc, argv);
}
#include "SettingsFileTest.moc"
