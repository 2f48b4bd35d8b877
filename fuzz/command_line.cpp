#include "Require.h"
#include "support/CommandHarness.h"

#include <QCoreApplication>

using namespace orbitledge;

// The words after the program's name, each ended by a zero: whatever they are, there is an answer, or one
// line that says what is wrong with them.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static char name[] = "orbitledge"; // NOLINT(modernize-avoid-c-arrays): as main has it
    static char *started[] = {name, nullptr}; // NOLINT(modernize-avoid-c-arrays)
    static int count = 1;
    static const QCoreApplication application(count, started);

    const QByteArray text(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    QList<QByteArray> words = text.split('\0');
    if (words.size() > 16)
        words.resize(16);
    testing::CommandHarness harness;
    const ExitCode code = harness.run(words);
    if (code == ExitCode::Usage)
        fuzz::require(harness.output.isEmpty(), "nothing is answered where nothing was understood");
    if (code != ExitCode::Success && harness.errors.isEmpty())
        fuzz::require(!harness.output.isEmpty(), "a failure is explained");
    fuzz::require(harness.errors.isEmpty() || harness.errors.endsWith('\n'), "a line has an end");
    fuzz::require(harness.errors.count('\n') <= 1, "a failure is one line");
    return 0;
}
