// Lexicorn Reader: the PDF reader with the plug-in.
//
//   lexicorn-reader [FILE.pdf]
//   lexicorn-reader --tour DIR [FILE.pdf]   a scripted tour, offscreen, with
//                                           a screenshot of each step in DIR

#include "host/ui/dialog_alerts.h"
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
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOption({QStringLiteral("tour"), QStringLiteral("Run the scripted tour, saving screenshots in DIR."), QStringLiteral("DIR")});
    parser.addPositionalArgument(QStringLiteral("file"), QStringLiteral("The PDF to open."));
    parser.process(application);

    using namespace lexicorn::host::ui;
    installFontFallbacks();
    lexicorn::host::HostApplication host = launchReader();
    ReaderWindow window(host);
    installDialogAlertPresenter(&window);
    // The plug-in's dictionary starts switched off in every reader; its
    // settings menu switches it on. Until that menu is in the study board,
    // the reader switches it on for the user.
    if (lexicorn::runtime::respondsTo(*host.bookView, "setEnableDict:"))
        lexicorn::runtime::send<void>(*host.bookView, "setEnableDict:", true);
    const QStringList files = parser.positionalArguments();
    if (parser.isSet(QStringLiteral("tour")))
        return runReaderTour(window, files.value(0), parser.value(QStringLiteral("tour")));
    window.show();
    if (!files.isEmpty())
        window.openFile(files.front());
    return application.exec();
}
