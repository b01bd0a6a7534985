#pragma once

// The file one recognised page is kept in on disk: a JSON object
//
//   {"version": 1, "page": N,
//    "lines": [{"text": "...", "rects": [left, top, right, bottom, ...]}, ...]}
//
// with one rectangle (four numbers, page points) per UTF-16 unit of a line's
// text. Rectangles are kept by their edges, so characters that touch still
// touch when read back.

#include "lexicorn/reader/sentences/char_record.h"

#include <QByteArray>

#include <optional>

namespace lexicorn::host {

// Raised whenever the shape of the file changes; files of another version are
// recognised again.
inline constexpr int ocrPageFileVersion = 1;

// Files larger than this are not read: no page of text comes near it.
inline constexpr qsizetype largestOcrPageFile = 16 * 1024 * 1024;

QByteArray encodeOcrPage(int pageNo, const PageLines& lines);

// The lines kept in a file, when it is whole and of this version and page:
// every line a non-empty, well-formed UTF-16 text with one rectangle per unit,
// its edges in order and within ten million points. Anything else (cut short,
// damaged, another version or page) gives nothing, never a part of the page.
std::optional<PageLines> decodeOcrPage(const QByteArray& bytes, int pageNo);

}  // namespace lexicorn::host
