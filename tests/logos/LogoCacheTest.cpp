#include "logos/cache/LogoCache.h"

#include "platform/linux/PosixFileStore.h"
#include "support/TestMain.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>

#include <sys/stat.h>

using namespace orbitledge;
using namespace Qt::StringLiterals;

namespace fs = std::filesystem;

namespace {

const QUrl logoAddress(u"https://example.com/a.png?size=2"_s);

KeptLogo sample(const QByteArray &content = "bytes\nof\0a picture"_ba)
{
    return {
        .content = content,
        .freshUntil = *Instant::fromText("2026-03-18T12:00:00Z"),
        .entityTag = "\"tag\"",
        .lastModified = "Sun, 06 Nov 1994 08:49:37 GMT",
    };
}

QUrl numbered(int number)
{
    return QUrl(u"https://example.com/"_s + QString::number(number));
}

mode_t modeOf(const QString &path)
{
    struct stat status{};
    return ::stat(qUtf8Printable(path), &status) == 0 ? status.st_mode & 07777 : 0;
}

} // namespace

class LogoCacheTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_home;

    [[nodiscard]] QString folder() const { return m_home->filePath(u"cache/logos"_s); }
    [[nodiscard]] LogoCache cache(qint64 capacity = LogoCache::usualCapacity) const
    {
        return {folder().toStdString(), std::make_shared<PosixFileStore>(), capacity};
    }
    [[nodiscard]] QStringList files() const
    {
        QStringList paths;
        for (QDirIterator it(folder(), QDir::Files | QDir::Hidden | QDir::System); it.hasNext();)
            paths.append(it.next());
        return paths;
    }

