#include "model/json/DecodingContext.h"

#include "model/json/Utf8.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orbitledge::json {

using simdjson::error_code;

QString StringPool::intern(std::string_view utf8)
{
    constexpr std::size_t longest = 32;
    if (utf8.empty() || utf8.size() > longest)
        return fromUtf8(utf8);
    std::size_t hash = utf8.size();
    for (const char c : utf8)
        hash = hash * 31 + static_cast<unsigned char>(c);
    Slot &slot = m_slots[hash % m_slots.size()];
    if (slot.utf8 != utf8) {
        slot.utf8 = utf8;
        slot.text = fromUtf8(utf8);
    }
    return slot.text;
}

FieldOrder &DecodingContext::fieldOrder(const void *table, std::size_t fieldCount)
{
    for (KnownOrder &known : m_orders) {
        if (known.table == table)
            return known.order;
    }
    KnownOrder &added = m_orders.emplace_back(KnownOrder{table, {}});
    for (std::size_t i = 0; i < fieldCount; ++i)
        added.order.next[i] = static_cast<quint8>(i);
    return added.order;
}

bool DecodingContext::fail(DecodingError::Kind kind, QString debugDescription)
{
    m_error = {.kind = kind, .codingPath = {}, .debugDescription = std::move(debugDescription)};
    return false;
}

bool DecodingContext::failMissing(const QString &key)
{
    fail(DecodingError::Kind::KeyNotFound, u"The key \"%1\" is missing"_s.arg(key));
    return failedAt(key);
}

bool DecodingContext::failMalformed(const QString &reason)
{
    m_malformed = true;
    return fail(DecodingError::Kind::DataCorrupted, u"The data is not valid JSON: "_s + reason);
}

bool DecodingContext::failMalformed(error_code code)
{
    switch (code) {
    case simdjson::UTF8_ERROR:
        return failMalformed(u"it is not UTF-8"_s);
    case simdjson::STRING_ERROR:
        return failMalformed(u"a string holds an escape that stands for no character"_s);
    case simdjson::UNCLOSED_STRING:
        return failMalformed(u"a string does not end"_s);
    case simdjson::UNESCAPED_CHARS:
        return failMalformed(u"a string holds a control character"_s);
    case simdjson::EMPTY:
        return failMalformed(u"it is empty"_s);
    case simdjson::DEPTH_ERROR:
        return failMalformed(u"it is nested too deep"_s);
    case simdjson::CAPACITY:
    case simdjson::MEMALLOC:
        return failMalformed(u"it is too large"_s);
    default:
        return failMalformed(u"its structure is broken"_s);
    }
}

bool DecodingContext::failedAt(DecodingError::PathElement element)
{
    m_error.codingPath.push_back(std::move(element));
    std::ranges::rotate(m_error.codingPath, std::prev(m_error.codingPath.end()));
    return false;
}

namespace {

enum class TokenType { Null, Boolean, Number, String, Array, Object, None };

TokenType typeOf(std::string_view token)
{
    switch (token.empty() ? '\0' : token.front()) {
    case '"':
        return token.size() > 1 && token.back() == '"' ? TokenType::String : TokenType::None;
    case '{':
        return TokenType::Object;
    case '[':
        return TokenType::Array;
    case 't':
        return token == "true" ? TokenType::Boolean : TokenType::None;
    case 'f':
        return token == "false" ? TokenType::Boolean : TokenType::None;
    case 'n':
        return token == "null" ? TokenType::Null : TokenType::None;
    default:
        // Whether it is also representable is another question, which only a field that wants it asks.
        const auto number = Decimal::fromJsonNumber(token);
        return number || number.error() != Decimal::ParseError::Malformed ? TokenType::Number
                                                                          : TokenType::None;
    }
}

} // namespace

bool DecodingContext::failTypeMismatch(QLatin1StringView expected, std::string_view token)
{
    const auto mismatch = [&](const char *found) {
        return fail(DecodingError::Kind::TypeMismatch,
            u"Expected "_s + expected + u" but found "_s + QLatin1StringView(found));
    };
    switch (typeOf(token)) {
    case TokenType::Null:
        return fail(DecodingError::Kind::ValueNotFound, u"Expected "_s + expected + u" but found null"_s);
    case TokenType::Boolean:
        return mismatch("a boolean");
    case TokenType::Number:
        return mismatch("a number");
    case TokenType::String:
        return mismatch("a string");
    case TokenType::Array:
        return mismatch("an array");
    case TokenType::Object:
        return mismatch("an object");
    case TokenType::None:
        break;
    }
    return failMalformed(u"a value is neither a string, a number, true, false nor null"_s);
}

std::string_view token(Value &value)
{
    std::string_view text = value.raw_json_token();
    const auto isSpace = [](char c) { return c == ' ' || c == '\n' || c == '\r' || c == '\t'; };
    while (!text.empty() && isSpace(text.back()))
        text.remove_suffix(1);
    return text;
}

bool isNull(std::string_view token)
{
    return token == "null";
}

