#include "model/json/JsonWriter.h"

#include "model/UuidText.h"

#include <algorithm>

namespace orbitledge::json {

void JsonWriter::append(std::string_view text)
{
    m_text.append(text.data(), static_cast<qsizetype>(text.size()));
}

char *JsonWriter::extend(std::size_t size)
{
    const qsizetype before = m_text.size();
    m_text.resize(before + static_cast<qsizetype>(size));
    return m_text.data() + before;
}

void JsonWriter::separate()
{
    if (m_needsComma)
        m_text.append(',');
    m_needsComma = true;
}

void JsonWriter::open(char bracket)
{
    separate();
    m_text.append(bracket);
    m_needsComma = false;
}

void JsonWriter::close(char bracket)
{
    m_text.append(bracket);
    m_needsComma = true;
}

void JsonWriter::key(std::string_view key)
{
    char *at = extend((m_needsComma ? 1 : 0) + 1 + key.size() + 2);
    if (m_needsComma)
        *at++ = ',';
    *at++ = '"';
    at = std::ranges::copy(key, at).out;
    *at++ = '"';
    *at = ':';
    m_needsComma = false;
}

void JsonWriter::string(QStringView text)
{
    separate();
    m_text.append('"');
    const QByteArray utf8 = text.toUtf8();
    qsizetype plainFrom = 0;
    for (qsizetype i = 0; i < utf8.size(); ++i) {
        const auto c = static_cast<unsigned char>(utf8[i]);
        if (c >= 0x20 && c != '"' && c != '\\')
            continue;
        m_text.append(utf8.constData() + plainFrom, i - plainFrom);
        plainFrom = i + 1;
        if (c >= 0x20) {
            m_text.append('\\').append(static_cast<char>(c));
        } else {
            constexpr std::string_view digits = "0123456789abcdef";
            append("\\u00");
            m_text.append(digits[c >> 4U]).append(digits[c & 0xFU]);
        }
    }
    m_text.append(utf8.constData() + plainFrom, utf8.size() - plainFrom);
    m_text.append('"');
}

void JsonWriter::number(const Decimal &value)
{
    separate();
    append(value.toAscii());
}

void JsonWriter::number(qint64 value)
{
    separate();
    m_text.append(QByteArray::number(value));
}

void JsonWriter::boolean(bool value)
{
    separate();
    append(value ? "true" : "false");
}

void JsonWriter::null()
{
    separate();
    append("null");
}

void write(JsonWriter &writer, const QString &value)
{
    writer.string(value);
}

void write(JsonWriter &writer, bool value)
{
    writer.boolean(value);
}

void write(JsonWriter &writer, qint64 value)
{
    writer.number(value);
}

void write(JsonWriter &writer, const Decimal &value)
{
    writer.number(value);
}

void write(JsonWriter &writer, const QUuid &value)
{
    writer.string(uuidText(value));
}

void write(JsonWriter &writer, const QUrl &value)
{
    writer.string(QString::fromLatin1(value.toEncoded()));
}

void write(JsonWriter &writer, const LocalDate &value)
{
    writer.string(value.text());
}

void write(JsonWriter &writer, const Instant &value)
{
    writer.string(QString::fromLatin1(value.text()));
}

} // namespace orbitledge::json
