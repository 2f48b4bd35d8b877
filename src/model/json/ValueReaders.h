#pragma once

#include "model/json/DecodingContext.h"

#include <QList>
#include <QUrl>
#include <QUuid>

#include <optional>

namespace orbitledge::json {

// One overload for each type that a field can have. False with the fault in the context.

bool read(Value &value, DecodingContext &context, QString &target);
bool read(Value &value, DecodingContext &context, bool &target);
bool read(Value &value, DecodingContext &context, qint64 &target);
bool read(Value &value, DecodingContext &context, Decimal &target);
bool read(Value &value, DecodingContext &context, QUuid &target);
bool read(Value &value, DecodingContext &context, QUrl &target);
bool read(Value &value, DecodingContext &context, LocalDate &target);
bool read(Value &value, DecodingContext &context, Instant &target);

/// As `read`, for a text that other records are likely to share.
bool readRepeating(Value &value, DecodingContext &context, QString &target);

template <typename T> bool readRepeating(Value &value, DecodingContext &context, T &target)
{
    return read(value, context, target);
}

template <typename T> bool read(Value &value, DecodingContext &context, QList<T> &target)
{
    simdjson::ondemand::array array;
    if (!enterArray(value, context, array))
        return false;
    qsizetype index = 0;
    for (auto element : array) {
        Value child;
        if (const auto code = element.get(child); code != simdjson::SUCCESS) {
            context.failMalformed(code);
            return context.failedAt(index);
        }
        if (!read(child, context, target.emplaceBack()))
            return context.failedAt(index);
        ++index;
    }
    return true;
}

template <typename T> bool read(Value &value, DecodingContext &context, std::optional<T> &target)
{
    return isNull(token(value)) || read(value, context, target.emplace());
}

template <typename T> bool readRepeating(Value &value, DecodingContext &context, std::optional<T> &target)
{
    return isNull(token(value)) || readRepeating(value, context, target.emplace());
}

} // namespace orbitledge::json
