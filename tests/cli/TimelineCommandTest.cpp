#include "cli/TimelineCommand.h"

#include "cli/CommandLine.h"
#include "cli/Terminal.h"
#include "support/FakeFileStore.h"
#include "support/SampleRecords.h"
#include "support/TestMain.h"

#include <QFile>
#include <QHash>
#include <QRegularExpression>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

namespace {

class StoppedClock final : public Clock {
public:
    Instant now() const override { return *Instant::fromText("2026-03-18T09:00:00Z"); }
};

const std::filesystem::path cacheFile = "/data/cache.json";

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
    std::shared_ptr<FakeFileStore> m_files;
    QHash<QByteArray, QByteArray> m_variables;
    Environment m_environment;
    QByteArray m_output;
    QByteArray m_errors;

    ExitCode run(const QList<QByteArray> &words)
    {
        m_output.clear();
        m_errors.clear();
        return runCommandLine(
            std::span(words.constData(), static_cast<std::size_t>(words.size())), m_environment);
    }

    static QByteArray expected(const QString &name)
    {
        QFile file(QStringLiteral(ORBITLEDGE_TEST_DATA "/cli/") + name);
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray("missing: ") + name.toUtf8();
    }

private Q_SLOTS:
    void init()
    {
        m_files = std::make_shared<FakeFileStore>();
        m_variables = {{"LANG", "en_US.UTF-8"}};
        m_environment = {
            .clock = std::make_shared<StoppedClock>(),
            .files = m_files,
            .cacheFile = cacheFile,
            .variable = [this](const char *name) { return m_variables.value(name); },
            .readStandardInput = [] { return tl::expected<QByteArray, FileError>(QByteArray()); },
            .writeOutput =
                [this](const QByteArray &bytes) {
                    m_output += bytes;
                    return true;
                },
            .writeError = [this](const QByteArray &bytes) { m_errors += bytes; },
        };
        QVERIFY(m_files->replace(cacheFile, encodeCacheSnapshot(variedSnapshot())));
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
        QCOMPARE(run({"timeline", "--locale", locale}), ExitCode::Success);
        QCOMPARE(m_output, expected(file));
        QCOMPARE(m_errors, ""_ba);
    }

    void shouldPrintOneObjectForPrograms()
    {
        QCOMPARE(run({"timeline", "--json", "--time-zone", "Europe/Berlin"}), ExitCode::Success);
        QCOMPARE(m_output, expected(u"timeline.json"_s));
    }

    void shouldSayThatTheListIsEmpty()
    {
        QVERIFY(m_files->replace(cacheFile, encodeCacheSnapshot(sampleSnapshot(0))));
        QCOMPARE(run({"timeline"}), ExitCode::Success);
        QCOMPARE(m_output, expected(u"table-empty.txt"_s));
    }

    void shouldTakeCurrencyZoneInstantAndLocaleFromTheArguments()
    {
        QCOMPARE(run({"timeline", "--json", "--currency", "usd", "--now=2026-12-31T23:30:00Z",
                     "--time-zone=Pacific/Auckland", "--locale", "ar-EG"}),
            ExitCode::Success);
        // The new year has begun in Auckland, and weeks start on Saturday in Egypt.
        QVERIFY(m_output.contains("\"localDate\":\"2026-12-26\",\"isToday\":false"));
        QVERIFY(m_output.contains("\"localDate\":\"2027-01-01\",\"isToday\":true"));
        // One subscription costs dollars.
        QVERIFY(m_output.startsWith("{\"monthlyTotal\":10,"));
    }

    void shouldReadTheFileThatIsNamed()
    {
        QVERIFY(m_files->replace("/elsewhere", encodeCacheSnapshot(sampleSnapshot(1))));
        QCOMPARE(run({"timeline", "--snapshot", "/elsewhere", "--json"}), ExitCode::Success);
        QVERIFY(m_output.contains("\"activeCount\":1,"));
    }

