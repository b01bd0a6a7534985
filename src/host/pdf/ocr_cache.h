#pragma once

// Recognised page text kept on disk, per book and page, so that a page is
// read by OCR once:
//
//   <home>/Lexicorn/ocr/<book MD5>/<page>.json
//
// <home> is homeDirectory() (LEXICORN_HOME when set), <page> counts from 1.
// A file that is damaged, cut short or of another version is never trusted:
// the page is recognised again and the file replaced.

#include "lexicorn/reader/sentences/char_record.h"

#include <QString>

#include <optional>

namespace Poppler {
class Document;
}

namespace lexicorn::host {

// The folder of one book's recognised pages.
QString ocrCacheFolder(const QString& bookMD5);
// The file of one recognised page; empty when bookMD5 is not 32 hexadecimal
// digits, since it names a folder.
QString ocrCacheFile(const QString& bookMD5, int pageNo);

// The page as kept, when its file is there and sound.
std::optional<PageLines> cachedPageText(const QString& bookMD5, int pageNo);

// Keeps a recognised page (an empty one too: a page without readable text is
// not read again). The file is written beside its place and renamed into it,
// so a reader never sees half a file. False when it could not be written.
bool storePageText(const QString& bookMD5, int pageNo, const PageLines& lines);

// The text of page pageNo (from 1) of a page without text of its own: from
// the disk cache, else recognised (recognisePage) and kept. A page with
// nothing readable gives no lines, once. When OCR cannot run, no lines, no
// file, and problem says why; the caller shows that once and goes on without.
// Called on a worker thread that owns the document; reading a kept page takes
// a few milliseconds.
PageLines recognisedText(Poppler::Document& document, const QString& bookMD5, int pageNo, QString* problem = nullptr);

}  // namespace lexicorn::host
