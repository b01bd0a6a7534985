#pragma once

#include <QDialog>
#include <QProcess>

class QCheckBox;
class QComboBox;
class QLabel;
class QListWidget;
class QProgressBar;
class QPushButton;

namespace lexicorn {

// "Import dictionary…": picks dictionary files and a slot and runs the
// `lexicorn import` tool as a child process, showing its progress. The
// reader does not link the plug-in's code (it reaches the plug-in only
// through the runtime), and a child process keeps a bad dictionary file from
// ever taking the reader down; the tool replaces the dictionary only when
// the whole import has succeeded.
class ImportDialog : public QDialog {
    Q_OBJECT
public:
    explicit ImportDialog(QWidget* parent = nullptr);

    // The files to import (the file dialog fills this; tests set it).
    void setFiles(const QStringList& files);
    void startImport();

    // The tool: $LEXICORN_CLI, else `lexicorn` beside the reader, else the
    // one built with it, else one on PATH.
    static QString toolPath();

signals:
    // After a successful import; slot is "collins" or "LDOCE5".
    void imported(const QString& slot);

private:
    void chooseFiles();
    void readProgress();
    void finished(int exitCode, QProcess::ExitStatus status);

    QListWidget* files_;
    QComboBox* slot_;
    QCheckBox* wordForms_;
    QProgressBar* progress_;
    QLabel* status_;
    QPushButton* importButton_;
    QProcess process_;
    QByteArray pending_;
};

}  // namespace lexicorn