    void shouldReadStandardInput()
    {
        m_environment.readStandardInput
            = [] { return tl::expected<QByteArray, FileError>(encodeCacheSnapshot(sampleSnapshot(2))); };
        QCOMPARE(run({"timeline", "--snapshot", "-", "--json"}), ExitCode::Success);
        QVERIFY(m_output.contains("\"activeCount\":2,"));
    }

    void shouldUseColoursOnATerminalOnly()
    {
        QCOMPARE(run({"timeline"}), ExitCode::Success);
        QVERIFY(!m_output.contains('\x1B'));

        m_environment.outputIsTerminal = true;
        QCOMPARE(run({"timeline"}), ExitCode::Success);
        QVERIFY(m_output.contains('\x1B'));

        m_variables["TERM"] = "dumb";
        QCOMPARE(run({"timeline"}), ExitCode::Success);
        QVERIFY(!m_output.contains('\x1B'));

        m_variables["TERM"] = "xterm";
        m_variables["NO_COLOR"] = "1";
        QCOMPARE(run({"timeline"}), ExitCode::Success);
        QVERIFY(!m_output.contains('\x1B'));
    }

    void shouldLayOutTheSameWithAndWithoutColours()
    {
        QCOMPARE(run({"timeline"}), ExitCode::Success);
        const QByteArray plain = m_output;
        m_environment.outputIsTerminal = true;
        QCOMPARE(run({"timeline"}), ExitCode::Success);
        QString colored = QString::fromUtf8(m_output);
        colored.remove(QRegularExpression(u"\u001B\\[[0-9]*m"_s));
        // Styles may keep blanks at the ends of lines, where nobody sees them.
        colored.replace(QRegularExpression(u" +\n"_s), u"\n"_s);
        QCOMPARE(colored.toUtf8(), plain);
    }

    void shouldKeepLinesWithinTheTerminal()
    {
        for (const int columns : {120, 90, 80, 72, 60, 50}) {
            m_environment.terminalColumns = columns;
            QCOMPARE(run({"timeline"}), ExitCode::Success);
            for (const QByteArray &line : m_output.split('\n'))
                QVERIFY2(displayWidth(QString::fromUtf8(line)) <= columns, line.constData());
        }
    }

    void shouldCutSubtitlesFirstAndThenNames()
    {
        m_environment.terminalColumns = 72;
        QCOMPARE(run({"timeline"}), ExitCode::Success);
        QCOMPARE(m_output, expected(u"table-72-columns.txt"_s));
        m_environment.terminalColumns = 50;
        QCOMPARE(run({"timeline"}), ExitCode::Success);
        QCOMPARE(m_output, expected(u"table-50-columns.txt"_s));
    }

