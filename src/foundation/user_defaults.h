#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>
#include <optional>
#include <mutex>

class QSettings;

namespace lexicorn {

// The user's settings, written to disk at once when one changes. Backed by
// an INI file: $LEXICORN_HOME/.config/Lexicorn/Lexicorn.ini when
// LEXICORN_HOME is set (tests, demo), else Qt's per-user location.
// Safe from any thread.
class UserDefaults {
public:
    // The store for the current home folder.
    static UserDefaults& standard();
    // A store in an explicit file (tests).
    explicit UserDefaults(const QString& iniPath);
    ~UserDefaults();

    bool contains(const QString& key) const;
    QVariant object(const QString& key) const;
    // A missing key, or a value of another kind, reads as empty, 0 or false.
    QString string(const QString& key) const;
    std::optional<QString> stringIfSet(const QString& key) const;
    qint64 integer(const QString& key) const;
    bool boolean(const QString& key) const;
    QStringList keys() const;

    void set(const QString& key, const QVariant& value);
    void remove(const QString& key);

    QString fileName() const;

private:
    mutable std::mutex mutex_;
    std::unique_ptr<QSettings> settings_;
};

}  // namespace lexicorn
