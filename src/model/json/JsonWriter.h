#pragma once

#include "model/Decimal.h"
#include "model/Instant.h"
#include "model/LocalDate.h"

#include <QByteArray>
#include <QList>
#include <QUrl>
#include <QUuid>

#include <string_view>

namespace orbitledge::json {

/// In which order the keys of an object are written.
enum class KeyOrder { Declared, Sorted };

/// Writes JSON without white space. Unlike the toolkit's own writer it gives a decimal all its digits and
/// leaves the order of keys to the caller, who also sees to it that the calls make a whole document.
class JsonWriter {
public:
    explicit JsonWriter(KeyOrder order = KeyOrder::Declared)
        : m_order(order)
    {
    }

    [[nodiscard]] KeyOrder keyOrder() const { return m_order; }

    void beginObject() { open('{'); }
    void endObject() { close('}'); }
    void beginArray() { open('['); }
    void endArray() { close(']'); }
    /// `key` is written as it stands; all keys of ours are plain ASCII.
    void key(std::string_view key);

    void string(QStringView text);
    void string(QLatin1StringView text) { string(QString(text)); }
    void number(const Decimal &value);
    void number(qint64 value);
    void boolean(bool value);
    void null();

    [[nodiscard]] QByteArray take() { return std::move(m_text); }

private:
    void open(char bracket);
    void close(char bracket);
    void separate();
    void append(std::string_view text);
    /// Room for so many bytes more, which the caller fills: one call into the toolkit instead of one for each
    /// piece, of which a list has a million.
    char *extend(std::size_t size);

    QByteArray m_text;
    KeyOrder m_order;
    bool m_needsComma = false;
};

void write(JsonWriter &writer, const QString &value);
void write(JsonWriter &writer, bool value);
void write(JsonWriter &writer, qint64 value);
void write(JsonWriter &writer, const Decimal &value);
void write(JsonWriter &writer, const QUuid &value);
void write(JsonWriter &writer, const QUrl &value);
void write(JsonWriter &writer, const LocalDate &value);
void write(JsonWriter &writer, const Instant &value);

template <typename T> void write(JsonWriter &writer, const QList<T> &values)
{
    writer.beginArray();
    for (const T &value : values)
        write(writer, value);
    writer.endArray();
}

} // namespace orbitledge::json
