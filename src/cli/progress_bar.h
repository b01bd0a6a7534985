#pragma once

#include <QString>

#include <cstddef>

namespace lexicorn::cli {

// A one-line progress bar on standard error, drawn only when it is a terminal.
class ProgressBar {
public:
    explicit ProgressBar(QString label);
    ~ProgressBar();

    void update(size_t done, size_t total);
    void setLabel(QString label);

private:
    QString label_;
    bool enabled_;
    int lastPercent_ = -1;
};

}  // namespace lexicorn::cli
