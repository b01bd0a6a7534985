#pragma once

// Text work on UTF-8 bytes that gives exactly what the QString functions the
// importers use give (trimmed, simplified, withoutCardMarkers, the JSON
// writer), for text in which every character is one UTF-16 unit. The ECDICT
// reader works on its file's bytes with these, which spares a conversion to
// UTF-16 and back for every field of a 770,000-row file.

#include <string>
#include <string_view>

namespace lexicorn::dictimport::utf8 {

// Well-formed UTF-8 of characters in the Basic Multilingual Plane, none of
// which the helpers below would treat unlike Qt: no byte-order mark (Qt
// drops one at the start of a string), no card marker (U+0F12, and the
// others lie above the plane), no KELVIN SIGN (it lowercases to "k").
bool isPlain(std::string_view text);

// Bytes of the blank character (QChar::isSpace) starting at text[at]; 0 for none.
size_t blankAt(std::string_view text, size_t at);

// QString::trimmed.
std::string_view trimmed(std::string_view text);

// QString::simplified: runs of blanks become one space, none at the ends.
void appendSimplified(std::string& out, std::string_view text);

// withoutCardMarkers(text).simplified() for plain text: control characters
// count as blanks too.
void appendClean(std::string& out, std::string_view text);

// Whether appendClean would write nothing.
bool cleansToNothing(std::string_view text);

// json::appendString of the same text: quoted, with '"', '\' and control
// characters escaped.
void appendJsonString(std::string& out, std::string_view text);

// appendJsonString of the clean text (appendClean), without the copy between.
void appendCleanJsonString(std::string& out, std::string_view text);

}  // namespace lexicorn::dictimport::utf8
