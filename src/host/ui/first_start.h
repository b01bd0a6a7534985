#pragma once

class QWidget;

namespace lexicorn::host::ui {

enum class FirstStartChoice { Nothing, SamplesCopied, ImportOwn };

// On a start without a Dict folder, asks once (the answer is remembered)
// whether to copy the sample dictionaries, so the popup works at once, or to
// import the user's own. Copies the samples when asked to; the caller opens
// the import dialog for ImportOwn. Asked before the plug-in loads, so its
// dictionary engine finds the copied files at its first load.
FirstStartChoice askAboutDictionariesOnFirstStart(QWidget* parent = nullptr);

}  // namespace lexicorn::host::ui