bool readText(Value &value, DecodingContext &context, std::string_view &text)
{
    const std::string_view raw = token(value);
    if (raw.size() < 2 || raw.front() != '"' || raw.back() != '"')
        return context.failTypeMismatch("a string"_L1, raw);
    text = raw.substr(1, raw.size() - 2);
    if (text.find('\\') == std::string_view::npos) {
        // The indexer has already checked encoding and control characters. The value must still be taken:
        // the parser passes over one that was not as if a colon might follow it.
        const error_code code = value.get_raw_json_string().error();
        return code == simdjson::SUCCESS || context.failMalformed(code);
    }
    if (const error_code code = value.get_string().get(text); code != simdjson::SUCCESS)
        return context.failMalformed(code);
    if (holdsSurrogate(text))
        return context.failMalformed(simdjson::STRING_ERROR);
    return true;
}

bool enterObject(Value &value, DecodingContext &context, simdjson::ondemand::object &object)
{
    const std::string_view raw = token(value);
    if (raw.empty() || raw.front() != '{')
        return context.failTypeMismatch("an object"_L1, raw);
    const error_code code = value.get_object().get(object);
    return code == simdjson::SUCCESS || context.failMalformed(code);
}

bool enterArray(Value &value, DecodingContext &context, simdjson::ondemand::array &array)
{
    const std::string_view raw = token(value);
    if (raw.empty() || raw.front() != '[')
        return context.failTypeMismatch("an array"_L1, raw);
    const error_code code = value.get_array().get(array);
    return code == simdjson::SUCCESS || context.failMalformed(code);
}

bool skipValue(Value &value, DecodingContext &context, int depth)
{
    const std::string_view raw = token(value);
    const TokenType type = typeOf(raw);
    if (depth >= maximumDepth && (type == TokenType::Array || type == TokenType::Object))
        return context.failMalformed(simdjson::DEPTH_ERROR);
    switch (type) {
    case TokenType::Null:
    case TokenType::Boolean:
    case TokenType::Number:
        return true;
    case TokenType::String: {
        std::string_view text;
        return readText(value, context, text);
    }
    case TokenType::Array: {
        simdjson::ondemand::array array;
        if (!enterArray(value, context, array))
            return false;
        for (auto element : array) {
            Value child;
            if (const error_code code = element.get(child); code != simdjson::SUCCESS)
                return context.failMalformed(code);
            if (!skipValue(child, context, depth + 1))
                return false;
        }
        return true;
    }
    case TokenType::Object: {
        simdjson::ondemand::object object;
        if (!enterObject(value, context, object))
            return false;
        for (auto member : object) {
            simdjson::ondemand::field field;
            if (const error_code code = std::move(member).get(field); code != simdjson::SUCCESS)
                return context.failMalformed(code);
            std::string_view key;
            if (const error_code code = field.unescaped_key().get(key); code != simdjson::SUCCESS)
                return context.failMalformed(code);
            if (!skipValue(field.value(), context, depth + 1))
                return false;
        }
        return true;
    }
    case TokenType::None:
        break;
    }
    return context.failTypeMismatch("a value"_L1, raw);
}

std::optional<DecodingError> readDocument(
    QByteArray json, JsonSource source, const std::function<bool(Value &, DecodingContext &)> &read)
{
    DecodingContext context(source);
    const auto malformed = [&context](const auto &why) {
        context.failMalformed(why);
        return context.takeError();
    };

    constexpr qsizetype largestDocument = qsizetype{1} << 30;
    if (json.size() > largestDocument)
        return malformed(u"it is larger than 1 GiB"_s);
    constexpr qsizetype padding = simdjson::SIMDJSON_PADDING;
    // The capacity counts the room in front too, which a buffer has once its start was cut off.
    const auto roomFromStart = [&json] { return json.capacity() - json.data_ptr().freeSpaceAtBegin(); };
    if (roomFromStart() - json.size() < padding)
        json.reserve(json.size() + padding);

    const auto size = static_cast<std::size_t>(json.size());
    const auto room = static_cast<std::size_t>(roomFromStart());
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    const std::string_view all(json.constData(), size);
    const std::size_t start = all.starts_with(byteOrderMark) ? byteOrderMark.size() : 0;

    simdjson::ondemand::parser parser;
    simdjson::ondemand::document document;
    const simdjson::padded_string_view view(json.constData() + start, size - start, room - start);
    if (const error_code code = parser.iterate(view).get(document); code != simdjson::SUCCESS)
        return malformed(code);

    const std::size_t first = all.find_first_not_of(" \t\r\n", start);
    if (first == std::string_view::npos)
        return malformed(simdjson::EMPTY);
    if (all[first] != '{' && all[first] != '[') {
        // A scalar is a document of its own kind to the parser; no record is one.
        std::string_view scalar = all.substr(first);
        scalar = scalar.substr(0, scalar.find_last_not_of(" \t\r\n") + 1);
        context.failTypeMismatch("an object or an array"_L1, scalar);
        return context.takeError();
    }
    Value root;
    if (const error_code code = document.get_value().get(root); code != simdjson::SUCCESS)
        return malformed(code);
    if (!read(root, context)) {
        DecodingError error = context.takeError();
        const char *location = nullptr;
        if (context.isMalformed() && document.current_location().get(location) == simdjson::SUCCESS)
            error.debugDescription += u", near byte %1"_s.arg(location - json.constData() + 1);
        return error;
    }
    if (document.current_location().error() != simdjson::OUT_OF_BOUNDS)
        return malformed(u"something stands behind its end"_s);
    return std::nullopt;
}

} // namespace orbitledge::json
