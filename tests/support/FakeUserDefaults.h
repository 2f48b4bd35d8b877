#pragma once

#include "platform/UserDefaults.h"

#include <QMap>

namespace orbitledge::testing {

/// Defaults in memory.
class FakeUserDefaults final : public UserDefaults {
public:
    QMap<QString, Value> values;
    /// How often each was set.
    QMap<QString, int> writes;

    [[nodiscard]] std::optional<Value> value(const QString &key) const override
    {
        const auto found = values.constFind(key);
        return found == values.constEnd() ? std::nullopt : std::optional(*found);
    }
    void setValue(const QString &key, const Value &value) override
    {
        values[key] = value;
        ++writes[key];
    }
    void remove(const QString &key) override { values.remove(key); }
};

} // namespace orbitledge::testing
