#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

namespace lexicorn::testing {

// A fresh home folder with an empty Dict folder, installed as LEXICORN_HOME
// for the test's lifetime, so no test touches a real home.
class TempHome {
public:
    TempHome();
    ~TempHome();
    TempHome(const TempHome&) = delete;
    TempHome& operator=(const TempHome&) = delete;

    QString path() const { return dir_.path(); }
    QString dictPath(const QString& name) const { return path() + QStringLiteral("/Dict/") + name; }
    void writeDict(const QString& name, const QByteArray& content) const;
    QByteArray readDict(const QString& name) const;
    // The sample dictionaries (data/sample/Dict), copied into this home's Dict.
    void copySampleDictionaries() const;

private:
    QTemporaryDir dir_;
    QByteArray previous_;
    bool hadPrevious_;
};

}  // namespace lexicorn::testing
