#include "model/RecordCodecs.h"
#include "support/JsonDocuments.h"
#include "support/Printing.h"
#include "support/ProcessorTime.h"
#include "support/TestMain.h"
#include "support/TimeLimit.h"

#include <sys/mman.h>

#include <memory>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

using Kind = DecodingError::Kind;

namespace {

const QString accepted = u"accepted"_s;
const QString malformed = u"malformed"_s;

/// Accepted, malformed as a document, or what else is wrong with it.
template <typename Record> QString outcome(const QByteArray &json)
{
    const auto decoded = decodeJson<Record>(json);
    if (decoded)
        return accepted;
    if (decoded.error().debugDescription.startsWith(u"The data is not valid JSON"_s))
        return decoded.error().kind == Kind::DataCorrupted ? malformed : u"malformed, but of another kind"_s;
    return decoded.error().pathText() + u": "_s + decoded.error().debugDescription;
}

QString outcome(const QByteArray &json)
{
    return outcome<CreateSubscriptionRequest>(json);
}

/// A small document that is accepted, with one more member.
QByteArray requestWith(const QByteArray &member)
{
    return R"({"name":"n","cost":1,)" + member + R"(,"billing_cycle":"m"})";
}

QByteArray request()
{
    return R"({"name":"n","cost":1,"billing_cycle":"m"})";
}

QByteArray repeated(const QByteArray &text, qsizetype times)
{
    return text.repeated(times);
}

constexpr qint64 longestMilliseconds = timeLimit(1000);

} // namespace

class HostileJsonTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldRefuseWhatIsNoJson_data();
    void shouldRefuseWhatIsNoJson();
    void shouldRefuseBrokenStructureInAnIgnoredValue_data();
    void shouldRefuseBrokenStructureInAnIgnoredValue();
    void shouldRefuseBrokenTextInAValue_data();
    void shouldRefuseBrokenTextInAValue();
    void shouldRefuseBrokenTextInAKey_data();
    void shouldRefuseBrokenTextInAKey();
    void shouldRefuseAColonBehindAText_data();
    void shouldRefuseAColonBehindAText();
    void shouldAcceptWhatIsOddButValid_data();
    void shouldAcceptWhatIsOddButValid();
    void shouldRefuseADocumentCutOffAtAnyByte_data();
    void shouldRefuseADocumentCutOffAtAnyByte();
    void shouldSurviveEveryChangedByte_data();
    void shouldSurviveEveryChangedByte();
    void shouldRefuseADocumentThatMissesAnyByteOfItsStructure();
    void shouldRefuseADocumentThatDoublesAnyByteOfItsStructure();
    void shouldReadABufferWithoutPadding();
    void shouldReadABufferWhoseStartWasCutOff();
    void shouldReadABufferThatIsShared();
    void shouldNotReadWhatStandsBehindTheDocumentInItsBuffer();
    void shouldBoundTheDepthOfIgnoredValues_data();
    void shouldBoundTheDepthOfIgnoredValues();
    void shouldRefuseAMillionBracketsQuickly_data();
    void shouldRefuseAMillionBracketsQuickly();
    void shouldReadManyKeysQuickly_data();
    void shouldReadManyKeysQuickly();
    void shouldRefuseADocumentOverAGigabyteWithoutReadingIt();
    void shouldReadATextOfManyMegabytes();
    void shouldReadANumberOfManyMegabytes();
};

