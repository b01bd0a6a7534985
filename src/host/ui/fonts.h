#pragma once

namespace lexicorn::host::ui {

// Makes Chinese and emoji text render with the Noto CJK and Noto Color Emoji
// fonts whatever the default font is, so no text shows as empty boxes. Call
// once, after the QApplication exists.
void installFontFallbacks();

}  // namespace lexicorn::host::ui
