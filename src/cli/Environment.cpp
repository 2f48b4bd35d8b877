#include "cli/Environment.h"

#include "cli/Terminal.h"

#include <QStringDecoder>

#include <iconv.h>

#include <cstdint>

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

bool isUtf8(const QByteArray &encoding)
{
    // The locale "C" says nothing about the terminal, which is far more likely to speak UTF-8 than not.
    return encoding == "UTF-8" || encoding == "ANSI_X3.4-1968";
}

/// Absent where the encodings are not known or the text has characters that the new one lacks.
std::optional<QByteArray> converted(QByteArray text, const QByteArray &from, const QByteArray &to)
{
    auto *const converter = iconv_open(to.constData(), from.constData());
    // NOLINTNEXTLINE(performance-no-int-to-ptr): this is how POSIX says that there is none
    if (converter == reinterpret_cast<iconv_t>(std::intptr_t{-1}))
        return std::nullopt;
    constexpr std::size_t bytesPerByte = 8; // "…" becomes three dots, some letters a whole word
    QByteArray result(text.size() * qsizetype{bytesPerByte}, Qt::Uninitialized);
    char *in = text.data();
    char *out = result.data();
    auto inLeft = static_cast<std::size_t>(text.size());
    auto outLeft = static_cast<std::size_t>(result.size());
    const bool whole = iconv(converter, &in, &inLeft, &out, &outLeft) != static_cast<std::size_t>(-1);
    iconv_close(converter);
    if (!whole)
        return std::nullopt;
    result.truncate(out - result.data());
    return result;
}

/// Characters that the encoding lacks are written in the nearest way it has.
QByteArray encoded(const QString &text, const QByteArray &encoding)
{
    if (isUtf8(encoding))
        return text.toUtf8();
    // Composed characters are the ones that older encodings have.
    QString composed = text.normalized(QString::NormalizationForm_C);
    // They have no character for these, and a question mark would be nearest.
    composed.remove(QChar(firstStrongIsolate)).remove(QChar(popDirectionalIsolate));
    const QByteArray utf8 = composed.toUtf8();
    return converted(utf8, "UTF-8", encoding + "//TRANSLIT").value_or(utf8);
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

ExitCode failure(const Environment &environment, const QString &reason)
{
    reportError(environment, reason);
    return ExitCode::Failure;
}

std::optional<QString> decodedText(const Environment &environment, const QByteArray &bytes)
{
    const auto utf8 = isUtf8(environment.encoding) ? std::optional(bytes)
                                                   : converted(bytes, environment.encoding, "UTF-8");
    if (!utf8)
        return std::nullopt;
    QStringDecoder decoder(QStringDecoder::Utf8, QStringConverter::Flag::ConvertInitialBom);
    QString text = decoder.decode(*utf8);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

bool writeText(const Environment &environment, const QString &text)
{
    return environment.writeOutput(encoded(text, environment.encoding));
}

ExitCode finish(const Environment &environment, bool written)
{
    if (written)
        return ExitCode::Success;
    return failure(environment, u"The output could not be written"_s);
}

} // namespace orbitledge
