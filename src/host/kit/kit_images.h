#pragma once

// "UIImage": the reader's own icons, drawn with QPainter, by name.
//
// +imageNamed: (QString) -> the icon, or null for a name the reader does not
// draw; imageWithTintColor: (QColor) -> the same shape in that colour; size
// (QSizeF, points). Names: "dictionary", "lock", "anki64" (in its own
// colours), "copy", "speech", "translation", "drag". The others are
// templates: black shapes meant to be tinted.

#include "runtime/runtime.h"

#include <QColor>
#include <QPixmap>
#include <QString>

namespace lexicorn::host::ui {

inline constexpr const char* imageClassName = "UIImage";

// The reader's tint colour: switches, selected buttons and tinted icons.
QColor defaultTintColor();

class ImageObject : public runtime::Object {
public:
    ImageObject(runtime::Class& cls, QPixmap pixmap, QString name)
        : Object(cls), pixmap_(std::move(pixmap)), name_(std::move(name)) {}
    const QPixmap& pixmap() const { return pixmap_; }
    // The name it was drawn from; a button showing only this image is
    // announced by it to screen readers.
    const QString& name() const { return name_; }

private:
    QPixmap pixmap_;
    QString name_;
};

// The drawn icon of that name (32 points square, at twice the resolution),
// or a null pixmap.
QPixmap drawnImage(const QString& name);
// Every painted pixel of the image in the colour, its alpha kept.
QPixmap tintedImage(const QPixmap& image, const QColor& colour);

// Called by registerViewKitClasses (kit_classes.h), after the controls.
void registerImageClass(runtime::Runtime& runtime);

}  // namespace lexicorn::host::ui
