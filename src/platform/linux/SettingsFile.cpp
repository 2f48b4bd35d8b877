#include "platform/linux/SettingsFile.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimeZone>

#include <cmath>
#include <utility>

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

constexpr QFile::Permissions ownerOnly = QFile::ReadOwner | QFile::WriteOwner;

// Between the port's types and the toolkit's.

QVariant toVariant(const UserDefaults::Value &value)
{
    if (const auto *const instant = std::get_if<Instant>(&value))
        return QDateTime::fromMSecsSinceEpoch(instant->millisecondsSinceEpoch(), QTimeZone::utc());
    return std::visit(
        [](const auto &other) {
            if constexpr (std::is_same_v<std::decay_t<decltype(other)>, Instant>)
                return QVariant();
            else
                return QVariant::fromValue(other);
        },
        value);
}

std::optional<UserDefaults::Value> fromVariant(const QVariant &variant)
{
    switch (variant.typeId()) {
    case QMetaType::LongLong:
        return variant.toLongLong();
    case QMetaType::Bool:
        return variant.toBool();
    case QMetaType::QString:
        return variant.toString();
    case QMetaType::QStringList:
        return variant.toStringList();
    case QMetaType::QDateTime:
        return Instant::fromMillisecondsSinceEpoch(variant.toDateTime().toMSecsSinceEpoch());
    default:
        return std::nullopt;
    }
}

// Between the toolkit's types and the file.

QJsonValue toJson(const QVariant &variant)
{
    if (variant.typeId() == QMetaType::QDateTime)
        return QJsonObject{{u"date"_s, variant.toDateTime().toString(Qt::ISODateWithMs)}};
    return QJsonValue::fromVariant(variant);
}

QVariant fromJson(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Bool:
        return value.toBool();
    case QJsonValue::String:
        return value.toString();
    case QJsonValue::Double: {
        // Whole numbers only, none of which a double has changed.
        constexpr double largest = 9007199254740992.0;
        const double number = value.toDouble();
        return std::trunc(number) == number && std::abs(number) <= largest
            ? QVariant(static_cast<qint64>(number))
            : QVariant();
    }
    case QJsonValue::Array: {
        QStringList texts;
        for (const QJsonValue element : value.toArray()) {
            if (!element.isString())
                return {};
            texts.append(element.toString());
        }
        return texts;
    }
    case QJsonValue::Object: {
        const QString text = value.toObject()[u"date"_s].toString();
        const QDateTime date = QDateTime::fromString(text, Qt::ISODateWithMs);
        return date.isValid() && text.endsWith(u'Z') ? QVariant(date) : QVariant();
    }
    default:
        return {};
    }
}

bool readFile(QIODevice &device, QSettings::SettingsMap &map)
{
    // A file that is none of ours counts as empty; it is replaced when there is something to keep.
    const QJsonObject object = QJsonDocument::fromJson(device.readAll()).object();
    for (auto it = object.begin(); it != object.end(); ++it) {
        if (const QVariant variant = fromJson(it.value()); variant.isValid())
            map.insert(it.key(), variant);
    }
    return true;
}

bool writeFile(QIODevice &device, const QSettings::SettingsMap &map)
{
    QJsonObject object;
    for (auto it = map.begin(); it != map.end(); ++it)
        object.insert(it.key(), toJson(it.value()));
    const QByteArray bytes = QJsonDocument(object).toJson();
    return device.write(bytes) == bytes.size();
}

QSettings::Format fileFormat()
{
    static const QSettings::Format format = QSettings::registerFormat(u"json"_s, readFile, writeFile);
    return format;
}

/// So that the toolkit's file takes its permissions from one that has the right ones.
void preparePrivateFile(const QString &path)
{
    const QString folder = QFileInfo(path).path();
    if (!QFileInfo::exists(folder)) {
        QDir().mkpath(folder);
        QFile::setPermissions(folder, ownerOnly | QFile::ExeOwner);
    }
    QFile file(path);
    if (!file.exists() && file.open(QIODevice::NewOnly | QIODevice::WriteOnly, ownerOnly))
        file.write("{}\n");
    else if (file.exists() && (file.permissions() & ~(ownerOnly | QFile::ReadUser | QFile::WriteUser)))
        file.setPermissions(ownerOnly);
}

} // namespace

SettingsFile::SettingsFile(const std::filesystem::path &path)
    : m_path(QString::fromStdString(path.string()))
    , m_settings(std::make_unique<QSettings>(m_path, fileFormat()))
{
}

SettingsFile::~SettingsFile() = default;

std::optional<UserDefaults::Value> SettingsFile::value(const QString &key) const
{
    return fromVariant(m_settings->value(key));
}

void SettingsFile::setValue(const QString &key, const Value &value)
{
    const QVariant variant = toVariant(value);
    const QVariant current = m_settings->value(key);
    const bool isSame = current.metaType() == variant.metaType() && current == variant;
    // The toolkit would write the whole file anew, and wait for the disk. But what could not be written it
    // tries again only where something is set.
    if (isSame && m_settings->status() == QSettings::NoError)
        return;
    prepareForWriting();
    m_settings->setValue(key, variant);
}

void SettingsFile::remove(const QString &key)
{
    if (!m_settings->contains(key))
        return;
    prepareForWriting();
    m_settings->remove(key);
}

void SettingsFile::prepareForWriting()
{
    if (!std::exchange(m_isPrepared, true))
        preparePrivateFile(m_path);
}

bool SettingsFile::synchronise()
{
    m_settings->sync();
    return m_settings->status() == QSettings::NoError;
}

} // namespace orbitledge
