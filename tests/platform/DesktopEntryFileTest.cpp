#include "platform/linux/DesktopEntryFile.h"

#include "support/TestMain.h"

using namespace orbitledge;
using namespace Qt::StringLiterals;

class DesktopEntryFileTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldRefuseWhatIsNoEntry_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("blank lines") << "\n\n \n"_ba;
        QTest::newRow("a comment") << "# [Desktop Entry]\n"_ba;
        QTest::newRow("another group") << "[Other]\nExec=a\n"_ba;
        QTest::newRow("another group before") << "[Other]\n[Desktop Entry]\nExec=a\n"_ba;
        QTest::newRow("a key before") << "Exec=a\n[Desktop Entry]\n"_ba;
        QTest::newRow("a line that is no key") << "[Desktop Entry]\nExec\n"_ba;
        QTest::newRow("a line without a name") << "[Desktop Entry]\n=a\n"_ba;
        QTest::newRow("a group without an end") << "[Desktop Entry\nExec=a\n"_ba;
        QTest::newRow("another case") << "[desktop entry]\nExec=a\n"_ba;
        QTest::newRow("bytes") << QByteArray("\0\x01\xFF\n[\x00]\n", 8);
    }
    void shouldRefuseWhatIsNoEntry()
    {
        QFETCH(QByteArray, text);
        QVERIFY(!DesktopEntryFile::fromText(text));
    }

    void shouldReadValues_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<std::optional<QByteArray>>("value");
        const auto row = [](const char *name, const QByteArray &text, std::optional<QByteArray> value) {
            QTest::newRow(name) << text << std::move(value);
        };
        row("plain", "[Desktop Entry]\nKey=a b\n", "a b"_ba);
        row("no line break at the end", "[Desktop Entry]\nKey=a", "a"_ba);
        row("two ends of line", "[Desktop Entry]\r\nKey=a\r\n", "a"_ba);
        row("blanks around", " \n#c\n[Desktop Entry] \nKey \t=  a b \n", "a b"_ba);
        row("empty", "[Desktop Entry]\nKey=\n", ""_ba);
        row("an equal sign", "[Desktop Entry]\nKey=a=b\n", "a=b"_ba);
        row("escapes", "[Desktop Entry]\nKey=\\sa\\\\n\\n\\t\\r\\\\\\x\\\n", " a\\n\n\t\r\\\\x\\"_ba);
        row("absent", "[Desktop Entry]\nOther=a\n", std::nullopt);
        row("in a comment", "[Desktop Entry]\n#Key=a\n", std::nullopt);
        row("a translation", "[Desktop Entry]\nKey[de]=a\n", std::nullopt);
        row("another case", "[Desktop Entry]\nkey=a\n", std::nullopt);
        row("in another group", "[Desktop Entry]\nA=1\n\n[Desktop Action x]\nKey=a\n", std::nullopt);
        row("repeated", "[Desktop Entry]\nKey=a\nOther=c\nKey=b\n", "b"_ba);
    }
    void shouldReadValues()
    {
        QFETCH(QByteArray, text);
        QFETCH(std::optional<QByteArray>, value);
        const auto file = DesktopEntryFile::fromText(text);
        QVERIFY(file);
        QCOMPARE(file->value("Key"), value);
    }

    void shouldReadTruthValues()
    {
        const auto file
            = DesktopEntryFile::fromText("[Desktop Entry]\nA=true\nB=false\nC=1\nD=0\nE=yes\nF=True\n");
        QVERIFY(file);
        QCOMPARE(file->truthValue("A"), true);
        QCOMPARE(file->truthValue("B"), false);
        QCOMPARE(file->truthValue("C"), true);
        QCOMPARE(file->truthValue("D"), false);
        for (const char *key : {"E", "F", "G"})
            QVERIFY(!file->truthValue(key));
    }

    void shouldChangeOneKeyAndNothingElse()
    {
        const QByteArray text = "# A comment\n"
                                "[Desktop Entry]\n"
                                "Name=a\n"
                                "Name[de]=b\n"
                                "\n"
                                "Hidden=true\n"
                                "Name=c\n"
                                "X-Other=\\s d\n"
                                "\n"
                                "# The next\n"
                                "[Desktop Action x]\n"
                                "Name=e\n"
                                "Hidden=f\n"_ba;
        auto file = DesktopEntryFile::fromText(text);
        QVERIFY(file);
        QCOMPARE(file->text(), text);
        file->setValue("Name", "new");
        file->remove("Hidden");
        file->remove("Absent");
        file->setValue("Icon", "i");
        QCOMPARE(file->text(),
            "# A comment\n"
            "[Desktop Entry]\n"
            "Name=new\n"
            "Name[de]=b\n"
            "\n"
            "X-Other=\\s d\n"
            "\n"
            "# The next\n"
            "Icon=i\n"
            "[Desktop Action x]\n"
            "Name=e\n"
            "Hidden=f\n"_ba);
    }

    void shouldReadBackWhatItWrote_data()
    {
        QTest::addColumn<QByteArray>("value");
        for (const char *value :
            {"", "a", " ", "  a  ", "\\", "\\s", "\\\\n", "a\nb", "\r\n\t", "=", "[a]", "ä 💸"})
            QTest::addRow("\"%s\"", value) << QByteArray(value);
    }
    void shouldReadBackWhatItWrote()
    {
        QFETCH(QByteArray, value);
        DesktopEntryFile file;
        file.setValue("Key", value);
        QCOMPARE(file.value("Key"), value);
        const auto again = DesktopEntryFile::fromText(file.text());
        QVERIFY(again);
        QCOMPARE(again->value("Key"), value);
        QCOMPARE(again->text(), file.text());
        QCOMPARE(file.text().count('\n'), 2);
    }

    void shouldFindTheProgram_data()
    {
        QTest::addColumn<QByteArray>("exec");
        QTest::addColumn<QByteArray>("program");
        const auto row = [](const char *name, const char *exec, const char *program) {
            QTest::newRow(name) << QByteArray(exec) << QByteArray(program);
        };
        row("nothing", "", "");
        row("blanks", " \t ", "");
        row("a name", "orbitledge", "orbitledge");
        row("arguments", "/usr/bin/orbitledge --background %u", "/usr/bin/orbitledge");
        row("a tab", "orbitledge\t--background", "orbitledge");
        row("quotes", "\"/opt/a b/orbitledge\" --background", "/opt/a b/orbitledge");
        row("quoted characters", "\"/a\\\"b\\`c\\$d\\\\e\" x", "/a\"b`c$d\\e");
        row("a percent sign", "/a%%b", "/a%b");
        row("an empty argument", "\"\" x", "");
        row("no end", "\"/a b", "");
        row("no end behind a backslash", "\"/a\\\"", "");
        row("no end but a backslash", "\"/a\\", "");
    }
    void shouldFindTheProgram()
    {
        QFETCH(QByteArray, exec);
        QFETCH(QByteArray, program);
        QCOMPARE(programOfExec(exec), program);
    }

    void shouldQuote()
    {
        QCOMPARE(quotedExecArgument("/usr/bin/a"), "\"/usr/bin/a\""_ba);
        QCOMPARE(quotedExecArgument("/a b\"c`d$e\\f%g'h"), "\"/a b\\\"c\\`d\\$e\\\\f%%g'h\""_ba);
        // In the file a backslash is one more.
        DesktopEntryFile file;
        file.setValue("Exec", quotedExecArgument("/a$b\\c"));
        QCOMPARE(file.text(), "[Desktop Entry]\nExec=\"/a\\\\$b\\\\\\\\c\"\n"_ba);
    }
};

ORBITLEDGE_TEST_MAIN(DesktopEntryFileTest)
#include "DesktopEntryFileTest.moc"
