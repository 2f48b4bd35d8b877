#include "model/RecordCodecs.h"
#include "support/JsonDocuments.h"
#include "support/TestMain.h"

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

/// What people and logs are told about a document that cannot be read.
class DecodingWordsTest : public QObject {
    Q_OBJECT

private:
    static QString wordsAbout(const QByteArray &json)
    {
        const auto decoded = decodeJson<CreateSubscriptionRequest>(json);
        return decoded ? u"accepted"_s : decoded.error().debugDescription;
    }

    static QByteArray requestWith(const QByteArray &name, const QByteArray &cost)
    {
        return "{\"name\":" + name + ",\"cost\":" + cost + ",\"billing_cycle\":\"m\"}";
    }

private Q_SLOTS:
    void shouldSayWhyADocumentIsNoJson_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QString>("words");
        const auto row = [](const char *name, const QByteArray &json, const QString &words) {
            QTest::newRow(name) << json << words;
        };
        row("empty", "", u"it is empty"_s);
        row("white space only", " \n", u"it is empty"_s);
        row("Latin-1", "{\"name\":\"\xE9\"}", u"it is not UTF-8"_s);
        row("a text that does not end", "{\"name\":\"a", u"a string does not end"_s);
        row("a control character", "{\"name\":\"a\nb\"}", u"a string holds a control character"_s);
        row("half a surrogate pair", requestWith("\"\\ud800\"", "1"),
            u"a string holds an escape that stands for no character"_s);
        row("nested too deep", requestWith("\"n\"", "1,\"z\":" + QByteArray(600, '[') + QByteArray(600, ']')),
            u"it is nested too deep"_s);
        row("a text glued to a number", requestWith("1\"a\"", "1"),
            u"a value is neither a string, a number, true, false nor null"_s);
        row("something behind the end", requestWith("\"n\"", "1") + "{}",
            u"something stands behind its end"_s);
    }
    void shouldSayWhyADocumentIsNoJson()
    {
        QFETCH(QByteArray, json);
        QFETCH(QString, words);
        const QString said = wordsAbout(json);
        QVERIFY2(said.startsWith(u"The data is not valid JSON: "_s + words), qPrintable(said));
    }

    void shouldSayNearWhichByteADocumentIsBroken_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<int>("byte");
        const auto row
            = [](const char *name, const QByteArray &json, int byte) { QTest::newRow(name) << json << byte; };
        row("a bad value", R"({"name":oops})", 9);
        row("a bad value in an ignored one", R"({"x":[1,oops]})", 9);
        row("behind a byte order mark", "\xEF\xBB\xBF{\"name\":oops}", 12);
    }
    void shouldSayNearWhichByteADocumentIsBroken()
    {
        QFETCH(QByteArray, json);
        QFETCH(int, byte);
        const QString said = wordsAbout(json);
        QVERIFY2(said.endsWith(u", near byte %1"_s.arg(byte)), qPrintable(said));
    }

    void shouldSayWhatWasFoundInAnothersPlace_data()
    {
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<QString>("words");
        const auto row = [](const char *name, const QByteArray &value, const QString &words) {
            QTest::newRow(name) << value << words;
        };
        row("null", "null", u"null"_s);
        row("true", "true", u"a boolean"_s);
        row("false", "false", u"a boolean"_s);
        row("a number", "1.5", u"a number"_s);
        row("a number beyond all limits", "1e999", u"a number"_s);
        row("a list", "[]", u"an array"_s);
        row("an object", "{}", u"an object"_s);
    }
    void shouldSayWhatWasFoundInAnothersPlace()
    {
        QFETCH(QByteArray, value);
        QFETCH(QString, words);
        QCOMPARE(wordsAbout(requestWith(value, "1")), u"Expected a string but found "_s + words);
    }

    void shouldSayThatItIsNoJsonWhateverElseIsWrong()
    {
        const QString words = wordsAbout("{\"name\":7,\"cost\":1,\"billing_cycle\":\"\\ud800\"}");
        QVERIFY2(words.startsWith(u"The data is not valid JSON"_s), qPrintable(words));
    }

    void shouldSayThatAListIsNoRecord()
    {
        QCOMPARE(wordsAbout("[]"), u"Expected an object but found an array"_s);
        QCOMPARE(wordsAbout(requestWith("[1,{}]", "1")), u"Expected a string but found an array"_s);
    }

    void shouldSayThatATextIsNoNumber()
    {
        QCOMPARE(wordsAbout(requestWith("\"n\"", "\"\"")), u"Expected a number but found a string"_s);
        QCOMPARE(wordsAbout(requestWith("\"n\"", "\"1\"")), u"Expected a number but found a string"_s);
    }

    void shouldSayThatAScalarIsNoDocument_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QString>("words");
        QTest::newRow("a number") << QByteArray(" 7 \n") << u"a number"_s;
        QTest::newRow("a text") << QByteArray("\"a\"") << u"a string"_s;
        QTest::newRow("null") << QByteArray("null") << u"null"_s;
        QTest::newRow("true") << QByteArray("\ttrue") << u"a boolean"_s;
    }
    void shouldSayThatAScalarIsNoDocument()
    {
        QFETCH(QByteArray, json);
        QFETCH(QString, words);
        QCOMPARE(wordsAbout(json), u"Expected an object or an array but found "_s + words);
    }

    void shouldKeepOneCopyOfAShortTextThatRepeats()
    {
        const QByteArray cycle = "c" + QByteArray(31, 'x'); // as long as a text may be for that
        const auto cyclesOf = [](const QByteArray &json) {
            const auto decoded = decodeJson<QList<Subscription>>(json);
            QList<QString> cycles;
            for (const Subscription &subscription : decoded.value_or(QList<Subscription>()))
                cycles.append(subscription.billingCycle);
            return cycles;
        };
        const auto listWith = [](const QByteArray &text) {
            const QByteArray one = object(with(subscriptionMembers(), "billing_cycle", '"' + text + '"'));
            return '[' + one + ',' + one + ']';
        };
        const auto shared = cyclesOf(listWith(cycle));
        QCOMPARE(shared.size(), 2);
        QCOMPARE(shared[0], QString::fromLatin1(cycle));
        QVERIFY(shared[0].constData() == shared[1].constData());
        const auto apart = cyclesOf(listWith(cycle + 'x'));
        QCOMPARE(apart.size(), 2);
        QCOMPARE(apart[0], apart[1]);
        QVERIFY(apart[0].constData() != apart[1].constData());
    }
};

ORBITLEDGE_TEST_MAIN(DecodingWordsTest)
#include "DecodingWordsTest.moc"
