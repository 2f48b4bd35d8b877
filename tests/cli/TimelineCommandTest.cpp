#include "cli/TimelineCommand.h"

#include "BuildInfo.h"
#include "cli/Terminal.h"
#include "support/CommandHarness.h"
#include "support/SampleRecords.h"
#include "support/TestMain.h"

#include <QFile>
#include <QHash>
#include <QRegularExpression>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

namespace {

/// A list with something of everything: sections, conversions, states, wide and combining characters.
CacheSnapshot variedSnapshot()
{
    CacheSnapshot snapshot = sampleSnapshot(9);
    QList<Subscription> &list = snapshot.subscriptions;
    const auto set = [&list](int i, const QString &name, const char *cost, const char *currency,
                         const char *cycle, LocalDate renewal, const char *category) {
        list[i].name = name;
        list[i].cost = *Decimal::fromText(cost);
        list[i].currency = QString::fromLatin1(currency);
        list[i].billingCycle = QString::fromLatin1(cycle);
        list[i].nextBillingDate = renewal;
        if (category != nullptr)
            list[i].categoryName = QString::fromUtf8(category);
    };
    set(0, u"Northlight Video"_s, "15.99", "EUR", "monthly", {2026, 3, 18}, "Streaming");
    set(1, u"潮の音楽 🎧"_s, "7.5", "eur", "Quarterly", {2026, 3, 20}, nullptr);
    set(2, u"Cafe\u0301 au lait"_s, "10", "USD", "monthly", {2026, 3, 20}, "Food & Drink");
    list[2].convertedCost = *Decimal::fromText("9.19");
    list[2].convertedCurrency = u"EUR"_s;
    set(3, u"Compiler Weekly"_s, "120", "EUR", "yearly", {2026, 4, 2}, "Learning");
    set(4, u"Bad \u001B[31mname\nhere"_s, "3", "GBP", "monthly", {2026, 3, 17}, "News");
    set(5, u"Old Gazette"_s, "1234.5", "EUR", "monthly", {2026, 3, 28}, "News");
    list[5].cancellationDate = LocalDate{2026, 3, 28};
    list[5].status = u"cancelled"_s;
    set(6, u"Paused Club"_s, "3.49", "EUR", "monthly", {2026, 3, 21}, "Games");
    list[6].status = u"on_hold"_s;
    set(7, u"Harbour Gym"_s, "39", "EUR", "monthly", {2026, 3, 25}, "Health");
    set(8, u"Far away"_s, "0.005", "EUR", "weekly", {2026, 12, 24}, "Travel");
    return snapshot;
}

} // namespace

class TimelineCommandTest : public QObject {
    Q_OBJECT

private:
    std::optional<CommandHarness> m_harness;

    static QByteArray expected(const QString &name)
    {
        QFile file(QStringLiteral(ORBITLEDGE_TEST_DATA "/cli/") + name);
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray("missing: ") + name.toUtf8();
    }

private Q_SLOTS:
    void init()
    {
        m_harness.emplace();
        QVERIFY(m_harness->files->replace(m_harness->cacheFile, encodeCacheSnapshot(variedSnapshot())));
    }

    void shouldPrintATableForPeople_data()
    {
        QTest::addColumn<QByteArray>("locale");
        QTest::addColumn<QString>("file");
        QTest::newRow("American English") << "en_US"_ba << u"table-en_US.txt"_s;
        QTest::newRow("German") << "de_DE"_ba << u"table-de_DE.txt"_s;
        QTest::newRow("Japanese") << "ja_JP"_ba << u"table-ja_JP.txt"_s;
        QTest::newRow("Egyptian Arabic") << "ar_EG"_ba << u"table-ar_EG.txt"_s;
    }
    void shouldPrintATableForPeople()
    {
        QFETCH(QByteArray, locale);
        QFETCH(QString, file);
        QCOMPARE(m_harness->run({"timeline", "--locale", locale}), ExitCode::Success);
        QCOMPARE(m_harness->output, expected(file));
        QCOMPARE(m_harness->errors, ""_ba);
    }

    void shouldPrintOneObjectForPrograms()
    {
        QCOMPARE(m_harness->run({"timeline", "--json", "--time-zone", "Europe/Berlin"}), ExitCode::Success);
        QCOMPARE(m_harness->output, expected(u"timeline.json"_s));
    }

