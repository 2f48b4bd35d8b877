#pragma once

#include "model/json/RecordFields.h"
#include "model/json/Utf8.h"
#include "model/json/ValueReaders.h"

#include <cstring>

namespace orbitledge::json {

template <typename T> inline constexpr bool isOptional = false;
template <typename T> inline constexpr bool isOptional<std::optional<T>> = true;

template <typename Record> struct FieldReader {
    std::string_view key;
    bool required = false;
    bool (*read)(Value &, DecodingContext &, Record &);
};

template <typename Record, typename FieldType>
bool readField(Value &value, DecodingContext &context, Record &record)
{
    if constexpr (FieldType::repeats)
        return readRepeating(value, context, record.*FieldType::member);
    else
        return read(value, context, record.*FieldType::member);
}

template <typename Record, typename... Fields> constexpr auto makeReaders(const std::tuple<Fields...> &table)
{
    return std::apply(
        [](const auto &...fields) {
            return std::array{FieldReader<Record>{fields.key,
                !isOptional<std::remove_cvref_t<decltype(std::declval<Record>().*Fields::member)>>,
                &readField<Record, Fields>}...};
        },
        table);
}

template <typename Record>
inline constexpr auto fieldReaders = makeReaders<Record>(RecordFields<Record>::table);

/// Reads an object field by field, in whatever order its keys come; what is reported is the fault of the
/// earliest field of the table, a missing one included.
template <typename Record> bool readRecord(Value &value, DecodingContext &context, Record &record)
{
    constexpr auto &readers = fieldReaders<Record>;
    constexpr std::size_t count = readers.size();
    static_assert(count < FieldOrder::capacity);

    simdjson::ondemand::object object;
    if (!enterObject(value, context, object))
        return false;

    // Keys are compared in place: the document ends in enough padding for the longest of them.
    const auto matches = [](const char *key, std::string_view wanted) {
        return std::memcmp(key, wanted.data(), wanted.size()) == 0 && key[wanted.size()] == '"';
    };
    FieldOrder &order = context.fieldOrder(&readers, count);
    std::size_t position = 0;
    quint32 seen = 0;
    std::size_t firstFault = count;
    DecodingError fault;

    for (auto member : object) {
        simdjson::ondemand::field field;
        if (const auto code = std::move(member).get(field); code != simdjson::SUCCESS)
            return context.failMalformed(code);

        const char *const key = field.key().raw();
        std::size_t index = order.next[position];
        Q_ASSERT(index < count);
        if (!matches(key, readers[index].key)) {
            for (index = 0; index < count && !matches(key, readers[index].key); ++index) { }
            if (index == count) {
                std::string_view unescaped;
                if (const auto code = field.unescaped_key().get(unescaped); code != simdjson::SUCCESS)
                    return context.failMalformed(code);
                for (index = 0; index < count && unescaped != readers[index].key; ++index) { }
            }
        }
        if (index == count || (seen >> index & 1U) != 0) {
            if (!skipValue(field.value(), context))
                return false;
            continue;
        }
        order.next[position] = static_cast<quint8>(index);
        position = index + 1;
        seen |= 1U << index;

        if (!readers[index].read(field.value(), context, record)) {
            context.failedAt(fromUtf8(readers[index].key));
            if (context.isMalformed())
                return false;
            if (index < firstFault) {
                firstFault = index;
                fault = context.takeError();
            }
        }
    }

    for (std::size_t index = 0; index < firstFault; ++index) {
        if (readers[index].required && (seen >> index & 1U) == 0) {
            return context.failMissing(fromUtf8(readers[index].key));
        }
    }
    if (firstFault < count) {
        context.restoreError(std::move(fault));
        return false;
    }
    return true;
}

/// Decodes a whole document into a type that has a `read` overload.
template <typename T> Decoded<T> decodeDocument(QByteArray json, JsonSource source)
{
    Decoded<T> result{T{}};
    auto error = readDocument(std::move(json), source,
        [&result](Value &root, DecodingContext &context) { return read(root, context, *result); });
    if (error)
        result = tl::make_unexpected(*std::move(error));
    return result;
}

} // namespace orbitledge::json
