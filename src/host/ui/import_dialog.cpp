#include "host/ui/import_dialog.h"

#include "foundation/paths.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QStandardPaths>
#include <QVBoxLayout>

namespace lexicorn {

ImportDialog::ImportDialog(QWidget* parent)
    : QDialog(parent),
      files_(new QListWidget),
      slot_(new QComboBox),
      wordForms_(new QCheckBox(QStringLiteral("Add the dictionaries' word forms (went → go)"))),
      progress_(new QProgressBar),
      status_(new QLabel),
      importButton_(new QPushButton(QStringLiteral("Import")))
{
    setWindowTitle(QStringLiteral("Import dictionary"));
    slot_->addItem(QStringLiteral("collins"));
    slot_->addItem(QStringLiteral("LDOCE5"));
    wordForms_->setChecked(true);
    progress_->setRange(0, 100);
    progress_->setValue(0);
    status_->setWordWrap(true);
    importButton_->setEnabled(false);

    auto* choose = new QPushButton(QStringLiteral("Choose Files…"));
    connect(choose, &QPushButton::clicked, this, &ImportDialog::chooseFiles);
    connect(importButton_, &QPushButton::clicked, this, &ImportDialog::startImport);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    buttons->addButton(importButton_, QDialogButtonBox::AcceptRole);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Replace the dictionary"), slot_);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(files_);
    layout->addWidget(choose);
    layout->addLayout(form);
    layout->addWidget(wordForms_);
    layout->addWidget(progress_);
    layout->addWidget(status_);
    layout->addWidget(buttons);

    process_.setProcessChannelMode(QProcess::SeparateChannels);
    connect(&process_, &QProcess::readyReadStandardOutput, this, &ImportDialog::readProgress);
    connect(&process_, &QProcess::finished, this, &ImportDialog::finished);
    connect(&process_, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            finished(-1, QProcess::CrashExit);
    });
}

QString ImportDialog::toolPath()
{
    const QString fromEnvironment = qEnvironmentVariable("LEXICORN_CLI");
    if (!fromEnvironment.isEmpty())
        return fromEnvironment;
    const QString beside = QCoreApplication::applicationDirPath() + QStringLiteral("/lexicorn");
    if (QFileInfo(beside).isExecutable())
        return beside;
#ifdef LEXICORN_BUILT_CLI
    if (QFileInfo(QStringLiteral(LEXICORN_BUILT_CLI)).isExecutable())
        return QStringLiteral(LEXICORN_BUILT_CLI);
#endif
    return QStandardPaths::findExecutable(QStringLiteral("lexicorn"));
}

void ImportDialog::setFiles(const QStringList& files)
{
    files_->clear();
    files_->addItems(files);
    importButton_->setEnabled(!files.isEmpty());
}

void ImportDialog::chooseFiles()
{
    const QStringList chosen = QFileDialog::getOpenFileNames(
        this, QStringLiteral("Dictionary files"), QString(),
        QStringLiteral("Dictionaries (*.ifo *.idx *.idx.gz *.dict *.dict.dz *.syn *.mdx *.mdd *.csv data.* index.* *.exc)"
                       ";;StarDict (*.ifo *.idx *.idx.gz *.dict *.dict.dz *.syn);;MDict (*.mdx *.mdd);;ECDICT CSV (*.csv)"
                       ";;WordNet (data.* index.* *.exc);;All files (*)"));
    if (!chosen.isEmpty())
        setFiles(chosen);
}

void ImportDialog::startImport()
{
    QStringList arguments{QStringLiteral("import"), QStringLiteral("--home"), homeDirectory(), QStringLiteral("--into"),
                          slot_->currentText(), QStringLiteral("--progress-lines")};
    if (wordForms_->isChecked())
        arguments.append(QStringLiteral("--word-forms"));
    for (int i = 0; i < files_->count(); ++i)
        arguments.append(files_->item(i)->text());
    importButton_->setEnabled(false);
    progress_->setValue(0);
    pending_.clear();
    status_->setText(QStringLiteral("Importing…"));
    process_.start(toolPath(), arguments);
}

void ImportDialog::readProgress()
{
    pending_ += process_.readAllStandardOutput();
    qsizetype end;
    while ((end = pending_.indexOf('\n')) >= 0) {
        const QByteArray line = pending_.left(end).trimmed();
        pending_.remove(0, end + 1);
        if (line.startsWith("progress "))
            progress_->setValue(line.mid(9).toInt());
        else if (!line.isEmpty())
            status_->setText(QString::fromUtf8(line));  // the tool's summary
    }
}

void ImportDialog::finished(int exitCode, QProcess::ExitStatus status)
{
    readProgress();
    importButton_->setEnabled(files_->count() > 0);
    if (status == QProcess::NormalExit && exitCode == 0) {
        progress_->setValue(100);
        emit imported(slot_->currentText());
        return;
    }
    QString message = QString::fromUtf8(process_.readAllStandardError()).trimmed();
    if (message.isEmpty())
        message = QStringLiteral("The import tool could not be run (%1).").arg(toolPath().isEmpty() ? QStringLiteral("not found") : toolPath());
    status_->setText(message);
    QMessageBox::warning(this, QStringLiteral("Import failed"), message);
}

}  // namespace lexicorn
