#pragma once

// The organising edit bar above the notebook: a thin strip with the
// notebook's caption on the left. Add-ons place their buttons on it as
// subviews, by frame (see view_kit.h); a button anchored to the right edge
// with a flexible left margin stays there as the bar resizes.

#include <QWidget>

namespace lexicorn::host::ui {

class EditBar : public QWidget {
    Q_OBJECT
public:
    static constexpr int height = 34;
    explicit EditBar(QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace lexicorn::host::ui
