#include "host/ui/fonts.h"

#include <QApplication>
#include <QFont>
#include <QFontDatabase>
#include <QStringList>

namespace lexicorn::host::ui {

void installFontFallbacks()
{
    // Families tried, in order, for characters the chosen font lacks.
    // Tibetan for the card format's "༒" part-of-speech marker.
    const QStringList fallbacks{QStringLiteral("Noto Sans CJK SC"), QStringLiteral("Noto Color Emoji"),
                                QStringLiteral("Noto Serif Tibetan")};
    const QStringList families = QFontDatabase::families();
    QStringList present;
    for (const QString& family : fallbacks) {
        if (families.contains(family))
            present.append(family);
    }
    QFont font = QApplication::font();
    QStringList chain = font.families();
    if (chain.isEmpty())
        chain.append(font.family());
    for (const QString& family : present) {
        if (!chain.contains(family))
            chain.append(family);
    }
    font.setFamilies(chain);
    QApplication::setFont(font);
    for (const QString& family : {QStringLiteral("Sans Serif"), QStringLiteral("DejaVu Sans"), font.family()})
        QFont::insertSubstitutions(family, present);
}

}  // namespace lexicorn::host::ui