    void shouldSayThatTheListIsEmpty()
    {
        QVERIFY(m_harness->files->replace(m_harness->cacheFile, encodeCacheSnapshot(sampleSnapshot(0))));
        QCOMPARE(m_harness->run({"timeline"}), ExitCode::Success);
        QCOMPARE(m_harness->output, expected(u"table-empty.txt"_s));
    }

    void shouldTakeCurrencyZoneInstantAndLocaleFromTheArguments()
    {
        QCOMPARE(m_harness->run({"timeline", "--json", "--currency", "usd", "--now=2026-12-31T23:30:00Z",
                     "--time-zone=Pacific/Auckland", "--locale", "ar-EG"}),
            ExitCode::Success);
        // The new year has begun in Auckland, and weeks start on Saturday in Egypt.
        QVERIFY(m_harness->output.contains("\"localDate\":\"2026-12-26\",\"isToday\":false"));
        QVERIFY(m_harness->output.contains("\"localDate\":\"2027-01-01\",\"isToday\":true"));
        // One subscription costs dollars.
        QVERIFY(m_harness->output.startsWith("{\"monthlyTotal\":10,"));
    }

    void shouldReadTheFileThatIsNamed()
    {
        QVERIFY(m_harness->files->replace("/elsewhere", encodeCacheSnapshot(sampleSnapshot(1))));
        QCOMPARE(m_harness->run({"timeline", "--snapshot", "/elsewhere", "--json"}), ExitCode::Success);
        QVERIFY(m_harness->output.contains("\"activeCount\":1,"));
    }

    void shouldReadStandardInput()
    {
        m_harness->environment.readStandardInput
            = [] { return tl::expected<QByteArray, FileError>(encodeCacheSnapshot(sampleSnapshot(2))); };
        QCOMPARE(m_harness->run({"timeline", "--snapshot", "-", "--json"}), ExitCode::Success);
        QVERIFY(m_harness->output.contains("\"activeCount\":2,"));
    }

    void shouldUseColoursOnATerminalOnly()
    {
        QCOMPARE(m_harness->run({"timeline"}), ExitCode::Success);
        QVERIFY(!m_harness->output.contains('\x1B'));

        m_harness->environment.outputIsTerminal = true;
        QCOMPARE(m_harness->run({"timeline"}), ExitCode::Success);
        QVERIFY(m_harness->output.contains('\x1B'));

        m_harness->variables["TERM"] = "dumb";
        QCOMPARE(m_harness->run({"timeline"}), ExitCode::Success);
        QVERIFY(!m_harness->output.contains('\x1B'));

        m_harness->variables["TERM"] = "xterm";
        m_harness->variables["NO_COLOR"] = "1";
        QCOMPARE(m_harness->run({"timeline"}), ExitCode::Success);
        QVERIFY(!m_harness->output.contains('\x1B'));
    }

    void shouldLayOutTheSameWithAndWithoutColours()
    {
        QCOMPARE(m_harness->run({"timeline"}), ExitCode::Success);
        const QByteArray plain = m_harness->output;
        m_harness->environment.outputIsTerminal = true;
        QCOMPARE(m_harness->run({"timeline"}), ExitCode::Success);
        QString colored = QString::fromUtf8(m_harness->output);
        colored.remove(QRegularExpression(u"\u001B\\[[0-9]*m"_s));
        // Styles may keep blanks at the ends of lines, where nobody sees them.
        colored.replace(QRegularExpression(u" +\n"_s), u"\n"_s);
        QCOMPARE(colored.toUtf8(), plain);
    }

    void shouldKeepLinesWithinTheTerminal()
    {
        for (const int columns : {120, 90, 80, 72, 60, 50}) {
            m_harness->environment.terminalColumns = columns;
            QCOMPARE(m_harness->run({"timeline"}), ExitCode::Success);
            for (const QByteArray &line : m_harness->output.split('\n'))
                QVERIFY2(displayWidth(QString::fromUtf8(line)) <= columns, line.constData());
        }
    }

    void shouldCutSubtitlesFirstAndThenNames()
    {
        m_harness->environment.terminalColumns = 72;
        QCOMPARE(m_harness->run({"timeline"}), ExitCode::Success);
        QCOMPARE(m_harness->output, expected(u"table-72-columns.txt"_s));
        m_harness->environment.terminalColumns = 50;
        QCOMPARE(m_harness->run({"timeline"}), ExitCode::Success);
        QCOMPARE(m_harness->output, expected(u"table-50-columns.txt"_s));
    }

