#pragma once

#include <QString>

#include <optional>

namespace lexicorn {

// The general pasteboard: text plus a change count that goes up with every
// change, whatever was copied. The system clipboard when a GUI application
// runs; an in-process pasteboard otherwise (command line, tests).
class Pasteboard {
public:
    virtual ~Pasteboard() = default;

    static Pasteboard& general();

    virtual long changeCount() const = 0;
    // The text on the pasteboard; nothing when it holds no text (an image, say).
    virtual std::optional<QString> string() const = 0;
    // Replaces the contents with one text.
    virtual void setString(const QString& text) = 0;
    // Replaces the contents with something that is not text.
    virtual void setNonText() = 0;
};

}  // namespace lexicorn
