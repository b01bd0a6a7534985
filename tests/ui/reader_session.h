#pragma once

// The whole reader as the UI tests start it: the sample dictionaries in the
// home's Dict folder, no translation service reachable, alerts answered at
// once and recorded, the window shown and active at 1400 × 900, the sample
// book open.

#include "support/temp_home.h"

#include "host/app/host_application.h"
#include "host/ui/reader_window.h"

#include <QRectF>
#include <QString>
#include <QStringList>

#include <memory>

namespace lexicorn::testing {

inline const QString sampleBook = QStringLiteral(LEXICORN_SAMPLE_DIR "/books/sample-book.pdf");

struct ReaderOptions {
    bool plugin = true;
    // Translation engine 5 (none); otherwise the engine stays as stored and
    // every translation and voice host is a closed port.
    bool engineOff = true;
    // Without it, the collins files are left out: the engine stays loading.
    bool collins = true;
    // Loaded instead of the built plug-in (a damaged one, for the plain reader).
    QString pluginFile = {};
};

class ReaderSession {
public:
    ReaderSession() = default;
    ReaderSession(const ReaderSession&) = delete;
    ReaderSession& operator=(const ReaderSession&) = delete;
    ~ReaderSession() { stop(); }

    // With the plug-in the dictionary starts on, as lexicorn-reader starts it.
    void start(const TempHome& home, ReaderOptions options = {});
    void stop();

    // The dictionary popup's table, or null while the popup is hidden.
    std::shared_ptr<runtime::Object> popupTable() const;
    // Drags across an area of page 1 with real mouse events.
    void dragOver(const QRectF& area);
    // Drags over the area until the popup shows; the dictionary loads in the
    // background, so the first tries may find it not ready.
    bool lookUp(const QRectF& area, int attempts = 100);

    host::HostApplication app;
    std::unique_ptr<host::ui::ReaderWindow> window;
    // The messages of the alerts shown since start (the start-up notice left out).
    QStringList alerts;
};

}  // namespace lexicorn::testing