void HostileJsonTest::shouldRefuseWhatIsNoJson_data()
{
    QTest::addColumn<QByteArray>("json");
    const auto row = [](const char *name, const QByteArray &json) { QTest::newRow(name) << json; };
    row("empty", "");
    row("null byte array", QByteArray());
    row("a blank", " ");
    row("white space only", " \t\r\n \n");
    row("white space of a block", QByteArray(64, ' '));
    row("white space of many blocks", QByteArray(100'000, '\n'));
    row("a null character", QByteArray(1, '\0'));
    row("null characters", QByteArray(1000, '\0'));
    row("byte order mark only", "\xEF\xBB\xBF");
    row("byte order mark and a blank", "\xEF\xBB\xBF ");
    row("two byte order marks", "\xEF\xBB\xBF\xEF\xBB\xBF" + request());
    row("half a byte order mark", "\xEF\xBB" + request());
    row("byte order mark behind a blank", " \xEF\xBB\xBF" + request());
    row("UTF-16, little end first", [] {
        QByteArray utf16("\xFF\xFE");
        for (const char c : request())
            utf16.append(c).append('\0');
        return utf16;
    }());
    row("UTF-16, big end first", [] {
        QByteArray utf16("\xFE\xFF");
        for (const char c : request())
            utf16.append('\0').append(c);
        return utf16;
    }());
    row("UTF-16 without a byte order mark", [] {
        QByteArray utf16;
        for (const char c : request())
            utf16.append(c).append('\0');
        return utf16;
    }());
    row("Latin-1", requestWith("\"z\":\"\xE9\""));
    row("an opening brace", "{");
    row("a closing brace", "}");
    row("an opening bracket", "[");
    row("a closing bracket", "]");
    row("a quote", "\"");
    row("a backslash", "\\");
    row("a colon", ":");
    row("a comma", ",");
    row("a minus", "-");
    row("a word", "nul");
    row("a word with more behind it", "nullx");
    row("two numbers", "1 2");
    row("a text that does not end", "\"abc");
    row("a text and a colon", "\"abc\":1");
    row("a brace closed by a bracket", "{]");
    row("single quotes", "{'name':'n','cost':1,'billing_cycle':'m'}");
    row("keys without quotes", "{name:\"n\",cost:1,billing_cycle:\"m\"}");
    row("a comment", "/* */" + request());
    row("a comment inside", requestWith("/* */\"z\":1"));
    row("a line comment", request() + " // end");
    row("a comma behind the last member", R"({"name":"n","cost":1,"billing_cycle":"m",})");
    row("a comma before the first member", R"({,"name":"n","cost":1,"billing_cycle":"m"})");
    row("two commas", R"({"name":"n",,"cost":1,"billing_cycle":"m"})");
    row("a missing comma", R"({"name":"n" "cost":1,"billing_cycle":"m"})");
    row("a missing colon", R"({"name" "n","cost":1,"billing_cycle":"m"})");
    row("a missing value", R"({"name":,"cost":1,"billing_cycle":"m"})");
    row("a missing last value", R"({"name":"n","cost":1,"billing_cycle":})");
    row("a missing key", R"({:"n","cost":1,"billing_cycle":"m"})");
    row("two colons", R"({"name"::"n","cost":1,"billing_cycle":"m"})");
    row("a semicolon for a comma", R"({"name":"n";"cost":1;"billing_cycle":"m"})");
    row("two texts as one value", R"({"name":"n""o","cost":1,"billing_cycle":"m"})");
    row("two numbers as one value", R"({"name":"n","cost":1 2,"billing_cycle":"m"})");
    row("a number for a key", R"({1:"n","cost":1,"billing_cycle":"m"})");
    row("an array closed by a brace", requestWith("\"z\":[1}"));
    row("an object closed by a bracket", R"({"name":"n","cost":1,"billing_cycle":"m"])");

    row("a second document", request() + request());
    row("a second document on a line of its own", request() + '\n' + request());
    row("a brace behind it", request() + '}');
    row("a bracket behind it", request() + ']');
    row("a comma behind it", request() + ',');
    row("a quote behind it", request() + '"');
    row("a word behind it", request() + " null");
    row("a number behind it", request() + '1');
    row("a null character behind it", request() + QByteArray(1, '\0'));
    row("a null character before it", QByteArray(1, '\0') + request());
    row("a null character between members", requestWith(QByteArray(1, '\0') + "\"z\":1"));
    row("a form feed behind it", request() + '\f');
    row("a vertical tab behind it", request() + '\v');
    row("a no-break space behind it", request() + "\xC2\xA0");
    row("a byte that is no UTF-8 behind it", request() + '\xFF');
    row("a null character far behind it", request() + QByteArray(1000, ' ') + QByteArray(1, '\0'));
}

void HostileJsonTest::shouldRefuseWhatIsNoJson()
{
    QFETCH(QByteArray, json);
    QCOMPARE(outcome(request()), accepted);
    // What a document begins with decides first whether it can be a record or a list at all.
    const bool beginsAsList = json.startsWith('[');
    QCOMPARE(beginsAsList ? outcome<QList<Subscription>>(json) : outcome(json), malformed);
    QVERIFY(!decodeJson<CreateSubscriptionRequest>(json));
    QVERIFY(!decodeJson<QList<Subscription>>(json));
}

void HostileJsonTest::shouldRefuseBrokenStructureInAnIgnoredValue_data()
{
    QTest::addColumn<QByteArray>("value");
    const auto row = [](const char *name, const QByteArray &value) { QTest::newRow(name) << value; };
    row("a word that is none", "nul");
    row("a word with more behind it", "truee");
    row("a capital word", "True");
    row("NaN", "NaN");
    row("infinity", "-Infinity");
    row("leading zero", "01");
    row("leading plus", "+1");
    row("no digit behind the point", "1.");
    row("no digit before the point", ".5");
    row("no digit in the exponent", "1e");
    row("hexadecimal", "0x10");
    row("two signs", "--1");
    row("a number with a word behind it", "1a");
    row("an array that ends in a comma", "[1,]");
    row("an array that begins with a comma", "[,1]");
    row("an array with two commas", "[1,,2]");
    row("an array without commas", "[1 2]");
    row("an array with a colon", R"(["a":1])");
    row("an array that is closed by a brace", "[1}");
    row("an array that is not closed", "[1");
    row("an array that is closed twice", "[1]]");
    row("an object that ends in a comma", R"({"a":1,})");
    row("an object that begins with a comma", R"({,"a":1})");
    row("an object without a value", R"({"a"})");
    row("an object without a colon", R"({"a" 1})");
    row("an object with two colons", R"({"a"::1})");
    row("an object with a number for a key", R"({1:1})");
    row("an object with null for a key", R"({null:1})");
    row("an object with an array for a key", R"({[]:1})");
    row("an object that is closed by a bracket", R"({"a":1])");
    row("an object that is not closed", R"({"a":1)");
    row("a text that does not end", R"("a)");
    row("deep inside", R"({"a":[{"b":[{"c":[1,]}]}]})");
    row("a bad number deep inside", R"({"a":[{"b":[{"c":[01]}]}]})");
    row("a bad word deep inside", R"({"a":[{"b":[{"c":[nulL]}]}]})");
    row("single quotes", "'a'");
    row("a comment", "/**/1");
    row("nothing", "");
}

void HostileJsonTest::shouldRefuseBrokenStructureInAnIgnoredValue()
{
    QFETCH(QByteArray, value);
    QCOMPARE(outcome(requestWith("\"unknown\":" + value)), malformed);
    // The second of two equal keys is ignored as well.
    QCOMPARE(outcome(requestWith("\"name\":" + value)), malformed);
    QCOMPARE(outcome(R"({"name":"n","cost":1,"billing_cycle":"m","unknown":)" + value + '}'), malformed);
    QCOMPARE(outcome(R"({"unknown":)" + value + R"(,"name":"n","cost":1,"billing_cycle":"m"})"), malformed);
}

namespace {

void addBrokenTexts()
{
    QTest::addColumn<QByteArray>("text");
    const auto row = [](const char *name, const QByteArray &text) { QTest::newRow(name) << text; };
    row("a continuation byte alone", "\x80");
    row("a continuation byte behind a letter", "a\xBF");
    row("a two-byte sequence that is cut off", "\xC3");
    row("a two-byte sequence without its continuation", "\xC3z");
    row("a three-byte sequence that is cut off", "\xE2\x82");
    row("a four-byte sequence that is cut off", "\xF0\x9F\x98");
    row("an overlong slash of two bytes", "\xC0\xAF");
    row("an overlong null of two bytes", "\xC0\x80");
    row("an overlong letter", "\xC1\x81");
    row("an overlong slash of three bytes", "\xE0\x80\xAF");
    row("an overlong slash of four bytes", "\xF0\x80\x80\xAF");
    row("a high surrogate as three bytes", "\xED\xA0\x80");
    row("a low surrogate as three bytes", "\xED\xBF\xBF");
    row("a surrogate pair as six bytes", "\xED\xA0\xBD\xED\xB8\x80");
    row("beyond the last code point", "\xF4\x90\x80\x80");
    row("a five-byte sequence", "\xF8\x88\x80\x80\x80");
    row("a six-byte sequence", "\xFC\x84\x80\x80\x80\x80");
    row("byte FE", "\xFE");
    row("byte FF", "\xFF");
    row("byte FF behind a block of letters", QByteArray(64, 'a') + '\xFF');

    row("an escaped high surrogate alone", R"(\ud800)");
    row("an escaped high surrogate before a letter", R"(\ud83dx)");
    row("an escaped high surrogate before an escaped letter", R"(\ud83d\u0041)");
    row("an escaped high surrogate before a short escape", R"(\ud83d\n)");
    row("two escaped high surrogates", R"(\ud83d\ud83d)");
    row("an escaped low surrogate alone", R"(\udc00)");
    row("the last escaped low surrogate alone", R"(\udfff)");
    row("an escaped low surrogate behind a letter", R"(x\ude00)");
    row("escaped surrogates in reverse", R"(\ude00\ud83d)");
    row("a low surrogate behind a pair", R"(\ud83d\ude00\ude00)");
    row("a high surrogate behind a pair", R"(\ud83d\ude00\ud83d)");
    row("a high surrogate before the low one as bytes", "\\ud83d\xED\xB8\x80");

    row("an escape that does not exist", R"(\a)");
    row("an escaped capital U", R"(\U0041)");
    row("an escaped zero", R"(\0)");
    row("an escaped single quote", R"(\')");
    row("an escape of hexadecimal digits", R"(\x41)");
    row("an escape of three digits", R"(\u004)");
    row("an escape of no digits", R"(\u)");
    row("an escape with a letter beyond f", R"(\u00g0)");
    row("an escape with a sign", R"(\u+041)");
    row("an escape with a blank", R"(\u 041)");
    row("an escape with braces", R"(\u{41})");
    row("an escaped line feed", "\\\n");

    for (int c = 0; c < 0x20; ++c)
        QTest::addRow("control character %d", c)
            << QByteArray("a" + QByteArray(1, static_cast<char>(c)) + "b");
}

} // namespace

void HostileJsonTest::shouldRefuseBrokenTextInAValue_data()
{
    addBrokenTexts();
}

void HostileJsonTest::shouldRefuseBrokenTextInAValue()
{
    QFETCH(QByteArray, text);
    const QByteArray quoted = '"' + text + '"';
    const auto decode = [&quoted](const QByteArray &key) {
        return outcome<Subscription>(object(with(subscriptionMembers(), key, quoted)));
    };
    // Every kind of field that is read from a text, and one that nobody asked for.
    for (const QByteArray key : {"id", "name", "currency", "category_name", "next_billing_date", "logo_url",
             "cancelled_at", "updated_at", "unknown"}) {
        QCOMPARE(decode(key), malformed);
    }
    QCOMPARE(outcome(requestWith("\"unknown\":[{\"a\":" + quoted + "}]")), malformed);
    QCOMPARE(outcome(requestWith("\"name\":" + quoted)), malformed);
    QCOMPARE(outcome<SubscriptionTemplate>(object(
                 with(subscriptionTemplateMembers(), "available_billing_cycles", "[\"a\"," + quoted + ']'))),
        malformed);
}

void HostileJsonTest::shouldRefuseBrokenTextInAKey_data()
{
    addBrokenTexts();
}

void HostileJsonTest::shouldRefuseBrokenTextInAKey()
{
    QFETCH(QByteArray, text);
    QCOMPARE(outcome(requestWith('"' + text + "\":1")), malformed);
    QCOMPARE(outcome(requestWith("\"name" + text + "\":1")), malformed);
    QCOMPARE(outcome(requestWith('"' + text + "z\":null")), malformed);
    QCOMPARE(outcome(requestWith("\"unknown\":[{\"" + text + "\":1}]")), malformed);
}

void HostileJsonTest::shouldRefuseAColonBehindAText_data()
{
    // A parser that skips what it was not asked for may take such a text for a key, and then needs one
    // closing brace more than there should be.
    QTest::addColumn<QByteArray>("json");
    const auto row = [](const char *name, const char *json) { QTest::newRow(name) << QByteArray(json); };
    row("last value", R"({"cost":1,"billing_cycle":"m","name":"n":1}})");
    row("last value, without the extra brace", R"({"cost":1,"billing_cycle":"m","name":"n":1})");
    row("first value", R"({"name":"n":1},"cost":1,"billing_cycle":"m"})");
    row("an optional value", R"({"currency":"n":1},"name":"n","cost":1,"billing_cycle":"m"})");
    row("a day", R"({"trial_end_date":"2026-01-01":1},"name":"n","cost":1,"billing_cycle":"m"})");
    row("an ignored value", R"({"unknown":"n":1},"name":"n","cost":1,"billing_cycle":"m"})");
    row("inside an ignored object", R"({"unknown":{"a":"n":1}},"name":"n","cost":1,"billing_cycle":"m"})");
    row("inside an ignored array", R"({"unknown":["n":1]],"name":"n","cost":1,"billing_cycle":"m"})");
    row("an object behind the colon", R"({"name":"n":{}},"cost":1,"billing_cycle":"m"})");
    row("an escaped text", R"({"name":"\n":1},"cost":1,"billing_cycle":"m"})");
    row("a number", R"({"cost":1:1},"name":"n","billing_cycle":"m"})");
    row("null", R"({"currency":null:1},"name":"n","cost":1,"billing_cycle":"m"})");
}

void HostileJsonTest::shouldRefuseAColonBehindAText()
{
    QFETCH(QByteArray, json);
    QCOMPARE(outcome(json), malformed);
}

void HostileJsonTest::shouldAcceptWhatIsOddButValid_data()
{
    QTest::addColumn<QByteArray>("json");
    const auto row = [](const char *name, const QByteArray &json) { QTest::newRow(name) << json; };
    row("byte order mark", "\xEF\xBB\xBF" + request());
    row("byte order mark and white space", "\xEF\xBB\xBF \n" + request() + "\n");
    row("white space of many blocks around it",
        QByteArray(10'000, ' ') + request() + QByteArray(10'000, '\n'));
    row("an empty unknown key", requestWith(R"("":1)"));
    row("an unknown key with a null character", requestWith(R"("a\u0000b":1)"));
    row("an unknown key with a surrogate pair", requestWith(R"("\ud83d\ude00":1)"));
    row("an unknown key of quotes and backslashes", requestWith(R"("\"\\\"":1)"));
    row("an unknown key that looks like a structure", requestWith(R"("{\"name\":1}":1)"));
    row("an unknown key of a megabyte", requestWith('"' + QByteArray(1'000'000, 'k') + R"(":1)"));
    row("an unknown key that an escape makes longer than its text", requestWith(R"("name\u006e":1)"));
    row("an unknown number beyond all ranges", requestWith("\"z\":1e999999999"));
    row("an unknown negative zero", requestWith("\"z\":-0"));
    row("an unknown number of many digits", requestWith("\"z\":" + QByteArray(100'000, '9')));
    row("an unknown noncharacter", requestWith(R"("z":"\uffff")"));
    row("an unknown delete character", requestWith("\"z\":\"\x7F\""));
    row("unknown empty containers", requestWith(R"("z":[[],{},[{}],{"":[]}])"));
    row("equal unknown keys", requestWith(R"("z":1,"z":2,"z":{"z":3,"z":4})"));
}

void HostileJsonTest::shouldAcceptWhatIsOddButValid()
{
    QFETCH(QByteArray, json);
    QCOMPARE(outcome(json), accepted);
    const auto decoded = decodeJson<CreateSubscriptionRequest>(json);
    QCOMPARE(encodeJson(*decoded), request());
}

namespace {

struct Sample {
    const char *name;
    QByteArray json;
    QString (*outcome)(const QByteArray &);
};

const std::vector<Sample> &samples()
{
    static const std::vector<Sample> all{
        {"subscription", object(subscriptionMembers()), &outcome<Subscription>},
        {"user profile", object(userProfileMembers()), &outcome<UserProfile>},
        {"template", object(subscriptionTemplateMembers()), &outcome<SubscriptionTemplate>},
        {"create request", object(createRequestMembers()), &outcome<CreateSubscriptionRequest>},
        {"create request with unknown members",
            requestWith(R"("z":{"a":["\ud83d\ude00",{"b":[null,true,-1.5e3]}]},"\u0041":"\\\"x")"),
            &outcome<CreateSubscriptionRequest>},
        {"mutation response", object(mutationResponseMembers()), &outcome<SubscriptionMutationResponse>},
        {"authentication response", object(authenticationResponseMembers()),
            &outcome<AuthenticationResponse>},
        {"list",
            '[' + object(requiredOnly(subscriptionMembers())) + ", " + object(subscriptionMembers()) + ']',
            &outcome<QList<Subscription>>},
    };
    return all;
}

/// Where the brackets, colons, commas and quotes stand that are not part of a text.
QList<qsizetype> positionsOfStructure(const QByteArray &json)
{
    QList<qsizetype> positions;
    bool inText = false;
    for (qsizetype at = 0; at < json.size(); ++at) {
        if (inText && json[at] == '\\') {
            ++at;
            continue;
        }
        if (json[at] == '"')
            inText = !inText;
        if (json[at] == '"' || (!inText && QByteArrayView("{}[]:,").contains(json[at])))
            positions.append(at);
    }
    return positions;
}

void addSamples()
{
    QTest::addColumn<std::size_t>("sample");
    for (std::size_t i = 0; i < samples().size(); ++i)
        QTest::newRow(samples()[i].name) << i;
}

} // namespace

void HostileJsonTest::shouldRefuseADocumentCutOffAtAnyByte_data()
{
    addSamples();
}

void HostileJsonTest::shouldRefuseADocumentCutOffAtAnyByte()
{
    QFETCH(std::size_t, sample);
    const Sample &document = samples()[sample];
    QCOMPARE(document.outcome(document.json), accepted);
    for (qsizetype length = 0; length < document.json.size(); ++length) {
        QCOMPARE(document.outcome(document.json.first(length)), malformed);
        // What was cut off still stands in the buffer.
        QByteArray shortened = document.json;
        shortened.truncate(length);
        QCOMPARE(document.outcome(shortened), malformed);
    }
}

void HostileJsonTest::shouldSurviveEveryChangedByte_data()
{
    addSamples();
}

void HostileJsonTest::shouldSurviveEveryChangedByte()
{
    QFETCH(std::size_t, sample);
    const Sample &document = samples()[sample];
    int refused = 0;
    for (qsizetype at = 0; at < document.json.size(); ++at) {
        for (const char c : QByteArrayView("\0\x01 \"\\{}[],:-0eZ\x7F\x80\xC3\xED\xFF", 20)) {
            QByteArray json = document.json;
            if (json[at] == c)
                continue;
            json[at] = c;
            const QString result = document.outcome(json);
            refused += result != accepted;
            // None of these may stand anywhere.
            if (static_cast<unsigned char>(c) >= 0x80 || c == '\0' || c == '\x01')
                QCOMPARE(result, malformed);
        }
    }
    QVERIFY(refused > document.json.size() * 6);
}

void HostileJsonTest::shouldRefuseADocumentThatMissesAnyByteOfItsStructure()
{
    for (const Sample &document : samples()) {
        for (const qsizetype at : positionsOfStructure(document.json)) {
            QByteArray json = document.json;
            json.remove(at, 1);
            QVERIFY2(document.outcome(json) != accepted, json.constData());
        }
    }
}

void HostileJsonTest::shouldRefuseADocumentThatDoublesAnyByteOfItsStructure()
{
    for (const Sample &document : samples()) {
        const QList<qsizetype> structure = positionsOfStructure(document.json);
        for (const qsizetype at : structure) {
            QByteArray json = document.json;
            json.insert(at, json[at]);
            QVERIFY2(document.outcome(json) != accepted, json.constData());
        }
    }
}

void HostileJsonTest::shouldReadABufferWithoutPadding()
{
    // On the heap and exactly as long as the document, so that a checker of memory sees every byte too far.
    for (const Sample &document : samples()) {
        const auto size = static_cast<std::size_t>(document.json.size());
        const auto bytes = std::make_unique<char[]>(size);
        std::copy_n(document.json.constData(), size, bytes.get());
        const auto raw = QByteArray::fromRawData(bytes.get(), document.json.size());
        QCOMPARE(document.outcome(raw), accepted);
        QCOMPARE(raw, document.json);
        const auto half = QByteArray::fromRawData(bytes.get(), document.json.size() / 2);
        QCOMPARE(document.outcome(half), malformed);
    }
}

void HostileJsonTest::shouldReadABufferWhoseStartWasCutOff()
{
    // The buffer's capacity is then large, but none of it lies behind the document. Both ends of the
    // document are read ahead: a key that is compared and a text that is unescaped.
    for (const QByteArray end : {R"("z":""})", R"("z":"\u006d"})", R"("":0})", R"("\u006d":0})"}) {
        const QByteArray document = R"({"name":"n","cost":1,"billing_cycle":"m",)" + end;
        QByteArray json = QByteArray(5000, ' ') + document;
        json.squeeze();
        json.remove(0, 5000);
        QCOMPARE(json, document);
        QCOMPARE(outcome(json), accepted);
        QCOMPARE(json, document);
    }
}

void HostileJsonTest::shouldReadABufferThatIsShared()
{
    const QByteArray json = object(subscriptionMembers());
    const QByteArray other = json;
    QCOMPARE(outcome<Subscription>(json), accepted);
    QCOMPARE(other, object(subscriptionMembers()));
    QCOMPARE(json, other);
}

void HostileJsonTest::shouldNotReadWhatStandsBehindTheDocumentInItsBuffer()
{
    const QByteArray whole = request();
    for (const char c : QByteArrayView("}]\",:1 e\\{")) {
        for (qsizetype length = 0; length < whole.size(); ++length) {
            QByteArray json = whole.first(length) + QByteArray(200, c);
            json.truncate(length);
            QCOMPARE(outcome(json), malformed);
        }
        QByteArray json = whole + QByteArray(200, c);
        json.truncate(whole.size());
        QCOMPARE(outcome(json), accepted);
    }
}

void HostileJsonTest::shouldBoundTheDepthOfIgnoredValues_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QString>("expected");
    const auto arrays = [](qsizetype depth, const QByteArray &inner) {
        return repeated("[", depth) + inner + repeated("]", depth);
    };
    const auto objects = [](qsizetype depth, const QByteArray &inner) {
        return repeated("{\"a\":", depth) + inner + repeated("}", depth);
    };
    QTest::newRow("100 arrays") << arrays(100, "1") << accepted;
    QTest::newRow("512 arrays") << arrays(512, "") << accepted;
    QTest::newRow("512 arrays with a number") << arrays(512, "1") << accepted;
    QTest::newRow("512 arrays with a text") << arrays(512, "\"\"") << accepted;
    QTest::newRow("513 arrays") << arrays(513, "") << malformed;
    QTest::newRow("513 arrays with a number") << arrays(513, "1") << malformed;
    QTest::newRow("1023 arrays") << arrays(1023, "1") << malformed;
    QTest::newRow("1024 arrays") << arrays(1024, "1") << malformed;
    QTest::newRow("1025 arrays") << arrays(1025, "1") << malformed;
    QTest::newRow("512 objects") << objects(512, "1") << accepted;
    QTest::newRow("513 objects") << objects(513, "1") << malformed;
    QTest::newRow("511 arrays and an object") << arrays(511, "{}") << accepted;
    QTest::newRow("512 arrays and an object") << arrays(512, "{}") << malformed;
    QTest::newRow("100,000 objects") << objects(100'000, "1") << malformed;
    QTest::newRow("many values of 512 arrays")
        << "[" + repeated(arrays(511, "1") + ",", 99) + arrays(511, "1") + "]" << accepted;
}

void HostileJsonTest::shouldBoundTheDepthOfIgnoredValues()
{
    QFETCH(QByteArray, value);
    QFETCH(QString, expected);
    QCOMPARE(outcome(requestWith("\"z\":" + value)), expected);
    // A field's depth starts anew in every record.
    const QByteArray subscription = object(with(subscriptionMembers(), "z", value));
    QCOMPARE(outcome<QList<Subscription>>('[' + subscription + ',' + subscription + ']'), expected);
    QCOMPARE(outcome<SubscriptionMutationResponse>(
                 object(with(mutationResponseMembers(), "subscription", subscription))),
        expected);
}

void HostileJsonTest::shouldRefuseAMillionBracketsQuickly_data()
{
    QTest::addColumn<QByteArray>("json");
    constexpr qsizetype million = 1'000'000;
    QTest::newRow("arrays") << repeated("[", million) + repeated("]", million);
    QTest::newRow("arrays that are not closed") << repeated("[", million);
    QTest::newRow("objects") << repeated("{\"a\":", million) + '1' + repeated("}", million);
    QTest::newRow("objects that are not closed") << repeated("{\"a\":", million);
    QTest::newRow("opening braces") << repeated("{", million);
    QTest::newRow("closing brackets") << repeated("]", million);
    QTest::newRow("in an ignored value")
        << requestWith("\"z\":" + repeated("[", million) + repeated("]", million));
    QTest::newRow("in a field") << R"({"name":)" + repeated("[", million) + repeated("]", million) + '}';
    QTest::newRow("in a field, not closed") << R"({"name":)" + repeated("[", million);
    QTest::newRow("nested subscriptions") << repeated("{\"subscription\":", million);
    QTest::newRow("quotes") << repeated("\"", million);
    QTest::newRow("commas") << '[' + repeated(",", million) + ']';
}

void HostileJsonTest::shouldRefuseAMillionBracketsQuickly()
{
    QFETCH(QByteArray, json);
    const WorkTimer timer;
    QVERIFY(!decodeJson<CreateSubscriptionRequest>(json));
    QVERIFY(!decodeJson<SubscriptionMutationResponse>(json));
    QVERIFY(!decodeJson<QList<Subscription>>(json));
    QVERIFY2(timer.elapsed() < longestMilliseconds, qPrintable(QString::number(timer.elapsed())));
}

void HostileJsonTest::shouldReadManyKeysQuickly_data()
{
    QTest::addColumn<QByteArray>("members");
    constexpr int many = 200'000;
    const auto build = [](auto member) {
        QByteArray members;
        for (int i = 0; i < many; ++i)
            members.append(member(QByteArray::number(i))).append(',');
        members.chop(1);
        return members;
    };
    QTest::newRow("unknown keys") << build([](const QByteArray &i) { return "\"key" + i + "\":" + i; });
    QTest::newRow("unknown escaped keys")
        << build([](const QByteArray &i) { return "\"\\u006bey" + i + "\":\"\\u006b\""; });
    QTest::newRow("unknown keys with objects")
        << build([](const QByteArray &i) { return "\"key" + i + "\":{\"a\":[" + i + "]}"; });
    QTest::newRow("the same unknown key") << build([](const QByteArray &i) { return "\"key\":" + i; });
    QTest::newRow("the same known key") << build([](const QByteArray &) { return "\"name\":\"n\""; });
    QTest::newRow("the same known key, escaped")
        << build([](const QByteArray &) { return "\"n\\u0061me\":\"n\""; });
    QTest::newRow("the same known key with wrong types")
        << R"("name":"n",)" + build([](const QByteArray &) { return "\"name\":[[]]"; });
    QTest::newRow("known keys with a last letter more")
        << build([](const QByteArray &i) { return "\"trial_notification_days" + i + "\":null"; });
}

void HostileJsonTest::shouldReadManyKeysQuickly()
{
    QFETCH(QByteArray, members);
    const QByteArray json = '{' + members + R"(,"name":"n","cost":1,"billing_cycle":"m"})";
    const WorkTimer timer;
    const auto decoded = decodeJson<CreateSubscriptionRequest>(json);
    QVERIFY2(timer.elapsed() < longestMilliseconds, qPrintable(QString::number(timer.elapsed())));
    QVERIFY2(decoded, decoded ? "" : qPrintable(decoded.error().debugDescription));
    QCOMPARE(encodeJson(*decoded), request());
}

void HostileJsonTest::shouldRefuseADocumentOverAGigabyteWithoutReadingIt()
{
    // Address space alone: to read a byte of it would end the program.
    constexpr std::size_t size = (std::size_t{1} << 30) + 1;
    void *const nothing = mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    QVERIFY(nothing != MAP_FAILED);
    const auto json = QByteArray::fromRawData(static_cast<const char *>(nothing), qsizetype{size});
    const auto decoded = decodeJson<CreateSubscriptionRequest>(json);
    QVERIFY(!decoded);
    QCOMPARE(decoded.error().kind, Kind::DataCorrupted);
    QCOMPARE(decoded.error().debugDescription, u"The data is not valid JSON: it is larger than 1 GiB"_s);
    munmap(nothing, size);
}

void HostileJsonTest::shouldReadATextOfManyMegabytes()
{
    constexpr qsizetype many = 8 << 20;
    const auto name = [](const QByteArray &text) {
        return decodeJson<CreateSubscriptionRequest>(
            R"({"cost":1,"billing_cycle":"m","name":")" + text + R"("})")
            .value()
            .name;
    };
    QCOMPARE(name(QByteArray(many, 'x')), QString(many, u'x'));
    QCOMPARE(name(QByteArray(many, 'x') + "\\n"), QString(many, u'x') + u'\n');
    QCOMPARE(name(repeated("\\u0000", many / 6)), QString(many / 6, QChar(0)));
    QCOMPARE(name(repeated("\\\\", many / 2)), QString(many / 2, u'\\'));
}

void HostileJsonTest::shouldReadANumberOfManyMegabytes()
{
    constexpr qsizetype many = 8 << 20;
    const WorkTimer timer;
    const auto decoded = decodeJson<CreateSubscriptionRequest>(
        R"({"name":"n","billing_cycle":"m","cost":0.)" + QByteArray(many, '3') + '}');
    QVERIFY(decoded);
    QCOMPARE(decoded->cost.toString(), u"0."_s + QString(38, u'3'));
    QVERIFY2(timer.elapsed() < longestMilliseconds, qPrintable(QString::number(timer.elapsed())));
}

ORBITLEDGE_TEST_MAIN(HostileJsonTest)
#include "HostileJsonTest.moc"
