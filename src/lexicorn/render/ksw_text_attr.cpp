#include "lexicorn/render/ksw_text_attr.h"

namespace lexicorn {

namespace {

TextAttributes systemFont(double size, Rgba colour)
{
    TextAttributes attributes;
    attributes.foreground = colour;
    attributes.fontSize = size;
    return attributes;
}

}  // namespace

const KSWTextAttr& KSWTextAttr::shareInstance()
{
    static const KSWTextAttr instance;
    return instance;
}

KSWTextAttr::KSWTextAttr()
{
    bgAttr_.background = Rgba{55, 55, 55};
    wordAttr_ = systemFont(18, {255, 255, 159});
    readingAttr_ = systemFont(18, {255, 255, 159});
    starAttr_ = systemFont(18, {255, 190, 147});
    subTitleAttr_ = systemFont(18, {226, 121, 166});
    posAttr_ = systemFont(16, {146, 255, 255});
    gramAttr_ = systemFont(16, {159, 235, 155});
    cnAttr_ = systemFont(16, {255, 190, 147});
    def_cnAttr_ = systemFont(16, {103, 217, 240, 0.8});
    enAttr_ = systemFont(16, {255, 255, 159});
}

}  // namespace lexicorn
