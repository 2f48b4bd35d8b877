#pragma once

#include "model/json/JsonWriter.h"
#include "model/json/RecordFields.h"

#include <algorithm>
#include <array>
#include <optional>

namespace orbitledge::json {

template <typename Record> struct FieldWriter {
    std::string_view key;
    void (*write)(JsonWriter &, std::string_view key, const Record &);
};

template <typename T> void writeMember(JsonWriter &writer, std::string_view key, const T &value)
{
    writer.key(key);
    write(writer, value);
}

template <typename T>
void writeMember(JsonWriter &writer, std::string_view key, const std::optional<T> &value)
{
    if (value)
        writeMember(writer, key, *value);
}

template <typename Record, typename FieldType>
void writeField(JsonWriter &writer, std::string_view key, const Record &record)
{
    writeMember(writer, key, record.*FieldType::member);
}

template <typename Record, typename... Fields>
constexpr auto makeWriters(const std::tuple<Fields...> &table, KeyOrder order)
{
    auto writers = std::apply(
        [](const auto &...fields) {
            return std::array{FieldWriter<Record>{fields.key, &writeField<Record, Fields>}...};
        },
        table);
    if (order == KeyOrder::Sorted)
        std::ranges::sort(writers, {}, &FieldWriter<Record>::key);
    return writers;
}

/// Writes a record's fields in the writer's order; absent ones are left out.
template <typename Record> void writeRecord(JsonWriter &writer, const Record &record)
{
    constexpr auto &table = RecordFields<Record>::table;
    static constexpr auto declared = makeWriters<Record>(table, KeyOrder::Declared);
    static constexpr auto sorted = makeWriters<Record>(table, KeyOrder::Sorted);
    writer.beginObject();
    for (const auto &field : writer.keyOrder() == KeyOrder::Sorted ? sorted : declared)
        field.write(writer, field.key, record);
    writer.endObject();
}

} // namespace orbitledge::json
