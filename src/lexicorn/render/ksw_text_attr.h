#pragma once

// The colours and fonts of the dictionary popup, made for its dark background.

#include "lexicorn/render/styled_text.h"

namespace lexicorn {

// One instance serves the process; it is made on first use and cannot be
// copied, so every holder sees the same ten attribute sets. Fonts are the
// system font at the given size; colours are sRGB.
class KSWTextAttr {
public:
    static const KSWTextAttr& shareInstance();

    KSWTextAttr(const KSWTextAttr&) = delete;
    KSWTextAttr& operator=(const KSWTextAttr&) = delete;

    // The popup's background: 55, 55, 55.
    const TextAttributes& bgAttr() const { return bgAttr_; }
    // The headword and its readings: pale yellow, 18 pt.
    const TextAttributes& wordAttr() const { return wordAttr_; }
    const TextAttributes& readingAttr() const { return readingAttr_; }
    // The star level and the sense subtitle: peach and pink, 18 pt.
    const TextAttributes& starAttr() const { return starAttr_; }
    const TextAttributes& subTitleAttr() const { return subTitleAttr_; }
    // Signposts, grammar notes, Chinese texts and English texts: 16 pt.
    const TextAttributes& posAttr() const { return posAttr_; }
    const TextAttributes& gramAttr() const { return gramAttr_; }
    const TextAttributes& cnAttr() const { return cnAttr_; }
    const TextAttributes& def_cnAttr() const { return def_cnAttr_; }
    const TextAttributes& enAttr() const { return enAttr_; }

private:
    KSWTextAttr();

    TextAttributes bgAttr_;
    TextAttributes wordAttr_;
    TextAttributes readingAttr_;
    TextAttributes starAttr_;
    TextAttributes subTitleAttr_;
    TextAttributes posAttr_;
    TextAttributes gramAttr_;
    TextAttributes cnAttr_;
    TextAttributes def_cnAttr_;
    TextAttributes enAttr_;
};

}  // namespace lexicorn
