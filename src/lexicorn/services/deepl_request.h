#pragma once

#include <QByteArray>

namespace lexicorn {

// The JSON-RPC call DeepL's web translator makes ("LMT_handle_jobs"), with
// the given request id. Its jobs are built from two fixed sample sentences,
// not from the caller's text: the DeepL path has only ever been used to see
// whether the service answers, and it stays that way until it is wired to an
// engine number.
QByteArray deeplRequestBody(qint64 id);

}  // namespace lexicorn
