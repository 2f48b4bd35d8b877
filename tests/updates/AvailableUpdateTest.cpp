#include "updates/AvailableUpdate.h"

#include "support/TestMain.h"

using namespace orbitledge;
using namespace Qt::StringLiterals;

class AvailableUpdateTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldOffer_data()
    {
        QTest::addColumn<QString>("version");
        QTest::addColumn<QString>("build");
        QTest::addColumn<QString>("runningVersion");
        QTest::addColumn<QString>("runningBuild");
        QTest::addColumn<bool>("offered");
        const auto row = [](const char *name, const char *version, const char *build,
                             const char *runningVersion, const char *runningBuild, bool offered) {
            QTest::newRow(name) << QString::fromUtf8(version) << QString::fromUtf8(build)
                                << QString::fromUtf8(runningVersion) << QString::fromUtf8(runningBuild)
                                << offered;
        };
        row("a greater build", "1.0.0", "121", "1.0.0", "120", true);
        row("a greater build of a lower version", "0.9.0", "121", "1.0.0", "120", true);
        row("a lower build of a greater version", "2.0.0", "119", "1.0.0", "120", false);
        row("equal builds, greater version", "1.0.1", "120", "1.0.0", "120", true);
        row("equal builds, equal version", "1.0", "120", "1.0.0", "120", false);
        row("builds compare as numbers", "1.0.0", "1000", "1.0.0", "999", true);
        row("builds of any size", "1.0.0", "100000000000000000000000", "1.0.0", "99999999999999999999999",
            true);
        row("blanks and signs", "1.0.0", " +121\n", "1.0.0", "120", true);
        row("zeros before", "1.0.0", "0120", "1.0.0", "120", false);
        row("below zero", "1.0.0", "-1", "1.0.0", "-2", true);
        row("below zero and above", "1.0.0", "1", "1.0.0", "-5", true);
        row("minus zero", "1.0.0", "-0", "1.0.0", "0", false);
        row("minus zero, running", "1.0.0", "0", "1.0.0", "-0", false);
        row("a build that is no number", "1.1.0", "1.1", "1.0.0", "120", true);
        row("a running build that is none", "1.1.0", "121", "1.0.0", "dev", true);
        row("neither a number, lower version", "0.9", "b", "1.0.0", "a", false);
        row("no builds", "1.1", "", "1.0", "", true);
        row("a sign alone", "0.9", "+", "1.0", "120", false);
    }
    void shouldOffer()
    {
        QFETCH(QString, version);
        QFETCH(QString, build);
        QFETCH(QString, runningVersion);
        QFETCH(QString, runningBuild);
        QFETCH(bool, offered);
        ReleaseManifest manifest;
        manifest.version = version;
        manifest.build = build;
        const RunningRelease running{.version = runningVersion, .build = runningBuild};
        QCOMPARE(isAvailableUpdate(manifest, running, std::nullopt), offered);
        manifest.comingSoon = true;
        QVERIFY(!isAvailableUpdate(manifest, running, std::nullopt));
    }

    void shouldNotReadANumberUpToAZeroCharacter()
    {
        ReleaseManifest manifest;
        manifest.version = u"0.9"_s;
        manifest.build = u"2"_s;
        const RunningRelease running{.version = u"1.0"_s, .build = u"1\0-"_s};
        QCOMPARE(running.build.size(), 3);
        QVERIFY(!isAvailableUpdate(manifest, running, std::nullopt));
    }

    void shouldHideWhatWasDismissedUntilSomethingNewerComes()
    {
        ReleaseManifest manifest;
        manifest.version = u"1.2.0"_s;
        manifest.build = u"121"_s;
        const RunningRelease running{.version = u"1.0.0"_s, .build = u"120"_s};
        QVERIFY(isAvailableUpdate(manifest, running, u"1.1.9"_s));
        QVERIFY(!isAvailableUpdate(manifest, running, u"1.2"_s));
        QVERIFY(!isAvailableUpdate(manifest, running, u"1.3.0"_s));
        QVERIFY(isAvailableUpdate(manifest, running, QString()));
        manifest.version = u"1.2.1"_s;
        QVERIFY(isAvailableUpdate(manifest, running, u"1.2.0"_s));
    }
};

ORBITLEDGE_TEST_MAIN(AvailableUpdateTest)
#include "AvailableUpdateTest.moc"