    void shouldPrintACurrencyThatIsNoneWithoutItsControlCharacters()
    {
        CacheSnapshot snapshot = sampleSnapshot(1);
        snapshot.profile.defaultCurrency = u"\u001B[31mX\nY"_s;
        snapshot.subscriptions[0].currency = snapshot.profile.defaultCurrency;
        QVERIFY(m_harness->files->replace(m_harness->cacheFile, encodeCacheSnapshot(snapshot)));
        QCOMPARE(m_harness->run({"timeline"}), ExitCode::Success);
        QVERIFY(!m_harness->output.contains('\x1B'));
        QVERIFY(m_harness->output.startsWith(
            "March 2026\n\uFFFD[31MX\uFFFDY 9.99 / month\n\uFFFD[31MX\uFFFDY 9.99 left to charge\n"));
    }

    void shouldRefuseMalformedArgumentsInOneLine_data()
    {
        QTest::addColumn<QList<QByteArray>>("words");
        using Words = QList<QByteArray>;
        QTest::newRow("unknown option") << Words{"--frobnicate"};
        QTest::newRow("value missing") << Words{"--now"};
        QTest::newRow("surplus word") << Words{"today"};
        QTest::newRow("shortened option") << Words{"--js"};
        QTest::newRow("value for a switch") << Words{"--json=yes"};
        QTest::newRow("unknown zone") << Words{"--time-zone", "Mars/Olympus"};
        QTest::newRow("zone outside of the database") << Words{"--time-zone", "../../etc/passwd"};
        QTest::newRow("empty zone") << Words{"--time-zone", ""};
        QTest::newRow("instant without a zone") << Words{"--now", "2026-03-18T09:00:00"};
        QTest::newRow("day for an instant") << Words{"--now", "2026-03-18"};
        QTest::newRow("instant on a day that does not exist") << Words{"--now", "2026-02-30T09:00:00Z"};
        QTest::newRow("currency too long") << Words{"--currency", "EURO"};
        QTest::newRow("currency of other letters") << Words{"--currency", "€UR"};
        QTest::newRow("empty currency") << Words{"--currency="};
        QTest::newRow("unknown locale") << Words{"--locale", "zz_ZZ"};
        QTest::newRow("malformed locale") << Words{"--locale", "english please"};
        QTest::newRow("no file") << Words{"--snapshot", ""};
        QTest::newRow("line feed in a value") << Words{"--now", "a\nb"};
        QTest::newRow("bytes that are not UTF-8") << Words{"--locale", "\xFF\xFE"};
    }
    void shouldRefuseMalformedArgumentsInOneLine()
    {
        QFETCH(QList<QByteArray>, words);
        QCOMPARE(m_harness->run(QList<QByteArray>{"timeline"} + words), ExitCode::Usage);
        QCOMPARE(m_harness->output, ""_ba);
        QCOMPARE(m_harness->errors.count('\n'), 1);
        QVERIFY(m_harness->errors.endsWith('\n'));
        QVERIFY(m_harness->errors.startsWith("orbitledge: timeline: "));
    }

