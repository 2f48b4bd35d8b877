#include "state/CacheSnapshot.h"
#include "support/CommandHarness.h"
#include "support/SampleRecords.h"
#include "support/TestMain.h"

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

class SessionCommandsTest : public QObject {
    Q_OBJECT

private:
    std::optional<CommandHarness> m_harness;

    [[nodiscard]] std::optional<CacheSnapshot> saved() const
    {
        if (!m_harness->files->exists(m_harness->cacheFile))
            return std::nullopt;
        auto snapshot = decodeCacheSnapshot(m_harness->files->content(m_harness->cacheFile));
        return snapshot ? std::optional(*snapshot) : std::nullopt;
    }

private Q_SLOTS:
    void init()
    {
        m_harness.emplace();
        m_harness->password = "open sesame\n";
        m_harness->client->profile = sampleProfile();
        m_harness->client->subscriptions = sampleSnapshot(3).subscriptions;
    }

    void shouldSignInFetchAndSave()
    {
        QCOMPARE(m_harness->run({"sign-in", "ada@example.com"}), ExitCode::Success);
        QCOMPARE(m_harness->output, "Signed in as ada@example.com. 3 subscriptions fetched.\n"_ba);
        QCOMPARE(m_harness->errors, ""_ba);
        QCOMPARE(m_harness->prompts, QStringList{u"Password for ada@example.com: "_s});
        QCOMPARE(
            m_harness->client->calls, (QStringList{u"signIn ada@example.com"_s, u"fetchSubscriptions"_s}));
        QCOMPARE(m_harness->client->password, u"open sesame"_s);
        QVERIFY(saved() == sampleSnapshot(3));
    }

    void shouldCountOneSubscriptionAsOne()
    {
        m_harness->client->subscriptions = sampleSnapshot(1).subscriptions;
        QCOMPARE(m_harness->run({"sign-in", "a@b"}), ExitCode::Success);
        QCOMPARE(m_harness->output, "Signed in as a@b. 1 subscription fetched.\n"_ba);
    }