private Q_SLOTS:
    void init() { m_home = std::make_unique<QTemporaryDir>(); }

    void shouldFindWhatAnotherOneKept()
    {
        QVERIFY(cache().keep(logoAddress, sample()));
        QVERIFY(cache().find(logoAddress) == sample());
        QVERIFY(!cache().find(QUrl(u"https://example.com/a.png"_s)));
        QVERIFY(!cache().find(QUrl(u"https://example.com/a.png?size=3"_s)));
        QVERIFY(cache().find(QUrl(u"https://example.com/a.png?size=2#top"_s)) == sample());
    }

    void shouldReplaceAndRemove()
    {
        LogoCache logos = cache();
        QVERIFY(logos.keep(logoAddress, sample()));
        QVERIFY(logos.keep(logoAddress, sample("another")));
        QCOMPARE(logos.find(logoAddress)->content, "another"_ba);
        QCOMPARE(files().size(), 1);
        logos.remove(logoAddress);
        QVERIFY(!logos.find(logoAddress));
        QVERIFY(files().isEmpty());
    }

    void shouldRemoveAllOfThem()
    {
        LogoCache logos = cache(10'000);
        for (int i = 0; i < 8; ++i)
            QVERIFY(logos.keep(numbered(i), sample(QByteArray(1000, 'x'))));
        logos.clear();
        QVERIFY(!logos.find(numbered(1)));
        QVERIFY(!QFile::exists(folder()));
        logos.clear();
        QVERIFY(logos.keep(logoAddress, sample()));
        QVERIFY(logos.find(logoAddress) == sample());
        // What is not a file of ours is not touched.
        QVERIFY(QDir(folder()).mkdir(u"another"_s));
        logos.clear();
        QVERIFY(!logos.find(logoAddress));
        QVERIFY(QFile::exists(folder() + u"/another"_s));
    }

    void shouldBePrivate()
    {
        QVERIFY(cache().keep(logoAddress, sample()));
        QCOMPARE(modeOf(folder()), mode_t{0700});
        QCOMPARE(modeOf(files().value(0)), mode_t{0600});
        QVERIFY(!files().value(0).contains(u"example"));
    }

    void shouldDropAValidatorThatWouldBeMoreThanALine()
    {
        KeptLogo logo = sample();
        logo.entityTag = "\"a\nb\"";
        logo.lastModified = QByteArray(5000, 'x');
        QVERIFY(cache().keep(logoAddress, logo));
        const auto found = cache().find(logoAddress);
        QVERIFY(found);
        QCOMPARE(found->entityTag, QByteArray());
        QCOMPARE(found->lastModified, QByteArray());
        QCOMPARE(found->content, logo.content);
    }

    void shouldRemoveADamagedFile()
    {
        QVERIFY(cache().keep(logoAddress, sample()));
        const QString path = files().value(0);
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray good = file.readAll();
        file.close();
        for (qsizetype place = 0; place < good.size(); ++place) {
            QByteArray bad = good;
            bad[place] = static_cast<char>(bad[place] ^ 1);
            for (const QByteArray &content : {bad, good.first(place)}) {
                QVERIFY(file.open(QIODevice::WriteOnly));
                file.write(content);
                file.close();
                QVERIFY2(!cache().find(logoAddress), qPrintable(QString::number(place)));
                QVERIFY(!QFile::exists(path));
            }
        }
    }

    void shouldRemoveWhatIsNoFileOfItsOwn_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::newRow("a pipe, which would be waited for") << u"pipe"_s;
        QTest::newRow("a link") << u"link"_s;
        QTest::newRow("a huge file") << u"huge"_s;
    }
    void shouldRemoveWhatIsNoFileOfItsOwn()
    {
        QFETCH(QString, kind);
        QVERIFY(cache().keep(logoAddress, sample()));
        const QByteArray path = files().value(0).toUtf8();
        const QString outside = m_home->filePath(u"outside"_s);
        QVERIFY(QFile::rename(QString::fromUtf8(path), outside));
        if (kind == u"pipe") {
            QCOMPARE(::mkfifo(path.constData(), 0600), 0);
        } else if (kind == u"link") {
            QVERIFY(QFile::link(outside, QString::fromUtf8(path)));
        } else {
            QFile file(QString::fromUtf8(path));
            QVERIFY(file.open(QIODevice::WriteOnly));
            QVERIFY(file.resize(qint64{1} << 40));
        }
        QVERIFY(!cache().find(logoAddress));
        QVERIFY(files().isEmpty());
        QVERIFY(QFile::exists(outside));
    }

    void shouldKeepAFileOfAnotherAddressFromBeingTaken()
    {
        QVERIFY(cache().keep(logoAddress, sample()));
        const QString mine = files().value(0);
        QVERIFY(cache().keep(numbered(1), sample("another")));
        QStringList others = files();
        others.removeAll(mine);
        QVERIFY(QFile::remove(mine));
        QVERIFY(QFile::rename(others.value(0), mine));
        QVERIFY(!cache().find(logoAddress));
    }

    void shouldRemoveThoseThatWereNotUsedForLongest()
    {
        const QByteArray content(1000, 'x');
        LogoCache logos = cache(10'000);
        for (int i = 0; i < 8; ++i)
            QVERIFY(logos.keep(numbered(i), sample(content)));
        QCOMPARE(files().size(), 8);
        QVERIFY(logos.find(numbered(0)));
        QVERIFY(logos.find(numbered(2)));
        for (int i = 8; i < 12; ++i)
            QVERIFY(logos.keep(numbered(i), sample(content)));
        QVERIFY(logos.find(numbered(0)));
        QVERIFY(!logos.find(numbered(1)));
        QVERIFY(logos.find(numbered(2)));
        QVERIFY(!logos.find(numbered(3)));
        QVERIFY(logos.find(numbered(11)));
    }

    void shouldCountWhatIsThereAlready()
    {
        const QByteArray content(1000, 'x');
        for (int i = 0; i < 30; ++i) {
            QVERIFY(cache(10'000).keep(numbered(i), sample(content)));
            qint64 used = 0;
            for (const QString &path : files())
                used += QFile(path).size();
            QVERIFY2(used <= 10'000, qPrintable(QString::number(used)));
        }
        QVERIFY(cache().find(numbered(29)));
        QVERIFY(!cache().find(numbered(0)));
    }

    void shouldBeNoTroubleWhereNothingCanBeWritten()
    {
        LogoCache logos("/proc/orbitledge/logos", std::make_shared<PosixFileStore>());
        QVERIFY(!logos.find(logoAddress));
        QVERIFY(!logos.keep(logoAddress, sample()));
        logos.remove(logoAddress);
    }

    void shouldLieInTheCacheFolder()
    {
        struct Directories final : UserDirectories {
            std::optional<fs::path> place;
            [[nodiscard]] std::optional<fs::path> data() const override { return "/wrong"; }
            [[nodiscard]] std::optional<fs::path> configuration() const override { return "/wrong"; }
            [[nodiscard]] std::optional<fs::path> state() const override { return "/wrong"; }
            [[nodiscard]] std::optional<fs::path> cache() const override { return place; }
            [[nodiscard]] fs::path temporary() const override { return "/temporary"; }
        };
        Directories directories;
        QCOMPARE(
            LogoCache::defaultLocation(directories).string(), "/temporary/app.orbitledge.Orbitledge/logos");
        directories.place = "/cache";
        QCOMPARE(LogoCache::defaultLocation(directories).string(), "/cache/app.orbitledge.Orbitledge/logos");
    }
};

ORBITLEDGE_TEST_MAIN(LogoCacheTest)
#include "LogoCacheTest.moc"
