// Lexicorn Reader: the PDF reader with the plug-in.
//
//   lexicorn-reader [FILE.pdf]
//   lexicorn-reader --tour DIR [FILE.pdf]   a scripted tour, offscreen, with
//                                           a screenshot of each step in DIR

#include "host/ui/dialog_alerts.h"
#include "host/ui/first_start.h"
#include "host/ui/fonts.h"
#include "host/ui/reader_tour.h"
#include "host/ui/reader_window.h"

#include "runtime/runtime.h"

#include <QApplication>
#include <QCommandLineParser>

#include <cstdio>

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Lexicorn Reader"));
    // Ties the windows to the installed desktop entry (its icon and name).
    QApplication::setDesktopFileName(QStringLiteral("lexicorn-reader"));
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOption({QStringLiteral("tour"), QStringLiteral("Run the scripted tour, saving screenshots in DIR."), QStringLiteral("DIR")});
    parser.addPositionalArgument(QStringLiteral("file"), QStringLiteral("The PDF to open."));
    parser.process(application);

    using namespace lexicorn::host::ui;
    installFontFallbacks();
    const bool tour = parser.isSet(QStringLiteral("tour"));
    // Before the plug-in loads, so that its first dictionary load finds what is copied.
    const FirstStartChoice firstStart = tour ? FirstStartChoice::Nothing : askAboutDictionariesOnFirstStart();
    lexicorn::host::HostApplication host = launchReader();
    ReaderWindow window(host);
    installDialogAlertPresenter(&window);
    // The plug-in's switches live on the reader object and are not stored,
    // so its dictionary would start off at every launch; the reader starts
    // with it on, and the study board's dictionary menu switches it.
    if (lexicorn::runtime::respondsTo(*host.bookView, "setEnableDict:"))
        lexicorn::runtime::send<void>(*host.bookView, "setEnableDict:", true);
    const QStringList files = parser.positionalArguments();
    if (tour)
        return runReaderTour(window, files.value(0), parser.value(QStringLiteral("tour")));
    window.show();
    if (!files.isEmpty())
        window.openFile(files.front());
    if (firstStart == FirstStartChoice::ImportOwn)
        window.showImportDialog();
    return application.exec();
}
