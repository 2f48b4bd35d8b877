#include "model/json/JsonWriter.h"

#include "support/TestMain.h"

using namespace orbitledge;
using namespace Qt::StringLiterals;
using json::JsonWriter;

class JsonWriterTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldPutCommasBetweenValuesOfEveryKind()
    {
        JsonWriter writer;
        writer.beginArray();
        for (int i = 0; i < 2; ++i) {
            writer.null();
            writer.boolean(true);
            writer.boolean(false);
            writer.number(qint64{-7});
            writer.number(*Decimal::fromText("0.50"));
            writer.string(u"text"_s);
            writer.string("latin"_L1);
            writer.beginObject();
            writer.endObject();
            writer.beginArray();
            writer.endArray();
        }
        writer.endArray();
        const QByteArray once = R"(null,true,false,-7,0.5,"text","latin",{},[])";
        QCOMPARE(writer.take(), '[' + once + ',' + once + ']');
    }

    void shouldPutNoCommaBehindAKey()
    {
        JsonWriter writer;
        writer.beginObject();
        writer.key("a");
        writer.null();
        writer.key("b");
        writer.beginObject();
        writer.key("c");
        writer.beginArray();
        writer.number(qint64{1});
        writer.endArray();
        writer.endObject();
        writer.key("d");
        writer.string("e"_L1);
        writer.endObject();
        QCOMPARE(writer.take(), R"({"a":null,"b":{"c":[1]},"d":"e"})"_ba);
    }

    void shouldEscapeWhatAStringMayNotHold_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("expected");
        const auto row = [](const char *name, const QString &text, const QByteArray &expected) {
            QTest::newRow(name) << text << expected;
        };
        row("nothing", u""_s, "\"\"");
        row("a quote", u"a\"b"_s, "\"a\\\"b\"");
        row("a backslash", u"a\\b"_s, "\"a\\\\b\"");
        row("escapes next to each other", u"\"\\\""_s, "\"\\\"\\\\\\\"\"");
        row("a null character", QString(QChar(0)), "\"\\u0000\"");
        row("a new line in the middle", u"a\nb"_s, "\"a\\u000ab\"");
        row("the last control character", u"\u001F"_s, "\"\\u001f\"");
        row("the blank behind it", u" "_s, "\" \"");
        row("a delete character is none", u"\u007F"_s, "\"\x7F\"");
        row("letters beyond ASCII", u"\u00e4\U0001F600"_s, "\"\xC3\xA4\xF0\x9F\x98\x80\"");
    }
    void shouldEscapeWhatAStringMayNotHold()
    {
        QFETCH(QString, text);
        QFETCH(QByteArray, expected);
        JsonWriter writer;
        writer.string(text);
        QCOMPARE(writer.take(), expected);
    }
};

ORBITLEDGE_TEST_MAIN(JsonWriterTest)
#include "JsonWriterTest.moc"