    void shouldNameFilePlaceAndReasonOfUnreadableData_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QByteArray>("message");
        QByteArray withoutCost = encodeCacheSnapshot(sampleSnapshot(5));
        const auto last = withoutCost.lastIndexOf("\"cost\":9.99,");
        withoutCost.remove(last, 12);
        QTest::newRow("a missing cost")
            << withoutCost
            << "orbitledge: /data/cache.json: subscriptions[4].cost: The key \"cost\" is missing\n"_ba;
        QTest::newRow("another version")
            << "{\"version\":7}"_ba
            << "orbitledge: /data/cache.json: version: Version 7 of the file format is not supported, only version 1 is\n"_ba;
        QTest::newRow("empty")
            << ""_ba
            << "orbitledge: /data/cache.json: The data is not valid JSON: it is empty\n"_ba;
        QTest::newRow("text with line feeds in a timestamp")
            << encodeCacheSnapshot(sampleSnapshot(0)).replace("2026-03-18T09:00:00Z", "a\\nb")
            << "orbitledge: /data/cache.json: fetchedAt: Expected an ISO-8601 timestamp, got \"a\uFFFDb\"\n"_ba;
    }
    void shouldNameFilePlaceAndReasonOfUnreadableData()
    {
        QFETCH(QByteArray, content);
        QFETCH(QByteArray, message);
        QVERIFY(m_harness->files->replace(m_harness->cacheFile, content));
        QCOMPARE(m_harness->run({"timeline"}), ExitCode::Failure);
        QCOMPARE(m_harness->errors, message);
        QCOMPARE(m_harness->output, ""_ba);
        // It only reads; whether the file is of any use is for others to decide.
        QCOMPARE(m_harness->files->content(m_harness->cacheFile), content);
        QCOMPARE(m_harness->files->removals(), 0);
    }

    void shouldSayThatNothingWasSavedYet()
    {
        QVERIFY(m_harness->files->remove(m_harness->cacheFile));
        QCOMPARE(m_harness->run({"timeline"}), ExitCode::Failure);
        QCOMPARE(m_harness->errors, "orbitledge: /data/cache.json: No data has been saved yet\n"_ba);
    }

    void shouldReportAFileThatCannotBeRead()
    {
        m_harness->files->failReading(
            {.kind = FileError::Kind::AccessDenied, .errorDescription = u"Permission denied"_s});
        QCOMPARE(m_harness->run({"timeline", "--snapshot", "/a\nb"}), ExitCode::Failure);
        QCOMPARE(m_harness->errors, "orbitledge: /a\uFFFDb: Permission denied\n"_ba);
    }

    void shouldFailWhereTheOutputCannotBeWritten()
    {
        m_harness->environment.writeOutput = [](const QByteArray &) { return false; };
        using Words = QList<QByteArray>;
        for (const Words &words : {Words{"timeline"}, Words{"timeline", "--json"},
                 Words{"timeline", "--help"}, Words{"--help"}, Words{"--version"}}) {
            QCOMPARE(m_harness->run(words), ExitCode::Failure);
            QCOMPARE(m_harness->errors, "orbitledge: The output could not be written\n"_ba);
        }
    }

    void shouldWriteTextInTheTerminalsEncoding()
    {
        m_harness->environment.encoding = "ISO-8859-1";
        QCOMPARE(m_harness->run({"timeline", "--locale", "de_DE"}), ExitCode::Success);
        QVERIFY(m_harness->output.contains("M\xE4rz 2026"));
        QVERIFY2(m_harness->output.contains("EUR / month"), "the encoding has no sign for the euro");
    }

    void shouldWriteJsonInUtf8WhateverTheTerminal()
    {
        m_harness->environment.encoding = "ISO-8859-1";
        QCOMPARE(m_harness->run({"timeline", "--json"}), ExitCode::Success);
        QVERIFY(m_harness->output.contains("潮の音楽"));
    }

    void shouldExplainItself()
    {
        QCOMPARE(m_harness->run({"--help"}), ExitCode::Success);
        QVERIFY(m_harness->output.contains("timeline"));
        QCOMPARE(m_harness->run({"timeline", "--help"}), ExitCode::Success);
        for (const char *option : {"--snapshot", "--currency", "--now", "--time-zone", "--locale", "--json"})
            QVERIFY2(m_harness->output.contains(option), option);
        QCOMPARE(m_harness->run({"--version"}), ExitCode::Success);
        QCOMPARE(m_harness->output,
            QByteArray("orbitledge ") + build::version + " (build " + build::buildNumber + ")\n");
    }

    void shouldRefuseUnknownCommands()
    {
        QCOMPARE(m_harness->run({"frobnicate"}), ExitCode::Usage);
        QCOMPARE(m_harness->errors.count('\n'), 1);
        QCOMPARE(m_harness->run({"--version", "twice"}), ExitCode::Usage);
        QCOMPARE(m_harness->errors, "orbitledge: \"twice\" was not expected\n"_ba);
    }

    void shouldSayOfASwitchThatItTakesNoValue()
    {
        QCOMPARE(m_harness->run({"timeline", "--json=yes"}), ExitCode::Usage);
        QCOMPARE(m_harness->errors, "orbitledge: timeline: --json takes no value\n"_ba);
    }

    void shouldBoundALineOnStandardErrorWhateverItQuotes()
    {
        const QByteArray endless(3'000'000, 'x');
        QVERIFY(m_harness->files->replace(m_harness->cacheFile,
            encodeCacheSnapshot(sampleSnapshot(0)).replace("2026-03-18T09:00:00Z", endless)));
        QCOMPARE(m_harness->run({"timeline"}), ExitCode::Failure);
        QVERIFY(m_harness->errors.size() < 1100);
        QVERIFY(m_harness->errors.contains("fetchedAt"));
        QCOMPARE(m_harness->errors.count('\n'), 1);
    }
};

ORBITLEDGE_TEST_MAIN(TimelineCommandTest)
#include "TimelineCommandTest.moc"