    void shouldPrintACurrencyThatIsNoneWithoutItsControlCharacters()
    {
        CacheSnapshot snapshot = sampleSnapshot(1);
        snapshot.profile.defaultCurrency = u"\u001B[31mX\nY"_s;
        snapshot.subscriptions[0].currency = snapshot.profile.defaultCurrency;
        QVERIFY(m_files->replace(cacheFile, encodeCacheSnapshot(snapshot)));
        QCOMPARE(run({"timeline"}), ExitCode::Success);
        QVERIFY(!m_output.contains('\x1B'));
        QVERIFY(m_output.startsWith(
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
        QCOMPARE(run(QList<QByteArray>{"timeline"} + words), ExitCode::Usage);
        QCOMPARE(m_output, ""_ba);
        QCOMPARE(m_errors.count('\n'), 1);
        QVERIFY(m_errors.endsWith('\n'));
        QVERIFY(m_errors.startsWith("orbitledge: timeline: "));
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
        QVERIFY(m_files->replace(cacheFile, content));
        QCOMPARE(run({"timeline"}), ExitCode::Failure);
        QCOMPARE(m_errors, message);
        QCOMPARE(m_output, ""_ba);
        // It only reads; whether the file is of any use is for others to decide.
        QCOMPARE(m_files->content(cacheFile), content);
        QCOMPARE(m_files->removals(), 0);
    }

    void shouldSayThatNothingWasSavedYet()
    {
        QVERIFY(m_files->remove(cacheFile));
        QCOMPARE(run({"timeline"}), ExitCode::Failure);
        QCOMPARE(m_errors, "orbitledge: /data/cache.json: No data has been saved yet\n"_ba);
    }

    void shouldReportAFileThatCannotBeRead()
    {
        m_files->failReading(
            {.kind = FileError::Kind::AccessDenied, .errorDescription = u"Permission denied"_s});
        QCOMPARE(run({"timeline", "--snapshot", "/a\nb"}), ExitCode::Failure);
        QCOMPARE(m_errors, "orbitledge: /a\uFFFDb: Permission denied\n"_ba);
    }

    void shouldFailWhereTheOutputCannotBeWritten()
    {
        m_environment.writeOutput = [](const QByteArray &) { return false; };
        using Words = QList<QByteArray>;
        for (const Words &words : {Words{"timeline"}, Words{"timeline", "--json"},
                 Words{"timeline", "--help"}, Words{"--help"}, Words{"--version"}}) {
            QCOMPARE(run(words), ExitCode::Failure);
            QCOMPARE(m_errors, "orbitledge: The output could not be written\n"_ba);
        }
    }

    void shouldWriteTextInTheTerminalsEncoding()
    {
        m_environment.encoding = "ISO-8859-1";
        QCOMPARE(run({"timeline", "--locale", "de_DE"}), ExitCode::Success);
        QVERIFY(m_output.contains("M\xE4rz 2026"));
        QVERIFY2(m_output.contains("EUR / month"), "the encoding has no sign for the euro");
    }

    void shouldWriteJsonInUtf8WhateverTheTerminal()
    {
        m_environment.encoding = "ISO-8859-1";
        QCOMPARE(run({"timeline", "--json"}), ExitCode::Success);
        QVERIFY(m_output.contains("潮の音楽"));
    }

    void shouldExplainItself()
    {
        QCOMPARE(run({"--help"}), ExitCode::Success);
        QVERIFY(m_output.contains("timeline"));
        QCOMPARE(run({"timeline", "--help"}), ExitCode::Success);
        for (const char *option : {"--snapshot", "--currency", "--now", "--time-zone", "--locale", "--json"})
            QVERIFY2(m_output.contains(option), option);
        QCOMPARE(run({"--version"}), ExitCode::Success);
        QVERIFY(m_output.startsWith("orbitledge "));
    }

    void shouldRefuseUnknownCommandsAndNone()
    {
        QCOMPARE(run({}), ExitCode::Usage);
        QCOMPARE(run({"frobnicate"}), ExitCode::Usage);
        QCOMPARE(m_errors.count('\n'), 1);
        QCOMPARE(run({"--version", "twice"}), ExitCode::Usage);
        QCOMPARE(m_errors, "orbitledge: \"twice\" was not expected\n"_ba);
    }

    void shouldSayOfASwitchThatItTakesNoValue()
    {
        QCOMPARE(run({"timeline", "--json=yes"}), ExitCode::Usage);
        QCOMPARE(m_errors, "orbitledge: timeline: --json takes no value\n"_ba);
    }

    void shouldBoundALineOnStandardErrorWhateverItQuotes()
    {
        const QByteArray endless(3'000'000, 'x');
        QVERIFY(m_files->replace(
            cacheFile, encodeCacheSnapshot(sampleSnapshot(0)).replace("2026-03-18T09:00:00Z", endless)));
        QCOMPARE(run({"timeline"}), ExitCode::Failure);
        QVERIFY(m_errors.size() < 1100);
        QVERIFY(m_errors.contains("fetchedAt"));
        QCOMPARE(m_errors.count('\n'), 1);
    }
};

ORBITLEDGE_TEST_MAIN(TimelineCommandTest)
#include "TimelineCommandTest.moc"
