#include "cli/Environment.h"

#include "cli/Terminal.h"

#include <iconv.h>

#include <cstdint>

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

/// Characters that the encoding lacks are written in the nearest way it has.
QByteArray encoded(const QString &text, const QByteArray &encoding)
{
    QByteArray utf8 = text.toUtf8();
    // The locale "C" says nothing about the terminal, which is far more likely to speak UTF-8 than not.
    if (encoding == "UTF-8" || encoding == "ANSI_X3.4-1968")
        return utf8;
    // Composed characters are the ones that older encodings have.
    utf8 = text.normalized(QString::NormalizationForm_C).toUtf8();
    auto *const converter = iconv_open((encoding + "//TRANSLIT").constData(), "UTF-8");
    // NOLINTNEXTLINE(performance-no-int-to-ptr): this is how POSIX says that there is none
    if (converter == reinterpret_cast<iconv_t>(std::intptr_t{-1}))
        return utf8;
    constexpr std::size_t bytesPerByte = 8; // "…" becomes three dots, some letters a whole word
    QByteArray result(utf8.size() * qsizetype{bytesPerByte}, Qt::Uninitialized);
    char *in = utf8.data();
    char *out = result.data();
    auto inLeft = static_cast<std::size_t>(utf8.size());
    auto outLeft = static_cast<std::size_t>(result.size());
    const bool whole = iconv(converter, &in, &inLeft, &out, &outLeft) != static_cast<std::size_t>(-1);
    iconv_close(converter);
    if (!whole)
        return utf8;
    result.truncate(out - result.data());
    return result;
}

} // namespace

void reportError(const Environment &environment, const QString &reason)
{
    // A reason may quote what it is about, which may be a whole file.
    constexpr qsizetype longest = 1000;
    const QString bounded = reason.size() > longest ? reason.first(longest) + u'…' : reason;
    const QString line = u"orbitledge: "_s + printable(bounded) + u'\n';
    environment.writeError(encoded(line, environment.encoding));
}

bool writeText(const Environment &environment, const QString &text)
{
    return environment.writeOutput(encoded(text, environment.encoding));
}

ExitCode finish(const Environment &environment, bool written)
{
    if (written)
        return ExitCode::Success;
    reportError(environment, u"The output could not be written"_s);
    return ExitCode::Failure;
}

} // namespace orbitledge
