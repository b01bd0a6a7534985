#include "foundation/user_defaults.h"

#include <QSettings>

#include <map>

namespace lexicorn {

namespace {

QString storePath()
{
    const QString home = qEnvironmentVariable("LEXICORN_HOME");
    if (!home.isEmpty())
        return home + QStringLiteral("/.config/Lexicorn/Lexicorn.ini");
    return QSettings(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("Lexicorn"), QStringLiteral("Lexicorn")).fileName();
}

}  // namespace

UserDefaults& UserDefaults::standard()
{
    // One store per file; the home folder may change between tests.
    static std::mutex mutex;
    static std::map<QString, std::unique_ptr<UserDefaults>> stores;
    const QString path = storePath();
    std::lock_guard lock(mutex);
    std::unique_ptr<UserDefaults>& store = stores[path];
    if (!store)
        store = std::make_unique<UserDefaults>(path);
    return *store;
}

UserDefaults::UserDefaults(const QString& iniPath) : settings_(std::make_unique<QSettings>(iniPath, QSettings::IniFormat)) {}

UserDefaults::~UserDefaults() = default;

bool UserDefaults::contains(const QString& key) const
{
    std::lock_guard lock(mutex_);
    return settings_->contains(key);
}

QVariant UserDefaults::object(const QString& key) const
{
    std::lock_guard lock(mutex_);
    return settings_->value(key);
}

QString UserDefaults::string(const QString& key) const
{
    return stringIfSet(key).value_or(QString());
}

std::optional<QString> UserDefaults::stringIfSet(const QString& key) const
{
    const QVariant value = object(key);
    // The INI file keeps no types: numbers and booleans come back as text too,
    // so only lists and maps are refused.
    if (!value.isValid() || value.typeId() == QMetaType::QVariantList || value.typeId() == QMetaType::QStringList
        || value.typeId() == QMetaType::QVariantMap)
        return std::nullopt;
    return value.toString();
}

qint64 UserDefaults::integer(const QString& key) const
{
    return object(key).toLongLong();
}

bool UserDefaults::boolean(const QString& key) const
{
    const QVariant value = object(key);
    if (value.typeId() == QMetaType::QString)
        return value.toString() == QStringLiteral("true") || value.toString().toLongLong() != 0;
    return value.toBool();
}

QStringList UserDefaults::keys() const
{
    std::lock_guard lock(mutex_);
    return settings_->allKeys();
}

void UserDefaults::set(const QString& key, const QVariant& value)
{
    std::lock_guard lock(mutex_);
    settings_->setValue(key, value);
    settings_->sync();
}

void UserDefaults::remove(const QString& key)
{
    std::lock_guard lock(mutex_);
    settings_->remove(key);
    settings_->sync();
}

QString UserDefaults::fileName() const
{
    return settings_->fileName();
}

}  // namespace lexicorn