    void shouldDropOneLineBreakOfThePassword_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QString>("password");
        QTest::newRow("none") << "abc"_ba << u"abc"_s;
        QTest::newRow("one") << "abc\n"_ba << u"abc"_s;
        QTest::newRow("one of Windows") << "abc\r\n"_ba << u"abc"_s;
        QTest::newRow("two") << "abc\n\n"_ba << u"abc\n"_s;
        QTest::newRow("a carriage return alone") << "abc\r"_ba << u"abc\r"_s;
        QTest::newRow("blanks") << " abc \n"_ba << u" abc "_s;
        QTest::newRow("several lines") << "abc\ndef\n"_ba << u"abc\ndef"_s;
        QTest::newRow("a mark at the start") << "\xef\xbb\xbf"_ba
                                                "abc\n"
                                             << u"\uFEFFabc"_s;
        QTest::newRow("other scripts") << "p\u00e4ss\u65e5\n"_ba << u"p\u00e4ss\u65e5"_s;
    }
    void shouldDropOneLineBreakOfThePassword()
    {
        QFETCH(QByteArray, line);
        QFETCH(QString, password);
        m_harness->password = line;
        QCOMPARE(m_harness->run({"sign-in", "a@b"}), ExitCode::Success);
        QCOMPARE(m_harness->client->password, password);
    }

    void shouldReadThePasswordInTheEncodingOfTheLocale()
    {
        m_harness->environment.encoding = "ISO-8859-1";
        m_harness->password = "p\xe4ss\n";
        QCOMPARE(m_harness->run({"sign-in", "j\xf6rg@example.com"}), ExitCode::Success);
        QCOMPARE(m_harness->client->password, u"p\u00e4ss"_s);
        QCOMPARE(m_harness->client->calls.value(0), u"signIn j\u00f6rg@example.com"_s);
        QVERIFY(m_harness->output.startsWith("Signed in as j\xf6rg@"));
    }

    void shouldNotSignInWithoutAPassword_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QByteArray>("reason");
        QTest::newRow("nothing") << ""_ba << "The password is missing"_ba;
        QTest::newRow("an empty line") << "\n"_ba << "The password is missing"_ba;
        QTest::newRow("no text") << "\xff\n"_ba << "The password is not in your locale's encoding"_ba;
    }
    void shouldNotSignInWithoutAPassword()
    {
        QFETCH(QByteArray, line);
        QFETCH(QByteArray, reason);
        m_harness->password = line;
        QCOMPARE(m_harness->run({"sign-in", "a@b"}), ExitCode::Failure);
        QCOMPARE(m_harness->errors, "orbitledge: " + reason + '\n');
        QVERIFY(m_harness->client->calls.isEmpty());
    }

    void shouldTellWhyThePasswordCannotBeRead()
    {
        m_harness->password = tl::make_unexpected(u"No password was given"_s);
        QCOMPARE(m_harness->run({"sign-in", "a@b"}), ExitCode::Failure);
        QCOMPARE(m_harness->errors, "orbitledge: No password was given\n"_ba);
    }

    void shouldRefreshAndSave()
    {
        m_harness->client->hasSession = true;
        QCOMPARE(m_harness->run({"refresh"}), ExitCode::Success);
        QCOMPARE(m_harness->output, "Up to date. 3 subscriptions fetched.\n"_ba);
        QCOMPARE(m_harness->client->calls,
            (QStringList{u"hasValidSession"_s, u"fetchProfile"_s, u"fetchSubscriptions"_s}));
        QVERIFY(saved() == sampleSnapshot(3));
    }

    void shouldAskNobodyWithoutASession()
    {
        QCOMPARE(m_harness->run({"refresh"}), ExitCode::Failure);
        QCOMPARE(m_harness->errors, "orbitledge: You are not signed in.\n"_ba);
        QCOMPARE(m_harness->output, ""_ba);
        QCOMPARE(m_harness->client->calls, QStringList{u"hasValidSession"_s});
    }

    void shouldTellWhyItFailedInOneLine_data()
    {
        QTest::addColumn<APIError>("error");
        QTest::addColumn<QByteArray>("line");
        const auto row = [](const char *name, const APIError &error, const char *line) {
            QTest::newRow(name) << error << QByteArray(line);
        };
        row("unauthorized", APIError::Unauthorized{u"Wrong password."_s}, "Wrong password.");
        row("unauthorized without a word", APIError::Unauthorized{},
            "Your session expired. Please sign in again.");
        row("forbidden", APIError::Forbidden{u"Not you."_s}, "Not you.");
        row("rate limited", APIError::RateLimited{2.1, u"Slow down."_s},
            "Slow down. Try again in 3 seconds.");
        row("request failed", APIError::RequestFailed{500, u"internal server error"_s},
            "internal server error");
        row("transport", APIError::Transport{u"The request timed out."_s}, "The request timed out.");
        row("several lines", APIError::RequestFailed{500, u"one\ntwo"_s}, "one\uFFFDtwo");
    }
    void shouldTellWhyItFailedInOneLine()
    {
        QFETCH(APIError, error);
        QFETCH(QByteArray, line);
        const QByteArray before = encodeCacheSnapshot(sampleSnapshot(1));
        QVERIFY(m_harness->files->replace(m_harness->cacheFile, before));
        m_harness->client->hasSession = true;
        m_harness->client->profile = tl::make_unexpected(error);
        for (const QList<QByteArray> &words : {QList<QByteArray>{"sign-in", "a@b"}, {"refresh"}}) {
            QCOMPARE(m_harness->run(words), ExitCode::Failure);
            QVERIFY2(m_harness->errors == "orbitledge: " + line + '\n', m_harness->errors.constData());
            QCOMPARE(m_harness->output, ""_ba);
        }
        // Old data are better than none.
        QCOMPARE(m_harness->files->content(m_harness->cacheFile), before);
    }

    void shouldFailWhereTheListCannotBeFetched()
    {
        m_harness->client->hasSession = true;
        m_harness->client->subscriptions = tl::make_unexpected(APIError(APIError::Transport{u"Gone."_s}));
        for (const QList<QByteArray> &words : {QList<QByteArray>{"sign-in", "a@b"}, {"refresh"}}) {
            QCOMPARE(m_harness->run(words), ExitCode::Failure);
            QCOMPARE(m_harness->errors, "orbitledge: Gone.\n"_ba);
            QVERIFY(!saved());
        }
    }

    void shouldFailWhereTheDataCannotBeSaved()
    {
        m_harness->client->hasSession = true;
        m_harness->files->failWriting(
            {.kind = FileError::Kind::NoSpace, .errorDescription = u"No space left on device"_s});
        for (const QList<QByteArray> &words :
            {QList<QByteArray>{"sign-in", "a@b"}, {"refresh"}, {"sign-out"}}) {
            QCOMPARE(m_harness->run(words), ExitCode::Failure);
            QCOMPARE(m_harness->errors, "orbitledge: /data/cache.json: No space left on device\n"_ba);
            QCOMPARE(m_harness->output, ""_ba);
        }
    }

    void shouldSignOutAndRemoveWhatWasSaved()
    {
        QVERIFY(m_harness->files->replace(m_harness->cacheFile, "anything"));
        QCOMPARE(m_harness->run({"sign-out"}), ExitCode::Success);
        QCOMPARE(m_harness->output, "Signed out.\n"_ba);
        QCOMPARE(m_harness->client->calls, QStringList{u"signOut"_s});
        QVERIFY(!m_harness->files->exists(m_harness->cacheFile));
    }

    void shouldSayThatTheSessionIsStillThere()
    {
        QVERIFY(m_harness->files->replace(m_harness->cacheFile, "anything"));
        m_harness->keychain->failure = KeychainStatus::InteractionNotAllowed;
        QCOMPARE(m_harness->run({"sign-out"}), ExitCode::Failure);
        QCOMPARE(m_harness->output, ""_ba);
        QCOMPARE(m_harness->errors,
            "orbitledge: The session could not be removed: Keychain error: The keyring is locked.\n"_ba);
        // The rest is gone all the same, and nobody was asked twice.
        QVERIFY(!m_harness->files->exists(m_harness->cacheFile));
        QVERIFY(m_harness->keychain->removals == QList{KeychainPrompt::Forbidden});
    }

    void shouldKeepTheRemindersInStep()
    {
        m_harness->client->hasSession = true;
        m_harness->defaults->setValue(u"settings.notificationsEnabled"_s, true);
        QCOMPARE(m_harness->run({"sign-in", "a@b"}), ExitCode::Success);
        const QStringList planned = m_harness->center->identifiers();
        QVERIFY(!planned.isEmpty());
        m_harness->client->subscriptions->removeFirst();
        QCOMPARE(m_harness->run({"refresh"}), ExitCode::Success);
        QVERIFY(m_harness->center->identifiers() != planned);
        QCOMPARE(m_harness->run({"sign-out"}), ExitCode::Success);
        QVERIFY(m_harness->center->requests.isEmpty());
    }

    void shouldSayThatRemindersAreMissingWhereTheDataAreThere()
    {
        m_harness->client->hasSession = true;
        m_harness->defaults->setValue(u"settings.notificationsEnabled"_s, true);
        m_harness->center->savingFailure = u"The disk is full."_s;
        QCOMPARE(m_harness->run({"refresh"}), ExitCode::Success);
        QCOMPARE(m_harness->output, "Up to date. 3 subscriptions fetched.\n"_ba);
        QCOMPARE(m_harness->errors, "orbitledge: macOS rejected some reminders: The disk is full.\n"_ba);
    }

    void shouldSayThatRemindersAreStillThere()
    {
        m_harness->center->forgettingFailure = u"Another process is in charge of them."_s;
        QCOMPARE(m_harness->run({"sign-out"}), ExitCode::Failure);
        QCOMPARE(m_harness->output, ""_ba);
        QCOMPARE(m_harness->errors, "orbitledge: Another process is in charge of them.\n"_ba);
        // The rest is gone all the same.
        QVERIFY(m_harness->client->calls.contains(u"signOut"_s));
    }

    void shouldNotShowTheDataOfAnotherAccount()
    {
        CacheSnapshot another = sampleSnapshot(5);
        another.profile.id = QUuid(u"{00000000-0000-4000-8000-000000000001}"_s);
        QVERIFY(m_harness->files->replace(m_harness->cacheFile, encodeCacheSnapshot(another)));
        m_harness->client->subscriptions = tl::make_unexpected(APIError(APIError::Transport{u"Gone."_s}));
        QCOMPARE(m_harness->run({"sign-in", "a@b"}), ExitCode::Failure);
        QVERIFY(!m_harness->files->exists(m_harness->cacheFile));
        // Those of the same account are better than none.
        QVERIFY(m_harness->files->replace(m_harness->cacheFile, encodeCacheSnapshot(sampleSnapshot(5))));
        QCOMPARE(m_harness->run({"sign-in", "a@b"}), ExitCode::Failure);
        QVERIFY(saved() == sampleSnapshot(5));
    }

    void shouldRefuseAnAddressBeforeAnythingElse()
    {
        m_harness->variables.insert("ORBITLEDGE_API_URL", "nowhere");
        QCOMPARE(m_harness->run({"sign-in", "a@b"}), ExitCode::Failure);
        QCOMPARE(m_harness->errors,
            "orbitledge: ORBITLEDGE_API_URL is not a web address like https://example.com/\n"_ba);
        // Nobody types a password for nothing.
        QVERIFY(m_harness->prompts.isEmpty());
        QVERIFY(m_harness->client->calls.isEmpty());
    }

    void shouldTellWhyNobodyCanBeAsked()
    {
        m_harness->noSession = u"Orbitledge is running, but does not answer."_s;
        for (const QList<QByteArray> &words :
            {QList<QByteArray>{"sign-in", "a@b"}, {"refresh"}, {"sign-out"}}) {
            QCOMPARE(m_harness->run(words), ExitCode::Failure);
            QCOMPARE(m_harness->errors, "orbitledge: Orbitledge is running, but does not answer.\n"_ba);
            QCOMPARE(m_harness->output, ""_ba);
        }
    }

    void shouldHelp()
    {
        for (const char *command : {"sign-in", "refresh", "sign-out"}) {
            for (const char *option : {"--help", "-h"}) {
                QCOMPARE(m_harness->run({command, option}), ExitCode::Success);
                QVERIFY(m_harness->output.startsWith("Usage: orbitledge " + QByteArray(command)));
                QVERIFY(m_harness->output.contains("ORBITLEDGE_API_URL"));
                for (const QByteArray &line : m_harness->output.split('\n'))
                    QVERIFY2(line.size() <= 80, line.constData());
            }
        }
        QVERIFY(m_harness->client->calls.isEmpty());
    }

    void shouldRefuseWrongArguments_data()
    {
        QTest::addColumn<QList<QByteArray>>("words");
        QTest::addColumn<QByteArray>("line");
        const auto row = [](const QList<QByteArray> &words, const char *line) {
            QTest::newRow(line) << words << QByteArray(line);
        };
        row({"sign-in"}, "sign-in: the e-mail address of your account is missing");
        row({"sign-in", ""}, "sign-in: the e-mail address of your account is missing");
        row({"sign-in", "a@b", "secret"}, "sign-in: \"secret\" was not expected");
        row({"sign-in", "--password=x"}, "sign-in: the option \"--password=x\" is not known");
        row({"refresh", "now"}, "refresh: \"now\" was not expected");
        row({"sign-out", "--force"}, "sign-out: the option \"--force\" is not known");
    }
    void shouldRefuseWrongArguments()
    {
        QFETCH(QList<QByteArray>, words);
        QFETCH(QByteArray, line);
        QCOMPARE(m_harness->run(words), ExitCode::Usage);
        QCOMPARE(m_harness->errors, "orbitledge: " + line + '\n');
        QVERIFY(m_harness->client->calls.isEmpty());
        QVERIFY(m_harness->prompts.isEmpty());
    }
};

ORBITLEDGE_TEST_MAIN(SessionCommandsTest)
#include "SessionCommandsTest.moc"
