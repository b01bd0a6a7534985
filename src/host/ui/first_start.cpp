#include "host/ui/first_start.h"

#include "foundation/install_layout.h"
#include "foundation/paths.h"
#include "foundation/user_defaults.h"

#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>

namespace lexicorn::host::ui {

namespace {

const QString askedKey = QStringLiteral("LexicornReaderAskedForDictionaries");

}  // namespace

FirstStartChoice askAboutDictionariesOnFirstStart(QWidget* parent)
{
    UserDefaults& defaults = UserDefaults::standard();
    if (QFileInfo::exists(dictDirectory()) || defaults.boolean(askedKey))
        return FirstStartChoice::Nothing;
    defaults.set(askedKey, true);

    QMessageBox box(QMessageBox::Question, QStringLiteral("Lexicorn Reader"),
                    QStringLiteral("There are no dictionaries in %1 yet.").arg(dictDirectory()), QMessageBox::NoButton, parent);
    box.setInformativeText(QStringLiteral(
        "Copy the sample dictionaries there, so that selecting a word shows its entries at once, "
        "or import dictionaries of your own (StarDict, MDict, ECDICT or WordNet)?\n\n"
        "You can import dictionaries later with File › Import dictionary…"));
    QPushButton* samples = box.addButton(QStringLiteral("Copy the samples"), QMessageBox::AcceptRole);
    QPushButton* own = box.addButton(QStringLiteral("Import my own…"), QMessageBox::ActionRole);
    box.addButton(QStringLiteral("Not now"), QMessageBox::RejectRole);
    box.setDefaultButton(samples);
    box.exec();

    if (box.clickedButton() == own)
        return FirstStartChoice::ImportOwn;
    if (box.clickedButton() != samples)
        return FirstStartChoice::Nothing;
    if (const QString problem = copySampleDictionaries(); !problem.isEmpty()) {
        QMessageBox::warning(parent, QStringLiteral("Lexicorn Reader"),
                             QStringLiteral("The sample dictionaries were not copied: %1.").arg(problem));
        return FirstStartChoice::Nothing;
    }
    return FirstStartChoice::SamplesCopied;
}

}  // namespace lexicorn::host::ui
