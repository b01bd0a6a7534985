#pragma once

#include <QByteArray>
#include <QString>

namespace lexicorn {

// Readers of the translation services' reply bodies. They take whatever bytes
// came back (an error status's body included) and never fail: a body that is
// not what the service normally sends reads as no translation (an empty string).

// Google: a JSON array whose [0][0][0] is the translation of the first
// segment. Later segments ([0][1][0], ...) are left out on purpose: the reader
// shows the first sentence's translation only.
QString googleTranslation(const QByteArray& body);

// Youdao's word page. A sentence's machine translation sits in the block
// opened by the line with id="fanyiToggle": the first later line (trimmed)
// holding both "<p>" and "</p>" is the translation, without those tags. When
// that block gives nothing, the page is read as a word entry instead: the
// "<li>...</li>" lines of the list after the line with class="trans-container"
// (up to the "</ul>" or "</div>" that closes it), each without its tags,
// joined with the Chinese semicolon "；" as the meanings are on the page.
QString youdaoTranslation(const QByteArray& body);

// Eudic answers with the bare translation text; when it fails it sends an
// HTML page instead.
struct EudicReply {
    QString text;            // the body decoded as UTF-8, as it stands
    bool isErrorPage = false;  // the body is an HTML page ("<!DOCTYPE html>")

    QString translation() const { return isErrorPage ? QString() : text; }
};
EudicReply readEudicReply(const QByteArray& body);

// DeepL's JSON-RPC reply: result.translations[0].beams[0].postprocessed_sentence.
// An HTML page (the service's error page) is no reply.
QString deeplTranslation(const QByteArray& body);

// The marker of an HTML page, which Eudic and DeepL send instead of an answer.
inline constexpr char16_t htmlPageMarker[] = u"<!DOCTYPE html>";

}  // namespace lexicorn
