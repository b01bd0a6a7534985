#pragma once

// The fields of an Anki note type, to which the field names a user typed in
// the settings are matched. Anki's addNote matches field names without
// regard to case but updateNoteFields only exactly (and skips the rest
// silently), so every name is resolved to the note type's own spelling
// before a card is sent.

#include <QString>
#include <QStringList>

#include <optional>
#include <variant>

namespace lexicorn {

class ModelFields {
public:
    explicit ModelFields(QStringList names) : names_(std::move(names)) {}

    // Asks Anki for the note type's field names (modelFieldNames). The
    // failure is Anki's own error text, or nothing when Anki did not answer.
    static std::variant<ModelFields, std::optional<QString>> fetch(const QString& modelName);

    // The note type's spelling of a configured name: the same name, else the
    // one field that equals it without regard to case; nothing when the note
    // type has no such field. The empty name stays empty (Anki ignores it).
    std::optional<QString> resolve(const QString& configured) const;

    const QStringList& names() const { return names_; }

private:
    QStringList names_;
};

}  // namespace lexicorn
