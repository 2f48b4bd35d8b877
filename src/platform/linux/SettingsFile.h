#pragma once

#include "platform/UserDefaults.h"

#include <QSettings>

#include <filesystem>
#include <memory>

namespace orbitledge {

/// UserDefaults in one file that its owner alone may read: a JSON object whose values carry their types, an
/// instant as {"date": "2026-03-18T12:00:00.000Z"}. The toolkit's settings keep it: what two processes write
/// is merged key by key, the file is replaced as a whole, soon after a change and not within it. What is not
/// of this form counts as not there.
class SettingsFile final : public UserDefaults {
public:
    /// Creates nothing before there is something to keep.
    explicit SettingsFile(const std::filesystem::path &path);
    /// Writes what is not yet written.
    ~SettingsFile() override;

    [[nodiscard]] std::optional<Value> value(const QString &key) const override;
    void setValue(const QString &key, const Value &value) override;
    void remove(const QString &key) override;

    /// Writes at once, and takes over what other processes wrote. False where that failed.
    bool synchronise();

private:
    void prepareForWriting();

    QString m_path;
    bool m_isPrepared = false;
    std::unique_ptr<QSettings> m_settings;
};

} // namespace orbitledge
