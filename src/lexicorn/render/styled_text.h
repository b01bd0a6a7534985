#pragma once

// Text with attribute runs, the rows of the dictionary popup. Free of Qt Gui
// so the command line and tests use it; the reader turns it into what a Qt
// text view shows.

#include <QString>

#include <optional>
#include <vector>

namespace lexicorn {

// An sRGB colour, components 0-255, alpha 0-1.
struct Rgba {
    int red = 0;
    int green = 0;
    int blue = 0;
    double alpha = 1.0;
    bool operator==(const Rgba&) const = default;
};

struct TextAttributes {
    std::optional<Rgba> foreground;
    std::optional<double> fontSize;  // points, of the system font
    std::optional<QString> fontName; // when not the system font
    bool bold = false;               // the font's bold trait
    std::optional<Rgba> background;

    bool isEmpty() const { return !foreground && !fontSize && !fontName && !bold && !background; }
    // Sets every attribute that other has, keeping the rest.
    void merge(const TextAttributes& other);
    bool operator==(const TextAttributes&) const = default;
};

class StyledText {
public:
    struct Run {
        qsizetype start = 0;   // UTF-16 units
        qsizetype length = 0;
        TextAttributes attributes;
        bool operator==(const Run&) const = default;
    };

    StyledText() = default;
    explicit StyledText(QString text, const TextAttributes& attributes = {});

    const QString& string() const { return text_; }
    qsizetype length() const { return text_.size(); }
    bool isEmpty() const { return text_.isEmpty(); }

    // Appends text carrying exactly these attributes (none: unstyled).
    void append(const QString& text, const TextAttributes& attributes = {});
    void append(const StyledText& other);
    // Adds attributes over a range, on top of what is there.
    void addAttributes(qsizetype start, qsizetype length, const TextAttributes& attributes);
    // Replaces a range of text; runs are cut and shifted to follow.
    void replace(qsizetype start, qsizetype length, const StyledText& with);
    StyledText mid(qsizetype start, qsizetype length) const;

    TextAttributes attributesAt(qsizetype index) const;
    // The maximal runs of equal, non-empty attributes, in order.
    std::vector<Run> runs() const;

    bool operator==(const StyledText& other) const { return text_ == other.text_ && runs() == other.runs(); }

private:
    QString text_;
    // The representation of the runs is up to styled_text.cpp.
};

}  // namespace lexicorn
