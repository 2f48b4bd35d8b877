#pragma once

#include "model/Instant.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <variant>

namespace orbitledge {

/// Small values that are kept between runs, each of a type that it still has when it is read back. Belongs to
/// one thread. Changes are kept at once as far as this process is concerned, and written soon; where that
/// fails, they last until the process ends.
class UserDefaults {
public:
    using Value = std::variant<qint64, bool, QString, Instant, QStringList>;

    UserDefaults() = default;
    UserDefaults(const UserDefaults &) = delete;
    UserDefaults &operator=(const UserDefaults &) = delete;
    virtual ~UserDefaults() = default;

    /// Absent where nothing is kept under the key.
    [[nodiscard]] virtual std::optional<Value> value(const QString &key) const = 0;
    virtual void setValue(const QString &key, const Value &value) = 0;
    /// Removes the key; a missing one is no error.
    virtual void remove(const QString &key) = 0;

    /// The value where it has this type; absent where it has another one.
    template <typename T> [[nodiscard]] std::optional<T> read(const QString &key) const
    {
        const auto found = value(key);
        const T *const wanted = found ? std::get_if<T>(&*found) : nullptr;
        return wanted != nullptr ? std::optional<T>(*wanted) : std::nullopt;
    }
};

} // namespace orbitledge
