#include "platform/linux/SealedMessage.h"

#include "support/TestMain.h"

#include <QFile>
#include <QTemporaryDir>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>

using namespace orbitledge;
using namespace Qt::StringLiterals;

class SealedMessageTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldPassOnWhatWasWritten_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("a text") << "secret"_ba;
        QTest::newRow("zeroes") << QByteArray("a\0b\0", 4);
        QTest::newRow("as much as there may be") << QByteArray(SealedMessage::largest, 'x');
    }
    void shouldPassOnWhatWasWritten()
    {
        QFETCH(QByteArray, content);
        const auto memory = SealedMessage::write(content);
        QVERIFY(memory);
        // More than once, and wherever somebody has read up to.
        for (int i = 0; i < 2; ++i)
            QCOMPARE(SealedMessage::read(memory->get()), std::optional(content));
    }

    void shouldRefuseWhatIsTooLarge()
    {
        QVERIFY(!SealedMessage::write(QByteArray(SealedMessage::largest + 1, 'x')));
    }

    void shouldNotChangeAnyMore()
    {
        const auto memory = SealedMessage::write("secret");
        QVERIFY(memory);
        QCOMPARE(::ftruncate(memory->get(), 1), -1);
        QCOMPARE(::ftruncate(memory->get(), 100), -1);
        QCOMPARE(::pwrite(memory->get(), "x", 1, 0), ssize_t(-1));
        QCOMPARE(SealedMessage::read(memory->get()), std::optional("secret"_ba));
    }

    void shouldReadNothingElse()
    {
        const QTemporaryDir folder;
        QFile file(folder.filePath(u"secret"_s));
        QVERIFY(file.open(QIODevice::ReadWrite));
        file.write("secret");
        file.flush();
        QVERIFY(!SealedMessage::read(file.handle()));

        // Nothing is in it: who read it would wait.
        std::array<int, 2> pipe{};
        QCOMPARE(::pipe2(pipe.data(), O_CLOEXEC), 0);
        const OwnedDescriptor reading(pipe[0]);
        const OwnedDescriptor writing(pipe[1]);
        QVERIFY(!SealedMessage::read(reading.get()));

        const OwnedDescriptor open(::memfd_create("test", MFD_CLOEXEC | MFD_ALLOW_SEALING));
        QCOMPARE(::write(open.get(), "secret", 6), ssize_t(6));
        QVERIFY(!SealedMessage::read(open.get()));
        QVERIFY(!SealedMessage::read(-1));
    }
};

ORBITLEDGE_TEST_MAIN(SealedMessageTest)
#include "SealedMessageTest.moc"
