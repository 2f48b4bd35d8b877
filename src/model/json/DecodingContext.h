#pragma once

#include "model/DecodingError.h"
#include "model/RecordCodecs.h"

#include <QString>

#include <simdjson.h>

#include <array>
#include <functional>
#include <list>
#include <optional>
#include <string>
#include <string_view>

namespace orbitledge::json {

using Value = simdjson::ondemand::value;

/// Texts that most records of a list share (currencies, cycles, states) are held once and handed out as
/// implicitly shared copies. Bounded: a text takes the place of the one that hashed to the same slot.
class StringPool {
public:
    QString intern(std::string_view utf8);

private:
    struct Slot {
        std::string utf8;
        QString text;
    };
    std::array<Slot, 128> m_slots;
};

/// The order in which a document's objects of one type give their keys: at `next[i]` stands the field
/// that followed field i − 1 last time (`next[0]`: the first one). Records of a list agree in it, whatever
/// it is, so a guess by it is nearly always right.
struct FieldOrder {
    static constexpr std::size_t capacity = 32;
    std::array<quint8, capacity> next{};
};

/// What one decoding carries along. Readers return false on a fault and leave it here.
class DecodingContext {
public:
    explicit DecodingContext(JsonSource source)
        : m_source(source)
    {
    }

    [[nodiscard]] JsonSource source() const { return m_source; }
    StringPool &strings() { return m_strings; }

    /// `table` is any address that identifies the record type.
    FieldOrder &fieldOrder(const void *table, std::size_t fieldCount);

    bool fail(DecodingError::Kind kind, QString debugDescription);
    bool failMissing(const QString &key);
    bool failTypeMismatch(QLatin1StringView expected, std::string_view token);
    /// The document is not JSON: nothing after this point can be trusted.
    bool failMalformed(const QString &reason);
    bool failMalformed(simdjson::error_code code);
    /// Puts where the fault lies before its path; returns false.
    bool failedAt(DecodingError::PathElement element);

    [[nodiscard]] bool isMalformed() const { return m_malformed; }
    DecodingError takeError() { return std::move(m_error); }
    void restoreError(DecodingError error) { m_error = std::move(error); }

private:
    struct KnownOrder {
        const void *table = nullptr;
        FieldOrder order;
    };

    JsonSource m_source;
    DecodingError m_error;
    bool m_malformed = false;
    StringPool m_strings;
    std::list<KnownOrder> m_orders; // a list: nested records hold references while others are added
};

/// Nesting that is accepted in values, those of unknown keys included.
inline constexpr int maximumDepth = 512;

/// The bytes of a value from its first to the last that is no white space. For an object or an array
/// only the first byte means anything.
std::string_view token(Value &value);

bool isNull(std::string_view token);

/// The text of a string value; the view lives as long as the document. False with the fault in `context`.
bool readText(Value &value, DecodingContext &context, std::string_view &text);

bool enterObject(Value &value, DecodingContext &context, simdjson::ondemand::object &object);
bool enterArray(Value &value, DecodingContext &context, simdjson::ondemand::array &array);

/// Passes over a value that nobody asked for, but not over its faults.
bool skipValue(Value &value, DecodingContext &context, int depth = 0);

/// Hands the root value of a document to `read` and sees that nothing stands behind it.
std::optional<DecodingError> readDocument(
    QByteArray json, JsonSource source, const std::function<bool(Value &, DecodingContext &)> &read);

} // namespace orbitledge::json
