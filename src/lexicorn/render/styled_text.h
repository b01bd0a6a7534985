#pragma once

// Text with attribute runs, the rows of the dictionary popup. Free of Qt Gui
// so the command line and tests use it; the reader turns it into what a Qt
// text view shows.

#include <QString>

#include <cstddef>
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

// The symbolic traits of a font, as bits; a trait mask combines them.
enum FontTrait : unsigned {
    italicTrait = 1u << 0,
    boldTrait = 1u << 1,
};

struct TextAttributes {
    std::optional<Rgba> foreground;
    std::optional<double> fontSize;  // points, of the system font
    std::optional<QString> fontName; // when not the system font
    bool bold = false;               // the font's bold trait
    std::optional<Rgba> background;
    bool italic = false;             // the font's italic trait

    bool isEmpty() const { return !foreground && !fontSize && !fontName && !bold && !background && !italic; }
    // The font's traits as FontTrait bits.
    unsigned symbolicTraits() const { return (bold ? boldTrait : 0u) | (italic ? italicTrait : 0u); }
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

    // Positions and lengths are in UTF-16 units; a range acts on its part
    // inside the text, and a negative length counts as zero.

    // Makes room for this much text and this many runs, so a line built
    // field by field grows without reallocating.
    void reserve(qsizetype units, std::size_t runs);

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

    bool operator==(const StyledText& other) const { return text_ == other.text_ && segments_ == other.segments_; }

private:
    // Splits the segment holding position so that a segment starts there;
    // returns that segment's index (the number of segments at the end).
    std::size_t splitAt(qsizetype position);
    // Drops empty segments and joins neighbours of equal attributes.
    void normalize();

    QString text_;
    // The whole text in order, unstyled stretches included: contiguous, none
    // empty, and no two neighbours with equal attributes. So runs() is these
    // segments without the unstyled ones, and equal texts compare equal.
    std::vector<Run> segments_;
};

}  // namespace lexicorn
