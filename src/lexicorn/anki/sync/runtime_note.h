#pragma once

#include "lexicorn/render/dict_note.h"

#include "runtime/runtime.h"

#include <memory>

namespace lexicorn {

// A host note seen through the object runtime: every read is a message to
// the host's note object.
class RuntimeDictNote : public DictNote {
public:
    explicit RuntimeDictNote(std::shared_ptr<runtime::Object> note) : note_(std::move(note)) {}

    QString noteid() const override { return runtime::send<QString>(*note_, "noteid"); }
    QString notetitle() const override { return runtime::send<QString>(*note_, "notetitle"); }
    QString highlight_text() const override { return runtime::send<QString>(*note_, "highlight_text"); }
    QJsonArray notes() const override { return runtime::send<QJsonArray>(*note_, "notes"); }

private:
    std::shared_ptr<runtime::Object> note_;
};

}  // namespace lexicorn
