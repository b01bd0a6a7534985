#pragma once

// Text for pages that have none of their own (scans): the page is rendered
// and read by Tesseract, and the words come back as the same lines of
// character records that Poppler's text gives for a text page.

#include "lexicorn/reader/sentences/char_record.h"

#include <QString>

namespace Poppler {
class Document;
}

namespace lexicorn::host {

// The resolution pages are rendered at for recognition, in dots per inch.
// Very large pages get less, so that one image stays within a memory bound.
inline constexpr int ocrResolution = 300;

// Whether pages can be recognised: Tesseract finds its English language
// data, in $TESSDATA_PREFIX when that is set, else in its own default folder.
// Cheap (a few milliseconds: the data file is opened, no model is loaded), so
// it is asked anew each time and follows changes to TESSDATA_PREFIX.
struct OcrAvailability {
    bool available = false;
    QString problem;  // when not available: one message for the user, naming what is missing
};
OcrAvailability ocrAvailability();

// The text of page pageNo (counted from 1) of the document, recognised from
// its image: lines in reading order, one record per UTF-16 unit, a blank
// record between the words of a line spanning their gap, each rectangle in
// page points with the origin at the top left of the page as displayed (the
// page's rotation applied, as Poppler's word boxes have it). Text that is
// turned on the page (sideways, upside down) is found too; its lines then
// run in that direction.
//
// A page with nothing readable on it (blank, a photograph) gives no lines and
// no problem. When recognition cannot run at all (no language data, no such
// page) it gives no lines and, through problem, one message saying why.
//
// Safe from any thread, as long as the document is used by that thread only
// (Poppler documents are not shared between threads). Each call sets up its
// own Tesseract engine. Takes a second or more: never on the GUI thread.
PageLines recognisePage(Poppler::Document& document, int pageNo, QString* problem = nullptr);

}  // namespace lexicorn::host
